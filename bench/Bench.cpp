// Measures what field requests and listings cost, beside bare copies of the memory that they are obliged to copy.
#include "Lib/API/RyxSmbios.h"
#include "Lib/Common/Argument.h"
#include "Lib/Common/ArgumentCommand.h"
#include "Lib/Common/DmiInfoEntryGet.h"
#include "Lib/Common/LibraryReset.h"
#include "machine/model/EntryPoint.h"
#include "machine/model/Faults.h"
#include "machine/model/SampleMachine.h"
#include "machine/model/SmbiosBuilder.h"
#include "machine/source/MachineChoice.h"
#include "machine/windows/MachineSet.h"
#include "tests/library/Support.h"
#include "viewer/ProgramRun.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::size_t BufferSize = 0x10000; // of the legacy segment, and of the firmware table service
constexpr std::uint32_t MemoryRead = 0x222182;

enum class Road { Legacy, Firmware };

[[noreturn]] void Fail(const std::string& what) {
    std::fprintf(stderr, "bench: %s\n", what.c_str());
    std::exit(1);
}

// A machine to measure on: its tables, and a field of one of its last structures.
struct Subject {
    std::string Name;
    StandIn::Machine (*Make)(Road road, int structures, bool whole);
    int Structures;
    std::uint32_t Instance;
    bool Whole = false;
};

StandIn::Machine SampleMake(Road road, int, bool) {
    StandIn::Machine machine = StandIn::SampleMachine();
    if (road == Road::Firmware) {
        machine.Memory.clear();
    }
    return machine;
}

// The machine of whole runs, as QUARRINET_MACHINE takes it.
std::string MachineName() {
    const char* const dump = std::getenv("BENCH_DUMP");
    return dump != nullptr && *dump != '\0' ? dump : "sample";
}

StandIn::Machine NamedMake(Road, int, bool) {
    std::string error;
    std::string notice;
    std::optional<StandIn::Machine> machine = StandIn::MachineRead(MachineName(), &error, &notice);
    if (!machine) {
        Fail(error);
    }
    return std::move(*machine);
}

// A server with a processor and memory devices only, each as firmware fills them in; or one of today, all of which is
// wanted: memory devices, where they are mapped to, and ports, with high handles.
StandIn::Machine ServerMake(Road road, int structures, bool whole) {
    StandIn::SmbiosBuilder table;
    for (int i = 0; i + 1 < structures; ++i) {
        const auto handle = static_cast<std::uint16_t>((whole ? 0x100 : 0) + i);
        const std::string slot = std::to_string(i);
        if (!whole || i % 3 == 0) {
            table.Begin(17, handle).Word(0x27).Word(0xFFFE).Word(72).Word(64).Word(0x2000).Byte(9).Byte(0);
            table.String("CPU1 DIMM " + slot).String("NODE 0 CHANNEL " + slot).Byte(0x18).Word(0x2080).Word(1866);
            table.String("Example Memory").String("0000" + slot).String("Tag " + slot).String("EM-8G-1866-R");
            table.Byte(2).Dword(0).Word(1600).Word(1350).Word(1500).Word(1500);
        } else if (i % 3 == 1) {
            table.Begin(20, handle).Dword(0).Dword(0x7FFFFF).Word(0x100).Word(0x101).Byte(0xFF).Byte(1).Byte(1);
        } else {
            table.Begin(8, handle).String("J" + slot).Byte(0).String("USB").Byte(0x12).Byte(0x10);
        }
    }
    table.Begin(127, whole ? 0xFEFF : 0xFF);
    return StandIn::MachineWithTable(table, 2, 8, road == Road::Legacy);
}

constexpr std::uint32_t PartNumber = 17 * RyxFieldsPerType + 18;

const Subject Subjects[] = {{"sample machine", SampleMake, 0, 3},
                            {"32 structures", ServerMake, 32, 31},
                            {"64 structures", ServerMake, 64, 63},
                            {"128 structures", ServerMake, 128, 127},
                            {"300 structures, whole", ServerMake, 300, 100, true}};

