// Chooses the program's machine before the program begins.
#include "Lib/Platform/StandIn/Machine.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int ExitUnusable = 255;

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
        StandardStreamsHold();
        const char* const choice = std::getenv("QUARRINET_MACHINE");
        std::string error;
        std::string notice;
        std::optional<StandIn::Machine> machine =
            StandIn::MachineRead(choice != nullptr ? choice : "", &error, &notice);
        if (!machine) {
            std::fprintf(stderr, "quarrinet: %s\n", error.c_str());
            std::exit(ExitUnusable);
        }
        if (!notice.empty()) {
            std::fprintf(stderr, "quarrinet: %s\n", notice.c_str());
        }
        StandIn::MachineSet(std::move(*machine));
    }
};

const ProgramStart Start;

} // namespace
