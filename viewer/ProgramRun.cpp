// The run of the whole program.
#include "viewer/ProgramRun.h"

#include "Lib/API/RyxLib.h"
#include "Lib/API/RyxPrint.h"
#include "Lib/API/RyxSmbios.h"
#include "viewer/ViewerState.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

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

// Takes the output's format from the environment. False for one that there is not.
bool FormatChoose() {
    const char* const value = std::getenv("QUARRINET_FORMAT");
    const std::string_view format = value != nullptr ? value : "";
    ViewerJson = format == "json";
    RyxPrintToErrorsSet(ViewerJson); // what is printed for people
    RyxSmbiosWholeDefaultSet(ViewerJson);
    if (ViewerJson) {
        std::setvbuf(stdout, nullptr, _IONBF, 0); // what could not be written must not come later
    }
    return ViewerJson || format.empty() || format == "text";
}

} // namespace

int ProgramRun(int argc, char** argv, const std::function<std::uint32_t()>& work) {
    if (argc > 1 && std::strcmp(argv[1], "/_exec_") == 0) {
        return 0;
    }
    if (!FormatChoose()) {
        std::fputs("quarrinet: QUARRINET_FORMAT can be text or json\n", stderr);
        return RyxLibErrorCodeGet();
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
