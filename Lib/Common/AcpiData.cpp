// What the library takes from the ACPI tables.
#include "Lib/Common/AcpiData.h"

#include "Lib/Common/AcpiXsdtTableGet.h"
#include "Lib/Common/Guid.h"
#include "Lib/LittleEndian.h"
#include "Lib/Platform/Driver.h"
#include "Lib/Platform/GetRsdtFromSystemTable.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

namespace {

constexpr std::uint64_t AddressEnd = 1ULL << 32U;
constexpr std::uint32_t TableHeadSize = 8; // signature and length
constexpr std::uint32_t DsdtLargest = 4U << 20U;
constexpr std::uint32_t DefaultSmiValue = 0xE9;

// Offsets in the FADT.
constexpr std::size_t FadtRevision = 8;
constexpr std::size_t FadtDsdt = 40;
constexpr std::size_t FadtSmiPort = 48;
constexpr std::size_t FadtPm1aControl = 64;
constexpr std::size_t FadtFlags = 112;
constexpr std::size_t FadtResetPort = 120;
constexpr std::size_t FadtResetValue = 128;
constexpr std::uint8_t FadtRevisionWithIdle = 5;
constexpr std::uint32_t FadtFlagLowPowerIdle = 1U << 21U;

// Offsets in the maker's tables.
constexpr std::size_t MakerGuid = 36;
constexpr std::size_t MakerValue = 54;
constexpr std::size_t MakerNext = 58;

constexpr std::size_t SleepTypeDistance = 8; // from a sleep state's name to its value in the DSDT

constexpr Guid CommunicationBufferGuid = GuidFromText("d29563e8-cfe1-4d41-8e54-da4322fede5c");
constexpr Guid ValueListGuid = GuidFromText("0d9fb197-cefc-4e91-acb1-2535d9e5a844");
constexpr Guid SmiValueGuid = GuidFromText("d8afdc58-6e22-42f8-9966-36ff788c9caf");
constexpr Guid UpdateAreaGuid = GuidFromText("15e896be-0cdf-47e2-9b97-a28a398bc765");

AcpiState State;

// The bytes of one table, no more than were read.
struct TableBytes {
    const std::uint8_t* Data;
    std::uint32_t Length;

    bool Holds(std::uint64_t offset, std::uint64_t size) const { return offset + size <= Length; }

    // Reads a value; one that the table is too short for stays as it is.
    template <typename Value> bool Read(std::size_t offset, Value* value) const {
        if (!Holds(offset, sizeof *value)) {
            return false;
        }
        *value = LittleEndianRead<Value>(Data + offset);
        return true;
    }

    bool GuidIs(std::uint64_t offset, const Guid& guid) const {
        return Holds(offset, guid.size()) && std::memcmp(Data + offset, guid.data(), guid.size()) == 0;
    }

