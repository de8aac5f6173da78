#include "base/clock.h"

#include <sys/time.h>

long long currentMicroseconds() {
    timeval now;
    gettimeofday(&now, nullptr);
    return now.tv_sec * 1000000LL + now.tv_usec;
}

double currentTime() {
    const long long milliseconds = currentMicroseconds() / 1000;
    return double(milliseconds) / 1000.0;
}
