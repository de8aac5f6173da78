// How often the test program has allocated, to show what allocates nothing.
#pragma once

long allocationCount();
