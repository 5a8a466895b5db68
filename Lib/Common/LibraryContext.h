// The library context: what the library's modules share.
#pragma once

#include "Lib/RyxNumbers.h"

#include <cstdint>

// The numbered options: most are one byte each; 9, 26 and 30 are 32 bits wide, 24 and 25 have 64.
struct OptionArea {
    std::uint8_t Byte[RyxOptionCount];
    std::uint32_t Word9;
    std::uint32_t Word26;
    std::uint32_t Word30;
    std::uint64_t Long24;
    std::uint64_t Long25;
};

// What the pager knows: all 0 until the first paged print.
struct PagerState {
    std::uint32_t Width;
    std::uint32_t PageHeight; // the console's height less 1
    std::uint32_t PageLimit;  // the page height less 1
    std::uint32_t LineCount;  // lines since the last pause
};

struct LibraryContext {
    OptionArea Options;
    std::uint32_t ArgumentCount;
    char** Arguments;
    char PlatformDescription[128];
    char PrintBuffer[1024];
    PagerState Pager;
    bool WholeTable;     // no limit hides structures: whatever their handle, place and number
    bool WholeByDefault; // the same, where the environment doesn't say
    bool PrintToErrors;
    int OutputError; // number of the first error that kept a print from standard output, or 0
};

// The process's own.
extern LibraryContext CurrentContext;
inline LibraryContext& LibraryContextGet() {
    return CurrentContext;
}
