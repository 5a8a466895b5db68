// Machines out of SMBIOS tables: an entry point and its structure table, from a folder, a dump or this computer.
#include "machine/source/MachineTables.h"

#include "Lib/LittleEndian.h"
#include "machine/host/HostFile.h"
#include "machine/model/EntryPoint.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace StandIn {

namespace {

constexpr std::size_t AnswerHeaderSize = 8;
constexpr std::size_t StructureHeaderSize = 4;
constexpr std::uint8_t EndOfTable = 127;

// The structures at the start of some bytes, as far as they are whole.
struct Structures {
    std::size_t Count = 0;
    std::size_t Size = 0;
    bool Ended = false; // the last one says that it ends the table
};

Structures StructuresFind(const std::uint8_t* bytes, std::size_t size) {
    Structures found;
    while (!found.Ended && size - found.Size >= StructureHeaderSize + 2) {
        const std::uint8_t* const start = bytes + found.Size;
        const std::uint8_t* const end = bytes + size;
        const std::uint8_t zeros[2] = {0, 0};
        if (start[1] < StructureHeaderSize || start[1] > end - start) {
            break;
        }
        const std::uint8_t* const strings = std::search(start + start[1], end, std::begin(zeros), std::end(zeros));
        if (strings == end) {
            break;
        }
        found.Ended = *start == EndOfTable;
        found.Size = static_cast<std::size_t>(strings - bytes) + sizeof zeros;
        ++found.Count;
    }
    return found;
}

// Whether some bytes are a structure table. A single structure is too little to tell.
bool IsTable(const std::uint8_t* bytes, std::size_t size) {
    const Structures found = StructuresFind(bytes, size);
    return found.Count > 1 && (found.Ended || found.Size == size);
}

// Says in one line that a table holds less than its entry point states. What a 64-bit entry point states is only the
// most that the table can hold, so that a table with its end in it is whole.
void ShortTell(const Bytes& entryPoint, const Bytes& table, const std::string& path, std::string* notice) {
    std::string ignored;
    const std::optional<EntryPoint> entry = EntryPointParse(entryPoint, &ignored);
    if (entry && table.size() < entry->TableLength &&
        (entry->Legacy || !StructuresFind(table.data(), table.size()).Ended)) {
        *notice = path + ": the structure table is cut short: " + std::to_string(table.size()) + " of " +
                  std::to_string(entry->TableLength) + " bytes";
    }
}

} // namespace

bool FileRead(const std::string& path, Bytes* content, std::string* error) {
    const int failure = HostFileRead(path, content);
    if (failure != 0) {
        *error = HostFault(path, failure);
    }
    return failure == 0;
}

bool IsDump(const Bytes& content) {
    return BeginsWith(content, "_SM_") || BeginsWith(content, "_SM3_");
}

std::string ContentName(const Bytes& content, const std::string& path) {
    const std::uint8_t* const bytes = content.data();
    const std::size_t size = content.size();
    const auto isText = [](std::uint8_t byte) { return (byte >= ' ' && byte < 0x7F) || byte == '\r' || byte == '\n'; };
    if (BeginsWith(content, "\xFF\xFE") || BeginsWith(content, "\xFE\xFF") ||
        (size >= 4 && isText(bytes[0]) && bytes[1] == 0 && isText(bytes[2]) && bytes[3] == 0)) {
        return "UTF-16 text";
    }
    const std::uint32_t stated = size > AnswerHeaderSize ? LittleEndianRead<std::uint32_t>(bytes + 4) : 0;
    if (size > AnswerHeaderSize && stated <= size - AnswerHeaderSize && IsTable(bytes + AnswerHeaderSize, stated)) {
        return "an answer of the firmware table service, which the line \"firmware-table RSMB = " + path +
               "\" of a machine file reads";
    }
    if (IsTable(bytes, size)) {
        return "a structure table without its entry point";
    }
    return std::find(content.begin(), content.end(), 0) != content.end() ? "binary bytes" : "";
}

bool DumpInstall(Machine& machine, const std::string& path, const Bytes& content, std::string* error,
                 std::string* notice) {
    std::string reason;
    const std::optional<EntryPoint> entry = EntryPointParse(content, &reason);
    if (!entry) {
        *error = path + ": " + reason;
        return false;
    }
    if (entry->TableAddress > content.size()) {
        char text[96];
        std::snprintf(text, sizeof text, ": the table offset 0x%llX lies past the end of the file (0x%llX bytes)",
                      static_cast<unsigned long long>(entry->TableAddress),
                      static_cast<unsigned long long>(content.size()));
        *error = path + text;
        if (content.size() <= LegacyEntrySize + 1) {
            *error += std::string(": an entry point without its structure table") + AcceptedForms;
        }
        return false;
    }
    Bytes table(content.begin() + static_cast<std::ptrdiff_t>(entry->TableAddress), content.end());
    ShortTell(content, table, path, notice);
    return TablesInstall(machine, content, std::move(table), error);
}

int FolderInstall(Machine& machine, const std::string& path, std::string* error, std::string* notice) {
    const std::string entryPath = path + "/smbios_entry_point";
    const std::string tablePath = path + "/DMI";
    Bytes entry;
    Bytes table;
    for (const auto& [name, content] : {std::pair{&entryPath, &entry}, std::pair{&tablePath, &table}}) {
        if (const int failure = HostFileRead(*name, content); failure != 0) {
            *error = HostFault(*name, failure);
            return failure;
        }
    }
    std::string reason;
    ShortTell(entry, table, tablePath, notice);
    if (!TablesInstall(machine, entry, std::move(table), &reason)) {
        *error = entryPath + ": " + reason;
        return EINVAL;
    }
    return 0;
}

} // namespace StandIn
