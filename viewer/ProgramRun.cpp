// The run of the whole program.
#include "viewer/ProgramRun.h"

#include "Lib/API/RyxLib.h"
#include "Lib/API/RyxPrint.h"

#include <cstdio>
#include <cstring>

namespace {

// The process's exit code, once everything else is done. An interrupted process has none, and says nothing.
int ExitCode(std::uint32_t code) {
    if (RyxInterrupted()) {
        RyxInterruptedEnd();
    }
    if (const int error = RyxOutputErrorGet(); error != 0) {
        std::fprintf(stderr, "quarrinet: the output could not be written: %s\n", std::strerror(error));
    }
    return static_cast<int>(code);
}

} // namespace

int ProgramRun(int argc, char** argv, const std::function<std::uint32_t()>& work) {
    if (argc > 1 && std::strcmp(argv[1], "/_exec_") == 0) {
        return 0;
    }
    RyxInterruptsCatch();
    if (RyxLibInit(static_cast<std::uint32_t>(argc), argv) != RyxOk) {
        if (!RyxInterrupted()) {
            RyxLibInitErrorPrint();
        }
        return ExitCode(RyxLibErrorCodeGet());
    }
    const std::uint32_t error = RyxInterrupted() ? 0 : work();
    RyxLibExit();
    return ExitCode(error);
}
