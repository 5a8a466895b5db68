// What the tests on a machine share: decoders run on made-up tables, and the program run as a process.
#pragma once

#include "machine/model/Machine.h"
#include "machine/model/SmbiosBuilder.h"
#include "tests/library/Support.h"

#include <cstdint>
#include <string>
#include <vector>

// Whether AddressSanitizer watches, which needs more memory than any limit leaves.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool UnderSanitizer = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool UnderSanitizer = true;
#else
constexpr bool UnderSanitizer = false;
#endif
#else
constexpr bool UnderSanitizer = false;
#endif

// Makes the machine the process's, and the library and the viewer as they are at process start.
void StartOver(StandIn::Machine machine);

// What the user selects; by default every field of every structure.
struct Selection {
    std::int64_t Field = 0;
    std::uint8_t InstanceFirst = 1;
    std::uint8_t InstanceEnd = 128;
    bool Whole = false; // the whole table is wanted
};

// Runs the decoder of a type on a table of an SMBIOS version (major x 10 + minor) and gives what it printed, the same
// on the legacy road and the firmware road. The field counter and the decoder-ran flag are as the decoder left them.
std::string Decoded(std::uint8_t type, const StandIn::SmbiosBuilder& table, std::uint8_t version = 28,
                    const Selection& selection = {});

// Runs the viewer in this process, with the driver loaded but without the rest of the library's start, on a machine.
struct Viewed {
    std::uint32_t Error;
    std::string Output;
};
Viewed View(const std::vector<std::string>& arguments, StandIn::Machine machine, bool whole = false);

// A process that ended.
struct Ran {
    int ExitCode;
    std::string Output;
    std::string Errors;
};

// Runs the program with arguments on the machine that `machine` chooses (the value of QUARRINET_MACHINE), in a folder.
Ran RunProgram(const std::vector<std::string>& arguments, const std::string& machine = "sample",
               const std::string& folder = "");

// In a new process: lets the signals that end a program do so, even where who started the tests had them ignored, as
// nohup and a shell's background do.
void SignalsAsAtLogin();
