// The only way out of the process, so that tests and fuzzers can take it over.
#pragma once

// Called in place of exit() when set; it must not return.
extern void (*endProcessHook)(int status);

[[noreturn]] void endProcess(int status);
