// This process among the running tools: the machine-wide count, the image mutex and the global mutex.
#pragma once

#include "Lib/Platform/Mutex.h"
#include "Lib/RyxStatus.h"

#include <cstdint>
#include <memory>

// What unpacking a package of files needs; nothing in this tool unpacks one.
struct PackageRecord {
    std::unique_ptr<std::uint8_t[]> Buffer;
    std::uint32_t Words[4] = {};
};

struct InstanceState {
    RyxStatus Tools = RyxErrorArgument; // RyxInstanceFirst, RyxInstanceAnother; RyxErrorArgument while not registered
    RyxStatus Image = RyxErrorArgument; // the same for this executable, or why it could not be registered
    bool Counted = false;               // among the running tools
    MutexHandle ImageMutex = nullptr;
    MutexHandle GlobalMutex = nullptr;
    bool GlobalEnabled = false;
    bool GlobalHeld = false;
    bool PackageFolderSet = false;
    char PackageFolder[256] = {}; // what PACKORGDIR held; empty when it was not set
    PackageRecord Package;
    std::uint16_t DriverVersion = 0;
};

// The process's own record, and the same as at process start (what it holds open is forgotten, not closed).
InstanceState& InstanceStateGet();
void InstanceStateReset();

// The machine-wide count of running tools, 0 when there is none; adds this process to it, and tells whether it could;
// takes it out again. The last one removes the count.
std::uint32_t ToolsRefCountGet();
bool ToolsRefCountIncrement();
void ToolsRefCountDecrement();

// Creates the mutex that every process of this very executable shares, named by the digest of the file's bytes, and
// keeps it open. RyxInstanceFirst, RyxInstanceAnother; RyxErrorFileRead, with a message, or RyxErrorDigest without one.
RyxStatus ImageRegister();

// The machine-wide lock around firmware requests. GlobalMutexAcquire creates the mutex on first use and waits at most
// 5,000 ms; whoever waits in vain goes on without it. GlobalMutexClose also gives the handle back.
void GlobalMutexAcquire();
void GlobalMutexRelease();
void GlobalMutexClose();
