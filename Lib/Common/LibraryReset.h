// The whole library, back at process start.
#pragma once

// Puts every module back to where it is at process start, releasing what it holds in memory. For tests: a process
// starts the library once.
void LibraryReset();
