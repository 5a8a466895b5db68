// Fuzz target: a structure table through the decoders of all types that it holds, on either road.
// Input: version; road; end of the instance range; selected field; the table.
#include "Lib/Common/DmiParser.h"
#include "Lib/Platform/StandIn/SmbiosBuilder.h"
#include "fuzz/Harness.h"
#include "viewer/StructDispatch.h"
#include "viewer/ViewerState.h"

#include <algorithm>
#include <bitset>

namespace {

constexpr std::uint32_t TableAddress = 0xE0000;
constexpr unsigned LargestRange = 6;

// The types of a table's structures as they come up when it is walked.
std::bitset<256> TypesOf(const StandIn::Bytes& table) {
    std::bitset<256> types;
    DmiStruct structure({table.data(), table.size()});
    for (int examined = 0; examined < 128 && structure.Exists(); ++examined) {
        types.set(structure.Type());
        if (!DmiNextStructGet(&structure)) {
            break;
        }
    }
    return types;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const std::uint8_t version = input.Byte() % 100;
    const bool legacy = input.Byte() % 2 == 0;
    const std::uint8_t instanceEnd = static_cast<std::uint8_t>(2 + input.Byte() % (LargestRange - 1));
    const std::uint8_t field = input.Byte();
    StandIn::Bytes table = input.Take(0xFFFF);
    const std::bitset<256> types = TypesOf(table);

    const auto major = static_cast<std::uint8_t>(version / 10);
    const auto minor = static_cast<std::uint8_t>(version % 10);
    const auto length = static_cast<std::uint32_t>(table.size());
    const StandIn::Bytes entry =
        legacy ? StandIn::EntryPoint21(major, minor, TableAddress, static_cast<std::uint16_t>(length), 1, 1)
               : StandIn::EntryPoint30(major, minor, TableAddress, length);
    StandIn::Machine machine;
    std::string error;
    if (!StandIn::TablesInstall(machine, entry, std::move(table), &error)) {
        Fault(error);
    }
    StartWithDriver(std::move(machine));
    ViewerInstanceEnd = instanceEnd;
    ViewerFieldSelected = field < 128 ? 0 : field - 127;
    for (std::size_t type = 0; type < StructDecoderTable.size(); ++type) {
        if (types[type] && StructDecoderTable[type] != nullptr && (*StructDecoderTable[type])() != RyxOk) {
            Fault("a decoder failed");
        }
    }
    ViewerBinsRelease();
    return 0;
}
