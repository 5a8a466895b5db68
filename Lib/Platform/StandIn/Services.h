// The images of the helper driver and its running service.
#pragma once

#include "Lib/Platform/StandIn/State.h"

namespace StandIn {

// The helper driver for 32-bit or 64-bit systems, as the program carries it.
const Bytes& DriverImage(bool bits64);

// Whether a started driver's device stands behind that name (without its prefix).
bool DriverDeviceExists(const SharedState& state, const std::string& name);

} // namespace StandIn
