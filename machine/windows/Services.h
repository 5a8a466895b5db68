// The images of the helper driver.
#pragma once

#include "machine/model/Machine.h"

namespace StandIn {

// The helper driver for 32-bit or 64-bit systems, as the program carries it.
const Bytes& DriverImage(bool bits64);

} // namespace StandIn
