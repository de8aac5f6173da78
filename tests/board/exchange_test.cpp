// The exchange evaluators against a plain recursion over captures on a list of squares.
#include "board/exchange.h"

#include "board/fen.h"
#include "board/legality.h"
#include "board/move_text.h"
#include "support/board_environment.h"
#include "support/slow_chess.h"

#include <algorithm>
#include <cctype>
#include <random>
#include <string>
#include <utility>

// By piece type; 0 stands for an empty square.
using Values = int[7];
constexpr Values FastValues = {0, 1, 4, 4, 6, 12, 999};
constexpr Values MarginValues = {0, 100, 400, 400, 600, 1200, 999999};
constexpr Values ExactValues = {0, 2, 7, 7, 11, 21, 999};
constexpr Values ThreatValues = {0, 2, 7, 8, 11, 22, 999};
constexpr Values SafeValues = {0, 1, 3, 3, 5, 9, 999};

static std::size_t typeAt(const SlowBoard& board, int square) {
    return std::string(".pnbrqk").find(char(std::tolower(board.at[square])));
}

// A board from which pieces are taken away one by one, so that sliders see through what has captured.
class PlainExchange {
   public:
    PlainExchange(const SlowBoard& before, const Values& worth, bool minds)
        : board(before), values(worth), pinsCount(minds) {}

    // Takes a piece away and tells its worth.
    int lift(int square) {
        const int worth = values[typeAt(board, square)];
        board.at[square] = '.';
        return worth;
    }

    // What a side gains at best by capturing on `target`, where a piece worth `onTo` stands; at least 0,
    // since nobody must capture. The side that began disregards its own pins, and nobody minds them to take
    // a king.
    int bestGain(int target, bool white, int onTo, bool answering = true) {
        const bool mindsPins = answering && pinsCount && onTo < values[King];
        const int from = nextAttacker(target, white, answering, mindsPins);
        if (from < 0) return 0;
        if (onTo == values[King]) return onTo;  // nothing follows the taking of a king
        const int worth = lift(from);
        return std::max(0, onTo - bestGain(target, !white, worth, !answering));
    }

   private:
    // The cheapest attacker, the lowest square first; -1 if there is none. What the answering side finds to
    // be pinned is out of the game for the rest of the exchange.
    int nextAttacker(int target, bool white, bool answering, bool mindsPins) {
        while (true) {
            SlowBoard seen = board;
            for (const int square : pinned)
                if (answering) seen.at[square] = '.';
            const std::vector<int> attackers = slowAttackers(seen, target, white);
            const auto cheapest = std::min_element(attackers.begin(), attackers.end(), [&](int a, int b) {
                return std::pair(typeAt(board, a), a) < std::pair(typeAt(board, b), b);
            });
            if (cheapest == attackers.end()) return -1;
            if (!mindsPins || !isPinned(*cheapest, white)) return *cheapest;
            pinned.push_back(*cheapest);
        }
    }

    // Whether the king is open to a slider once the piece has left.
    bool isPinned(int square, bool white) const {
        const int king = int(std::find(board.at, board.at + 64, white ? 'K' : 'k') - board.at);
        SlowBoard without = board;
        without.at[square] = '.';
        const std::vector<int> attackers = slowAttackers(without, king, !white);
        return std::any_of(attackers.begin(), attackers.end(), [&](int from) {
            const std::size_t type = typeAt(board, from);
            return type == Bishop || type == Rook || type == Queen;
        });
    }

    SlowBoard board;
    const Values& values;
    const bool pinsCount;
    std::vector<int> pinned;
};

// What a move brings the mover, of whom the opponent then takes what is best for him.
static int plainBalance(const SlowBoard& board, Move move, const Values& values) {
    PlainExchange exchange(board, values, true);
    const int won = exchange.lift(toOf(move));
    const int onTo = exchange.lift(fromOf(move));
    return won - exchange.bestGain(toOf(move), !board.whiteToMove, onTo);
}

