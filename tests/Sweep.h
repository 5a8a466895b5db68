// Sweeps: the whole program, run once for every fault of a list.
#pragma once

#include "machine/model/Faults.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

using Lines = std::vector<std::string>;

inline constexpr char ToolKey[] = "registry key Software\\RyxTool"; // stays after every run

// The parts of a run, by the names that failures tell.
using Phase = std::string_view;
inline constexpr Phase PhaseStart = "the start";
inline constexpr Phase PhaseListing = "the listing";
inline constexpr Phase PhaseStop = "the stop";
inline constexpr Phase PhaseAny = "the run";

// A whole run, what it left in the machine, and how often each operation was called up to the end of each part.
struct Course {
    std::uint32_t ExitCode = 0;
    std::string Output;
    Lines Left;
    StandIn::CallCounts StartEnd{};
    StandIn::CallCounts ListingEnd{};
    StandIn::CallCounts End{};
};

// What fails in a run: the Number-th call of an operation, or the Number-th allocation.
struct SweepFault {
    std::string Call;
    std::uint64_t Number;
    Phase When;
};

struct Sweep {
    std::string Name;
    std::function<void()> Prepare; // makes the machine anew
    std::vector<std::string> Arguments;
    std::function<void(const SweepFault*)> Fail; // begins what fails; null: ends it
    // Looks at the run with the fault. `next` is that of the next process, which found the machine as the first one
    // left it; null when that was as always.
    std::function<void(const SweepFault& fault, const Course& run, const Course* next)> Check;
};

// A run in which nothing fails.
Course Undisturbed(const Sweep& sweep);

// Runs the program with every fault in turn, up to the first one whose run isn't as it has to be: no crash, no hang, an
// exit code of the program's, what the sweep checks, and a next process that does as the undisturbed one did.
void SweepRun(const Sweep& sweep, const Course& undisturbed, const std::vector<SweepFault>& faults);

// The end of a process: its handles and mutexes go, what other processes see stays.
void ProcessEnd();

Lines LinesOf(const std::string& text);

// The first line that the undisturbed output does not have, or not in this order; empty when there is none. A line may
// also be a label of it with the mark of a value that could not be read, N/S or 0.0.
std::string StrangeLine(const Lines& lines, const std::string& undisturbed);

// The first line in which an output differs from the undisturbed one; empty when none does.
std::string FirstDifference(const std::string& output, const std::string& undisturbed);

// Expects that lines of what a run left or changed begin with one of the allowed ones, or are the tools' key.
void LinesCheck(const Lines& lines, const Lines& allowed);
