#include "eval/king_danger.h"

#include "eval/style.h"

#include <cstdlib>

Lanes KingDanger[KingDangerEntries];

namespace {

bool kingSafetyVaried = false;

// Danger by attack units; more units than these are worth no more.
constexpr int ListedDangers = 129;
// clang-format off
constexpr int KingSafetyCurve[ListedDangers] = {
    0, 1, 3, 6, 11, 17, 25, 34, 44, 55, 68, 81,
    96, 112, 129, 147, 166, 185, 205, 227, 248, 270, 293, 317,
    340, 364, 388, 413, 438, 463, 487, 512, 537, 562, 587, 611,
    636, 660, 684, 708, 731, 754, 777, 799, 821, 842, 863, 884,
    904, 924, 943, 962, 980, 998, 1016, 1033, 1049, 1065, 1081, 1096,
    1111, 1125, 1139, 1152, 1165, 1178, 1190, 1201, 1213, 1224, 1234, 1245,
    1254, 1264, 1273, 1282, 1291, 1299, 1307, 1314, 1322, 1329, 1336, 1342,
    1349, 1355, 1360, 1366, 1371, 1377, 1382, 1387, 1391, 1396, 1400, 1404,
    1408, 1412, 1415, 1419, 1422, 1425, 1428, 1431, 1434, 1437, 1439, 1442,
    1444, 1447, 1449, 1451, 1453, 1455, 1457, 1459, 1460, 1462, 1464, 1465,
    1467, 1468, 1469, 1471, 1472, 1473, 1474, 1475, 1476,
};
// clang-format on

}  // namespace

bool isKingSafetyVaried() { return kingSafetyVaried; }

void buildKingSafetyTable(int k) {
    kingSafetyVaried = evalStyle.kingSafetyJitter != 0;
    if (evalStyle.kingSafetyJitter != 0) {
        const int step = std::rand() % evalStyle.kingSafetyJitter;
        k += std::rand() & 1 ? -step : step;
    }
    for (int units = 0; units < KingDangerEntries; ++units) {
        const int listed = units < ListedDangers ? units : ListedDangers - 1;
        KingDanger[units] = Lanes(k * KingSafetyCurve[listed] / 10, 0);
    }
}
