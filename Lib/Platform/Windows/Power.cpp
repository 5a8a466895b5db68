// What the process asks of the system's power management.
#include "Lib/Platform/Power.h"

#include <windows.h>

void PowerStateSet(std::uint32_t states) {
    SetThreadExecutionState(states);
}
