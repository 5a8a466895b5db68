// Sweeps: the whole program, run once for every fault of a list.
#include "tests/Sweep.h"

#include "Lib/Common/LibraryReset.h"
#include "machine/kernel/Kernel.h"
#include "machine/windows/Handles.h"
#include "machine/windows/MachineSet.h"
#include "machine/windows/Mutexes.h"
#include "machine/windows/State.h"
#include "tests/Support.h"
#include "tests/ToolRun.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <sstream>

namespace {

constexpr std::uint32_t ExitCodes[] = {0, 105, 152, 153, 171, 255};
constexpr unsigned RunSeconds = 60;

std::string Running; // the fault whose run goes on; empty: none
std::map<int, struct sigaction> ActionsBefore;

// Names the fault of a run that crashes or hangs; then the signal does what it did before.
void SignalTell(int number) {
    std::fprintf(stderr, "sweep: signal %d with %s\n", number, Running.c_str());
    sigaction(number, &ActionsBefore[number], nullptr);
    raise(number);
}

// Watches over the run with a fault, or over none.
void Watch(const std::string& fault) {
    for (const int number : {SIGALRM, SIGSEGV, SIGABRT}) {
        struct sigaction action {};
        action.sa_handler = SignalTell;
        if (Running.empty()) {
            sigaction(number, &action, &ActionsBefore[number]);
        } else if (fault.empty()) {
            sigaction(number, &ActionsBefore[number], nullptr);
        }
    }
    Running = fault;
    alarm(fault.empty() ? 0 : RunSeconds);
}

Course WholeRun(const std::vector<std::string>& arguments) {
    Course run;
    run.Output = Captured([&] {
        run.ExitCode = static_cast<std::uint32_t>(Run(arguments, [&run] {
            run.StartEnd = StandIn::Calls;
            const std::uint32_t error = ViewerMain();
            run.ListingEnd = StandIn::Calls;
            return error;
        }));
    });
    run.End = StandIn::Calls;
    run.Left = StandIn::Leftovers();
    return run;
}

bool LineMatches(const std::string& printed, const std::string& undisturbed) {
    constexpr std::size_t markSize = 3;
    const bool marked = printed.size() > markSize && (printed.ends_with("N/S") || printed.ends_with("0.0"));
    return printed == undisturbed || (marked && undisturbed.starts_with(printed.substr(0, printed.size() - markSize)));
}

} // namespace

void ProcessEnd() {
    StandIn::KernelFilesClose();
    StandIn::HandlesForget();
    StandIn::MutexesForget();
    StandIn::Process() = StandIn::ProcessState{};
    LibraryReset();
}

Course Undisturbed(const Sweep& sweep) {
    sweep.Prepare();
    Course run = WholeRun(sweep.Arguments);
    EXPECT_EQ(run.ExitCode, 0U) << run.Output;
    ProcessEnd();
    return run;
}

void SweepRun(const Sweep& sweep, const Course& undisturbed, const std::vector<SweepFault>& faults) {
    for (const SweepFault& fault : faults) {
        const std::string what = sweep.Name + ": " + fault.Call + " number " + std::to_string(fault.Number) +
                                 " fails, in " + std::string(fault.When);
        SCOPED_TRACE(what);
        Watch(what);
        sweep.Prepare();
        sweep.Fail(&fault);
        const Course run = WholeRun(sweep.Arguments);
        sweep.Fail(nullptr);
        ProcessEnd();
        EXPECT_TRUE(std::ranges::find(ExitCodes, run.ExitCode) != std::end(ExitCodes)) << "exit code " << run.ExitCode;
        std::optional<Course> next;
        if (fault.When != PhaseListing || run.Left != undisturbed.Left) {
            next = WholeRun(sweep.Arguments);
            EXPECT_EQ(next->ExitCode, 0U) << "the next process";
            EXPECT_EQ(FirstDifference(next->Output, undisturbed.Output), "") << "the next process";
            ProcessEnd();
        }
        sweep.Check(fault, run, next ? &*next : nullptr);
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << "the run printed:\n" << run.Output;
            break;
        }
    }
    Watch("");
}

Lines LinesOf(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string StrangeLine(const Lines& lines, const std::string& undisturbed) {
    const Lines whole = LinesOf(undisturbed);
    auto at = whole.begin();
    for (const std::string& line : lines) {
        at = std::find_if(at, whole.end(), [&line](const std::string& other) { return LineMatches(line, other); });
        if (at == whole.end()) {
            return line.empty() ? "(an empty one)" : line;
        }
        ++at;
    }
    return "";
}

std::string FirstDifference(const std::string& output, const std::string& undisturbed) {
    const Lines lines = LinesOf(output);
    const Lines expected = LinesOf(undisturbed);
    const auto [line, other] = std::ranges::mismatch(lines, expected);
    if (output == undisturbed) {
        return "";
    }
    return "line " + std::to_string(line - lines.begin() + 1) + " is " +
           (line != lines.end() ? '"' + *line + '"' : "missing") + ", and undisturbed " +
           (other != expected.end() ? '"' + *other + '"' : "missing");
}

void LinesCheck(const Lines& lines, const Lines& allowed) {
    for (const std::string& line : lines) {
        EXPECT_TRUE(line == ToolKey ||
                    std::ranges::any_of(allowed, [&line](const std::string& one) { return line.starts_with(one); }))
            << "left or changed: " << line;
    }
}
