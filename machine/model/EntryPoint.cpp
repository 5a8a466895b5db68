// SMBIOS entry points, and the tables that they lead to.
#include "machine/model/EntryPoint.h"

#include "Lib/LittleEndian.h"

#include <algorithm>
#include <utility>

namespace StandIn {

namespace {

constexpr std::uint64_t SegmentStart = 0xF0000;
constexpr std::uint64_t ParagraphSize = 16;
constexpr std::size_t EntrySize30 = 24;

// The first paragraph of the legacy segment where an entry point does not overlap the table.
std::uint64_t EntryAddress(std::uint64_t tableAddress, std::size_t tableSize) {
    std::uint64_t address = SegmentStart;
    while (tableSize != 0 && address < tableAddress + tableSize && tableAddress < address + LegacyEntrySize) {
        address += ParagraphSize;
    }
    return address;
}

} // namespace

bool BeginsWith(const Bytes& bytes, std::string_view anchor) {
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()).substr(0, anchor.size()) ==
           anchor;
}

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
                          LittleEndianRead<std::uint32_t>(bytes.data() + 0x18),
                          LittleEndianRead<std::uint16_t>(bytes.data() + 0x16)};
    }
    return EntryPoint{false,
                      bytes[0x07],
                      bytes[0x08],
                      bytes[0x0A],
                      LittleEndianRead<std::uint64_t>(bytes.data() + 0x10),
                      LittleEndianRead<std::uint32_t>(bytes.data() + 0x0C)};
}

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

} // namespace StandIn
