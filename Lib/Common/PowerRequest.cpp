// What the library asks of the system's power management.
#include "Lib/Common/PowerRequest.h"

#include "Lib/Platform/Power.h"
#include "Lib/Platform/System.h"

namespace {

std::uint32_t ExecutionState = 0;

} // namespace

RyxStatus PowerRequest(std::uint8_t operation) {
    if (operation == PowerLetSleep) {
        PowerStateSet(PowerContinuous);
        ExecutionState = 0;
        return RyxOk;
    }
    if (operation != PowerHoldAwake) {
        return RyxErrorUnsupported;
    }
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    SystemVersionGet(&major, &minor);
    if (major >= 5) {
        // Away mode came with version 6.
        PowerStateSet(PowerContinuous | PowerDisplayRequired | PowerSystemRequired |
                      (major >= 6 ? PowerAwayModeRequired : 0));
        ExecutionState = 1;
    }
    return RyxOk;
}

std::uint32_t PowerExecutionState() {
    return ExecutionState;
}

void PowerStateReset() {
    ExecutionState = 0;
}
