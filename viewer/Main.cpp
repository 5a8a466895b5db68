// The process entry.
#include "viewer/ProgramRun.h"

int main(int argc, char** argv) {
    return ProgramRun(argc, argv);
}
