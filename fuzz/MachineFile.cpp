// Fuzz target: a machine file, and the program on the machine that it makes.
// Input: the file. Slashes and double dots in values become underscores, so that it reaches nothing but the folder it
// stands in, which holds `dump`, `rsmb`, `smbios_entry_point` and `DMI`.
#include "fuzz/Harness.h"
#include "machine/model/Machine.h"
#include "machine/model/SmbiosBuilder.h"
#include "machine/source/MachineChoice.h"

#include <cstdio>
#include <filesystem>

namespace {

void FileWrite(const std::string& name, const StandIn::Bytes& content) {
    std::FILE* const file = std::fopen(name.c_str(), "wb");
    if (file == nullptr || std::fwrite(content.data(), 1, content.size(), file) != content.size() ||
        std::fclose(file) != 0) {
        Fault("a file can't be written");
    }
}

bool FilesWrite() {
    WorkFolder();
    StandIn::SmbiosBuilder builder;
    builder.Begin(1).String("Example").String("").String("").String("").Raw(StandIn::Bytes(16)).Byte(6);
    const StandIn::Bytes table = builder.Table();
    const auto length = static_cast<std::uint16_t>(table.size());
    StandIn::Bytes dump = StandIn::EntryPoint21(2, 8, 32, length, 1, length);
    dump.resize(32);
    dump.insert(dump.end(), table.begin(), table.end());
    FileWrite("dump", dump);
    FileWrite("smbios_entry_point", StandIn::EntryPoint30(3, 0, 0, length));
    FileWrite("DMI", table);
    FileWrite("rsmb", *StandIn::MachineWithTable(builder, 2, 8).SmbiosTable);
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool written = FilesWrite();
    StandIn::Bytes text(data, data + size);
    bool value = false;
    std::uint8_t before = 0;
    for (std::uint8_t& character : text) {
        value = character != '\n' && (value || character == '=');
        if (value && (character == '/' || (character == '.' && before == '.'))) {
            character = '_';
        }
        before = character;
    }
    FileWrite("machine", text);
    std::string error;
    std::string notice;
    std::optional<StandIn::Machine> machine = StandIn::MachineRead("machine", &error, &notice);
    if (machine.has_value() == !error.empty() || error.find('\n') != std::string::npos || !written) {
        Fault("neither a machine nor one line that says why");
    }
    if (!machine) {
        return 0;
    }
    const std::string state = machine->StateFolder;
    const bool harmless = machine->Faults.empty() && machine->FirmwareRefuses.empty();
    StartOver(std::move(*machine));
    ProgramRun({"/type", "1"});
    if (harmless) {
        LeftoversCheck();
    }
    StartOver({});
    const std::filesystem::path folder = std::filesystem::path(state).lexically_normal();
    if (folder.has_filename() && folder.parent_path() == WorkFolder()) {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
        FilesWrite();
    }
    return 0;
}
