#include "board/piece_square.h"

Score PieceSquare[16][64];
