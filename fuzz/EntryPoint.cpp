// Fuzz target: an entry point, as a dump, in the legacy segment, or as the firmware table service's header.
// Input: where; place in the segment; bytes.
#include "fuzz/Harness.h"
#include "machine/source/MachineTables.h"

namespace {

constexpr std::uint64_t Segment = 0xF0000;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const std::uint8_t where = input.Byte() % 3;
    const std::uint16_t place = input.Word();
    StandIn::Bytes bytes = input.Rest();
    StandIn::Machine machine;
    if (where == 0) {
        std::string error;
        std::string notice;
        if (!StandIn::IsDump(bytes) || !StandIn::DumpInstall(machine, "dump", bytes, &error, &notice)) {
            return -1;
        }
    } else if (where == 1) {
        machine.Memory.push_back({Segment + place, std::move(bytes)});
    } else {
        machine.SmbiosTable = std::move(bytes);
    }
    StartOver(std::move(machine));
    ProgramRun({"/eps", "/type", "0"});
    LeftoversCheck();
    return 0;
}
