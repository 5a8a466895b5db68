// The maker's firmware: request records, its variables, and its communication buffer with the tables that tell of it.
#include "machine/kernel/FirmwareModel.h"

#include "Lib/LittleEndian.h"
#include "machine/kernel/Memory.h"
#include "machine/model/AcpiBuilder.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <utility>

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
constexpr std::uint16_t SmiPort = 0x142E; // both bytes of the number count
constexpr std::uint8_t SmiValue = 0xD5;

struct Session {
    bool Open = false;
    std::uint16_t Number = 0; // of sessions so far
    Bytes Answer;             // empty while no request has been answered
};

Session& Current() {
    static Session session;
    return session;
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
        BytesPut(*record, HeaderSize, HostSession);
        for (std::uint64_t value = 1; value <= 5; ++value) {
            BytesPut(*record, HeaderSize + value * 8, value << 12U);
        }
        BytesPut(*record, HeaderSize + 48, HostBufferSize);
        BytesPut(*record, HeaderSize + 56, PlatformFlags);
        return Success;
    case PlatformDetail:
        if (payload < 8) {
            return InvalidParameter;
        }
        BytesPut(*record, HeaderSize, std::uint32_t{1});
        BytesPut(*record, HeaderSize + 4, std::uint32_t{0});
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
    const std::uint32_t length = LittleEndianRead<std::uint32_t>(bytes->data() + LengthOffset);
    if (length < HeaderSize || length > bytes->size()) {
        return false;
    }
    Bytes record(bytes->begin(), bytes->begin() + static_cast<std::ptrdiff_t>(length));
    BytesPut(record, StatusOffset, CommandAnswer(LittleEndianRead<std::uint64_t>(record.data()), &record));
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

Bytes FadtMake() {
    AcpiBuilder table("FACP", 244, 5);
    table.Put(40, DsdtPlace).Put(48, std::uint32_t{SmiPort}).Put(64, std::uint32_t{0x1804});
    table.Put(112, std::uint32_t{1} << 21U).Put(120, std::uint64_t{0xCF9}).Put(128, std::uint8_t{0x06});
    return table.Table();
}

// Names the sleep states, each a package of four elements of which the first two are its values.
Bytes DsdtMake() {
    AcpiBuilder table("DSDT", AcpiHeaderSize, 2);
    std::size_t at = AcpiHeaderSize;
    for (const auto& [name, value] : {std::pair("_S3_", std::uint8_t{5}), {"_S4_", 6}, {"_S5_", 7}}) {
        const std::array<std::uint8_t, 9> package{0x12, 0x08, 0x04, 0x0A, value, 0x0A, value, 0, 0};
        table.Put(at, std::uint8_t{0x08}).Put(at + 1, name).Put(at + 5, package);
        at += 5 + package.size();
    }
    return table.Table();
}

Bytes BatbMake(std::uint32_t rootPointer) {
    AcpiBuilder table("BATB", 70);
    table.Put(36, BufferRecordGuid).Put(54, BufferPlace).Put(62, std::uint64_t{rootPointer});
    return table.Table();
}

// The list of values, and after it the GUIDs that tell what each is.
Bytes UefiMake() {
    constexpr std::uint32_t count = 3;
    const std::array<std::uint32_t, count> values{0x11, SmiValue, 0x33};
    const std::array<Guid, count> guids{OtherValueGuid, SmiValueGuid, OtherValueGuid};
    AcpiBuilder table("UEFI");
    table.Put(36, ValueListGuid).Put(52, std::uint16_t{54}).Put(54, count);
    table.Put(58, values).Put(58 + sizeof values, guids);
    return table.Table();
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
    const Bytes rootPointer = AcpiRootPointer(TablesBase, 0);
    const std::uint32_t rootPlace = RootPointerPlace(*machine, rootPointer.size());
    const Bytes fadt = FadtMake();
    const Bytes batb = BatbMake(rootPlace);
    machine->AcpiTables.try_emplace("FACP", fadt);
    machine->AcpiTables.try_emplace("BATB", batb);
    machine->Memory.push_back({rootPlace, rootPointer});
    machine->Memory.push_back({TablesBase, AcpiRootTable<std::uint64_t>({FadtPlace, BatbPlace, UefiPlace})});
    machine->Memory.push_back({FadtPlace, fadt});
    machine->Memory.push_back({DsdtPlace, DsdtMake()});
    machine->Memory.push_back({BatbPlace, batb});
    machine->Memory.push_back({UefiPlace, UefiMake()});
    machine->Memory.push_back({BufferPlace, Bytes(BufferSize)});
}

// Interrupts with other values are not for the request channel. A buffer without a request record gets no answer.
void PortWrite(std::uint16_t port, std::uint8_t value) {
    if (MachineGet().Firmware != FirmwareKind::Smi || port != SmiPort || value != SmiValue) {
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
