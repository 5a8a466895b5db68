// The built-in sample machines.
#pragma once

#include "machine/model/Machine.h"

namespace StandIn {

// SMBIOS 2.8, a structure of every known type, on the legacy road.
Machine SampleMachine();

// A server of SMBIOS 3.9 with two processors, on the legacy road: more than 128 structures, a structure of every type
// up to 46 and of OEM types, every field that only the whole table shows, and every line that speaks differently there.
Machine SampleServer();

} // namespace StandIn
