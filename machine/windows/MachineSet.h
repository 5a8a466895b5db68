// A new machine for the process, and what a run leaves behind in it.
#pragma once

#include "machine/model/Machine.h"

#include <string>
#include <vector>

namespace StandIn {

// Replaces the process's machine: forgets all in-process state (registry, services, files, handles, counts) and starts
// afresh.
void MachineSet(Machine machine);

// What a run left behind in the machine: one line per registry key and value, service, running driver, file, open
// handle and held mutex of this process; empty when there is nothing. Sorted.
std::vector<std::string> Leftovers();

} // namespace StandIn
