#include "eval/style.h"

#include "base/settings.h"
#include "eval/king_danger.h"
#include "eval/parameters.h"

#include <cmath>

EvalStyle evalStyle;

void applyStyle() {
    using Mode = EvalStyle::Mode;
    const Mode mode = treeSearchActive ? Mode::Tree : Mode::AlphaBeta;
    if (mode == evalStyle.appliedMode) return;
    evalStyle.appliedMode = mode;
    if (mode == Mode::Tree) {
        // The tree search has a style of its own, whatever the options say.
        evalStyle.dynamismMg = UsualDynamismMg;
        evalStyle.dynamismEg = UsualDynamismEg;
        buildKingSafetyTable(UsualKingSafety);
        return;
    }
    // In per cent, which each doubling of the threads raises.
    const int dynamism = settings.dynamism + int(5 * std::log2(double(settings.threads)));
    evalStyle.dynamismMg = dynamism * 128 / 100;
    evalStyle.dynamismEg = dynamism * 148 / 100;
    buildKingSafetyTable(settings.kingSafety);
}

void renewStyle() {
    evalStyle.appliedMode = EvalStyle::Mode::None;
    applyStyle();
}

void setKingSafetyJitter(int spread) { evalStyle.kingSafetyJitter = spread; }

void setNoise(int width) { evalStyle.evalNoise = width; }

void setNoiseKey(std::uint64_t key) { evalStyle.noiseKey = key; }
