// Fuzz target: a command line with a response file.
// Input: the arguments, one a line; a line of a single dot; the response file. An argument that begins with '@' names
// the file; without one the program reads it as default.rsp.
#include "fuzz/Harness.h"
#include "machine/model/SmbiosBuilder.h"

#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string name = WorkFolder() + "/default.rsp";
    std::vector<std::string> arguments;
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (line == ".") {
            break;
        }
        const std::string argument(line.substr(0, line.find('\0')));
        arguments.push_back(!argument.empty() && argument[0] == '@' ? "@default.rsp" : argument);
    }
    std::FILE* const file = std::fopen(name.c_str(), "wb");
    if (file == nullptr || std::fwrite(rest.data(), 1, rest.size(), file) != rest.size() || std::fclose(file) != 0) {
        Fault("the response file can't be written");
    }
    StandIn::SmbiosBuilder table;
    table.Begin(16).Byte(3).Byte(3).Byte(6).Dword(1024).Word(0xFFFE).Word(1);
    StandIn::Machine machine = StandIn::MachineWithTable(table, 2, 4);
    machine.Console = StandIn::ConsoleKind::Fixed;
    StartOver(std::move(machine));
    const int code = ProgramRun(arguments);
    if (code != 0 && code != 105 && code != 152 && code != 153) {
        Fault("exit code " + std::to_string(code));
    }
    LeftoversCheck();
    return 0;
}
