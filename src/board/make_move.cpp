// Making moves. The parent is copied whole and the copy is edited; keys and sums live in registers until the
// end, because every store into the board would make the compiler read them again.
#include "board/make_move.h"

#include "base/settings.h"
#include "board/attacks.h"
#include "board/castling.h"
#include "board/history_tables.h"
#include "board/piece_square.h"
#include "board/thread_hooks.h"
#include "board/zobrist.h"

#include <emmintrin.h>
#include <utility>

#ifdef TARVOK_CHECKS
#include "board/fen.h"  // for the message alone

#include <cstdio>
#include <cstdlib>
#endif

// A child while it is being made. Its helpers keep bitboards, keys and sums together; the board is written by
// those that put a piece down or leave a square.
struct ChildInMaking {
    Position& pos;
    Key key;
    Key pawnKey;
    Score psqPair;

    explicit ChildInMaking(Position& child)
        : pos(child), key(child.key), pawnKey(child.pawnKey), psqPair(child.psqPair) {}

    template <Colour colour>
    void movePiece(int type, int from, int to) {
        const int code = boardCode(colour, type);
        const Bitboard both = bit(from) ^ bit(to);
        key ^= zobrist[colour][type][from] ^ zobrist[colour][type][to];
        pawnKey ^= pawnZobrist[colour][type][from] ^ pawnZobrist[colour][type][to];
        psqPair += PieceSquare[code][to];
        psqPair -= PieceSquare[code][from];
        pos.pieces[colour][AllPieces] ^= both;
        pos.pieces[colour][type] ^= both;
        pos.board[from] = NoPiece;
        pos.board[to] = std::uint8_t(code);
    }

    template <Colour colour>
    void clearPiece(int type, int square) {
        key ^= zobrist[colour][type][square];
        pawnKey ^= pawnZobrist[colour][type][square];
        psqPair -= PieceSquare[boardCode(colour, type)][square];
        pos.matKey -= matValue[colour][type][squareColour(square)];
        pos.matKeyPlain -= matValue[colour][type][0];
        pos.phase = std::uint16_t(pos.phase - PhaseWeight[type]);
        --pos.pieceCount;
        pos.pieces[colour][AllPieces] ^= bit(square);
        pos.pieces[colour][type] ^= bit(square);
        pos.board[square] = NoPiece;
    }

    template <Colour colour>
    void addPiece(int type, int square) {
        const int code = boardCode(colour, type);
        key ^= zobrist[colour][type][square];
        pawnKey ^= pawnZobrist[colour][type][square];
        psqPair += PieceSquare[code][square];
        pos.matKey += matValue[colour][type][squareColour(square)];
        pos.matKeyPlain += matValue[colour][type][0];
        pos.phase = std::uint16_t(pos.phase + PhaseWeight[type]);
        ++pos.pieceCount;
        pos.pieces[colour][AllPieces] ^= bit(square);
        pos.pieces[colour][type] ^= bit(square);
        pos.board[square] = std::uint8_t(code);
    }

    // Unconditional: most squares have an empty mask, and both exclusive-ors then cancel out.
    void loseRights(int from, int to) {
        const Key before = castleKey[pos.castleLost];
        pos.castleLost = std::uint8_t(pos.castleLost | castling.mask[from] | castling.mask[to]);
        const Key change = before ^ castleKey[pos.castleLost];
        key ^= change;
        pawnKey ^= change;
    }

    void flipSide() { key ^= zobrist[0][NoPiece][White] ^ zobrist[0][NoPiece][Black]; }

    void dropEnPassant() {
        if (!pos.epMask) return;
        key ^= zobrist[1][NoPiece][lowestSquare(pos.epMask)];
        pos.epMask = 0;
    }

    void storeSums() {
        pos.pawnKey = pawnKey;
        pos.psqPair = psqPair;
    }

    // The turn passes only in a child that stands; a refused one keeps its parent's key and ply.
    void passTurn() {
        pos.key = key;
        ++pos.gamePly;
    }
};

template <std::size_t... Block>
static inline void copyBlocks(const __m128i* source, __m128i* target, std::index_sequence<Block...>) {
    (_mm_storeu_si128(target + Block, _mm_loadu_si128(source + Block)), ...);
}

// Copies in 16-byte blocks without a loop: the string instruction that a plain copy becomes takes longer to
// start than this to end.
static inline void copyRecord(const Position* from, Position* to) {
    static_assert(sizeof(Position) % sizeof(__m128i) == 0);
    copyBlocks(reinterpret_cast<const __m128i*>(from), reinterpret_cast<__m128i*>(to),
               std::make_index_sequence<sizeof(Position) / sizeof(__m128i)>());
}

static inline void prefetchEval(const Position& pos, Key key) {
    const char* entries = reinterpret_cast<const char*>(pos.evalCache);
    __builtin_prefetch(entries + (key & prefetchBases.evalMask) * EvalEntrySize);
}

static inline void prefetchPawns(const Position& pos, Key pawnKey) {
    const char* entries = reinterpret_cast<const char*>(pos.pawnHash);
    __builtin_prefetch(entries + (pawnKey & prefetchBases.pawnMask) * PawnEntrySize);
}

