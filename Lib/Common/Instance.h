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
    MutexHandle ImageMutex = nullptr;
    MutexHandle GlobalMutex = nullptr;
    bool GlobalEnabled = false;
    bool GlobalCreated = false;
    bool GlobalHeld = false;
    bool PackageFolderSet = false;
    char PackageFolder[256] = {}; // what PACKORGDIR held; empty when it was not set
    PackageRecord Package;
    std::uint16_t DriverVersion = 0;
    std::uint32_t ExecutionState = 0; // 1 while the system is held awake
};

// The process's own record, and the same as at process start (what it holds open is forgotten, not closed).
InstanceState& InstanceStateGet();
void InstanceStateReset();

// Adds this process to the machine-wide count of running tools; takes it out again. The last one removes the count.
void ToolsRefCountIncrement();
void ToolsRefCountDecrement();

// The machine-wide lock around firmware requests. GlobalMutexAcquire creates the mutex on first use and waits at most
// 5,000 ms; whoever waits in vain goes on without it. GlobalMutexClose also gives the handle back.
void GlobalMutexAcquire();
void GlobalMutexRelease();
void GlobalMutexClose();

// Power operations 1 to 9: 6 holds the system awake, 7 lets it sleep again. RyxErrorUnsupported for all others.
constexpr std::uint8_t PowerHoldAwake = 6;
constexpr std::uint8_t PowerLetSleep = 7;
RyxStatus PowerRequest(std::uint8_t operation);
