// Connects the search to the shell around it.
#pragma once

// Fills in what a search asks of the program. Called once, before the first search.
void installSearchHost();
