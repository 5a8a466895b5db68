// How the operations of Windows fail: with an error number that their caller finds.
#pragma once

#include "machine/model/Faults.h"

#include <windows.h>

namespace StandIn {

// Sets the error number that the caller finds; the result is false, for a failing operation to return.
inline bool FailFalse(std::uint32_t error) {
    SetLastError(error);
    return false;
}

// As Fails, with the error number that the caller of the failing operation then finds.
inline bool FailsWith(Operation which, std::uint32_t error) {
    return Fails(which) && !FailFalse(error);
}

} // namespace StandIn