    std::string_view Text() const { return {reinterpret_cast<const char*>(Data), Length}; }
};

void SleepTypeFind(const TableBytes& dsdt, const char* name, std::uint8_t* value) {
    if (dsdt.Length <= SleepTypeDistance) {
        return;
    }
    // The last name that still has its value behind it.
    const std::size_t at = dsdt.Text().rfind(name, dsdt.Length - SleepTypeDistance - 1);
    if (at != std::string_view::npos) {
        *value = dsdt.Data[at + SleepTypeDistance];
    }
}

void UpdateDepotFind(const TableBytes& table, std::uint32_t address) {
    const std::size_t at = table.Text().find("PNVS");
    if (at != std::string_view::npos) {
        State.UpdateDepot = address + static_cast<std::uint32_t>(at);
    }
}

void DsdtCollect(std::uint32_t address) {
    std::uint8_t head[TableHeadSize];
    if (address > AddressEnd - TableHeadSize || PhysicalMemoryRead(address, sizeof head, head) != RyxOk) {
        return;
    }
    const auto length = LittleEndianRead<std::uint32_t>(head + AcpiLengthOffset);
    if (length < AcpiHeaderSize || length > DsdtLargest || length > AddressEnd - address) {
        return;
    }
    std::unique_ptr<std::uint8_t[]> copy(new (std::nothrow) std::uint8_t[length]);
    if (copy == nullptr || PhysicalMemoryRead(address, length, copy.get()) != RyxOk) {
        return;
    }
    const TableBytes dsdt{copy.get(), length};
    SleepTypeFind(dsdt, "_S3_", &State.SleepS3);
    SleepTypeFind(dsdt, "_S4_", &State.SleepS4);
    SleepTypeFind(dsdt, "_S5_", &State.SleepS5);
    UpdateDepotFind(dsdt, address);
    State.Dsdt = std::move(copy);
    State.DsdtLength = length;
}

void FadtCollect(const TableBytes& fadt) {
    fadt.Read(FadtSmiPort, &State.SmiPort);
    fadt.Read(FadtPm1aControl, &State.Pm1aControl);
    fadt.Read(FadtResetPort, &State.ResetPort);
    fadt.Read(FadtResetValue, &State.ResetValue);
    std::uint8_t revision = 0;
    std::uint32_t flags = 0;
    fadt.Read(FadtRevision, &revision);
    fadt.Read(FadtFlags, &flags);
    State.LowPowerIdle = revision == FadtRevisionWithIdle && (flags & FadtFlagLowPowerIdle) != 0;
    std::uint32_t dsdt = 0;
    if (fadt.Read(FadtDsdt, &dsdt) && dsdt != 0) {
        DsdtCollect(dsdt);
    }
}

void BufferTableCollect(const TableBytes& table) {
    if (table.GuidIs(MakerGuid, CommunicationBufferGuid)) {
        table.Read(MakerValue, &State.CommunicationBuffer);
    }
}

// A list of n values, then n GUIDs that tell what they are.
void ValueListCollect(const TableBytes& table) {
    std::uint32_t count = 0;
    if (!table.Read(MakerValue, &count) ||
        !table.Holds(MakerNext, std::uint64_t{count} * (sizeof(std::uint32_t) + sizeof(Guid)))) {
        return;
    }
    const std::size_t guids = MakerNext + std::size_t{count} * sizeof(std::uint32_t);
    for (std::size_t i = 0; i < count; ++i) {
        if (table.GuidIs(guids + i * sizeof(Guid), SmiValueGuid)) {
            table.Read(MakerNext + i * sizeof(std::uint32_t), &State.SmiValue);
            return;
        }
    }
}

void FirmwareTableCollect(const TableBytes& table) {
    if (table.GuidIs(MakerGuid, ValueListGuid)) {
        ValueListCollect(table);
    } else if (table.GuidIs(MakerGuid, CommunicationBufferGuid)) {
        if (State.CommunicationBuffer == 0) {
            table.Read(MakerValue, &State.CommunicationBuffer);
        }
    } else if (table.GuidIs(MakerGuid, UpdateAreaGuid)) {
        table.Read(MakerValue, &State.UpdateAreaSize);
        table.Read(MakerNext, &State.UpdateArea);
    }
}

// Reads one table of the root table's list and takes what it is known for. A table that can't be read, or that states a
// length beyond the work buffer or the address space, is only listed.
void TableCollect(std::uint64_t address, std::uint8_t* work) {
    if (address == 0 || address > AddressEnd - TableHeadSize) {
        return;
    }
    const auto from = static_cast<std::uint32_t>(address);
    std::uint8_t head[TableHeadSize];
    if (PhysicalMemoryRead(from, sizeof head, head) != RyxOk) {
        return;
    }
    const AcpiTable listed{from, LittleEndianRead<std::uint32_t>(head),
                           LittleEndianRead<std::uint32_t>(head + AcpiLengthOffset)};
    State.Tables[State.TableCount++] = listed;

    const bool fadt = AcpiSignatureIs(head, "FACP");
    const bool buffer = AcpiSignatureIs(head, "BATB");
    const bool firmware = AcpiSignatureIs(head, "UEFI");
    const bool code = AcpiSignatureIs(head, "SSDT");
    if ((!fadt && !buffer && !firmware && !code) || listed.Length < AcpiHeaderSize ||
        listed.Length > AcpiWorkBufferSize || listed.Length > AddressEnd - address ||
        PhysicalMemoryRead(from, listed.Length, work) != RyxOk) {
        return;
    }
    const TableBytes table{work, listed.Length};
    if (fadt) {
        FadtCollect(table);
    } else if (buffer) {
        BufferTableCollect(table);
    } else if (firmware) {
        FirmwareTableCollect(table);
    } else {
        UpdateDepotFind(table, from);
    }
}

RyxStatus RootTableCollect(const RyxBin& root) {
    std::uint32_t entrySize = 0;
    if (AcpiSignatureIs(root.Data, "XSDT")) {
        entrySize = 8;
    } else if (AcpiSignatureIs(root.Data, "RSDT")) {
        entrySize = 4;
    } else {
        return RyxErrorRootTable;
    }
    const std::uint32_t length = std::min(LittleEndianRead<std::uint32_t>(root.Data + AcpiLengthOffset), root.Size);
    const std::uint32_t count = length < AcpiHeaderSize ? 0 : (length - AcpiHeaderSize) / entrySize;
    const std::unique_ptr<std::uint8_t[]> work(new (std::nothrow) std::uint8_t[AcpiWorkBufferSize]);
    State.Tables.reset(new (std::nothrow) AcpiTable[count]);
    State.TableCount = 0;
    if (work == nullptr || State.Tables == nullptr) {
        return RyxErrorBuffer;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        TableCollect(LittleEndianRead(root.Data + AcpiHeaderSize + std::size_t{i} * entrySize, entrySize), work.get());
    }
    return RyxOk;
}

RyxStatus Collect() {
    RyxBin* root = nullptr;
    if (const RyxStatus status = AcpiXsdtTableGet(&root); status != RyxOk) {
        return status;
    }
    const RyxBinOwner owner(root);
    if (const RyxStatus status = RootTableCollect(*root); status != RyxOk) {
        return status;
    }
    if (State.SmiValue == 0) {
        State.SmiValue = DefaultSmiValue;
    }
    return State.CommunicationBuffer != 0 ? RyxOk : RyxErrorNoCommunication;
}

} // namespace

const AcpiState& AcpiStateGet() {
    return State;
}

void AcpiStateReset() {
    State = AcpiState{};
    SystemTableRelease();
}

RyxStatus AcpiDataCollect() {
    if (!State.Collected) {
        State.Result = Collect();
        State.Collected = true;
    }
    return State.Result;
}

void AcpiDataRelease() {
    State.Tables.reset();
    State.TableCount = 0;
    State.Dsdt.reset();
    State.DsdtLength = 0;
    SystemTableRelease();
}
