// Building of the parameter tables from the options and from rules.
#include "eval/parameters.h"

#include "base/settings.h"
#include "eval/king_danger.h"
#include "eval/weights_material.h"

#include <cmath>

int kingSafetyJitter = 0;
bool treeSearchActive = false;
int evalNoise = 0;
Relaxed<std::uint64_t> noiseKey = 0;
int dynamismMg = 160;
int dynamismEg = 185;
float MaterialPhaseScale[MaxPhase + 1];
int PhasePieceValue[MaxPhase + 1][7];

namespace {

// The mode at the last run of `applyStyle`; none before the first.
enum class StyleMode { None, AlphaBeta, Tree };
StyleMode appliedMode = StyleMode::None;

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

void applyStyle() {
    const StyleMode mode = treeSearchActive ? StyleMode::Tree : StyleMode::AlphaBeta;
    if (mode == appliedMode) return;
    appliedMode = mode;
    if (mode == StyleMode::Tree) {
        // The tree search has a style of its own, whatever the options say.
        dynamismMg = 160;
        dynamismEg = 185;
        buildKingSafetyTable(UsualKingSafety);
        return;
    }
    const int dynamism = settings.dynamism + int(5 * std::log2(double(settings.threads)));
    dynamismMg = dynamism * 128 / 100;
    dynamismEg = dynamism * 148 / 100;
    buildKingSafetyTable(settings.kingSafety);
}

void initEvalParameters() {
    appliedMode = StyleMode::None;
    applyStyle();
    buildPhaseScale();
    buildDistanceTables();
    buildPieceSquare();
    buildPhasePieceValues();
}