// Makes the machine the process's, and runs the program on it with that work.
void Run(const Subject& subject, Road road, const std::function<std::uint32_t()>& work) {
    static ArgumentVector arguments({"Quarrinet", "/type"});
    StandIn::Machine machine = subject.Make(road, subject.Structures, subject.Whole);
    machine.Console = StandIn::ConsoleKind::None;
    StandIn::MachineSet(std::move(machine));
    setenv("QUARRINET_WHOLE", subject.Whole ? "1" : "0", 1);
    LibraryReset();
    if (ProgramRun(2, arguments.Data(), work) != 0) {
        Fail("the library does not start");
    }
}

void FieldAsk(const Subject& subject) {
    RyxBin* bin = nullptr;
    if (RyxSmbiosDataGet(PartNumber, subject.Instance, &bin) != RyxOk || bin == nullptr) {
        Fail("no value");
    }
    benchmark::DoNotOptimize(bin->Data);
    RyxBinFree(bin);
}

// The whole listing; the command line is collected anew each time, as in a process of its own.
void ListingShow() {
    ArgumentRelease();
    ArgumentCommandRelease();
    if (ViewerMain() != 0) {
        Fail("the listing failed");
    }
}

// How often a listing copies the table on a road.
std::uint64_t ListingCopies(Road road) {
    const auto count = [road] {
        return road == Road::Legacy ? StandIn::ControlCount(MemoryRead) : StandIn::CallCount("GetSystemFirmwareTable");
    };
    const std::uint64_t before = count();
    ListingShow();
    return count() - before;
}

// Keeps what a listing prints in a file, and a NUL behind each print.
void PrintsKeep(std::FILE* file) {
    const auto keep = [](void* to, const char* text, std::size_t size) {
        std::fwrite(text, 1, size, static_cast<std::FILE*>(to));
        std::fputc('\0', static_cast<std::FILE*>(to));
        return static_cast<ssize_t>(size);
    };
    std::FILE* const output = stdout;
    stdout = fopencookie(file, "w", {nullptr, keep, nullptr, nullptr});
    ListingShow();
    std::fclose(stdout);
    stdout = output;
    std::fflush(file);
}

// Makes the copies that one request is obliged to make: of the table, or of the segment and of the service's buffer.
// Each goes into a block of its own, which is released again, as a request's own copies do.
void BareCopiesMake(Road road) {
    static const StandIn::Bytes source(BufferSize, 1);
    const std::size_t size = road == Road::Legacy ? StandIn::MachineGet().SmbiosTable->size() - 8 : BufferSize;
    for (int copies = road == Road::Legacy ? 1 : 2; copies != 0; --copies) {
        const std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[size]);
        std::memcpy(copy.get(), source.data(), size);
        benchmark::DoNotOptimize(copy.get());
        benchmark::ClobberMemory();
    }
}

constexpr char BareEnding[] = ", bare"; // of the names of measurements

enum class What { Field, Listing };

void Measure(benchmark::State& state, const Subject& subject, Road road, What what, bool bare) {
    Run(subject, road, [&] {
        const std::uint64_t copies = bare && what == What::Listing ? ListingCopies(road) : 1;
        for (auto _ : state) {
            if (!bare) {
                what == What::Field ? FieldAsk(subject) : ListingShow();
                continue;
            }
            for (std::uint64_t copy = 0; copy < copies; ++copy) {
                BareCopiesMake(road);
            }
        }
        return 0;
    });
}

// Keeps the least processor time of each measurement's repetitions: what disturbs them only ever adds to it.
class FastestReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                const double time = run.GetAdjustedCPUTime();
                const auto known = Fastest.emplace(run.run_name.function_name, time).first;
                known->second = std::min(known->second, time);
            }
        }
    }
    std::map<std::string, double> Fastest; // ns, by name
};

