// The process's open handles.
#pragma once

#include "machine/host/HostFile.h"

#include <cstdint>
#include <map>
#include <string>

namespace StandIn {

enum class HandleKind : std::uint8_t { File, HostFile, Device, Token, Mutex, Key, ServiceManager, Service };

struct Handle {
    HandleKind Kind;
    std::string Name;           // what it stands for: a path, a device as it was asked for, a key, a service, a mutex
    std::uint32_t Access = 0;   // the rights that it was opened with
    std::uint32_t Share = 0;    // of a file: how others may open it meanwhile
    bool View64 = false;        // a registry key opened in the 64-bit view
    bool Impersonation = false; // a token that impersonates
    std::uint64_t Position = 0; // of a file
    Descriptor HostFile{-1};    // of a file of this computer, or what tells others that a device is open
    void* Opened = nullptr;     // of a device: the kernel's file
};

// Opens a handle. A value is never given twice, so that a stale one is found out.
void* HandleOpen(Handle handle);

// The open handle of that value and kind, or null.
Handle* HandleFind(const void* value, HandleKind kind);

// The open handle of that value, whatever its kind, or null.
Handle* HandleFindAny(const void* value);

// Closes an open handle; what stands behind a device or a mutex is the caller's to release.
void HandleForget(const void* value);

// Whether any handle of that kind and name is open.
bool HandleOpenFor(HandleKind kind, const std::string& name);

// All open handles, by their values.
const std::map<std::uintptr_t, Handle>& HandlesOpen();

// Closes every handle.
void HandlesForget();

} // namespace StandIn
