// The exchange evaluators against a plain recursion over captures on a list of squares, and on stated
// positions.
#include "board/exchange.h"

#include "board/fen.h"
#include "support/board_environment.h"
#include "support/slow_chess.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <random>
#include <string>

// Values by letter.
struct PlainValues {
    int pawn, knight, bishop, rook, queen, king;

    int of(char piece) const {
        switch (std::tolower(piece)) {
            case 'p': return pawn;
            case 'n': return knight;
            case 'b': return bishop;
            case 'r': return rook;
            case 'q': return queen;
            case 'k': return king;
            default: return 0;
        }
    }
};
constexpr PlainValues FastValues = {1, 4, 4, 6, 12, 999};
constexpr PlainValues MarginValues = {100, 400, 400, 600, 1200, 999999};
constexpr PlainValues ExactValues = {2, 7, 7, 11, 21, 999};
constexpr PlainValues ThreatValues = {2, 7, 8, 11, 22, 999};
constexpr PlainValues SafeValues = {1, 3, 3, 5, 9, 999};

// A board from which pieces are taken away one by one. Squares that are empty are passed by sliders.
class PlainExchange {
   public:
    PlainExchange(const Position& pos, const PlainValues& worth) : board(slowBoardOf(pos)), values(worth) {}

    char pieceOn(int square) const { return board.at[square]; }
    void remove(int square) { board.at[square] = '.'; }

    // What the side to answer gains at best by capturing on `target`, where a piece worth `onTo` stands; at
    // least 0, since nobody must capture. The side that began disregards its own pins.
    int bestGain(int target, bool white, int onTo, bool answering, bool pinsCount) {
        const int from = nextAttacker(target, white, answering && pinsCount && onTo < values.king);
        if (from < 0) return 0;
        if (onTo == values.king) return onTo;  // nothing follows the taking of a king
        const int worth = values.of(board.at[from]);
        remove(from);
        return std::max(0, onTo - bestGain(target, !white, worth, !answering, pinsCount));
    }

    // The cheapest attacker, the lowest square first; -1 if there is none. Pieces found to be pinned are out
    // of the game for the rest of the exchange, for their own side alone.
    int nextAttacker(int target, bool white, bool pinsCount) {
        while (true) {
            const int from = cheapest(target, white);
            if (from < 0 || !pinsCount || !isPinned(from, white)) return from;
            pinned.push_back(from);
        }
    }

   private:
    int cheapest(int target, bool white) const {
        SlowBoard seen = board;
        const bool answering = !pinned.empty() && isWhite(board.at[pinned[0]]) == white;
        for (const int square : pinned)
            if (answering) seen.at[square] = '.';
        for (const char kind : std::string("pnbrqk"))
            for (int square = 0; square < 64; ++square)
                if (seen.at[square] == (white ? std::toupper(kind) : kind) && attacks(seen, square, target))
                    return square;
        return -1;
    }

    // Whether the king is open to a slider once the piece has left.
    bool isPinned(int square, bool white) const {
        SlowBoard without = board;
        without.at[square] = '.';
        const char king = white ? 'K' : 'k';
        const int at = int(std::find(board.at, board.at + 64, king) - board.at);
        for (int from = 0; from < 64; ++from) {
            const char piece = without.at[from];
            if (piece == '.' || isWhite(piece) == white) continue;
            if (std::string("brq").find(char(std::tolower(piece))) == std::string::npos) continue;
            if (attacks(without, from, at)) return true;
        }
        return false;
    }

    static bool isWhite(char piece) { return std::isupper(piece) != 0; }

    static bool attacks(const SlowBoard& seen, int from, int to) {
        const int files = to % 8 - from % 8;
        const int ranks = to / 8 - from / 8;
        const int longer = std::max(std::abs(files), std::abs(ranks));
        const bool straight = files == 0 || ranks == 0;
        const bool diagonal = std::abs(files) == std::abs(ranks);
        switch (seen.at[from]) {
            case 'P': return ranks == 1 && std::abs(files) == 1;
            case 'p': return ranks == -1 && std::abs(files) == 1;
            case 'N':
            case 'n': return std::abs(files * ranks) == 2;
            case 'K':
            case 'k': return longer == 1;
            case 'B':
            case 'b':
                if (!diagonal) return false;
                break;
            case 'R':
            case 'r':
                if (!straight) return false;
                break;
            default:
                if (!straight && !diagonal) return false;
        }
        for (int i = 1; i < longer; ++i)
            if (seen.at[from + i * (8 * ranks + files) / longer] != '.') return false;
        return longer > 0;
    }

    SlowBoard board;
    const PlainValues& values;
    std::vector<int> pinned;
};

static bool isWhiteMove(const Position& pos, Move move) { return pos.board[fromOf(move)] < 8; }

