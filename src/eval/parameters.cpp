// Building of the parameter tables from rules.
#include "eval/parameters.h"

#include "eval/style.h"
#include "eval/weights_material.h"

bool treeSearchActive = false;
float MaterialPhaseScale[MaxPhase + 1];
int PhasePieceValue[MaxPhase + 1][7];

namespace {

void buildPhaseScale() {
    for (int phase = 0; phase <= MaxPhase; ++phase) MaterialPhaseScale[phase] = float(0.95 + phase / 480.0);
}

// The product is formed in single precision: a double one would lose a unit here and there.
void buildPhasePieceValues() {
    for (int phase = 0; phase <= MaxPhase; ++phase) {
        int* row = PhasePieceValue[phase];
        row[0] = NoManPrice;
        for (int i = 0; i < 5; ++i) {
            const int blend = PiecePrices[i].mg * phase + PiecePrices[i].eg * (MaxPhase - phase);
            row[i + 1] = int(MaterialPhaseScale[phase] * float(blend) / float(MaxPhase));
        }
        row[6] = KingPrice;
    }
}

}  // namespace

void initEvalParameters() {
    renewStyle();
    buildPhaseScale();
    buildDistanceTables();
    buildPieceSquare();
    buildPhasePieceValues();
}