std::string RoadName(Road road) {
    return road == Road::Legacy ? "legacy road" : "firmware road";
}

const char* WholeSetting = "0"; // of the programs that are run

struct ProcessCost {
    double Seconds = std::numeric_limits<double>::max();
    long KiB = 0;
};

// Runs a program once more. What is kept is the least processor time and the most memory.
void ProcessRun(const std::vector<std::string>& words, const std::string& machine, ProcessCost* cost,
                const std::string& format = "") {
    ArgumentVector argv(words);
    ArgumentVector settings(
        {"QUARRINET_MACHINE=" + machine, "QUARRINET_FORMAT=" + format, "QUARRINET_WHOLE=" + std::string(WholeSetting)});
    pid_t process = 0;
    int state = 0;
    rusage usage{};
    if (posix_spawn(&process, argv.Data()[0], nullptr, nullptr, argv.Data(), settings.Data()) != 0 ||
        wait4(process, &state, 0, &usage) != process || state != 0) {
        Fail(words[0] + " failed");
    }
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    cost->Seconds = std::min(cost->Seconds, seconds(usage.ru_utime) + seconds(usage.ru_stime));
    cost->KiB = std::max(cost->KiB, usage.ru_maxrss);
}

// The whole program, in turns with a bare one that makes nothing but the copies and prints of its listing.
void ProcessesCompare(std::FILE* out) {
    constexpr double goal = 1.9;
    DmiTableCopy table{};
    std::uint64_t copies = 0;
    std::FILE* const prints = std::tmpfile();
    if (prints == nullptr) {
        Fail("no temporary file");
    }
    Run({"", NamedMake, 0, 0}, Road::Legacy, [&] {
        copies = ListingCopies(Road::Legacy);
        PrintsKeep(prints);
        return DmiTableCopyGet(&table);
    });
    const std::vector<std::string> bareWords{QUARRINET_BARE, std::to_string(copies), std::to_string(table.Size),
                                             "/dev/fd/" + std::to_string(fileno(prints))};
    ProcessCost listing;
    ProcessCost bare;
    for (int run = 0; run < 300; ++run) {
        ProcessRun({QUARRINET_PROGRAM, "/type"}, MachineName(), &listing);
        ProcessRun(bareWords, "", &bare);
    }
    std::fclose(prints);
    const double ratio = listing.Seconds / bare.Seconds;
    std::fprintf(out, "whole process, /type, beside a bare one: %.2f ms and %.2f ms, ratio %.2f, goal %.1f  %s\n",
                 listing.Seconds * 1000, bare.Seconds * 1000, ratio, goal, ratio <= goal ? "met" : "MISSED");
}

// The output for programs, in turns with the listing of the same table.
void FormatsCompare(std::FILE* out, const std::string& name, const std::string& machine) {
    constexpr double goal = 1.3;
    ProcessCost listing;
    ProcessCost json;
    WholeSetting = "1";
    for (int run = 0; run < 50; ++run) {
        ProcessRun({QUARRINET_PROGRAM, "/nologo", "/type"}, machine, &listing);
        ProcessRun({QUARRINET_PROGRAM, "/nologo", "/type"}, machine, &json, "json");
    }
    WholeSetting = "0";
    const double ratio = json.Seconds / listing.Seconds;
    std::fprintf(out, "JSON beside the whole listing, %s: %.2f ms and %.2f ms, ratio %.2f, goal %.1f  %s\n",
                 name.c_str(), json.Seconds * 1000, listing.Seconds * 1000, ratio, goal,
                 ratio <= goal ? "met" : "MISSED");
}

