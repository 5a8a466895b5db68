// Console output with quiet mode and paging.
#include "Lib/API/RyxPrint.h"

#include "Lib/Common/LibraryContext.h"
#include "Lib/Platform/Console.h"

#include <cstdarg>
#include <cstdio>

namespace {

// The lines that a format counts for: one per line end, and one more where a line end comes after more characters than
// the console is wide. Only such a line end restarts the count of characters.
std::uint32_t FormatLines(const char* format, std::uint32_t width) {
    std::uint32_t lines = 0;
    std::uint32_t characters = 0;
    for (const char* at = format; *at != '\0'; ++at) {
        ++characters;
        if (*at == '\n') {
            ++lines;
            if (characters > width) {
                ++lines;
                characters = 0;
            }
        }
    }
    return lines;
}

// Counts a print's lines and pauses when they fill the page. The page is measured at the first paged print that finds a
// console, and kept.
void PageCount(const char* format) {
    PagerState& pager = LibraryContextGet().Pager;
    if (pager.PageHeight == 0) {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        if (RyxConsoleSizeGet(&width, &height) != RyxOk) {
            return;
        }
        pager.Width = width;
        pager.PageHeight = height > 0 ? height - 1 : 0;
    }
    if (pager.PageHeight == 0) {
        return;
    }
    if (pager.PageLimit == 0) {
        pager.PageLimit = pager.PageHeight - 1;
    }
    pager.LineCount += FormatLines(format, pager.Width);
    if (pager.LineCount >= pager.PageLimit) {
        std::fputs("Press any key to continue...\n", stdout);
        std::fflush(stdout);
        RyxKeyWait();
        RyxConsoleClear();
        pager.LineCount = 0;
    }
}

} // namespace

RyxStatus RyxPrintf(const char* format, ...) {
    if (format == nullptr) {
        return RyxErrorArgument;
    }
    LibraryContext& context = LibraryContextGet();
    if (context.Options.Byte[RyxOptionQuiet] == 1) {
        return RyxOk;
    }
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(context.PrintBuffer, sizeof context.PrintBuffer, format, arguments);
    va_end(arguments);
    std::fputs(context.PrintBuffer, stdout);
    if (context.Options.Byte[RyxOptionPaging] == 1) {
        PageCount(format);
    }
    std::fflush(stdout);
    return RyxOk;
}

RyxStatus RyxConsoleSizeGet(std::uint32_t* width, std::uint32_t* height) {
    return width == nullptr || height == nullptr ? RyxErrorArgument : ConsoleSizeGet(width, height);
}

void RyxConsoleClear() {
    ConsoleClear();
}

void RyxKeyWait() {
    ConsoleKeyWait();
}
