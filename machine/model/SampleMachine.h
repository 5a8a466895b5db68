// The built-in sample machine.
#pragma once

#include "machine/model/Machine.h"

namespace StandIn {

// SMBIOS 2.8, a structure of every known type, on the legacy road.
Machine SampleMachine();

} // namespace StandIn
