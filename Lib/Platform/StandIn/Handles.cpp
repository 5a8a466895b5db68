// The process's open handles, and the end of those that CloseHandle takes.
#include "Lib/Platform/StandIn/Handles.h"

#include "Lib/Platform/StandIn/Faults.h"
#include "Lib/Platform/StandIn/Mutexes.h"
#include "Lib/Platform/StandIn/State.h"

#include <windows.h>

#include <deque>
#include <unistd.h>
#include <utility>

namespace StandIn {

namespace {

// A value holds, above two zero bits, the slot's number from 1 on in 16 bits, and then the serial number.
constexpr unsigned SlotShift = 2;
constexpr unsigned SerialShift = 18;
constexpr std::uintptr_t SlotMask = 0xFFFF;

struct HandleTable {
    std::deque<Handle> Slots;
    std::vector<std::size_t> Unused;
};

HandleTable& Table() {
    static HandleTable table;
    return table;
}

// Goes on over a change of machines, so that handles of the last one stay invalid.
std::uint64_t LastSerial = 0;

} // namespace

void* HandleOpen(Handle handle) {
    HandleTable& table = Table();
    if (table.Unused.empty()) {
        if (table.Slots.size() == SlotMask) {
            if (handle.Descriptor >= 0) {
                close(handle.Descriptor);
            }
            return nullptr;
        }
        table.Unused.push_back(table.Slots.size());
        table.Slots.emplace_back();
    }
    const std::size_t slot = table.Unused.back();
    table.Unused.pop_back();
    handle.Serial = ++LastSerial;
    table.Slots[slot] = std::move(handle);
    return reinterpret_cast<void*>((static_cast<std::uintptr_t>(LastSerial) << SerialShift) |
                                   ((slot + 1) << SlotShift));
}

Handle* HandleFindAny(const void* value) {
    const auto bits = reinterpret_cast<std::uintptr_t>(value);
    const std::size_t slot = ((bits >> SlotShift) & SlotMask) - 1;
    HandleTable& table = Table();
    if ((bits & ((1U << SlotShift) - 1)) != 0 || slot >= table.Slots.size()) {
        return nullptr;
    }
    Handle& handle = table.Slots[slot];
    return handle.Kind != HandleKind::Free && handle.Serial == bits >> SerialShift ? &handle : nullptr;
}

Handle* HandleFind(const void* value, HandleKind kind) {
    Handle* const handle = HandleFindAny(value);
    return handle != nullptr && handle->Kind == kind ? handle : nullptr;
}

void HandleForget(Handle* handle) {
    HandleTable& table = Table();
    for (std::size_t slot = 0; slot < table.Slots.size(); ++slot) {
        if (&table.Slots[slot] == handle) {
            *handle = Handle{};
            table.Unused.push_back(slot);
            return;
        }
    }
}

bool HandleOpenFor(HandleKind kind, const std::string& name) {
    for (const Handle& handle : Table().Slots) {
        if (handle.Kind == kind && handle.Name == name) {
            return true;
        }
    }
    return false;
}

std::vector<Handle*> HandlesOpen() {
    std::vector<Handle*> open;
    for (Handle& handle : Table().Slots) {
        if (handle.Kind != HandleKind::Free) {
            open.push_back(&handle);
        }
    }
    return open;
}

void HandlesForget() {
    for (Handle* handle : HandlesOpen()) {
        if (handle->Descriptor >= 0) {
            close(handle->Descriptor);
        }
    }
    Table() = HandleTable{};
}

} // namespace StandIn

using namespace StandIn;

// A failing close releases all the same: nobody could do anything more about it.
BOOL WINAPI CloseHandle(HANDLE hObject) {
    const bool fails = FailsWith(Named("CloseHandle"), ERROR_INVALID_HANDLE);
    if (hObject == ProcessHandle || hObject == ThreadHandle) {
        return !fails;
    }
    Handle* const handle = HandleFindAny(hObject);
    if (handle == nullptr || handle->Kind == HandleKind::Key || handle->Kind == HandleKind::Service ||
        handle->Kind == HandleKind::ServiceManager) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (handle->Kind == HandleKind::Mutex) {
        MutexHandleClosed(handle->Name);
    }
    if (handle->Descriptor >= 0) {
        close(handle->Descriptor);
    }
    HandleForget(handle);
    return !fails;
}
