// The helper driver, shared by all tools that run: loading it, the count of its users, unloading it.
#pragma once

#include "Lib/Platform/Driver.h"
#include "Lib/Platform/Mutex.h"
#include "Lib/Platform/Registry.h"

// Operations of DriverRequest.
constexpr std::uint32_t DriverLoad = 0;
constexpr std::uint32_t DriverUnload = 1;
constexpr std::uint32_t DriverControl = 2;

// Loads the driver (RyxErrorDriverLoad), unloads it, or sends one control request (RyxErrorDriverRequest); any other
// operation gives RyxErrorUnsupported. A load that fails takes back what it made: the service when it came to
// installing it, the driver file and the count when it wrote them. Both happen under the tools' lock. Only a control
// request uses the other arguments, which are those of DriverDeviceControl.
RyxStatus DriverRequest(std::uint32_t operation, std::uint32_t code = 0, const void* input = nullptr,
                        std::uint32_t inputLength = 0, void* output = nullptr, std::uint32_t outputLength = 0);

// Why the last load of this process failed: the system's error number, or 0 when it did not come to a start.
std::uint32_t DriverLoadError();

// Keeps other copies of this program from loading, unloading and counting while it lives. It waits up to five seconds
// for that, an interrupted process up to two, and then goes on without.
class ToolsLock {
public:
    ToolsLock();
    ~ToolsLock();
    ToolsLock(const ToolsLock&) = delete;
    ToolsLock& operator=(const ToolsLock&) = delete;

private:
    MutexHandle Mutex;
    bool Held = false;
};

// Where the counts of all tools stand: in the 64-bit half of the registry when the last load found this 32-bit process
// under a 64-bit system.
RegistryView SharedRegistryView();

// Forgets the loaded driver without touching it: for tests, which replace the machine under the library.
void DriverStateReset();
