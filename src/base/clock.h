// The wall clock.
#pragma once

// Seconds since the epoch, to the millisecond: the clock of the search.
double currentTime();

// Microseconds since the epoch, for measuring.
long long currentMicroseconds();
