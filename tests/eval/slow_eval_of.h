// The engine's record as the slow evaluation reads it, and a list of the slow evaluation's terms.
#pragma once

#include "base/settings.h"
#include "eval/material.h"
#include "eval/parameters.h"
#include "support/slow_eval.h"

#include <iomanip>
#include <ostream>

inline slow::EvalBoard slowEvalBoardOf(const Position& pos) {
    slow::EvalBoard board;
    for (int square = 0; square < 64; ++square) {
        board.man[square] = ".PNBRQK..pnbrqk"[pos.board[square]];
        const char type = board.typeOn(square);
        board.phase += type == 'N' ? 3 : type == 'B' ? 4 : type == 'R' ? 8 : type == 'Q' ? 18 : 0;
    }
    board.whiteToMove = pos.sideToMove() == White;
    board.castlesShort[White] = !(pos.castleLost & 1);
    board.castlesShort[Black] = !(pos.castleLost & 4);
    board.halfmoveClock = pos.halfmoveClock;
    return board;
}

// Material by the engine, and the values that were set for a search.
inline slow::Given givenFor(const Position& pos) {
    slow::Given given;
    given.material = evaluateMaterial(pos, given.scale);
    given.contempt = {mgOf(contemptPair[White]), egOf(contemptPair[White])};
    given.contemptValue = contemptValue[White];
    given.contemptOption = settings.contempt;
    given.progressThreshold = settings.progressThreshold;
    given.dynamismMg = dynamismMg;
    given.dynamismEg = dynamismEg;
    given.noise = evalNoise;
    given.noiseWord = noiseKey ^ pos.key;
    return given;
}

// A line for each term that says something: lane units by colour, then the score in centipawns from the side
// to move's view.
inline void printTerms(std::ostream& out, const slow::Judgement& judgement, const slow::Given& given) {
    const auto row = [&](const std::string& name, slow::Pair white, slow::Pair black) {
        const slow::Pair difference = white - black;
        out << std::left << std::setw(24) << name << std::right;
        for (const slow::Pair value : {white, black, difference})
            out << std::setw(8) << value.mg << std::setw(7) << value.eg;
        out << '\n';
    };
    out << "lane units                 White mg     eg   Black mg   eg    diff mg   eg\n";
    for (const auto& [heading, sheet] : {std::pair{"pawns and kings", &judgement.pawns},
                                         std::pair{"pieces, scaled by dynamism", &judgement.pieces}}) {
        out << "-- " << heading << '\n';
        for (const auto& [name, values] : sheet->terms)
            if (!(values[0] == slow::Pair{} && values[1] == slow::Pair{})) row(name, values[0], values[1]);
        row("sum", sheet->sum(slow::White), sheet->sum(slow::Black));
    }
    out << "-- together\nmaterial " << given.material << " / 96, scale of the terms " << given.scale
        << "\nterms, blended " << judgement.psqBlend << " / 96\nscore " << judgement.score
        << " centipawns for the side to move\n";
}
