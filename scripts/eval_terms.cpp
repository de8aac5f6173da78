// Prints what each stage of the evaluation gives each side in a position, and each step from there to the
// score. The FEN comes as the arguments, or a line each on standard input; with --json each position is one
// line of JSON.
#include "eval/eval_environment.h"
#include "support/eval_account.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <iostream>

namespace {

// A FEN's own characters alone, so that nothing needs to be escaped.
std::string withoutOddCharacters(std::string fen) {
    std::erase_if(
        fen, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)) && !std::strchr("/ -", c); });
    return fen;
}

void printText(const std::string& fen, const Position& pos, const EvalAccount& account) {
    std::printf("%s\nphase %d of %d, dynamism %d / 128 and %d / 128\n", fen.c_str(), pos.cappedPhase(),
                MaxPhase, evalStyle.dynamismMg, evalStyle.dynamismEg);
    std::printf("%-44s%9s%7s%10s%7s%10s%7s\n", "lane units", "White mg", "eg", "Black mg", "eg", "diff mg",
                "eg");
    for (const auto& [name, white, black] : account.rows)
        std::printf("%-44s%9d%7d%10d%7d%10d%7d\n", name.c_str(), mgOf(white), egOf(white), mgOf(black),
                    egOf(black), mgOf(white - black), egOf(white - black));
    for (const auto& [name, value] : account.sums)
        std::printf("= %-68s%10d%7d\n", name.c_str(), mgOf(value), egOf(value));
    std::printf("material %d, scale of all else %g\n", account.materialValue, double(account.scale));
    for (const auto& [name, value] : account.steps) std::printf("= %-68s%10d\n", name.c_str(), value);
    std::printf("score %d centipawns for the side to move\n", account.score);
}

void printJson(const std::string& fen, const Position& pos, const EvalAccount& account) {
    const auto pairText = [](Lanes value) {
        return '[' + std::to_string(mgOf(value)) + ',' + std::to_string(egOf(value)) + ']';
    };
    std::string rows, sums, steps;
    for (const auto& [name, white, black] : account.rows)
        rows += (rows.empty() ? "{\"name\":\"" : ",{\"name\":\"") + name + "\",\"white\":" + pairText(white) +
                ",\"black\":" + pairText(black) + '}';
    for (const auto& [name, value] : account.sums)
        sums += (sums.empty() ? "{\"name\":\"" : ",{\"name\":\"") + name + "\",\"value\":" + pairText(value) +
                '}';
    for (const auto& [name, value] : account.steps)
        steps += (steps.empty() ? "{\"name\":\"" : ",{\"name\":\"") + name +
                 "\",\"value\":" + std::to_string(value) + '}';
    std::printf(
        "{\"fen\":\"%s\",\"phase\":%d,\"dynamism\":[%d,%d],\"stages\":[%s],\"sums\":[%s],"
        "\"material\":%d,\"scale\":%.9g,\"steps\":[%s],\"score\":%d}\n",
        fen.c_str(), pos.cappedPhase(), evalStyle.dynamismMg, evalStyle.dynamismEg, rows.c_str(),
        sums.c_str(), account.materialValue, double(account.scale), steps.c_str(), account.score);
}

class TermList : public EvalTest {
   public:
    // False if the FEN is no position.
    static bool print(const std::string& fen, bool json) {
        Position pos = rootOf(fen);
        if (popcount(pos.pieces[White][King]) != 1 || popcount(pos.pieces[Black][King]) != 1) {
            std::cerr << "not a position: " << fen << '\n';
            return false;
        }
        (json ? printJson : printText)(withoutOddCharacters(fen), pos, EvalAccount(pos));
        return true;
    }

   private:
    void TestBody() override {}
};

}  // namespace

int main(int argumentCount, char** arguments) {
    boardEnvironment->SetUp();
    const TermList started;
    bool good = true, json = false;
    std::string fen;
    for (int index = 1; index < argumentCount; ++index) {
        const std::string argument = arguments[index];
        if (argument == "--json")
            json = true;
        else
            fen += (fen.empty() ? "" : " ") + argument;
    }
    if (!fen.empty()) return TermList::print(fen, json) ? 0 : 1;
    while (std::getline(std::cin, fen)) good = TermList::print(fen, json) && good;
    return good ? 0 : 1;
}
