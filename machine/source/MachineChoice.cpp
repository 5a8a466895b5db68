// The machine that the user chose: this computer, the sample, a folder, a dump or a machine file.
#include "machine/source/MachineChoice.h"

#include "machine/host/HostFile.h"
#include "machine/model/SampleMachine.h"
#include "machine/source/MachineFile.h"
#include "machine/source/MachineTables.h"

#include <cerrno>
#include <new>
#include <utility>

namespace StandIn {

namespace {

constexpr char HostFolder[] = "/sys/firmware/dmi/tables";

std::optional<Machine> MachineChoose(const std::string& choice, std::string* error, std::string* notice) {
    if (choice == "sample") {
        return SampleMachine();
    }
    if (choice == "sample-server") {
        return SampleServer();
    }
    if (choice.empty() || choice == "host") {
        return HostMachine(HostFolder, choice.empty(), error, notice);
    }
    Machine machine;
    if (HostFolderExists(choice)) {
        return FolderInstall(machine, choice, error, notice) == 0 ? std::optional(std::move(machine)) : std::nullopt;
    }
    Bytes content;
    if (!FileRead(choice, &content, error)) {
        return std::nullopt;
    }
    if (IsDump(content)) {
        return DumpInstall(machine, choice, content, error, notice) ? std::optional(std::move(machine)) : std::nullopt;
    }
    if (const std::string name = ContentName(content, choice); !name.empty()) {
        *error = choice + ": neither a dump nor a machine file, but " + name + AcceptedForms;
        return std::nullopt;
    }
    return MachineFileRead(choice, content, error, notice);
}

} // namespace

std::optional<Machine> HostMachine(const std::string& folder, bool orSample, std::string* error, std::string* notice) {
    Machine machine;
    const int failure = FolderInstall(machine, folder, error, notice);
    if (failure == 0) {
        return machine;
    }
    const std::string reason = std::move(*error);
    error->clear();
    if (failure == EACCES || failure == EPERM) {
        machine.Administrator = false;
        *notice = reason + "; running without administrator rights";
        return machine;
    }
    const bool missing = failure == ENOENT || failure == ENOTDIR;
    if (missing && orSample) {
        *notice = "this computer has no SMBIOS tables; showing the built-in sample machine";
        return SampleMachine();
    }
    *error = missing ? "this computer has no SMBIOS tables: " + reason : reason;
    return std::nullopt;
}

std::optional<Machine> MachineRead(const std::string& choice, std::string* error, std::string* notice) {
    error->clear();
    notice->clear();
    std::optional<Machine> machine;
    try {
        machine = MachineChoose(choice, error, notice);
    } catch (const std::bad_alloc&) {
        *error = (choice.empty() ? HostFolder : choice) + ": " + NoMemory;
    }
    if (!machine) {
        notice->clear();
    }
    return machine;
}

} // namespace StandIn
