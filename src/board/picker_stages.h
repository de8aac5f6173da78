// The stages that fill a picker's list, shared by the pickers of both searches.
#pragma once

#include "board/move_picker.h"

// Stage numbers by kind, each row ended by StageEnd.
extern const std::uint8_t pickerRows[14][9];

// Generates, keys and sorts the list of the picker's stage and sets whether losing moves are put off.
void fillList(MovePicker& picker);
