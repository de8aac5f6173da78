// Weights of material: the formula for sets of men that no row names, the scale factors, and the prices by
// which the quiescence search prunes.
#pragma once

// ---- The formula ----

// What one man of a kind is worth, in material units, and what each other man beside it adds. Knights gain by
// own pawns and bishops by own knights; rooks and queens lose with the number of their own kind.
struct MaterialWorth {
    int alone;
    int ownPawn, ownKnight, ownBishop, ownRook, ownQueen;
    int enemyPawn;
};
// clang-format off
inline constexpr int PawnWorth = 1200;
inline constexpr MaterialWorth KnightWorth         = { 4420,   25,   0,   0,    0,    0, 22};
inline constexpr MaterialWorth BishopWorth         = { 4680,    0,   5,   0,    0,    0,  2};
inline constexpr MaterialWorth RookWorth           = { 8033,  -95, -54, -36, -232,    0, 11};
inline constexpr MaterialWorth QueenWorth          = {15732, -155, -56, -72, -629, -854, 29};
// The bishop pair, once, and against no minor piece.
inline constexpr MaterialWorth BishopPair          = {  647,  -10,  -4,   0,  -20,  -91,  0};
inline constexpr MaterialWorth UnopposedBishopPair = {  691,  -10,  -4,   0,  -20,  -91,  0};
// clang-format on
inline constexpr int MinorMajority = 200;  // for three minor pieces more
inline constexpr int SingleBishop = 30;

// A huge lead, in blended units, is softened: by a part in so many of what is beyond it, at full phase.
inline constexpr int LargeLead = 72000;
inline constexpr int LeadSoftening = 4;

// ---- Scale factors: of material and of the positional sum ----

// What a side's pieces weigh together, as far as winning chances go.
inline constexpr int KnightWeight = 24, BishopWeight = 28, RookWeight = 40, QueenWeight = 72;
// Without pawns, by an eighth of the difference of weights.
inline constexpr float NoPawnScale[4] = {0.05f, 0.11f, 0.2f, 0.28f};
// By pawns of the side with the advantage.
inline constexpr float FewPawnScale[6] = {0.4f, 0.5f, 0.62f, 0.72f, 0.82f, 0.9f};
inline constexpr float PawnEndScale = 1.3f;           // kings and pawns
inline constexpr float LoneHeavyScale = 0.9f;         // a rook each, or a queen each
inline constexpr float OppositeBishopsScale = 0.64f;  // opposite-coloured bishops and no other piece
inline constexpr int OppositeBishopsTenths = 9;       // of material, with other pieces too

// ---- Prices in centipawns before the phase's scale, by type ----

struct PhasePrice {
    int mg, eg;
};
inline constexpr int NoManPrice = 75, KingPrice = 10000;
inline constexpr PhasePrice PiecePrices[5] = {
    {155, 190}, {480, 490}, {540, 570}, {670, 670}, {1430, 1500},  // pawn to queen
};
