// What access lists say of the files that they come with.
#pragma once

#include <windows.h>

namespace StandIn {

// Whether a new file's attributes keep everybody out but administrators and the system: a list of its own, protected
// against entries of the folder, that lets in no others, and an owner who may change it and is one of them.
bool GuardsFile(const SECURITY_ATTRIBUTES* attributes);

} // namespace StandIn