// What a move brings the mover, of whom the opponent then takes what is best for him.
static int plainBalance(const Position& pos, Move move, const PlainValues& values) {
    PlainExchange exchange(pos, values);
    const int won = values.of(exchange.pieceOn(toOf(move)));
    const int onTo = values.of(exchange.pieceOn(fromOf(move)));
    exchange.remove(fromOf(move));
    exchange.remove(toOf(move));
    return won - exchange.bestGain(toOf(move), !isWhiteMove(pos, move), onTo, true, true);
}

static bool isSpecial(Move move) { return flagOf(move) == EnPassant || flagOf(move) == Castling; }
static bool isKingMove(const Position& pos, Move move) { return typeOfCode(pos.board[fromOf(move)]) == King; }

static bool plainLosing(const Position& pos, Move move) {
    return !isSpecial(move) && !isKingMove(pos, move) && plainBalance(pos, move, FastValues) < 0;
}
static bool plainBelowMargin(const Position& pos, Move move, int margin) {
    return !isSpecial(move) && plainBalance(pos, move, MarginValues) < margin;
}
static int plainScore(const Position& pos, Move move, int threshold) {
    if (isSpecial(move)) return 2;
    const SlowBoard board = slowBoardOf(pos);
    const int won = ExactValues.of(board.at[toOf(move)]);
    const int certain = won - ExactValues.of(board.at[fromOf(move)]);
    if (certain >= threshold) return certain;
    return won < threshold ? won : plainBalance(pos, move, ExactValues);
}
static int plainThreat(const Position& pos, Move move) {
    if (isSpecial(move)) return 2;
    const SlowBoard board = slowBoardOf(pos);
    const int won = ThreatValues.of(board.at[toOf(move)]);
    const int certain = won - ThreatValues.of(board.at[fromOf(move)]);
    if (certain > 0) return certain;
    return won == 0 ? 0 : plainBalance(pos, move, ThreatValues);
}
// Whether the opponent gains by capturing the piece where it stands; nobody's pins count.
static bool plainFromSquareSafe(const Position& pos, Move move) {
    PlainExchange exchange(pos, SafeValues);
    const int onTo = SafeValues.of(exchange.pieceOn(fromOf(move)));
    exchange.remove(fromOf(move));
    return exchange.bestGain(fromOf(move), !isWhiteMove(pos, move), onTo, true, false) == 0;
}

// How often each answer was seen, so that no evaluator passes by always saying the same.
struct Seen {
    int losing = 0, notLosing = 0, unsafe = 0, safe = 0, wonByExchange = 0, lostByExchange = 0;
};

static void judge(const Position& pos, Seen& seen) {
    for (const Move move : pseudoLegalMoves(pos)) {
        const bool losing = plainLosing(pos, move);
        ASSERT_EQ(seeLosing(pos, move), losing) << writeFen(pos) << ' ' << std::hex << move;
        ++(losing ? seen.losing : seen.notLosing);
        for (const int margin : {-1300, -450, -200, -42, 0, 1, 100, 250, 400, 700})
            ASSERT_EQ(seeBelowMargin(pos, move, margin), plainBelowMargin(pos, move, margin))
                << writeFen(pos) << ' ' << std::hex << move << std::dec << " margin " << margin;
        for (const int threshold : {-20, -5, 0, 1, 2, 5, 8, 12})
            ASSERT_EQ(seeScore(pos, move, threshold), plainScore(pos, move, threshold))
                << writeFen(pos) << ' ' << std::hex << move << std::dec << " threshold " << threshold;
        const bool safe = plainFromSquareSafe(pos, move);
        ASSERT_EQ(seeFromSquareSafe(pos, move), safe) << writeFen(pos) << ' ' << std::hex << move;
        ++(safe ? seen.safe : seen.unsafe);
        const int threat = plainThreat(pos, move);
        ASSERT_EQ(seeThreat(pos, move), threat) << writeFen(pos) << ' ' << std::hex << move;
        seen.wonByExchange += threat > 0;
        seen.lostByExchange += threat < 0;
    }
}

TEST(Exchange, AgreesWithAPlainRecursionInGames) {
    Seen seen;
    walkRandomGames(4, 100, [&](const Position& pos) {
        if (pos.gamePly % 2 == 0) judge(pos, seen);
    });
    EXPECT_GT(seen.losing, 10000);
    EXPECT_GT(seen.notLosing, 10000);
    EXPECT_GT(seen.unsafe, 1000);
    EXPECT_GT(seen.safe, 1000);
    EXPECT_GT(seen.wonByExchange, 500);
    EXPECT_GT(seen.lostByExchange, 500);
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
    EXPECT_GT(seen.wonByExchange, 5000);
    EXPECT_GT(seen.lostByExchange, 3000);
    EXPECT_GT(seen.unsafe, 5000);
}

struct ExchangeRow {
    const char* name;
    const char* fen;
    Move move;
    bool losing;
    int threat;
};
static void PrintTo(const ExchangeRow& row, std::ostream* out) { *out << row.fen; }

class ExchangeValue : public ::testing::TestWithParam<ExchangeRow> {};

