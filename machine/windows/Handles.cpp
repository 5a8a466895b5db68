// The process's open handles.
#include "machine/windows/Handles.h"

#include <algorithm>
#include <utility>

namespace StandIn {

namespace {

[[gnu::init_priority(StatePriority)]] std::map<std::uintptr_t, Handle> OpenHandles;

// The latest one that was looked for and found, or none: requests go to the same one again and again.
struct FoundHandle {
    std::uintptr_t Value;
    Handle* Open;
};
constinit FoundHandle LatestFound{};

// Goes on over a change of machines, so that handles of the last one stay invalid. The two lowest bits stay zero.
std::uintptr_t LastValue = 0;

} // namespace

void* HandleOpen(Handle handle) {
    LastValue += 4;
    OpenHandles.emplace(LastValue, std::move(handle));
    return reinterpret_cast<void*>(LastValue);
}

Handle* HandleFindAny(const void* value) {
    const auto number = reinterpret_cast<std::uintptr_t>(value);
    if (LatestFound.Open == nullptr || LatestFound.Value != number) {
        const auto found = OpenHandles.find(number);
        if (found == OpenHandles.end()) {
            return nullptr;
        }
        LatestFound = {number, &found->second};
    }
    return LatestFound.Open;
}

Handle* HandleFind(const void* value, HandleKind kind) {
    Handle* const handle = HandleFindAny(value);
    return handle != nullptr && handle->Kind == kind ? handle : nullptr;
}

void HandleForget(const void* value) {
    LatestFound = {};
    OpenHandles.erase(reinterpret_cast<std::uintptr_t>(value));
}

bool HandleOpenFor(HandleKind kind, const std::string& name) {
    return std::any_of(OpenHandles.begin(), OpenHandles.end(),
                       [&](const auto& entry) { return entry.second.Kind == kind && entry.second.Name == name; });
}

const std::map<std::uintptr_t, Handle>& HandlesOpen() {
    return OpenHandles;
}

void HandlesForget() {
    LatestFound = {};
    OpenHandles.clear();
}

} // namespace StandIn
