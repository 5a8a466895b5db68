// The machine that the user chose: this computer, the sample, a folder, a dump or a machine file.
#pragma once

#include "machine/model/Machine.h"

#include <optional>
#include <string>

namespace StandIn {

// Makes a machine from the value of QUARRINET_MACHINE (see the README's section on machines). On failure `error` is the
// one line to show (without a line end) and the result is none. `notice`, when not empty afterwards, is a line that the
// user should see although the machine can be used.
std::optional<Machine> MachineRead(const std::string& choice, std::string* error, std::string* notice);

// This computer, whose tables are in `folder`. When they may not be read, it is a machine without administrator rights.
// When there are none, it is the sample machine, or no machine. `error` and `notice` are those of MachineRead.
std::optional<Machine> HostMachine(const std::string& folder, bool orSample, std::string* error, std::string* notice);

} // namespace StandIn
