// Hands a machine over to a runner of Windows programs: physical memory and the firmware table service's answer.
//
//     machine-export MACHINE MEMORY-FILE TABLE-FILE
//
// MACHINE is chosen as by QUARRINET_MACHINE. The memory file holds one record for each region (address, length, bytes;
// both numbers little-endian in 4 bytes), the table file the answer with its header, empty when there is none.
#include "machine/model/Machine.h"
#include "machine/source/MachineChoice.h"

#include <cstdio>
#include <fstream>

namespace {

void Append(StandIn::Bytes& bytes, std::uint64_t value) {
    for (unsigned place = 0; place < 4; ++place) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * place)));
    }
}

bool Write(const char* path, const StandIn::Bytes& content) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    return file.flush().good();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: machine-export MACHINE MEMORY-FILE TABLE-FILE\n", stderr);
        return 2;
    }
    std::string error;
    std::string notice;
    const std::optional<StandIn::Machine> machine = StandIn::MachineRead(argv[1], &error, &notice);
    if (!machine) {
        std::fprintf(stderr, "machine-export: %s\n", error.c_str());
        return 1;
    }
    StandIn::Bytes memory;
    for (const StandIn::MemoryRegion& region : machine->Memory) {
        // The image has 32-bit addresses; nobody can ask for more.
        if (region.Address + region.Data.size() <= 0x100000000) {
            Append(memory, region.Address);
            Append(memory, region.Data.size());
            memory.insert(memory.end(), region.Data.begin(), region.Data.end());
        }
    }
    if (!Write(argv[2], memory) || !Write(argv[3], machine->SmbiosTable.value_or(StandIn::Bytes()))) {
        std::fputs("machine-export: a file can't be written\n", stderr);
        return 1;
    }
    return 0;
}
