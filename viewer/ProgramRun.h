// The run of the whole program, for the process entry and for those who run the program within their own process.
#pragma once

#include "viewer/ViewerMain.h"

#include <functional>

// Catches interrupts, starts the library, does the work, stops the library, and reports output that did not arrive.
// Returns the exit code: what the work gives, or that of a failed start, after which nothing is done or stopped. An
// interrupted process does not come back from here. A first argument "/_exec_" only asks whether the program can be
// executed: nothing is done then.
int ProgramRun(int argc, char** argv, const std::function<std::uint32_t()>& work = ViewerMain);
