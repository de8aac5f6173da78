// One evaluation step by step, as its own frame tells: what each stage gives each side, and what each step of
// the arithmetic leaves.
#pragma once

#include "board/piece_square.h"
#include "eval/evaluate.h"
#include "eval/tapered_evaluation.h"

#include <string>
#include <vector>

struct EvalAccount {
    struct Row {
        std::string name;
        Lanes white, black;
    };
    struct Sum {
        std::string name;
        Lanes value;
    };
    struct Step {
        std::string name;
        int value;
    };
    std::vector<Row> rows;    // lane units: the pawns, the piece squares, then the stages
    std::vector<Sum> sums;    // lane units, White's view
    std::vector<Step> steps;  // blended units, White's view, or what the name says
    int materialValue = 0;    // blended units, White's view
    float scale = 0;          // of the positional sum; at 0 there is nothing but material
    int score = 0;            // centipawns for the side to move

    // Puts another position's entry into the cache, so that the evaluation is made.
    explicit EvalAccount(Position& pos) {
        pos.evalCache[pos.key & prefetchBases.evalMask] = {~pos.key, 0};
        score = evaluateBefore(*this, pos, -OpenEvalBound, OpenEvalBound);
    }

    // What the frame calls.
    void pawns(const Position& pos, Lanes) {
        PawnEntry entry;
        Lanes own[2], squares[2];
        judgePawns(pos, entry, own);
        for (int square = 0; square < 64; ++square) {
            const int code = pos.board[square];
            if (code && colourOfCode(code) == White) squares[White] += Lanes(PieceSquare[code][square]);
            if (code && colourOfCode(code) == Black) squares[Black] -= Lanes(PieceSquare[code][square]);
        }
        rows.push_back({"pawns", own[White], own[Black]});
        rows.push_back({"piece squares", squares[White], squares[Black]});
    }
    void stage(const char* name, const Lanes (&soFar)[2]) {
        rows.push_back({name, soFar[White] - before[White], soFar[Black] - before[Black]});
        before[White] = soFar[White];
        before[Black] = soFar[Black];
    }
    void sum(const char* name, Lanes value) { sums.push_back({name, value}); }
    void value(const char* name, int left) { steps.push_back({name, left}); }
    void material(int blended, float ofTheRest) {
        materialValue = blended;
        scale = ofTheRest;
    }

   private:
    Lanes before[2];
};
