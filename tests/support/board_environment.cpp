#include "support/board_environment.h"

#include "board/attacks.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_text.h"
#include "board/movegen.h"
#include "board/sliders.h"
#include "board/thread_hooks.h"

#include <random>

BoardArrays boardArrays;

void BoardEnvironment::SetUp() {
    initSliders();
    ThreadHooks& hooks = threadHooks[0];
    hooks.nodes = &boardArrays.nodes;
    hooks.stopFlag = &boardArrays.stopFlag;
    hooks.history = boardArrays.history;
    hooks.captureHistory = boardArrays.captureHistory;
    hooks.continuationHistory = boardArrays.continuationHistory;
}

Position positionOf(const std::string& fen) {
    Position pos;
    setFen(&pos, fen.c_str());
    pos.psqPair = computePsqPair(pos);
    pos.phase = std::uint16_t(computePhase(pos));
    return pos;
}

std::string boardText(const std::string& squares) {
    std::string text;
    for (std::size_t rank = 8; rank-- > 0;) text += squares.substr(8 * rank, 8) + (rank ? "/" : "");
    return text;
}

std::vector<Move> listOf(const Position& pos, int (*generate)(const Position&, Move*)) {
    Move list[MaxListMoves];
    return {list, list + generate(pos, list)};
}

std::vector<Move> pseudoLegalMoves(const Position& pos) {
    std::vector<Move> moves = listOf(pos, genAllMoves);
    for (Move& move : moves) move = cleanMove(move);
    return moves;
}

std::vector<Move> legalMoves(const Position& pos) {
    std::vector<Move> moves;
    Position child;
    for (const Move move : pseudoLegalMoves(pos))
        if (makeMove(&pos, &child, move)) moves.push_back(move);
    return moves;
}

Move moveOf(const Position& pos, const std::string& text) {
    for (const Move move : pseudoLegalMoves(pos))
        if (moveText(move) == text) return move;
    return NoMove;
}

bool makeChild(const Position& parent, Position& child, Move move) {
    if (!makeMove(&parent, &child, move)) return false;
    child.inCheck = isInCheck(child);
    return true;
}

std::vector<Position> playLine(const Position& root, const std::vector<std::string>& moves) {
    std::vector<Position> line(moves.size() + 1);
    line[0] = root;
    for (std::size_t i = 0; i < moves.size(); ++i) {
        const Move move = moveOf(line[i], moves[i]);
        EXPECT_TRUE(move != NoMove || moves[i] == "0000") << moves[i];
        EXPECT_TRUE(makeChild(line[i], line[i + 1], move)) << moves[i];
    }
    return line;
}

struct WalkStart {
    const char* fen;
    bool chess960;
};
static const WalkStart walkStarts[] = {
    {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -", false},
    {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -", false},
    {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -", false},
    {"r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq -", false},
    {"rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ -", false},
    {"n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - -", false},
    {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", false},
    {"4k3/2p1p3/8/1P1P1P2/1p1p1p2/8/2P1P3/4K3 w - -", false},
    {"bqnb1rkr/pp3ppp/3ppn2/2p5/5P2/P2P4/NPP1P1PP/BQ1BNRKR w HFhf -", true},
    {"2nnrbkr/p1qppppp/8/1ppb4/6PP/3PP3/PPP2P2/BQNNRBKR w HEhe -", true},
    {"nrkr1b1q/pp1pp1p1/2p2p1p/1n6/P1bPP3/2P3P1/5P1P/NRKRNBB1 w DBdb -", true},
    {"1r3kr1/8/8/8/8/8/8/1R3KR1 w GBgb -", true},
    {"r2k3r/pppppppp/8/8/8/8/PPPPPPPP/R2K3R w HAha -", true},
    {"1rk1r3/8/8/8/8/8/8/1RK1R3 b EBeb -", true},
    {"rkr5/8/8/8/8/8/8/RKR5 w CAca -", true},
    {"5krr/6pp/8/8/8/8/6PP/5KRR w Gg -", true},
};

void walkRandomGames(int gamesPerStart, int plies, const std::function<void(const Position&)>& visit) {
    const SettingsGuard guard;
    std::mt19937 random(20);
    std::vector<Position> line(std::size_t(plies) + 1);
    for (const WalkStart& start : walkStarts) {
        settings.chess960 = start.chess960;
        for (int game = 0; game < gamesPerStart; ++game) {
            line[0] = positionOf(start.fen);
            for (std::size_t ply = 0; ply <= std::size_t(plies); ++ply) {
                visit(line[ply]);
                if (::testing::Test::HasFatalFailure()) return;
                const std::vector<Move> moves = legalMoves(line[ply]);
                if (moves.empty() || ply == std::size_t(plies)) break;
                ASSERT_TRUE(makeChild(line[ply], line[ply + 1], moves[random() % moves.size()]));
            }
        }
    }
}