// A server's tables as a file to run on, one that goes with this process.
std::string ServerFile(int structures) {
    const StandIn::Machine machine = ServerMake(Road::Firmware, structures, true);
    const StandIn::Bytes& answer = *machine.SmbiosTable;
    StandIn::Bytes dump = StandIn::EntryPoint30(3, 9, 32, static_cast<std::uint32_t>(answer.size() - 8));
    dump.resize(32);
    dump.insert(dump.end(), answer.begin() + 8, answer.end());
    std::FILE* const file = std::tmpfile();
    if (file == nullptr || std::fwrite(dump.data(), 1, dump.size(), file) != dump.size() || std::fflush(file) != 0) {
        Fail("no temporary file");
    }
    return "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(fileno(file));
}

} // namespace

int main(int argc, char** argv) {
    // What is measured prints into the void; the results go where standard output went.
    std::FILE* const out = fdopen(dup(STDOUT_FILENO), "w");
    if (out == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) {
        return 1;
    }
    // While this process is still small, for a new one counts its parent's memory as its own until it runs the program.
    ProcessCost process;
    for (int run = 0; run < 20; ++run) {
        ProcessRun({QUARRINET_PROGRAM, "/type"}, "sample", &process);
    }

    std::vector<std::pair<std::string, Road>> names;
    for (const Road road : {Road::Legacy, Road::Firmware}) {
        for (const Subject& subject : Subjects) {
            for (const What what : {What::Field, What::Listing}) {
                names.emplace_back(
                    subject.Name + ", " + RoadName(road) + (what == What::Field ? ", field" : ", listing"), road);
                for (const bool bare : {false, true}) {
                    const std::string name = names.back().first + (bare ? BareEnding : "");
                    benchmark::RegisterBenchmark(name.c_str(), Measure, subject, road, what, bare)
                        ->Repetitions(12)
                        ->MinTime(0.02);
                }
            }
        }
    }
    std::vector<std::string> words(argv, argv + argc);
    words.emplace_back("--benchmark_enable_random_interleaving=true");
    ArgumentVector arguments(words);
    int count = argc + 1;
    benchmark::Initialize(&count, arguments.Data());
    FastestReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const std::map<std::string, double>& times = reporter.Fastest;

    std::fprintf(out, "%-40s %12s %12s %8s %6s\n", "", "time, us", "bare, us", "ratio", "goal");
    for (const auto& [name, road] : names) {
        const auto time = times.find(name);
        const auto bare = times.find(name + BareEnding);
        if (time != times.end() && bare != times.end()) { // or else filtered out
            const double ratio = time->second / bare->second;
            const double goal = road == Road::Legacy ? 15 : 2;
            std::fprintf(out, "%-40s %12.2f %12.2f %8.1f %6.0f  %s\n", name.c_str(), time->second / 1000,
                         bare->second / 1000, ratio, goal, ratio <= goal ? "met" : "MISSED");
        }
    }
    for (const Road road : {Road::Legacy, Road::Firmware}) {
        const auto small = times.find("32 structures, " + RoadName(road) + ", field");
        const auto large = times.find("128 structures, " + RoadName(road) + ", field");
        if (small != times.end() && large != times.end()) {
            const double growth = large->second / small->second;
            std::fprintf(out, "field, %s, 128 structures over 32: %.1f times the time, goal 4.0  %s\n",
                         RoadName(road).c_str(), growth, growth <= 4 ? "met" : "MISSED");
        }
    }
    const bool met = process.Seconds < 0.010 && process.KiB < 8 * 1024;
    std::fprintf(out, "whole process, /type on the sample machine: %.1f ms, %.1f MiB, goals 10 ms and 8 MiB  %s\n",
                 process.Seconds * 1000, static_cast<double>(process.KiB) / 1024, met ? "met" : "MISSED");
    ProcessesCompare(out);
    FormatsCompare(out, "sample server", "sample-server");
    for (const int structures : {300, 2000}) {
        FormatsCompare(out, std::to_string(structures) + " structures", ServerFile(structures));
    }
    return std::fclose(out) == 0 ? 0 : 1;
}
