// Fuzz target: the helper driver under whatever programs do with its device, on a machine with memory of which Windows
// manages some. What the driver says is compared with a model of what it may do.
// Input: whether Windows tells what it manages, and how much; a piece of memory; the firmware's tables; then
// operations, one after another.
#include "fuzz/Harness.h"
#include "machine/kernel/Kernel.h"
#include "machine/kernel/Memory.h"
#include "machine/model/AcpiBuilder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <memory>
#include <string_view>

namespace {

constexpr std::uint64_t AddressEnd = 1ULL << 32U;
constexpr std::uint32_t LargestTransfer = 16U << 20U;
constexpr std::uint32_t LargestWrite = 0x1000;
constexpr std::uint32_t WritesEnd = 0xFEC00000;
constexpr std::uint32_t ReadMemory = 0x222182;
constexpr std::uint32_t WriteMemory = 0x222186;
constexpr std::uint32_t GetBuffer = 0x22218A;
constexpr std::uint32_t ReleaseBuffer = 0x22218E;
constexpr std::uint32_t WritePort = 0x22219E;
constexpr std::uint32_t LocateRsdt = 0x2221AA;
constexpr std::uint32_t LocateRsdtNear = 0x2221C2;
constexpr std::uint32_t Codes[] = {ReadMemory, WriteMemory, GetBuffer, ReleaseBuffer,
                                   WritePort,  LocateRsdt,  0x2221B0,  LocateRsdtNear};

// Places where something begins or ends.
constexpr std::uint32_t Places[] = {
    0,        0x1000,   0x9F000,    0xA0000,    0xE0000,    0xF0000,    0x100000,
    0x110000, 0x3F0000, 0x3F000000, 0xFFFF0000, 0xFFFFFFF0, 0xE0000000, WritesEnd - LargestWrite,
    WritesEnd};

// What lies between them.
constexpr StandIn::MemoryRange BetweenPlaces[] = {
    {0x10000, 0x80000}, {0xB0000, 0x28000}, {0x120000, 0xDFFF0000 - 0x120000}, {0xE0010000, 0x1EBE0000}};

std::uint32_t Address(InputReader* input) {
    const std::uint32_t place = Places[input->Byte() % std::size(Places)];
    return place + static_cast<std::uint32_t>(static_cast<std::int16_t>(input->Word()));
}

struct File {
    void* Opened = nullptr;
    std::uint32_t Held = 0; // users of the buffer that it stands for
};

// Input kinds from here on may do what takes long.
constexpr std::uint8_t LongKind = 0xF0;

struct Model {
    int SearchesLeft = 2; // what takes long is done a few times only
    int LargeTransfersLeft = 0;
    std::vector<StandIn::MemoryRange> Managed; // as the driver has to see it
    std::vector<StandIn::MemoryRange> Windows; // to the PCI configuration
    bool WindowsTold = true;                   // false: the table of them is none
    std::uint32_t Port = 0;                    // 0: none
    bool TablesInMemory = false;               // there may be such tables that the driver finds by itself
    std::array<File, 4> Files;

