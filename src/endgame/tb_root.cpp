#include "endgame/tb_root.h"

int tbRootProbeDtz(Position&, RootMove*, int*) { return 0; }
int tbRootProbeWdl(Position&, RootMove*, int*) { return 0; }
