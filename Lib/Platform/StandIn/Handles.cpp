// The process's open handles.
#include "Lib/Platform/StandIn/Handles.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace StandIn {

namespace {

std::map<std::uintptr_t, Handle>& Table() {
    static std::map<std::uintptr_t, Handle> table;
    return table;
}

// Goes on over a change of machines, so that handles of the last one stay invalid. The two lowest bits stay zero.
std::uintptr_t LastValue = 0;

void DescriptorClose(const Handle& handle) {
    if (handle.Descriptor >= 0) {
        close(handle.Descriptor);
    }
}

} // namespace

void* HandleOpen(Handle handle) {
    LastValue += 4;
    Table().emplace(LastValue, std::move(handle));
    return reinterpret_cast<void*>(LastValue);
}

Handle* HandleFindAny(const void* value) {
    const auto found = Table().find(reinterpret_cast<std::uintptr_t>(value));
    return found != Table().end() ? &found->second : nullptr;
}

Handle* HandleFind(const void* value, HandleKind kind) {
    Handle* const handle = HandleFindAny(value);
    return handle != nullptr && handle->Kind == kind ? handle : nullptr;
}

void HandleForget(const void* value) {
    if (const Handle* const handle = HandleFindAny(value); handle != nullptr) {
        DescriptorClose(*handle);
        Table().erase(reinterpret_cast<std::uintptr_t>(value));
    }
}

bool HandleOpenFor(HandleKind kind, const std::string& name) {
    return std::any_of(Table().begin(), Table().end(),
                       [&](const auto& entry) { return entry.second.Kind == kind && entry.second.Name == name; });
}

const std::map<std::uintptr_t, Handle>& HandlesOpen() {
    return Table();
}

void HandlesForget() {
    for (const auto& [value, handle] : Table()) {
        DescriptorClose(handle);
    }
    Table().clear();
}

} // namespace StandIn