    bool Open() const {
        return std::any_of(Files.begin(), Files.end(), [](const File& one) { return one.Opened != nullptr; });
    }
    std::uint64_t Users() const {
        std::uint64_t users = 0;
        for (const File& one : Files) {
            users += one.Held;
        }
        return users;
    }
    bool MayTouch(std::uint32_t code, std::uint32_t address, std::uint64_t length) const {
        const StandIn::AllocatedMemory& own = StandIn::MemoryAllocated();
        if (address >= own.Address && address + length <= own.Address + std::uint64_t{own.Data.size()}) {
            return true;
        }
        const auto free = [&](const std::vector<StandIn::MemoryRange>& ranges) {
            return std::none_of(ranges.begin(), ranges.end(), [&](const StandIn::MemoryRange& one) {
                return one.Length != 0 && address < one.Address + one.Length && one.Address < address + length;
            });
        };
        if (code == WriteMemory &&
            (length > LargestWrite || address + length > WritesEnd || !WindowsTold || !free(Windows))) {
            return false;
        }
        return address + length <= AddressEnd && free(Managed);
    }
};

void Control(InputReader* input, Model* model) {
    File& file = model->Files[input->Byte() % model->Files.size()];
    const std::uint8_t choice = input->Byte();
    std::uint32_t code = Codes[choice % std::size(Codes)];
    if (choice >= 0xC0) {
        code = 0x222000U + input->Word();
    }
    StandIn::Bytes given;
    if (const std::uint8_t kind = input->Byte(); kind < 0x80) {
        const std::uint32_t address = Address(input);
        given.resize(sizeof address);
        std::memcpy(given.data(), &address, sizeof address);
    } else {
        given = input->Take(kind % 9);
    }
    if (code == WritePort && input->Byte() < 0x80) {
        const auto port = static_cast<std::uint16_t>(model->Port + (input->Byte() < 0xC0 ? 0 : input->Word()));
        given = {static_cast<std::uint8_t>(port), static_cast<std::uint8_t>(port >> 8U), input->Byte(), 0, 0, 0};
        given[3 + input->Byte() % 3] = input->Byte() & 1U;
    }
    std::uint32_t length = input->Byte();
    if (length >= 0x40) {
        length = length == 0xFF && model->LargeTransfersLeft-- > 0 ? LargestTransfer + input->Byte() % 2
                                                                   : input->Word() % 0x2001;
    }
    const bool search =
        length == 4 && given.size() == (code == LocateRsdt ? 0U : 4U) && (code == LocateRsdt || code == LocateRsdtNear);
    if (file.Opened == nullptr || (search && model->SearchesLeft-- <= 0)) {
        return;
    }
    const std::unique_ptr<std::uint8_t[]> output(new std::uint8_t[length]);
    std::fill_n(output.get(), length, 0xEE);
    std::uint32_t first = 0;
    std::copy_n(given.begin(), std::min(given.size(), sizeof first), reinterpret_cast<std::uint8_t*>(&first));
    const bool memory = code == ReadMemory || code == WriteMemory;
    const bool allowed =
        memory && given.size() == 4 && length != 0 && length <= LargestTransfer && model->MayTouch(code, first, length);
    std::uint32_t returned = 0;
    const bool served =
        StandIn::KernelControl(file.Opened, code, given.data(), static_cast<std::uint32_t>(given.size()), output.get(),
                               length, &returned) == 0;
    if (served && std::find(std::begin(Codes), std::end(Codes), code) == std::end(Codes)) {
        Fault("a code that the driver doesn't have was served");
    }
    if (memory && served != allowed && (served || code == ReadMemory || !model->TablesInMemory)) {
        Fault(served ? "memory was touched that may not be" : "memory was refused that may be touched");
    }
    if (code == WritePort) {
        const bool right = given.size() == 6 && length == 0 && (given[3] | given[4] | given[5]) == 0 &&
                           (first & 0xFFFFU) == model->Port && model->Port != 0;
        if (served != right && !model->TablesInMemory) {
            Fault(served ? "a port was written that may not be" : "the firmware's port was refused");
        }
    }
    if (served && code == GetBuffer) {
        ++file.Held;
    } else if (code == ReleaseBuffer && served) {
        if (file.Held == 0) {
            Fault("a buffer was released that was not held");
        }
        --file.Held;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const std::uint8_t kind = input.Byte();
    StandIn::Machine machine;
    const std::uint32_t place = Address(&input);
    machine.Memory = {{place, input.Take(input.Byte())}};
    if (machine.Memory[0].Address + machine.Memory[0].Data.size() > AddressEnd) {
        machine.Memory.clear();
    }
    Model model;
    if (kind >= LongKind) {
        model.SearchesLeft = 3;
        model.LargeTransfersLeft = 1;
    }
    if (kind % 4 == 0) {
        machine.WindowsMemory.reset();
        model.Managed = {{0, 0xA0000}, {0x100000, AddressEnd - 0x100000}};
    } else {
        for (int count = kind / 4 % 4; count != 0; --count) {
            model.Managed.push_back({Address(&input), input.Word() * 16ULL});
        }
        // Mostly what is left is little, so that a search through it takes no time.
        if (kind < LongKind) {
            model.Managed.insert(model.Managed.end(), std::begin(BetweenPlaces), std::end(BetweenPlaces));
        }
        machine.WindowsMemory = model.Managed;
        const auto end = std::find_if(machine.WindowsMemory->begin(), machine.WindowsMemory->end(),
                                      [](const auto& one) { return one.Address == 0 && one.Length == 0; });
        model.Managed.assign(machine.WindowsMemory->begin(), end); // an empty range at 0 ends the system's account
    }
    // A record that leads to tables in the piece of memory.
    model.TablesInMemory = std::any_of(machine.Memory.begin(), machine.Memory.end(), [](const auto& one) {
        constexpr std::string_view record = "IFE$";
        return std::search(one.Data.begin(), one.Data.end(), record.begin(), record.end()) != one.Data.end();
    });
    const std::uint8_t tables = input.Byte();
    if (tables % 2 != 0) {
        model.Port = input.Word();
        machine.AcpiTables["FACP"] = StandIn::AcpiBuilder("FACP", 244).Put(48, model.Port).Table();
    }
    if (tables / 2 % 4 != 0) {
        StandIn::AcpiBuilder windows("MCFG", 44);
        for (std::size_t at = 44; at < 44 + tables / 2 % 4 * 16; at += 16) {
            const std::uint64_t base = Address(&input) & ~0xFFFFFU;
            const std::uint8_t first = input.Byte();
            const std::uint8_t last = input.Byte();
            windows.Put(at, base).Put(at + 10, first).Put(at + 11, last).Put(at + 12, std::uint32_t{0});
            model.Windows.push_back({base + (std::uint64_t{first} << 20U), (std::uint64_t{last} + 1 - first) << 20U});
            model.WindowsTold = model.WindowsTold && (first <= last || base >= WritesEnd);
        }
        machine.AcpiTables["MCFG"] = windows.Table();
        if (tables >= 0xE0) {
            machine.AcpiTables["MCFG"].resize(tables % 44); // less than it says
            model.WindowsTold = false;
        }
    }
    StartOver(machine);
    if (StandIn::KernelDriverStart() != 0) {
        Fault("the driver does not start");
    }
    bool running = true;
    for (int step = 0; step < 64 && !input.Empty(); ++step) {
        const std::uint8_t operation = input.Byte();
        File& file = model.Files[operation / 8 % model.Files.size()];
        if (operation % 8 == 0 && running && file.Opened == nullptr) {
            const std::uint32_t access = (input.Byte() & 0xC0U) << 24U;
            const bool administrator = input.Byte() % 4 != 0;
            const bool opened = StandIn::KernelFileOpen("RYXLIB", access, administrator, &file.Opened) == 0;
            if (opened != (administrator && access == 0xC0000000)) {
                Fault("the wrong users may open the device");
            }
        } else if (operation % 8 == 1) {
            StandIn::KernelFileClose(file.Opened);
            file = File{};
        } else if (operation % 8 == 2 && running) {
            StandIn::KernelDriverStop();
            running = false;
        } else if (operation % 8 == 3 && !running && !model.Open()) {
            running = StandIn::KernelDriverStart() == 0;
        } else {
            Control(&input, &model);
        }
        if (StandIn::MemoryAllocated().Data.empty() != (model.Users() == 0)) {
            Fault("the communication buffer doesn't go with its users");
        }
    }
    StandIn::KernelFilesClose();
    StandIn::KernelDriverStop();
    if (!StandIn::KernelLeftovers().empty()) {
        Fault("the driver left " + StandIn::KernelLeftovers().front());
    }
    return 0;
}
