// The formatted print, with quiet mode and paging.
#include "Lib/Common/Print.h"

#include "Lib/Common/LibraryContext.h"
#include "Lib/Platform/Console.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string_view>

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

// Writes a text and sees it off; keeps the error that prevents it. Gives how much was written.
std::size_t OutputWrite(std::string_view text) {
    const std::size_t written = std::fwrite(text.data(), 1, text.size(), stdout);
    if (written == text.size() && std::fflush(stdout) == 0) {
        return written;
    }
    if (!OutputReaderGone()) {
        RyxOutputErrorSet(errno);
    }
    return written;
}

// Counts a print's lines and pauses when they fill the page. The page is measured at the first paged print that finds a
// console, and kept.
void PageCount(const char* format) {
    PagerState& pager = LibraryContextGet().Pager;
    if (pager.PageHeight == 0) {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        if (ConsoleSizeGet(&width, &height) != RyxOk) {
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
        OutputWrite("Press any key to continue...\n");
        ConsoleKeyWait();
        if (!ConsoleInterrupted()) {
            ConsoleClear();
        }
        pager.LineCount = 0;
    }
}

} // namespace

RyxStatus RyxPrintf(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const RyxStatus status = RyxPrintfList(format, arguments);
    va_end(arguments);
    return status;
}

RyxStatus RyxPrintfList(const char* format, std::va_list arguments) {
    if (format == nullptr) {
        return RyxErrorArgument;
    }
    LibraryContext& context = LibraryContextGet();
    if (context.Options.Byte[RyxOptionQuiet] == 1 || ConsoleInterrupted()) {
        return RyxOk;
    }
    const int length = std::vsnprintf(context.PrintBuffer, sizeof context.PrintBuffer, format, arguments);
    const std::string_view text(context.PrintBuffer,
                                std::min<std::size_t>(std::max(length, 0), sizeof context.PrintBuffer - 1));
    if (context.PrintToErrors) {
        std::fwrite(text.data(), 1, text.size(), PrintStream());
        return RyxOk;
    }
    OutputWrite(text);
    if (context.Options.Byte[RyxOptionPaging] == 1) {
        PageCount(format);
    }
    return RyxOk;
}

std::FILE* PrintStream() {
    return LibraryContextGet().PrintToErrors ? stderr : stdout;
}

void RyxPrintToErrorsSet(bool toErrors) {
    LibraryContextGet().PrintToErrors = toErrors;
}

// Others may write to the same file: it is cut only where nobody did.
void RyxOutputWrite(const char* bytes, std::size_t size) {
    if (ConsoleInterrupted()) {
        return;
    }
    std::uint64_t before = 0;
    std::uint64_t after = 0;
    const bool file = OutputSizeGet(&before);
    const std::size_t written = OutputWrite({bytes, size});
    if (written != size && file && OutputSizeGet(&after) && after - before == written) {
        OutputCut(before);
    }
}

void RyxOutputErrorSet(int error) {
    int& first = LibraryContextGet().OutputError;
    first = first != 0 ? first : error;
}

int RyxOutputErrorGet() {
    OutputWrite(""); // what was printed past RyxPrintf
    return LibraryContextGet().OutputError;
}
