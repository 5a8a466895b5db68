// What the stand-in's kernel holds, beneath the operations that the helper driver calls of it. It watches over the
// driver: one that breaks the kernel's rules ends the process, as it would end Windows.
#pragma once

#include "driver/Kernel.h"
#include "machine/model/Machine.h"

#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <utility>

namespace StandIn {

struct KernelDevice {
    DEVICE_OBJECT Object{};
    std::string Name;
    Bytes Descriptor; // who may open it; empty: anybody
};

// What there is in the kernel.
struct KernelState {
    bool Loaded = false;
    bool Started = false; // by the service, and not stopped since
    DRIVER_OBJECT Driver{};
    std::list<KernelDevice> Devices;
    std::list<std::pair<std::string, std::string>> Links; // a name, and the device that it stands for
    std::list<FILE_OBJECT> Files;
    std::list<KernelDevice*> ObjectHandles;
    LONG MutexesTaken = 0;
    std::function<void()> OnMutexFree; // what another thread does as soon as it can, once
};

KernelState& KernelHere();

// Ends the process over what the driver did.
[[noreturn]] void BugCheck(const char* what);

// Hands a request to the driver, which serves it before it returns. The result is the driver's status.
NTSTATUS RequestSend(IRP* irp, IO_STACK_LOCATION* stack);

// Makes and sends a request without buffers.
NTSTATUS PlainSend(FILE_OBJECT* file, UCHAR function, IO_SECURITY_CONTEXT* security = nullptr);

// Makes and sends a control request, with the buffers that its code asks for. `returned` gets what the driver says of
// the output's length, also when it fails.
NTSTATUS ControlSend(FILE_OBJECT* file, std::uint32_t code, const void* input, std::uint32_t inputLength, void* output,
                     std::uint32_t outputLength, std::uint32_t* returned);

// The device of that name in lower case, or null.
KernelDevice* DeviceFind(const std::string& name);

} // namespace StandIn
