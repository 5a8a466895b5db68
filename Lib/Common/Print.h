// The one formatted print of library, viewer and decoders, with quiet mode and paging.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>

#if defined(__MINGW32__)
#define RYX_PRINTF_LIKE __attribute__((format(gnu_printf, 1, 2)))
#else
#define RYX_PRINTF_LIKE __attribute__((format(printf, 1, 2)))
#endif

// Prints to standard output and flushes it. One call prints at most 1023 characters; the rest is cut. With option 0
// (quiet) set, and once the process is interrupted, it does nothing; with option 22 (paging) set it counts the lines of
// the format and pauses after a screenful. RyxErrorArgument: no format; RyxOk otherwise. Not reentrant.
RyxStatus RyxPrintf(const char* format, ...) RYX_PRINTF_LIKE;

// The same with arguments that have been collected.
RyxStatus RyxPrintfList(const char* format, std::va_list arguments);

// From now on RyxPrintf prints to standard error, without pages, or to standard output again.
void RyxPrintToErrorsSet(bool toErrors);

// The stream that RyxPrintf prints to, for what is printed without it.
std::FILE* PrintStream();

// Writes bytes to standard output, whatever their number, and flushes them; nothing once the process is interrupted.
// A write that fails takes back what of them has come into a file. Needs an unbuffered standard output; quiet mode and
// paging do not count here.
void RyxOutputWrite(const char* bytes, std::size_t size);

// Makes an error (as of errno) the first one that RyxOutputErrorGet gives, if there was none before.
void RyxOutputErrorSet(int error);

// The first error (as of errno) that kept something printed from standard output, and 0 when there was none. That the
// reader of a pipe has gone does not count as an error.
int RyxOutputErrorGet();
