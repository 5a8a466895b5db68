// Fuzz target: a structure table through the decoders of the types that it holds, on either road.
// Input: version and kind of output; ways; instances, every row or every type; selected field; the table.
#include "Lib/API/RyxSmbios.h"
#include "Lib/Common/DmiInfoEntryGet.h"
#include "Lib/Common/DmiParser.h"
#include "Lib/Common/LibraryContext.h"
#include "fuzz/Harness.h"
#include "fuzz/JsonLines.h"
#include "fuzz/Places.h"
#include "machine/model/SmbiosBuilder.h"
#include "viewer/Report.h"
#include "viewer/StructDispatch.h"
#include "viewer/StructRead.h"
#include "viewer/ViewerState.h"

#include <algorithm>
#include <bitset>

namespace {

constexpr std::uint32_t TableAddress = 0xE0000;
constexpr std::uint32_t SegmentAddress = 0xF0000;
constexpr std::size_t SegmentSize = 0x10000;
constexpr unsigned MostInstances = 3;
constexpr std::uint8_t MostRows = 43; // of any type, and one more

// The types of a table's structures as they come up when it is walked.
std::bitset<256> TypesOf(const StandIn::Bytes& table) {
    std::bitset<256> types;
    DmiStruct structure({table.data(), table.size()});
    while (structure.Exists()) {
        types.set(structure.Type());
        if (!DmiNextStructGet(&structure)) {
            break;
        }
    }
    return types;
}

// The library and the driver start once: an input replaces the machine's tables, and makes the library forget those
// that it has found and the viewer what it has shown.
bool Started() {
    StandIn::Machine machine;
    machine.Memory = {{TableAddress, {}}, {SegmentAddress, StandIn::Bytes(SegmentSize)}};
    StartWithDriver(std::move(machine));
    return true;
}

// Puts the table into the machine; no table makes the machine refuse what it is asked for. Where the segment holds no
// entry point, or one without an address, the firmware table service answers, and every request asks it anew. One
// without an address ends the search through the segment at once, which otherwise takes far longer than all else.
void TablePut(StandIn::Bytes table, std::uint8_t version, bool legacy, bool emptySegment) {
    const auto major = static_cast<std::uint8_t>(version / 10);
    const auto minor = static_cast<std::uint8_t>(version % 10);
    const auto length = static_cast<std::uint16_t>(table.size());
    StandIn::Machine& machine = StandIn::MachineGet();
    StandIn::Bytes entry = StandIn::EntryPoint21(major, minor, legacy ? TableAddress : 0, length, 1, 1);
    machine.WindowsMemory->clear();
    if (table.empty() && emptySegment) {
        machine.WindowsMemory->push_back({SegmentAddress, SegmentSize});
    }
    if (!legacy && !table.empty()) {
        StandIn::Bytes answer{0, major, minor, 0, entry[22], entry[23], 0, 0};
        answer.insert(answer.end(), table.begin(), table.end());
        machine.SmbiosTable = std::move(answer);
    }
    std::fill_n(entry.begin(), emptySegment ? entry.size() : 0, std::uint8_t{0});
    std::copy(entry.begin(), entry.end(), machine.Memory[1].Data.begin());
    machine.Memory[0].Data = std::move(table);
}

// Asks for all rows of a type, also those that its decoder gets to only where all before them are there.
void RowsRead(std::uint8_t type, std::uint8_t selected) {
    FieldValue value;
    std::string_view text;
    for (std::uint8_t row = 0; row < MostRows; ++row) {
        StructFieldRead(type * RyxFieldsPerType + row, 1, &value);
    }
    StructAreaRead(type, 1, selected, &value);
    StructStringsRead(type, 1, &value);
    StructStringRead(type * RyxFieldsPerType + selected, 2, &text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool started = Started();
    InputReader input(data, size);
    const std::uint8_t first = input.Byte();
    const std::uint8_t version = first % 100;
    const std::uint8_t ways = input.Byte();
    const std::uint8_t instances = input.Byte();
    const std::uint8_t field = input.Byte();
    StandIn::Bytes table = input.Take(0xFFFF);
    const std::bitset<256> types = TypesOf(table);
    const bool every = instances >= EveryType;
    const bool rows = instances >= EveryRow && !every;
    const bool service = (ways & WayService) == WayService;

    TablePut(std::move(table), version, !service, (ways & WayEmptySegment) == WayEmptySegment);
    DmiInfoReset();
    ViewerStateReset();
    ViewerJson = first >= ForPrograms;
    LibraryContextGet().Options.Byte[RyxOptionQuiet] = ViewerJson ? 1 : 0; // messages are none of it
    std::string output;
    OutputCollect(ViewerJson ? &output : nullptr);
    LibraryContextGet().WholeTable = (ways & WayWhole) != 0;
    StandIn::MachineGet().Console = (ways & WayConsole) != 0 ? StandIn::ConsoleKind::Fixed : StandIn::ConsoleKind::None;
    ViewerInstanceEnd = service || every ? 2 : static_cast<std::uint8_t>(2 + instances % MostInstances);
    ViewerFieldSelected = field < 128 ? 0 : field - 127;
    if (rows) {
        SmbiosVersionGet(&ViewerSmbiosMajor, &ViewerSmbiosMinor);
        SelectionCheck(field, instances % MostInstances, ways);
        StructuresCount();
    }
    for (std::size_t type = 0; type < StructDecoderTable.size(); ++type) {
        const StructDecoder* const decoder = StructDecoderFind(type);
        if ((!types[type] && !every) || decoder == nullptr) {
            continue;
        }
        if ((*decoder)(static_cast<std::uint8_t>(type)) != RyxOk || !started) {
            Fault("a decoder failed");
        }
        if (rows) {
            RowsRead(static_cast<std::uint8_t>(type), field);
        }
        if (service) {
            break; // one type is enough of what takes longer
        }
    }
    OutputCollect(nullptr);
    if (const std::string fault = JsonLinesFault(output); !fault.empty()) {
        Fault(fault);
    }
    ReportRelease();
    ViewerBinsRelease();
    // What an input leaves behind would look like a leak.
    StandIn::MachineGet().Memory[0].Data = {};
    StandIn::MachineGet().SmbiosTable.reset();
    return 0;
}