// Whether the opponent gains nothing by capturing the mover where it stands; nobody's pins count.
static bool plainSafe(const SlowBoard& board, Move move) {
    PlainExchange exchange(board, SafeValues, false);
    const int onTo = exchange.lift(fromOf(move));
    return exchange.bestGain(fromOf(move), !board.whiteToMove, onTo) == 0;
}

// How often the rarer answers were seen, so that no evaluator passes by always saying the same.
struct Seen {
    int losing = 0, unsafe = 0, wonByExchange = 0, lostByExchange = 0;
};

static void judge(const Position& pos, Seen& seen) {
    const SlowBoard board = slowBoardOf(pos);
    for (const Move move : pseudoLegalMoves(pos)) {
        SCOPED_TRACE(writeFen(pos) + ' ' + moveText(move));
        const bool special = isEnPassant(move) || isCastling(move);
        const std::size_t mover = typeAt(board, fromOf(move));
        const std::size_t victim = typeAt(board, toOf(move));

        const bool losing = !special && mover != King && plainBalance(board, move, FastValues) < 0;
        ASSERT_EQ(seeLosing(pos, move), losing);
        seen.losing += losing;

        const int balance = plainBalance(board, move, MarginValues);
        for (const int margin : {-1300, -450, -200, -42, 0, 1, 100, 250, 400, 700})
            ASSERT_EQ(seeBelowMargin(pos, move, margin), !special && balance < margin) << margin;

        // Exact only between its two quick answers: what the move wins at least, and at most.
        const int exact = plainBalance(board, move, ExactValues);
        const int most = ExactValues[victim], least = most - ExactValues[mover];
        for (const int threshold : {-20, -5, 0, 1, 2, 5, 8, 12}) {
            const int score = special ? 2 : least >= threshold ? least : most < threshold ? most : exact;
            ASSERT_EQ(seeScore(pos, move, threshold), score) << threshold;
        }

        const bool safe = plainSafe(board, move);
        ASSERT_EQ(seeFromSquareSafe(pos, move), safe);
        seen.unsafe += !safe;

        const int certain = ThreatValues[victim] - ThreatValues[mover];
        const int exchanged = victim == NoPiece ? 0 : plainBalance(board, move, ThreatValues);
        const int threat = special ? 2 : certain > 0 ? certain : exchanged;
        ASSERT_EQ(seeThreat(pos, move), threat);
        for (const int bound : {-14, -3, 0, 1, 2, 6, 15})
            ASSERT_EQ(seeThreatBelow(pos, move, bound), threat < bound) << bound;
        seen.wonByExchange += threat > 0;
        seen.lostByExchange += threat < 0;
    }
}

// Crowded boards: long exchanges, batteries in every direction, pins, kings that may or may not take back.
TEST(Exchange, AgreesWithAPlainRecursionOnCrowdedBoards) {
    Seen seen;
    std::mt19937 random(31);
    int boards = 0;
    while (boards < 1500) {
        std::string squares(64, '1');
        for (const char king : {'K', 'k'}) squares[random() % 64] = king;
        for (unsigned i = 0; i < 16 + random() % 16; ++i) {
            char& square = squares[random() % 64];
            if (square != 'K' && square != 'k') square = "PNBRQQRBpnbrqqrb"[random() % 16];
        }
        for (std::size_t i = 0; i < 64; ++i)
            if ((i < 8 || i >= 56) && std::tolower(squares[i]) == 'p') squares[i] = '1';
        const Position pos = positionOf(boardText(squares) + " w - -");
        if (!isPlayable(pos)) continue;
        ++boards;
        judge(pos, seen);
        if (::testing::Test::HasFatalFailure()) return;
    }
    EXPECT_GT(seen.losing, 10000);
    EXPECT_GT(std::min(seen.wonByExchange, seen.lostByExchange), 3000);
    EXPECT_GT(seen.unsafe, 5000);
}
