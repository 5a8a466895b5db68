// Machine files: a machine out of lines of the form key = value.
#include "machine/source/MachineFile.h"

#include "machine/host/HostFile.h"
#include "machine/model/Faults.h"
#include "machine/source/MachineTables.h"
#include "machine/windows/State.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <initializer_list>
#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace StandIn {

namespace {

// A machine file while it is read. Memory and tables that it names one by one are kept aside until the value of
// `tables` is installed: they win over it, wherever in the file they stand.
struct Reading {
    std::string Folder; // with a slash at its end; empty: the working folder
    std::size_t Line = 0;
    bool Understood = false; // a line was
    Machine Made;
    std::vector<MemoryRegion> Memory;
    bool SmbiosGiven = false;
    std::optional<Bytes> SmbiosTable;
    std::string Tables;
    std::size_t TablesLine = 0;
    std::string State;
    std::size_t StateLine = 0;

    std::string Path(const std::string& value) const { return value.front() == '/' ? value : Folder + value; }
};

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Splits a text at its first blanks: the word before them and what follows them.
std::pair<std::string, std::string> FirstWord(std::string_view text) {
    const std::size_t end = text.find_first_of(" \t");
    if (end == std::string_view::npos) {
        return {std::string(text), std::string()};
    }
    return {std::string(text.substr(0, end)), std::string(Trimmed(text.substr(end)))};
}

std::optional<std::uint64_t> Number(std::string_view digits, int base) {
    std::uint64_t value = 0;
    const char* end = digits.data() + digits.size();
    const std::from_chars_result result = std::from_chars(digits.data(), end, value, base);
    if (result.ec != std::errc() || result.ptr != end) {
        return std::nullopt;
    }
    return value;
}

bool IsHexadecimal(std::string_view text) {
    return text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
}

// A number that fits T, in decimal or, with 0x, in hexadecimal.
template <typename T> std::optional<T> NumberOf(std::string_view text) {
    const std::optional<std::uint64_t> value = IsHexadecimal(text) ? Number(text.substr(2), 16) : Number(text, 10);
    if (!value || *value > std::numeric_limits<T>::max()) {
        return std::nullopt;
    }
    return static_cast<T>(*value);
}

std::string Quoted(const std::string& text) {
    return '"' + text + '"';
}

// Sets the target to what the value's word stands for.
template <typename T>
bool Choose(const std::string& value, std::initializer_list<std::pair<const char*, T>> choices, T* target,
            std::string* reason) {
    *reason = "takes ";
    std::size_t left = choices.size();
    for (const auto& [word, meaning] : choices) {
        if (value == word) {
            *target = meaning;
            return true;
        }
        --left;
        *reason += std::string(word) + (left == 0 ? ", not " : left == 1 ? " or " : ", ");
    }
    *reason += Quoted(value);
    return false;
}

bool ChooseYes(const std::string& value, bool* target, std::string* reason) {
    return Choose<bool>(value, {{"yes", true}, {"no", false}}, target, reason);
}

bool MemoryAdd(Reading& reading, const std::string& address, const std::string& value, std::string* reason) {
    constexpr std::uint64_t end = std::uint64_t{1} << 32;
    const std::optional<std::uint64_t> start = IsHexadecimal(address) ? NumberOf<std::uint64_t>(address) : std::nullopt;
    if (!start) {
        *reason = "the address is no hexadecimal number with 0x";
        return false;
    }
    Bytes data;
    if (*start >= end) {
        *reason = "the address does not fit 32 bits";
        return false;
    }
    if (!FileRead(reading.Path(value), &data, reason)) {
        return false;
    }
    if (data.size() > end - *start) {
        *reason = reading.Path(value) + ": reaches past the end of 32-bit physical memory";
        return false;
    }
    reading.Memory.push_back({*start, std::move(data)});
    return true;
}

bool FirmwareTableAdd(Reading& reading, const std::string& name, const std::string& value, std::string* reason) {
    constexpr std::string_view provider = "ACPI/";
    constexpr std::size_t signatureSize = 4;
    if (name == "missing") {
        bool missing = false;
        const bool understood = ChooseYes(value, &missing, reason);
        reading.Made.FirmwareTableService = !missing;
        return understood;
    }
    if (name == "RSMB") {
        reading.SmbiosGiven = true;
        reading.SmbiosTable.reset();
        return value == "none" || FileRead(reading.Path(value), &reading.SmbiosTable.emplace(), reason);
    }
    if (name.compare(0, provider.size(), provider) == 0 && name.size() == provider.size() + signatureSize) {
        return FileRead(reading.Path(value), &reading.Made.AcpiTables[name.substr(provider.size())], reason);
    }
    *reason = "the table is none of RSMB, ACPI/ with four characters, and missing";
    return false;
}

bool FirmwareRefusalSet(Reading& reading, const std::string& name, const std::string& value, std::string* reason) {
    bool refused = false;
    if (!ChooseYes(value, &refused, reason)) {
        return false;
    }
    if (refused) {
        reading.Made.FirmwareRefuses.insert(name);
    } else {
        reading.Made.FirmwareRefuses.erase(name);
    }
    return true;
}

bool WindowsSet(Reading& reading, const std::string&, const std::string& value, std::string* reason) {
    const std::size_t dot = value.find('.');
    const std::string_view text = value;
    const auto part = [](std::string_view digits) {
        return IsHexadecimal(digits) ? std::nullopt : NumberOf<std::uint32_t>(digits);
    };
    const std::optional<std::uint32_t> major = part(text.substr(0, dot));
    const std::optional<std::uint32_t> minor = dot == std::string::npos ? std::nullopt : part(text.substr(dot + 1));
    if (!major || !minor) {
        *reason = "takes MAJOR.MINOR, not " + Quoted(value);
        return false;
    }
    reading.Made.WindowsMajor = *major;
    reading.Made.WindowsMinor = *minor;
    return true;
}

bool ProcessorsSet(Reading& reading, const std::string&, const std::string& value, std::string* reason) {
    const std::optional<std::uint32_t> mask = NumberOf<std::uint32_t>(value);
    if (!mask) {
        *reason = "takes a 32-bit mask, not " + Quoted(value);
        return false;
    }
    reading.Made.Processors = *mask;
    return true;
}

bool ConsoleSet(Reading& reading, const std::string&, const std::string& value, std::string* reason) {
    constexpr std::uint16_t largest = 0x7FFF; // screen buffer coordinates are signed
    const std::size_t cross = value.find('x');
    if (cross != std::string::npos && value.find_first_not_of("0123456789x") == std::string::npos) {
        const std::string_view text = value;
        const auto columns = Number(text.substr(0, cross), 10);
        const auto rows = Number(text.substr(cross + 1), 10);
        if (!columns || !rows || *columns == 0 || *rows == 0 || *columns > largest || *rows > largest) {
            *reason = "no console has the size " + Quoted(value);
            return false;
        }
        reading.Made.Console = ConsoleKind::Fixed;
        reading.Made.ConsoleColumns = static_cast<std::uint16_t>(*columns);
        reading.Made.ConsoleRows = static_cast<std::uint16_t>(*rows);
        return true;
    }
    if (value != "none" && value != "terminal") {
        *reason = "takes COLUMNSxROWS, none or terminal, not " + Quoted(value);
        return false;
    }
    reading.Made.Console = value == "none" ? ConsoleKind::None : ConsoleKind::Terminal;
    return true;
}

bool FaultAdd(Reading& reading, const std::string&, const std::string& value, std::string* reason) {
    constexpr std::string_view requestOperation = "DeviceIoControl";
    Fault fault{};
    std::string_view text = value;
    const std::size_t at = text.rfind('@');
    if (at != std::string_view::npos) {
        const std::optional<std::uint64_t> call = Number(Trimmed(text.substr(at + 1)), 10);
        if (!call || *call == 0) {
            *reason = "the call after @ is no number from 1 on";
            return false;
        }
        fault.At = *call;
        text = Trimmed(text.substr(0, at));
    }
    const auto [name, code] = FirstWord(text);
    const std::optional<Operation> operation = OperationFind(name);
    if (!operation) {
        *reason = "no Windows operation is named " + Quoted(name);
        return false;
    }
    fault.Which = *operation;
    if (!code.empty()) {
        const std::optional<std::uint64_t> number =
            Number(std::string_view(code).substr(IsHexadecimal(code) ? 2 : 0), 16);
        if (name != requestOperation) {
            *reason = "only DeviceIoControl has control codes";
            return false;
        }
        if (!number || *number == 0 || *number > std::numeric_limits<std::uint32_t>::max()) {
            *reason = Quoted(code) + " is no control code in hexadecimal";
            return false;
        }
        fault.ControlCode = static_cast<std::uint32_t>(*number);
    }
    reading.Made.Faults.push_back(fault);
    return true;
}

// A key that a machine file can hold. A named key has a second word, which Apply gets as `name`.
struct KeyRule {
    const char* Key;
    bool Named;
    bool (*Apply)(Reading& reading, const std::string& name, const std::string& value, std::string* reason);
};

constexpr KeyRule KeyRules[] = {
    {"tables", false,
     [](Reading& reading, const std::string&, const std::string& value, std::string*) {
         reading.Tables = value;
         reading.TablesLine = reading.Line;
         return true;
     }},
    {"memory", true, MemoryAdd},
    {"firmware-table", true, FirmwareTableAdd},
    {"administrator", false,
     [](Reading& reading, const std::string&, const std::string& value, std::string* reason) {
         return ChooseYes(value, &reading.Made.Administrator, reason);
     }},
    {"processors", false, ProcessorsSet},
    {"windows", false, WindowsSet},
    {"wow64", false,
     [](Reading& reading, const std::string&, const std::string& value, std::string* reason) {
         return Choose<Wow64>(value, {{"yes", Wow64::Yes}, {"no", Wow64::No}, {"unknown", Wow64::Unknown}},
                              &reading.Made.UnderWow64, reason);
     }},
    {"console", false, ConsoleSet},
    {"state", false,
     [](Reading& reading, const std::string&, const std::string& value, std::string*) {
         reading.State = value;
         reading.StateLine = reading.Line;
         return true;
     }},
    {"firmware", false,
     [](Reading& reading, const std::string&, const std::string& value, std::string* reason) {
         return Choose<FirmwareKind>(
             value, {{"none", FirmwareKind::None}, {"variables", FirmwareKind::Variables}, {"smi", FirmwareKind::Smi}},
             &reading.Made.Firmware, reason);
     }},
    {"firmware-refuses", true, FirmwareRefusalSet},
    {"fail", false, FaultAdd},
};

bool LineApply(Reading& reading, std::string_view line, std::string* reason) {
    for (const char character : line) {
        const auto code = static_cast<unsigned char>(character);
        if ((code < ' ' && code != '\t') || code == 0x7F) {
            *reason = "the line is not text";
            return false;
        }
    }
    const std::size_t sign = line.find('=');
    const std::string key(Trimmed(line.substr(0, sign)));
    if (sign == std::string_view::npos || key.empty()) {
        *reason = "the line is not of the form key = value";
        return false;
    }
    const std::string value(Trimmed(line.substr(sign + 1)));
    const auto [word, name] = FirstWord(key);
    for (const KeyRule& rule : KeyRules) {
        if (word == rule.Key && rule.Named == !name.empty()) {
            if (value.empty()) {
                *reason = key + ": the value is missing";
                return false;
            }
            std::string detail;
            if (!rule.Apply(reading, name, value, &detail)) {
                *reason = key + ": " + detail;
                return false;
            }
            return true;
        }
    }
    *reason = "unknown key " + Quoted(key);
    return false;
}

bool TablesLoad(Reading& reading, std::string* reason, std::string* notice) {
    const std::string path = reading.Path(reading.Tables);
    if (HostFolderExists(path)) {
        return FolderInstall(reading.Made, path, reason, notice) == 0;
    }
    Bytes content;
    if (!FileRead(path, &content, reason)) {
        return false;
    }
    if (!IsDump(content)) {
        const std::string name = ContentName(content, reading.Tables);
        *reason = path + ": neither a folder of tables nor a dump" + (name.empty() ? "" : ", but " + name);
        return false;
    }
    return DumpInstall(reading.Made, path, content, reason, notice);
}

bool StateFolderMake(Reading& reading, std::string* reason) {
    const std::string given = reading.Path(reading.State);
    const int error = HostFolderMake(given);
    const std::unique_ptr<char, void (*)(void*)> whole(realpath(given.c_str(), nullptr), &std::free);
    if (error != 0 || !whole) {
        *reason = HostFault(given, error != 0 ? error : errno);
        return false;
    }
    *reason = StateFolderFault(given);
    reading.Made.StateFolder = whole.get();
    return reason->empty();
}

// Makes what the whole file describes, once all of its lines are known.
bool Finish(Reading& reading, std::string* reason, std::string* notice) {
    if (!reading.Tables.empty()) {
        reading.Line = reading.TablesLine;
        std::string detail;
        if (!TablesLoad(reading, &detail, notice)) {
            *reason = "tables: " + detail;
            return false;
        }
    }
    if (reading.SmbiosGiven) {
        reading.Made.SmbiosTable = std::move(reading.SmbiosTable);
    }
    for (MemoryRegion& region : reading.Memory) {
        reading.Made.Memory.push_back(std::move(region));
    }
    if (!reading.State.empty()) {
        reading.Line = reading.StateLine;
        std::string detail;
        if (!StateFolderMake(reading, &detail)) {
            *reason = "state: " + detail;
            return false;
        }
    }
    return true;
}

// Whether a line looks like one of a machine file, be it mistaken.
bool LooksLikeKey(std::string_view line) {
    const std::string_view key = line.substr(0, line.find('='));
    return key.size() < line.size() && std::all_of(key.begin(), key.end(), [](unsigned char one) {
               return std::isalnum(one) != 0 || one == '-' || one == '/' || one == ' ' || one == '\t';
           });
}

} // namespace

