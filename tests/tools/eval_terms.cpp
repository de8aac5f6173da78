// Prints what each term of the evaluation gives each side in a position, by the slow evaluation of the
// tests, whose sum is the engine's score. The FEN comes as the argument, or a line each on standard input.
#include "eval/eval_environment.h"
#include "eval/slow_eval_of.h"

#include <iostream>

class TermList : public EvalTest {
   public:
    // False if the FEN is no position, or if the engine's score is another.
    static bool print(const std::string& fen) {
        Position pos = rootOf(fen);
        if (!pos.pieces[White][King] || !pos.pieces[Black][King]) {
            std::cerr << "not a position: " << fen << '\n';
            return false;
        }
        const slow::Given given = givenFor(pos);
        const slow::Judgement judgement = slow::judge(slowEvalBoardOf(pos), given);
        std::cout << fen << '\n';
        printTerms(std::cout, judgement, given);
        const int score = freshScore(pos);
        if (score != judgement.score) std::cerr << "the engine's score differs: " << score << '\n';
        return score == judgement.score;
    }

   private:
    void TestBody() override {}
};

int main(int argumentCount, char** arguments) {
    boardEnvironment->SetUp();
    const TermList started;
    bool good = true;
    std::string fen;
    for (int index = 1; index < argumentCount; ++index)
        fen += (index > 1 ? " " : "") + std::string(arguments[index]);
    if (!fen.empty()) return TermList::print(fen) ? 0 : 1;
    while (std::getline(std::cin, fen)) good = TermList::print(fen) && good;
    return good ? 0 : 1;
}
