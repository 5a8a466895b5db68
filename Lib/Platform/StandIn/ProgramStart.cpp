// Chooses the program's machine before the program begins.
#include "Lib/Platform/StandIn/Machine.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

constexpr int ExitUnusable = 255;

struct ProgramStart {
    ProgramStart() {
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
