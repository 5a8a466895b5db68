// Machines out of SMBIOS tables: an entry point and its structure table, from a folder, a dump or this computer.
#include "Lib/Platform/StandIn/MachineTables.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

namespace StandIn {

namespace {

constexpr std::uint64_t SegmentStart = 0xF0000;
constexpr std::uint64_t ParagraphSize = 16;
constexpr std::size_t LegacyEntrySize = 31;
constexpr std::size_t EntrySize30 = 24;
constexpr std::size_t FileSizeLimit = std::size_t{256} << 20; // also ends the reading of endless devices
constexpr const char* HostFolder = "/sys/firmware/dmi/tables";

bool BeginsWith(const Bytes& bytes, std::string_view anchor) {
    return bytes.size() >= anchor.size() && std::equal(anchor.begin(), anchor.end(), bytes.begin());
}

std::uint64_t Little(const Bytes& bytes, std::size_t offset, unsigned width) {
    std::uint64_t value = 0;
    while (width-- > 0) {
        value = value << 8 | bytes[offset + width];
    }
    return value;
}

// What an entry point of either kind says.
struct EntryPoint {
    bool Legacy;
    std::uint8_t Major;
    std::uint8_t Minor;
    std::uint8_t Revision;
    std::uint64_t TableAddress;
    std::uint32_t TableLength;
};

std::optional<EntryPoint> EntryPointParse(const Bytes& bytes, std::string* error) {
    const bool legacy = BeginsWith(bytes, "_SM_");
    if (!legacy && !BeginsWith(bytes, "_SM3_")) {
        *error = "the entry point begins with neither _SM_ nor _SM3_";
        return std::nullopt;
    }
    if (bytes.size() < (legacy ? LegacyEntrySize : EntrySize30)) {
        *error = "the entry point is cut short";
        return std::nullopt;
    }
    if (legacy) {
        return EntryPoint{true,
                          bytes[0x06],
                          bytes[0x07],
                          bytes[0x0A],
                          Little(bytes, 0x18, 4),
                          static_cast<std::uint32_t>(Little(bytes, 0x16, 2))};
    }
    return EntryPoint{false,
                      bytes[0x07],
                      bytes[0x08],
                      bytes[0x0A],
                      Little(bytes, 0x10, 8),
                      static_cast<std::uint32_t>(Little(bytes, 0x0C, 4))};
}

// The first paragraph of the legacy segment where an entry point does not overlap the table.
std::uint64_t EntryAddress(std::uint64_t tableAddress, std::size_t tableSize) {
    std::uint64_t address = SegmentStart;
    while (tableSize != 0 && address < tableAddress + tableSize && tableAddress < address + LegacyEntrySize) {
        address += ParagraphSize;
    }
    return address;
}

} // namespace

bool TablesInstall(Machine& machine, const Bytes& entryPoint, Bytes table, std::string* error) {
    const std::optional<EntryPoint> entry = EntryPointParse(entryPoint, error);
    if (!entry) {
        return false;
    }
    table.resize(std::min<std::size_t>(table.size(), entry->TableLength));

    Bytes answer{0, entry->Major, entry->Minor, entry->Revision};
    for (unsigned place = 0; place < 4; ++place) {
        answer.push_back(static_cast<std::uint8_t>(table.size() >> (8 * place)));
    }
    answer.insert(answer.end(), table.begin(), table.end());
    machine.SmbiosTable = std::move(answer);

    if (entry->Legacy) {
        const std::uint64_t address = EntryAddress(entry->TableAddress, table.size());
        machine.Memory.push_back({entry->TableAddress, std::move(table)});
        machine.Memory.push_back(
            {address, Bytes(entryPoint.begin(), entryPoint.begin() + static_cast<std::ptrdiff_t>(LegacyEntrySize))});
    }
    return true;
}

bool FileRead(const std::string& path, Bytes* content, std::string* error) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) {
        *error = path + ": " + std::strerror(errno);
        return false;
    }
    content->clear();
    std::uint8_t piece[16384];
    for (std::size_t got; (got = std::fread(piece, 1, sizeof piece, file.get())) != 0;) {
        if (got > FileSizeLimit - content->size()) {
            *error = path + ": the file is too large";
            return false;
        }
        content->insert(content->end(), piece, piece + got);
    }
    if (std::ferror(file.get()) != 0) {
        *error = path + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

bool IsDump(const Bytes& content) {
    return BeginsWith(content, "_SM_") || BeginsWith(content, "_SM3_");
}

bool DumpInstall(Machine& machine, const std::string& path, const Bytes& content, std::string* error) {
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
        return false;
    }
    return TablesInstall(machine, content,
                         Bytes(content.begin() + static_cast<std::ptrdiff_t>(entry->TableAddress), content.end()),
                         error);
}

bool FolderInstall(Machine& machine, const std::string& path, std::string* error) {
    const std::string entryPath = path + "/smbios_entry_point";
    Bytes entry;
    Bytes table;
    if (!FileRead(entryPath, &entry, error) || !FileRead(path + "/DMI", &table, error)) {
        return false;
    }
    std::string reason;
    if (!TablesInstall(machine, entry, std::move(table), &reason)) {
        *error = entryPath + ": " + reason;
        return false;
    }
    return true;
}

bool HostInstall(Machine& machine, std::string* error) {
    return FolderInstall(machine, HostFolder, error);
}

} // namespace StandIn
