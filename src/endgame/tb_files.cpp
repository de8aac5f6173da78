#include "endgame/tb_files.h"

int tbWdlCount = 0;
int tbDtmCount = 0;
int tbDtzCount = 0;
int tbMaxMen = 0;

void tbInit(const char*) {}
