// The maker's firmware: request records, its variables, and its communication buffer with the tables that tell of it.
#include "Lib/Platform/StandIn/FirmwareModel.h"

#include "Lib/Platform/StandIn/Memory.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>
#include <numeric>
#include <string_view>

namespace StandIn {

namespace {

using Guid = std::array<std::uint8_t, 16>;

// A GUID as it stands in memory: the first three of its groups are little-endian numbers.
consteval Guid GuidOf(std::string_view text) {
    constexpr std::size_t places[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    Guid guid{};
    std::size_t digits = 0;
    for (const char one : text) {
        if (one == '-') {
            continue;
        }
        const int value = one <= '9' ? one - '0' : one - 'a' + 10;
        std::uint8_t& byte = guid.at(places[digits++ / 2]);
        byte = static_cast<std::uint8_t>(byte << 4 | value);
    }
    return guid;
}

constexpr Guid ChannelGuid = GuidOf("b1de44fc-7946-4982-9b4b-2f8ca45ea792");
constexpr Guid BufferRecordGuid = GuidOf("d29563e8-cfe1-4d41-8e54-da4322fede5c");
constexpr Guid ValueListGuid = GuidOf("0d9fb197-cefc-4e91-acb1-2535d9e5a844");
constexpr Guid SmiValueGuid = GuidOf("d8afdc58-6e22-42f8-9966-36ff788c9caf");
constexpr Guid OtherValueGuid = GuidOf("76543210-ba98-4edc-8011-223344556677");

// The request record: a header and the payload that its command has.
constexpr std::size_t StatusOffset = 8;
constexpr std::size_t LengthOffset = 16;
constexpr std::size_t GuidOffset = 24;
constexpr std::size_t HeaderSize = 40;
constexpr std::size_t LargestRecord = 8192;

constexpr std::uint64_t PlatformInfo = 0x10000;
constexpr std::uint64_t PlatformDetail = 0x12900;
constexpr std::uint64_t CommandQuery = 0x12200;

constexpr std::uint64_t Success = 0;
constexpr std::uint64_t InvalidParameter = 0x8000000000000002;
constexpr std::uint64_t Unsupported = 0x8000000000000003;
constexpr std::uint64_t Refused = 0x8000000000000062;

// What the platform information says.
constexpr std::uint64_t HostSession = 0x51A2B3C4D5E6F708;
constexpr std::uint64_t HostBufferSize = 8192;
constexpr std::uint8_t PlatformFlags = 0x03;

// Where the tables of a machine with an SMI stand, and what they say.
constexpr std::uint32_t TablesBase = 0x7F7E0000;
constexpr std::uint32_t FadtPlace = TablesBase + 0x100;
constexpr std::uint32_t DsdtPlace = TablesBase + 0x300;
constexpr std::uint32_t BatbPlace = TablesBase + 0x500;
constexpr std::uint32_t UefiPlace = TablesBase + 0x600;
constexpr std::uint32_t BufferPlace = TablesBase + 0x10000;
constexpr std::uint32_t BufferSize = 0x2000;
constexpr std::uint16_t SmiPort = 0xB2;
constexpr std::uint8_t SmiValue = 0xD5;
constexpr std::size_t TableHeaderSize = 36;

struct Session {
    bool Open = false;
    std::uint16_t Number = 0; // of sessions so far
    Bytes Answer;             // empty while no request has been answered
};

Session& Current() {
    static Session session;
    return session;
}

template <typename Number> Number NumberAt(const Bytes& bytes, std::size_t offset) {
    Number number = 0;
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

template <typename Number> void NumberPut(Bytes* bytes, std::size_t offset, Number number) {
    std::memcpy(bytes->data() + offset, &number, sizeof number);
}

void GuidPut(Bytes* bytes, std::size_t offset, const Guid& guid) {
    std::copy(guid.begin(), guid.end(), bytes->begin() + static_cast<std::ptrdiff_t>(offset));
}

bool GuidIs(const Bytes& bytes, std::size_t offset, const Guid& guid) {
    return std::memcmp(bytes.data() + offset, guid.data(), guid.size()) == 0;
}

// Answers a command in its payload; the result is the firmware's status.
std::uint64_t CommandAnswer(std::uint64_t command, Bytes* record) {
    const std::size_t payload = record->size() - HeaderSize;
    switch (command) {
    case PlatformInfo:
        if (payload < 64) {
            return InvalidParameter;
        }
        NumberPut(record, HeaderSize, HostSession);
        for (std::uint64_t value = 1; value <= 5; ++value) {
            NumberPut(record, HeaderSize + value * 8, value << 12U);
        }
        NumberPut(record, HeaderSize + 48, HostBufferSize);
        NumberPut(record, HeaderSize + 56, PlatformFlags);
        return Success;
    case PlatformDetail:
        if (payload < 8) {
            return InvalidParameter;
        }
        NumberPut(record, HeaderSize, std::uint32_t{1});
        NumberPut(record, HeaderSize + 4, std::uint32_t{0});
        return Success;
    case CommandQuery: {
        const auto start = record->begin() + static_cast<std::ptrdiff_t>(HeaderSize);
        const auto end = std::find(start, record->end(), 0);
        if (end == record->end()) {
            return InvalidParameter;
        }
        return MachineGet().FirmwareRefuses.count(std::string(start, end)) != 0 ? Refused : Success;
    }
    default:
        return Unsupported;
    }
}

// Answers a record, which may have room behind its end. False when it is no record of this channel.
bool RecordAnswer(Bytes* bytes) {
    if (bytes->size() < HeaderSize || !GuidIs(*bytes, GuidOffset, ChannelGuid)) {
        return false;
    }
    const std::uint32_t length = NumberAt<std::uint32_t>(*bytes, LengthOffset);
    if (length < HeaderSize || length > bytes->size()) {
        return false;
    }
    Bytes record(bytes->begin(), bytes->begin() + static_cast<std::ptrdiff_t>(length));
    NumberPut(&record, StatusOffset, CommandAnswer(NumberAt<std::uint64_t>(record, 0), &record));
    std::copy(record.begin(), record.end(), bytes->begin());
    return true;
}

// The name of the session's answer variable: four characters, new ones for every session.
std::u16string AnswerName() {
    return {u'Q', u'S', static_cast<char16_t>(0x100 + Current().Number), u'A'};
}

Bytes SessionIdentifier() {
    const std::u16string name = AnswerName();
    Bytes identifier(name.size() * sizeof(char16_t));
    std::memcpy(identifier.data(), name.data(), identifier.size());
    return identifier;
}

// Makes an ACPI table's sum zero with the byte at an offset.
void ChecksumPut(Bytes* table, std::size_t offset, std::size_t length) {
    (*table)[offset] = 0;
    const auto end = table->begin() + static_cast<std::ptrdiff_t>(length);
    (*table)[offset] = static_cast<std::uint8_t>(0U - std::accumulate(table->begin(), end, 0U));
}

Bytes TableBegin(std::string_view signature, std::size_t size, std::uint8_t revision) {
    Bytes table(size);
    std::copy(signature.begin(), signature.end(), table.begin());
    NumberPut(&table, 4, static_cast<std::uint32_t>(size));
    table[8] = revision;
    const std::string_view maker = "STANDINMACHINE";
    std::copy(maker.begin(), maker.end(), table.begin() + 10);
    NumberPut(&table, 24, std::uint32_t{1});
    return table;
}

Bytes TableEnd(Bytes table) {
    ChecksumPut(&table, 9, table.size());
    return table;
}

Bytes FadtMake() {
    Bytes table = TableBegin("FACP", 244, 5);
    NumberPut(&table, 40, DsdtPlace);
    NumberPut(&table, 48, std::uint32_t{SmiPort});
    NumberPut(&table, 64, std::uint32_t{0x1804});
    NumberPut(&table, 112, std::uint32_t{1} << 21U);
    NumberPut(&table, 120, std::uint64_t{0xCF9});
    table[128] = 0x06;
    return TableEnd(std::move(table));
}

// Names the sleep states, each a package of four elements of which the first two are its values.
Bytes DsdtMake() {
    Bytes code;
    for (const auto& [name, value] : {std::pair<std::string_view, std::uint8_t>{"_S3_", 5}, {"_S4_", 6}, {"_S5_", 7}}) {
        code.push_back(0x08); // name
        code.insert(code.end(), name.begin(), name.end());
        for (const std::uint8_t byte : {std::uint8_t{0x12}, std::uint8_t{0x08}, std::uint8_t{0x04}, std::uint8_t{0x0A},
                                        value, std::uint8_t{0x0A}, value, std::uint8_t{0}, std::uint8_t{0}}) {
            code.push_back(byte);
        }
    }
    Bytes table = TableBegin("DSDT", TableHeaderSize + code.size(), 2);
    std::copy(code.begin(), code.end(), table.begin() + TableHeaderSize);
    return TableEnd(std::move(table));
}

Bytes BatbMake(std::uint32_t rootPointer) {
    Bytes table = TableBegin("BATB", 70, 1);
    GuidPut(&table, 36, BufferRecordGuid);
    NumberPut(&table, 54, BufferPlace);
    NumberPut(&table, 62, std::uint64_t{rootPointer});
    return TableEnd(std::move(table));
}

// The list of values, and after it the GUIDs that tell what each is.
Bytes UefiMake() {
    constexpr std::uint32_t count = 3;
    Bytes table = TableBegin("UEFI", 58 + count * 4 + count * 16, 1);
    GuidPut(&table, 36, ValueListGuid);
    NumberPut(&table, 52, std::uint16_t{54});
    NumberPut(&table, 54, count);
    const std::uint32_t values[count] = {0x11, SmiValue, 0x33};
    const Guid guids[count] = {OtherValueGuid, SmiValueGuid, OtherValueGuid};
    for (std::uint32_t index = 0; index < count; ++index) {
        NumberPut(&table, 58 + index * 4, values[index]);
        GuidPut(&table, 58 + count * 4 + index * 16, guids[index]);
    }
    return TableEnd(std::move(table));
}

Bytes XsdtMake() {
    const std::uint64_t entries[] = {FadtPlace, BatbPlace, UefiPlace};
    Bytes table = TableBegin("XSDT", TableHeaderSize + sizeof entries, 1);
    std::memcpy(table.data() + TableHeaderSize, entries, sizeof entries);
    return TableEnd(std::move(table));
}

Bytes RootPointerMake() {
    constexpr std::size_t size = 36;
    Bytes pointer(size);
    const std::string_view signature = "RSD PTR ";
    std::copy(signature.begin(), signature.end(), pointer.begin());
    pointer[15] = 2; // revision
    NumberPut(&pointer, 20, static_cast<std::uint32_t>(size));
    NumberPut(&pointer, 24, std::uint64_t{TablesBase});
    ChecksumPut(&pointer, 8, 20);
    ChecksumPut(&pointer, 32, size);
    return pointer;
}

// A place for the root pointer in the legacy segment, from the top down, where nothing else stands if there is one.
std::uint32_t RootPointerPlace(const Machine& machine, std::size_t size) {
    constexpr std::uint32_t bottom = 0xF0000;
    constexpr std::uint32_t top = 0xFE000;
    for (std::uint32_t place = top; place >= bottom; place -= 16) {
        if (std::none_of(machine.Memory.begin(), machine.Memory.end(), [&](const MemoryRegion& region) {
                return region.Address < place + size && region.Address + region.Data.size() > place;
            })) {
            return place;
        }
    }
    return top;
}

} // namespace

void FirmwarePrepare(Machine* machine) {
    if (machine->Firmware != FirmwareKind::Smi) {
        return;
    }
    const Bytes rootPointer = RootPointerMake();
    const std::uint32_t rootPlace = RootPointerPlace(*machine, rootPointer.size());
    const Bytes fadt = FadtMake();
    const Bytes batb = BatbMake(rootPlace);
    machine->AcpiTables.try_emplace("FACP", fadt);
    machine->AcpiTables.try_emplace("BATB", batb);
    machine->Memory.push_back({rootPlace, rootPointer});
    machine->Memory.push_back({TablesBase, XsdtMake()});
    machine->Memory.push_back({FadtPlace, fadt});
    machine->Memory.push_back({DsdtPlace, DsdtMake()});
    machine->Memory.push_back({BatbPlace, batb});
    machine->Memory.push_back({UefiPlace, UefiMake()});
    machine->Memory.push_back({BufferPlace, Bytes(BufferSize)});
}

void PortWrite(std::uint16_t port, std::uint8_t value) {
    if (MachineGet().Firmware == FirmwareKind::Smi && port == SmiPort) {
        FirmwareSmi(value);
    }
}

// The interrupt serves many; only this value is the channel's. What is no record stays unanswered.
void FirmwareSmi(std::uint8_t value) {
    if (value != SmiValue) {
        return;
    }
    Bytes buffer(BufferSize);
    MemoryRead(BufferPlace, buffer.size(), buffer.data());
    if (RecordAnswer(&buffer)) {
        MemoryWrite(BufferPlace, buffer.size(), buffer.data());
    }
}

std::uint32_t VendorVariableRead(const std::u16string& name, Bytes* data) {
    Session& session = Current();
    if (name == u"OpenSessionId") {
        session.Open = true;
        session.Number = static_cast<std::uint16_t>((session.Number + 1) % 0x1000);
        session.Answer.clear();
        *data = SessionIdentifier();
        return ERROR_SUCCESS;
    }
    if (!session.Open || name != AnswerName()) {
        return VendorVariableUnknown;
    }
    *data = session.Answer;
    return session.Answer.empty() ? ERROR_ENVVAR_NOT_FOUND : ERROR_SUCCESS;
}

std::uint32_t VendorVariableWrite(const std::u16string& name, const Bytes& data) {
    Session& session = Current();
    const Bytes identifier = SessionIdentifier();
    if (name == u"CloseSessionId") {
        if (!session.Open || data != identifier) {
            return ERROR_INVALID_PARAMETER;
        }
        FirmwareForget();
        return ERROR_SUCCESS;
    }
    if (name != u"FlashCommunication") {
        return VendorVariableUnknown;
    }
    if (!session.Open || data.size() != identifier.size() + LargestRecord ||
        !std::equal(identifier.begin(), identifier.end(), data.begin())) {
        return ERROR_INVALID_PARAMETER;
    }
    Bytes record(data.begin() + static_cast<std::ptrdiff_t>(identifier.size()), data.end());
    if (!RecordAnswer(&record)) {
        return ERROR_INVALID_PARAMETER;
    }
    session.Answer = std::move(record);
    return ERROR_SUCCESS;
}

bool FirmwareSessionOpen() {
    return Current().Open;
}

void FirmwareForget() {
    Current().Open = false;
    Current().Answer.clear();
}

} // namespace StandIn
