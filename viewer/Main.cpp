// The process entry: starts the library, runs the viewer, stops the library.
#include "Lib/API/RyxLib.h"
#include "viewer/ViewerMain.h"

#include <cstdint>
#include <cstring>

int main(int argc, char** argv) {
    // A caller that only probes whether the program can be executed.
    if (argc > 1 && std::strcmp(argv[1], "/_exec_") == 0) {
        return 0;
    }
    if (RyxLibInit(static_cast<std::uint32_t>(argc), argv) != RyxOk) {
        RyxLibInitErrorPrint();
        return RyxLibErrorCodeGet();
    }
    const std::uint32_t error = ViewerMain();
    RyxLibExit();
    return static_cast<int>(error);
}
