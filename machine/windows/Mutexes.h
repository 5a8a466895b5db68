// The named mutexes that this process has open.
#pragma once

#include <string>
#include <vector>

namespace StandIn {

// One handle of a mutex was closed; the last one closes the mutex.
void MutexHandleClosed(const std::string& name);

// The names of the mutexes that this process holds.
std::vector<std::string> MutexesHeld();

// Closes all mutexes, as the end of the process does.
void MutexesForget();

} // namespace StandIn
