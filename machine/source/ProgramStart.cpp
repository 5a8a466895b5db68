// Chooses the program's machine before the program begins.
#include "machine/host/HostFile.h"
#include "machine/source/MachineChoice.h"
#include "machine/windows/MachineSet.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace {

constexpr int ExitUnusable = 255;

// Whether the caller only probes if the program can be executed, which takes no machine.
bool OnlyProbed() {
    constexpr std::string_view probe("\0/_exec_\0", 9);
    StandIn::Bytes content;
    if (StandIn::HostFileRead("/proc/self/cmdline", &content) != 0) {
        return false;
    }
    const std::string_view words(reinterpret_cast<const char*>(content.data()), content.size());
    return words.substr(std::min(words.find('\0'), words.size()), probe.size()) == probe;
}

// A standard stream that is closed is opened so that its use fails: otherwise the next file takes its place, and what
// is printed goes there.
void StandardStreamsHold() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) < 0) {
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

struct ProgramStart {
    ProgramStart() {
        if (OnlyProbed()) {
            return;
        }
        StandardStreamsHold();
        try {
            const char* const choice = std::getenv("QUARRINET_MACHINE");
            std::string error;
            std::string notice;
            std::optional<StandIn::Machine> machine =
                StandIn::MachineRead(choice != nullptr ? choice : "", &error, &notice);
            if (!machine) {
                End(error.c_str());
            }
            if (!notice.empty()) {
                std::fprintf(stderr, "quarrinet: %s\n", notice.c_str());
            }
            StandIn::MachineSet(std::move(*machine));
        } catch (const std::bad_alloc&) {
            End("not enough memory for the machine");
        }
    }

    [[noreturn]] static void End(const char* error) {
        std::fprintf(stderr, "quarrinet: %s\n", error);
        std::exit(ExitUnusable);
    }
};

const ProgramStart Start;

} // namespace

// What the standard library calls for an exception that nothing catches. Its own one names the exception, and brings
// along a reader of mangled names for that, a tenth of the program.
namespace __gnu_cxx {                // NOLINT(bugprone-reserved-identifier,cert-dcl51-cpp): the library's own name
void __verbose_terminate_handler() { // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
    std::fputs("quarrinet: ended by an error that nothing here expects\n", stderr);
    std::abort();
}
} // namespace __gnu_cxx
