// The only way out of the process, so that tests and fuzzers can take it over.
#pragma once

// Called in place of exit() when set; it must not return.
extern void (*endProcessHook)(int status);

[[noreturn]] void endProcess(int status);

// The end, with status 1, where the system refuses what the engine can't do without: "Unable to WHAT: REASON"
// on standard error. `error` is an errno.
[[noreturn]] void endForRefusal(const char* what, int error);
