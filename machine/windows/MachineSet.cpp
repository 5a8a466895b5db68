// A new machine for the process, and what a run leaves behind in it.
#include "machine/windows/MachineSet.h"

#include "Lib/LittleEndian.h"
#include "machine/host/HostFile.h"
#include "machine/kernel/FirmwareModel.h"
#include "machine/kernel/Kernel.h"
#include "machine/model/Faults.h"
#include "machine/windows/Handles.h"
#include "machine/windows/Mutexes.h"
#include "machine/windows/State.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace StandIn {

namespace {

constexpr std::uint32_t DwordType = 4;

std::string ValueLine(const StoredKey& key, const StoredValue& value) {
    std::string line = "registry value " + key.Path + "\\" + value.Name;
    if (value.Type == DwordType && value.Data.size() == 4) {
        line += " = " + std::to_string(LittleEndianRead<std::uint32_t>(value.Data.data()));
    }
    return line;
}

std::string HandleLine(const Handle& handle) {
    static const std::map<HandleKind, const char*> kinds = {
        {HandleKind::File, "file"},
        {HandleKind::HostFile, "file"},
        {HandleKind::Device, "device"},
        {HandleKind::Token, "token"},
        {HandleKind::Mutex, "mutex"},
        {HandleKind::Key, "registry key"},
        {HandleKind::ServiceManager, "service manager"},
        {HandleKind::Service, "service"},
    };
    const std::string line = std::string("handle of ") + kinds.at(handle.Kind);
    return handle.Name.empty() ? line : line + " " + handle.Name;
}

void SharedLeftovers(const SharedState& state, std::vector<std::string>* lines) {
    for (const auto& [path, key] : state.Keys) {
        lines->push_back("registry key " + key.Path);
        for (const auto& [name, value] : key.Values) {
            lines->push_back(ValueLine(key, value));
        }
    }
    for (const auto& [name, service] : state.Services) {
        lines->push_back("service " + service.Name + (service.Marked ? " (marked for deletion)" : ""));
        if (service.Running) {
            lines->push_back("driver " + service.Name + " from " + service.Path);
        }
    }
    for (const auto& [key, file] : state.Files) {
        lines->push_back("file " + file.Path);
    }
}

} // namespace

void MachineSet(Machine machine) {
    HandlesForget();
    KernelForget();
    MutexesForget();
    OwnStateForget();
    FirmwareForget();
    CallsForget();
    Process() = ProcessState{};
    FirmwarePrepare(&machine);
    MachineGet() = std::move(machine);
    if (!MachineGet().StateFolder.empty()) {
        // When the folder can't be made, every operation that needs it fails.
        HostFolderMake(MachineGet().StateFolder);
    }
}

std::vector<std::string> Leftovers() {
    std::vector<std::string> lines;
    {
        const SharedAccess state;
        if (state.Error() != 0) {
            lines.push_back("state that can't be read");
        } else {
            SharedLeftovers(*state, &lines);
        }
    }
    for (const auto& [value, handle] : HandlesOpen()) {
        lines.push_back(HandleLine(handle));
    }
    for (const std::string& line : KernelLeftovers()) {
        lines.push_back(line);
    }
    for (const std::string& name : MutexesHeld()) {
        lines.push_back("mutex held " + name);
    }
    if (Process().SecurityIds != 0) {
        lines.push_back("security identifier not freed");
    }
    if (FirmwareSessionOpen()) {
        lines.push_back("firmware session open");
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

} // namespace StandIn