// What every child starts with, whatever the move.
static inline void beginChild(const Position* parent, Position* child, Move move, const ThreadHooks& hooks) {
    copyRecord(parent, child);
    child->prev = parent;
    child->capturedType = NoPiece;
    child->movedType = NoPiece;
    child->movedCode = 0;
    child->lastMove = move;
    child->staticEval = NotEvaluated;
    ++child->halfmoveClock;
    const int earlier =
        parent->lastMove == NoMove ? 0 : continuationIndex(parent->movedCode, toOf(parent->lastMove));
    child->contHist2 = hooks.continuationHistory + std::size_t(earlier) * ContinuationSlice;
    // Refused and null moves count as nodes too.
    if (!hooks.stopFlag->load()) hooks.nodes->add(1);
}

static bool makeNullMove(const Position* parent, Position* child, const ThreadHooks& hooks) {
    beginChild(parent, child, NoMove, hooks);
    child->contHist = hooks.continuationHistory;
    ChildInMaking making(*child);
    making.dropEnPassant();
    making.flipSide();
    making.passTurn();
    child->inCheck = 0;
    prefetchTrans(making.key);
    prefetchEval(*child, making.key);
    return true;
}

template <Colour us>
static bool kingIsSafe(const Position& child) {
    return !isAttacked(child, child.kingSquare(us), opponent(us), child.occupied);
}

// King and rook may swap squares or one of them may stay where it is. The bitboards bear any order; on the
// board the rook is put down last, and its start square is left alone if the king has taken it.
template <Colour us>
static bool castle(ChildInMaking& making, int from, int to) {
    Position& child = making.pos;
    const int rookTarget = castlingRookTarget(from, to);
    const int kingTarget = castlingKingTarget(from, to);
    if (kingTarget != from) making.movePiece<us>(King, from, kingTarget);
    making.loseRights(from, kingTarget);
    if (rookTarget != to) {
        making.movePiece<us>(Rook, to, rookTarget);
        if (to == kingTarget) child.board[to] = std::uint8_t(boardCode(us, King));
    }
    making.storeSums();
    child.occupied = child.pieces[White][AllPieces] | child.pieces[Black][AllPieces];
    making.passTurn();
    // Intended: the clock runs on. Only where the rook may start next to the king can its departure open a
    // line.
    return !settings.chess960 || kingIsSafe<us>(child);
}

template <Colour us>
static bool makeMoveOf(const Position* parent, Position* child, Move move, const ThreadHooks& hooks) {
    constexpr Colour them = opponent(us);
    beginChild(parent, child, move, hooks);
    const int from = fromOf(move);
    const int to = toOf(move);
    const MoveFlag flag = flagOf(move);
    const int code = parent->board[from];
    const int type = typeOfCode(code);
    child->contHist = continuationSlice(hooks.continuationHistory, code, to);
    child->movedCode = std::uint16_t(code);
    child->movedType = std::uint16_t(type);

    ChildInMaking making(*child);
    making.dropEnPassant();
    making.flipSide();
    if (flag == Castling) return castle<us>(making, from, to);

    if (flag == EnPassant) {
        // Intended: the captured type stays 0, so that nothing below takes this for an ordinary capture.
        making.clearPiece<them>(Pawn, enPassantVictim(from, to));
    } else if (flag != DoublePush && (parent->pieces[them][AllPieces] & bit(to))) {
        const int captured = typeOfCode(parent->board[to]);
        // Only a king that has castled into an open line can be taken, which make lets it do outside
        // Chess960. Nothing beyond here does without a king.
        if (captured == King) [[unlikely]]
            return false;
        making.clearPiece<them>(captured, to);
        child->capturedType = std::uint16_t(captured);
        child->halfmoveClock = 0;
    }
    making.movePiece<us>(type, from, to);
    making.loseRights(from, to);
    if (flag >= QueenPromotion) {
        making.clearPiece<us>(Pawn, to);
        making.addPiece<us>(promotionType(flag), to);
    } else if (flag == DoublePush && (besides(bit(to)) & child->pieces[them][Pawn])) {
        const int target = (from + to) / 2;
        child->epMask = bit(target);
        making.key ^= zobrist[1][NoPiece][target];
    }

    prefetchTrans(making.key);
    prefetchEval(*child, making.key);
    prefetchPawns(*child, making.pawnKey);
    making.storeSums();
    child->occupied = child->pieces[White][AllPieces] | child->pieces[Black][AllPieces];
    if (type == Pawn) child->halfmoveClock = 0;
    if (!kingIsSafe<us>(*child)) return false;
    making.passTurn();
    return true;
}

static bool dispatchMove(const Position* parent, Position* child, Move move) {
    const ThreadHooks& hooks = threadHooks[parent->threadIndex];
    if (move == NoMove) return makeNullMove(parent, child, hooks);
    return parent->sideToMove() == White ? makeMoveOf<White>(parent, child, move, hooks)
                                         : makeMoveOf<Black>(parent, child, move, hooks);
}

#ifdef TARVOK_CHECKS
// Game records hold no piece-square sum and no phase, so a child's are judged only where its parent's are
// right.
bool makeMove(const Position* parent, Position* child, Move move) {
    const bool withSums =
        parent->psqPair == computePsqPair(*parent) && parent->phase == computePhase(*parent);
    const bool made = dispatchMove(parent, child, move);
    if (made && !isConsistent(*child, withSums)) {
        std::fprintf(stderr, "made by word %#x from %s\n", unsigned(move), writeFen(*parent).c_str());
        std::abort();
    }
    return made;
}
#else
bool makeMove(const Position* parent, Position* child, Move move) {
    return dispatchMove(parent, child, move);
}
#endif
