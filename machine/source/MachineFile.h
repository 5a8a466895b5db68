// Machine files: a machine out of lines of the form key = value.
#pragma once

#include "machine/model/Machine.h"

#include <optional>
#include <string>

namespace StandIn {

// Reads the content of a machine file; the files that it names are looked for from the folder of `path` on. On failure
// `error` is the one line to show and the result is none. `notice` is set to a line that the user should see although
// the machine can be used.
std::optional<Machine> MachineFileRead(const std::string& path, const Bytes& content, std::string* error,
                                       std::string* notice);

} // namespace StandIn
