// Writes the inputs that the fuzz targets start from: `fuzz-seeds FOLDER` makes a folder for each target in FOLDER.
#include "Lib/Common/DmiParser.h"
#include "fuzz/Places.h"
#include "machine/model/AcpiBuilder.h"
#include "machine/model/SampleMachine.h"
#include "machine/model/SmbiosBuilder.h"
#include "machine/windows/MachineSet.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <string_view>
#include <vector>

using StandIn::Bytes;

namespace {

std::string Root;

Bytes BytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

Bytes Joined(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

void Write(const std::string& target, const std::string& name, const Bytes& content) {
    std::filesystem::create_directories(Root + "/" + target);
    std::ofstream file(Root + "/" + target + "/" + name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    if (!file.flush()) {
        std::fprintf(stderr, "fuzz-seeds: %s/%s can't be written\n", target.c_str(), name.c_str());
        std::exit(1);
    }
}

void WriteAll(const std::string& target, const std::vector<std::string>& texts) {
    for (std::size_t number = 0; number < texts.size(); ++number) {
        Write(target, std::to_string(number), BytesOf(texts[number]));
    }
}

// A structure of another length: cut, or going on with ones. Its strings stay.
Bytes Stretched(const Bytes& structure, std::uint8_t length) {
    Bytes stretched(structure.begin(), structure.begin() + std::min<long>(structure[1], length));
    stretched.resize(length, 1);
    stretched[1] = length;
    stretched.insert(stretched.end(), structure.begin() + structure[1], structure.end());
    return stretched;
}

// A structure whose values, behind the header, are all the same.
Bytes Filled(const Bytes& structure, std::uint8_t value) {
    Bytes filled = structure;
    std::fill(filled.begin() + 4, filled.begin() + structure[1], value);
    return filled;
}

// A structure table's seed, for one version and with one way after the other.
void TableSeed(const std::string& name, std::uint8_t field, const Bytes& table) {
    constexpr std::uint8_t ways[] = {0, WayConsole, WayWhole, WayConsole | WayWhole, 0, WayService, WayConsole};
    constexpr std::uint8_t versions[] = {28, 32, 36, 27};
    static std::size_t number = 0;
    const std::uint8_t version = versions[number % std::size(versions)];
    Write("StructureTable", name, Joined({version, ways[number % std::size(ways)], 1, field}, table));
    if (number % 4 == 0) {
        Write("StructureTable", name + "-json", Joined({ForPrograms + 39, WayWhole, 1, field}, table));
    }
    ++number;
}

// The sample machine's structures one by one, in many lengths and with extreme values, some of them together, and
// tables that end early.
void StructureTables() {
    const Bytes answer = *StandIn::SampleMachine().SmbiosTable;
    const Bytes table(answer.begin() + 8, answer.end());
    DmiStruct structure({table.data(), table.size()});
    int number = 0;
    std::size_t start = 0;
    for (bool more = true; more; ++number) {
        const std::uint8_t type = structure.Type();
        more = DmiNextStructGet(&structure);
        const std::size_t end = more ? table.size() - structure.From(0).size() : table.size();
        const Bytes one(table.begin() + static_cast<std::ptrdiff_t>(start),
                        table.begin() + static_cast<std::ptrdiff_t>(end));
        const std::string name = "type" + std::to_string(type) + "-" + std::to_string(number);
        TableSeed(name, 0, one);
        TableSeed(name + "-cut", 0, Bytes(one.begin(), one.end() - 2));
        TableSeed(name + "-formatted", 0, Bytes(one.begin(), one.begin() + one[1]));
        TableSeed(name + "-twice", static_cast<std::uint8_t>(131 + number % 12), Joined(one, one));
        for (const std::size_t left : {std::size_t{6}, std::size_t{14}, std::size_t{19}, one.size()}) {
            Bytes cut(one.begin(), one.begin() + static_cast<std::ptrdiff_t>(std::min(left, one.size())));
            cut[1] = 0x40;
            Write("StructureTable", name + "-rows-" + std::to_string(left), Joined({28, 0, EveryRow, type}, cut));
        }
        for (const std::uint8_t value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
            TableSeed(name + "-all-" + std::to_string(value), 0, Filled(one, value));
        }
        for (const std::uint8_t length : {0x0B, 0x14, 0x28, 0x64}) {
            TableSeed(name + "-length-" + std::to_string(length), 0, Stretched(one, length));
        }
        start = end;
    }
    const Bytes server = *StandIn::SampleServer().SmbiosTable;
    DmiStruct newer({server.data() + 8, server.size() - 8});
    for (bool more = true; more; ++number) {
        const std::span<const std::uint8_t> from = newer.From(0);
        const std::string name = "server-type" + std::to_string(newer.Type()) + "-" + std::to_string(number);
        more = DmiNextStructGet(&newer);
        const std::span<const std::uint8_t> one = from.first(from.size() - (more ? newer.From(0).size() : 0));
        for (const std::uint8_t third : {std::uint8_t{1}, EveryRow}) {
            Write("StructureTable", name + "-" + std::to_string(third),
                  Joined({39, WayWhole, third, 0}, Bytes(one.begin(), one.end())));
            Write("StructureTable", name + "-json-" + std::to_string(third),
                  Joined({ForPrograms + 39, WayWhole, third, 0}, Bytes(one.begin(), one.end())));
        }
    }
    TableSeed("beginning", 0, Bytes(table.begin(), table.begin() + 512));
    TableSeed("end", 0, Bytes(table.end() - 512, table.end()));
    Write("StructureTable", "every-type", Joined({28, 0, EveryType, 0}, Bytes(table.end() - 256, table.end())));
    Write("StructureTable", "empty-segment",
          Joined({28, WayEmptySegment, 0, 0}, StandIn::SmbiosBuilder().Begin(127).Table()));
    Write("StructureTable", "empty", {28, 0, EveryType, 0});
    Write("StructureTable", "no-answer", {28, WayService, EveryType, 0});
    Write("StructureTable", "refused", {28, WayEmptySegment, EveryType, 0});
    Write("StructureTable", "selection", {28, 0, EveryRow, 255});
    StandIn::SmbiosBuilder manyStrings;
    manyStrings.Begin(11).Byte(255);
    StandIn::SmbiosBuilder many;
    for (int i = 0; i < 255; ++i) {
        manyStrings.SetString("s");
        many.Begin(126);
    }
    TableSeed("many-strings", 0, manyStrings.Table());
    for (const std::uint8_t way : {std::uint8_t{0}, WayWhole}) {
        Write("StructureTable", "many-structures-" + std::to_string(way),
              Joined({28, way, 4, 0}, many.Begin(8).String("last").Table()));
    }
    for (const std::size_t length : {1000, 1010, 1023, 3000}) {
        StandIn::SmbiosBuilder longString;
        longString.Begin(1).String(std::string(length, 'x'));
        TableSeed("long-string-" + std::to_string(length), 0, longString.Table());
    }
    StandIn::SmbiosBuilder controls;
    TableSeed("controls", 0, controls.Begin(1).String("\x1B[2J\x7F\x9B\r\n").Table());
    Write("StructureTable", "controls-console", Joined({28, WayConsole, 0, 0}, controls.Table()));
}

void EntryPoints() {
    StandIn::SmbiosBuilder builder;
    builder.Begin(0).String("Example").String("1.0").Word(0xE000).String("01/01/2020").Byte(1).Qword(0x80).Word(0);
    const Bytes table = builder.Table();
    const auto length = static_cast<std::uint16_t>(table.size());
    const auto dump = [&table](Bytes entry, std::size_t offset) {
        entry.resize(offset);
        return Joined(entry, table);
    };
    const std::pair<const char*, Bytes> seeds[] = {
        {"dump-legacy", Joined({0, 0, 0}, dump(StandIn::EntryPoint21(2, 8, 32, length, 1, length), 32))},
        {"dump-64", Joined({0, 0, 0}, dump(StandIn::EntryPoint30(3, 2, 32, length), 32))},
        {"dump-past", Joined({0, 0, 0}, StandIn::EntryPoint21(2, 8, 4096, length, 1, length))},
        {"segment", Joined({1, 0, 0}, dump(StandIn::EntryPoint21(2, 8, 0xF0020, length, 1, length), 32))},
        {"segment-top", Joined({1, 0xE0, 0xFF}, StandIn::EntryPoint21(2, 1, 0xFFFFFFF0, 0xFFFF, 1, 1))},
        {"segment-no-address", Joined({1, 0, 0}, StandIn::EntryPoint21(2, 1, 0, 16, 1, 1))},
        {"segment-no-length", Joined({1, 0, 0}, StandIn::EntryPoint21(2, 1, 0x1000, 0, 1, 1))},
        {"service-short", {2, 0, 0, 0, 2, 8}},
    };
    for (const auto& [name, content] : seeds) {
        Write("EntryPoint", name, content);
    }
    const Bytes service = *StandIn::MachineWithTable(builder, 2, 8).SmbiosTable;
    Write("EntryPoint", "service", Joined({2, 0, 0}, service));
    Bytes large = service;
    large.resize(70000);
    Write("EntryPoint", "service-large", Joined({2, 0, 0}, large));
    Bytes wrong = service;
    wrong[4] = 0xFF;
    Write("EntryPoint", "service-length", Joined({2, 0, 0}, wrong));
}

void CommandLines() {
    WriteAll("CommandLine", {
                                "/type\n4\n1\n5\n.\n",
                                "-nologo\n/TYPE\n16\n",
                                "/help\n/b\n/eps\n/nologo\n",
                                "/type\n-1\n",
                                "/type\n+16\n0\n200\n",
                                "/type\n99999999999999999999\n",
                                "@\n.\n/nologo /type \"16\" # comment \"1\"\r\n",
                                "/eps\n.\n/type 16 1 4\n\n\"\" \"two words\"\n",
                                "@\n.\n/type \"open\n",
                                ".\n# nothing\n/b\r/type\t16\n",
                                "/type\n4\n/type\n5\n",
                                "@\n@\n.\n/.type .b -\n",
                                "/_exec_\n",
                            });
    std::string many = "@\n.\n";
    for (int i = 0; i < 300; ++i) {
        many += "/a" + std::to_string(i) + (i % 20 == 0 ? "\n" : " ");
    }
    Write("CommandLine", "many", BytesOf(many));
    Write("CommandLine", "long-line", BytesOf("@\n.\n/type " + std::string(1100, '1') + "\n"));
}

void MachineFiles() {
    WriteAll("MachineFile",
             {
                 "tables = dump\n",
                 "tables = .\nwow64 = no\n",
                 "memory 0xE0000 = dump\nmemory 0xFFFFFFF0 = DMI\nfirmware-table RSMB = rsmb\n",
                 "firmware-table RSMB = none\nfirmware-table ACPI/FACP = DMI\nfirmware-table missing = yes\n",
                 "# a comment\n\nadministrator = no\nprocessors = 0xFF\nwindows = 4.0\nwow64 = unknown\n",
                 "tables = dump\nconsole = 80x25\nstate = kept\n",
                 "console = none\nconsole = terminal\nstate = .\n",
                 "tables = dump\nfirmware = variables\nfirmware-refuses type = yes\nfirmware-refuses b = no\n",
                 "tables = dump\nfirmware = smi\nprocessors = 2\n",
                 "tables = dump\nfail = DeviceIoControl 0x222182@3\nfail = CreateFileA@1\nfail = RegOpenKeyExA\n",
                 "tables = missing\n",
                 "memory 0x = dump\nwindows = 1.2.3\nconsole = 0x0\nfail = Nothing@0\n",
             });
}

// What the stand-in's own firmware publishes, reached in every way.
void RootTables() {
    StandIn::Machine machine;
    machine.Firmware = StandIn::FirmwareKind::Smi;
    StandIn::MachineSet(machine);
    Bytes tables(0x700);
    for (const StandIn::MemoryRegion& region : StandIn::MachineGet().Memory) {
        for (std::size_t i = 0; i < region.Data.size(); ++i) {
            if (region.Address + i >= TablesBase && region.Address + i < TablesBase + tables.size()) {
                tables[region.Address + i - TablesBase] = region.Data[i];
            }
        }
    }
    for (const std::uint8_t way : {WayRegistry, WayMakerTable, WaySegment, WayFadt}) {
        Write("RootTable", "xsdt-" + std::to_string(way), Joined({way}, tables));
    }
    // The same as an RSDT, whose entries have 32 bits.
    Bytes rsdt = tables;
    rsdt[0] = 'R';
    for (std::size_t entry = 0; entry < 3; ++entry) {
        std::memcpy(&rsdt[36 + 4 * entry], &tables[36 + 8 * entry], 4);
    }
    rsdt[4] = 48;
    Write("RootTable", "rsdt-segment", Joined({WaySegment}, rsdt));
    Write("RootTable", "rsdt-registry", Joined({WayRegistry}, rsdt));
    Write("RootTable", "every-way", Joined({15}, rsdt));
    // The DSDT's neighbourhood has an RSDT; the driver's record names the place to search.
    StandIn::AcpiBuilder fadt("FACP");
    fadt.Put(40, TablesBase + 0x80).Put(0x80, std::string_view(reinterpret_cast<const char*>(rsdt.data()), 48));
    Write("RootTable", "search", Joined({WayFadt}, fadt.Table()));
}

void FirmwareAnswers() {
    const auto piece = [](const Bytes& bytes) {
        return Joined({static_cast<std::uint8_t>(bytes.size()), static_cast<std::uint8_t>(bytes.size() >> 8)}, bytes);
    };
    const auto answer = [](std::uint64_t status, const Bytes& payload) {
        Bytes record(40);
        std::memcpy(&record[8], &status, sizeof status);
        return Joined(record, payload);
    };
    Bytes info(64, 1);
    const Bytes identifier{'Q', 0, 'S', 0, 'A', 0, '1', 0};
    for (const std::uint8_t which : {std::uint8_t{0}, std::uint8_t{1}}) {
        const Bytes start = which == 0 ? Joined({0}, piece(identifier)) : Bytes{1};
        const std::string name = which == 0 ? "variables-" : "buffer-";
        Write("FirmwareAnswers", name + "allowed",
              Joined(start, Joined(piece(answer(0, info)), piece(answer(0, info)))));
        Write("FirmwareAnswers", name + "refused",
              Joined(start, Joined(piece(answer(0, info)), piece(answer(0x8000000000000062, info)))));
        Write("FirmwareAnswers", name + "unsupported", Joined(start, piece(answer(0x8000000000000003, {}))));
        Write("FirmwareAnswers", name + "short", Joined(start, piece(Bytes(39))));
        Write("FirmwareAnswers", name + "long", Joined(start, piece(answer(0, Bytes(9000)))));
    }
    Write("FirmwareAnswers", "variables-short-identifier", Joined({0}, piece({'Q', 0})));
    Write("FirmwareAnswers", "variables-long-identifier", Joined({0}, piece(Bytes(9000, 'x'))));
}

// Operations on the driver's device: opening it, each code with lengths that fit, closing and unloading.
void DriverControls() {
    const Bytes open{0x00, 0xC0, 1, 0x08, 0xC0, 1};
    const Bytes close{0x01, 0x09, 0x02};
    const auto control = [](std::uint8_t file, std::uint8_t code, std::uint8_t place, std::uint8_t length) {
        return Bytes{4, file, code, 0, place, 0, 0, length};
    };
    const auto bare = [](std::uint8_t code, std::uint8_t length) { return Bytes{4, 0, code, 0x87, length}; };
    const Bytes port{4, 0, 4, 0x87, 0, 0, 0xD5, 0, 0, 0};
    const Bytes tables{3, 0xB2, 0, 12, 0, 0, 0, 4}; // a port, and a window of 5 MiB
    int number = 0;
    for (const std::uint8_t kind : {0x00, 0x01, 0x07, 0x0D}) {
        Bytes input{kind, 4, 0x10, 0, 24};
        const Bytes record{'I', 'F', 'E', '$', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x11, 0};
        input = Joined(input, record);
        for (int range = kind / 4 % 4; range != 0; --range) {
            input = Joined(input, {static_cast<std::uint8_t>(range), 0, 0, 0x80, 0});
        }
        input = Joined(Joined(input, tables), open);
        for (const std::uint8_t place : {1, 2, 3, 5, 7, 11, 12, 13, 14}) {
            input = Joined(Joined(input, control(0, 0, place, 16)), control(1, 1, place, 16));
        }
        input = Joined(Joined(input, control(0, 2, 1, 4)), control(1, 2, 1, 4));
        input = Joined(Joined(input, control(0, 0, 9, 32)), control(0, 3, 1, 0));
        input = Joined(Joined(input, port), bare(6, 2));
        input = Joined(Joined(input, bare(5, 4)), control(0, 7, 6, 4));
        Write("DriverControl", std::to_string(number++), Joined(input, close));
        Write("DriverControl", std::to_string(number++), Joined(input, {0x02, 0x09, 0x01, 0x03}));
    }
    // A record that leads to a root table, with another one behind it.
    Bytes found{'I', 'F', 'E', '$', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x40, 0, 0x0E, 0};
    found.resize(0x30);
    for (int copies = 2; copies != 0; --copies) {
        found = Joined(found, {'R', 'S', 'D', 'T', 36, 0, 0, 0});
        found.resize(found.size() + 28);
    }
    for (const std::uint8_t kind : {0x01, 0xF1}) {
        const Bytes start =
            Joined(Joined({kind, 4, 0x10, 0, static_cast<std::uint8_t>(found.size())}, found), Joined({0}, open));
        const std::string name = "search-" + std::to_string(kind);
        Write("DriverControl", name + "-record", Joined(Joined(Joined(start, bare(5, 4)), bare(5, 4)), close));
        Write("DriverControl", name + "-near", Joined(Joined(start, control(0, 7, 4, 4)), close));
        Write("DriverControl", name + "-below", Joined(Joined(start, control(0, 7, 6, 4)), close));
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz-seeds FOLDER\n");
        return 2;
    }
    Root = argv[1];
    StructureTables();
    EntryPoints();
    CommandLines();
    MachineFiles();
    RootTables();
    FirmwareAnswers();
    DriverControls();
    return 0;
}