TEST_P(ExchangeValue, IsRight) {
    const ExchangeRow& row = GetParam();
    const Position pos = positionOf(row.fen);
    EXPECT_EQ(seeLosing(pos, row.move), row.losing);
    EXPECT_EQ(seeThreat(pos, row.move), row.threat);
}

static const ExchangeRow ExchangeRows[] = {
    {"QueenTakesDefendedPawn", "4k3/8/2p5/3p4/8/8/3Q4/4K3 w - -", makeWord(D2, D5), true, 2 - 22},
    {"QueenTakesFreePawn", "4k3/8/8/3p4/8/8/3Q4/4K3 w - -", makeWord(D2, D5), false, 2},
    {"PawnTakesDefendedPawn", "4k3/8/2p5/3p4/4P3/8/8/4K3 w - -", makeWord(E4, D5), false, 0},
    {"PawnTakesQueen", "4k3/8/2p5/3q4/4P3/8/8/4K3 w - -", makeWord(E4, D5), false, 20},
    {"PawnTakesInPassing", "4k3/2p5/8/3pP3/8/8/8/4K3 w - d6", makeWord(E5, D6, EnPassant), false, 2},
    {"KingCastles", "4k3/8/8/8/8/8/8/4K2R w K -", makeWord(E1, H1, Castling), false, 2},
    {"DefenderPinnedByABishop", "6k1/5n2/8/3Bp3/8/5N2/8/4K3 w - -", makeWord(F3, E5), false, 2},
    {"DefenderNotPinned", "7k/5n2/8/3Bp3/8/5N2/8/4K3 w - -", makeWord(F3, E5), true, 2 - 7},
    {"PinnerThatCapturesPinsNoMore", "4k3/3pn3/8/8/4R3/8/8/4K3 w - -", makeWord(E4, E7), true, 7 - 11},
    {"MoversPinsDontCount", "1r1rk3/8/8/3p4/5N2/1B6/8/1K6 w - -", makeWord(F4, D5), false, 2},
    {"KingTakesBackLast", "8/8/3k4/3p4/8/2N5/8/4K3 w - -", makeWord(C3, D5), true, 2 - 7},
    {"KingCantTakeBack", "8/8/3k4/3p4/8/2N5/8/3RK3 w - -", makeWord(C3, D5), false, 2},
    {"SecondRookBehindTheFirst", "3rk3/8/8/3r4/8/3R4/3R4/4K3 w - -", makeWord(D3, D5), false, 11},
    {"QuietMoveToAnAttackedSquare", "4k3/8/2p5/8/8/8/3Q4/4K3 w - -", makeWord(D2, D5), true, 0},
};
INSTANTIATE_TEST_SUITE_P(Stated, ExchangeValue, ::testing::ValuesIn(ExchangeRows),
                         [](const auto& row) { return row.param.name; });

TEST(Exchange, LeastAttackerSeesThroughWhatIsTakenAway) {
    const Position pos = positionOf("3rk3/3q4/4n3/2p5/3P4/2N5/3R4/3QK3 w - -");
    const Bitboard all = pos.occupied;
    EXPECT_EQ(leastAttacker(pos, Black, D4, all, 0), C5);
    EXPECT_EQ(leastAttacker(pos, Black, D4, all, bit(C5)), E6);
    EXPECT_EQ(leastAttacker(pos, Black, D4, all & ~bit(C5), bit(E6)), D7);
    EXPECT_EQ(leastAttacker(pos, Black, D4, all & ~bit(C5), bit(E6) | bit(D7)), D8);
    EXPECT_EQ(leastAttacker(pos, Black, D4, all & ~(bit(C5) | bit(D7) | bit(D8)), bit(E6)), NoSquare);
    EXPECT_EQ(leastAttacker(pos, White, D1, all, 0), C3);
    EXPECT_EQ(leastAttacker(pos, White, D1, all, bit(C3)), D2);
    EXPECT_EQ(leastAttacker(pos, White, D1, all, bit(C3) | bit(D2)), E1);
}

TEST(Exchange, ScoreIsExactOnlyBetweenItsTwoQuickAnswers) {
    const Position pos = positionOf("4k3/8/2p5/3n4/8/8/3Q4/4K3 w - -");
    const Move move = makeWord(D2, D5);
    EXPECT_EQ(seeScore(pos, move, 8), 7) << "not even the piece itself is enough";
    EXPECT_EQ(seeScore(pos, move, -14), 7 - 21) << "enough even if the queen is lost";
    EXPECT_EQ(seeScore(pos, move, 0), 7 - 21);
    EXPECT_EQ(seeScore(positionOf("4k3/8/8/3n4/8/8/3Q4/4K3 w - -"), move, 0), 7);
    EXPECT_EQ(seeScore(positionOf("4k3/8/8/3n4/8/8/3Q4/4K3 w - -"), move, -14), 7 - 21);
}

TEST(Exchange, ThreatEndsWithTheKing) {
    const Position pos = positionOf("4k3/8/2p5/3p4/3K4/8/8/8 w - -");
    EXPECT_EQ(seeThreat(pos, makeWord(D4, D5)), 2 - 999);
}