std::optional<Machine> MachineFileRead(const std::string& path, const Bytes& content, std::string* error,
                                       std::string* notice) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    Reading reading;
    reading.Folder = path.substr(0, path.rfind('/') + 1);
    std::string_view rest(reinterpret_cast<const char*>(content.data()), content.size());
    rest.remove_prefix(rest.substr(0, byteOrderMark.size()) == byteOrderMark ? byteOrderMark.size() : 0);
    std::string reason;
    std::string_view line;
    bool good = true;
    try {
        while (good && !rest.empty()) {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            line = Trimmed(rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
            ++reading.Line;
            if (!line.empty() && line.front() != '#') {
                good = LineApply(reading, line, &reason);
                reading.Understood = reading.Understood || good;
            }
        }
        good = good && Finish(reading, &reason, notice);
    } catch (const std::bad_alloc&) {
        good = false;
        reading.Understood = true;
        reason = NoMemory;
    }
    if (good) {
        return std::move(reading.Made);
    }
    const std::string number = std::to_string(reading.Line);
    const bool foreign = !reading.Understood && !LooksLikeKey(line);
    *error = foreign
                 ? path + ": neither a dump nor a machine file (line " + number + ": " + reason + ")" + AcceptedForms
                 : path + ":" + number + ": " + reason;
    return std::nullopt;
}

} // namespace StandIn
