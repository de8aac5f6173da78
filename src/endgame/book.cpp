#include "endgame/book.h"

int bookMoveLimit = 0;

void openBook() {}
void closeBook() {}

Move bookProbe(Position&) { return NoMove; }
