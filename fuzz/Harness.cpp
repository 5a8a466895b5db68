// What the fuzz targets share.
#include "fuzz/Harness.h"

#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Common/LibraryReset.h"
#include "machine/model/Faults.h"
#include "machine/windows/MachineSet.h"
#include "tests/library/Support.h"
#include "viewer/ViewerState.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

std::uint8_t InputReader::Byte() {
    if (Left == 0) {
        return 0;
    }
    --Left;
    return *At++;
}

std::uint16_t InputReader::Word() {
    const std::uint8_t low = Byte();
    return static_cast<std::uint16_t>(low | Byte() << 8);
}

StandIn::Bytes InputReader::Take(std::size_t count) {
    const std::size_t taken = std::min(count, Left);
    StandIn::Bytes bytes(At, At + taken);
    At += taken;
    Left -= taken;
    return bytes;
}

void StartOver(StandIn::Machine machine) {
    if (machine.Console == StandIn::ConsoleKind::Terminal) {
        machine.Console = StandIn::ConsoleKind::None;
    }
    // The digest of the executable would be most of the work: a fuzz target is a large file.
    static const std::optional<StandIn::Operation> imageSize = StandIn::OperationFind("GetFileSize");
    machine.Faults.push_back({imageSize.value()});
    StandIn::MachineSet(std::move(machine));
    LibraryReset();
    ViewerStateReset();
}

void StartWithDriver(StandIn::Machine machine) {
    StartOver(std::move(machine));
    if (DriverRequest(DriverLoad) != RyxOk) {
        Fault("the driver could not be loaded");
    }
}

int ProgramRun(const std::vector<std::string>& arguments, const std::function<std::uint32_t()>& work) {
    ArgumentVector argv(Behind("Quarrinet", arguments));
    const int code = ProgramRun(static_cast<int>(argv.Count()), argv.Data(), work);
    LibraryContextGet().Arguments = nullptr;
    LibraryContextGet().ArgumentCount = 0;
    return code;
}

namespace {

std::string* Collected = nullptr;

} // namespace

void OutputCollect(std::string* output) {
    Collected = output;
}

void Fault(const std::string& what) {
    std::fprintf(stderr, "fuzz: %s\n", what.c_str());
    std::abort();
}

void LeftoversCheck() {
    for (const std::string& left : StandIn::Leftovers()) {
        if (left != "registry key Software\\RyxTool") {
            Fault("left behind: " + left);
        }
    }
}

namespace {

struct Folder {
    Folder() : Path("/dev/shm/quarrinet-fuzz-XXXXXX") {
        if (mkdtemp(Path.data()) == nullptr || chdir(Path.c_str()) != 0) {
            Fault("no folder to work in");
        }
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(Path, ignored);
    }
    std::string Path;
};

} // namespace

const std::string& WorkFolder() {
    static const Folder folder;
    return folder.Path;
}

// What the program prints takes the whole way to the stream, and ends there without a system call for each print.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    cookie_io_functions_t discard{};
    discard.write = [](void*, const char* bytes, std::size_t size) {
        if (Collected != nullptr) {
            Collected->append(bytes, size);
        }
        return static_cast<ssize_t>(size);
    };
    std::FILE* const stream = fopencookie(nullptr, "w", discard);
    if (std::freopen("/dev/null", "w", stdout) == nullptr || stream == nullptr) {
        Fault("/dev/null can't be opened");
    }
    stdout = stream;
    return 0;
}

// Freed memory is kept from use for a while, to see who still uses it. An input frees little, so that a small store
// holds it for many inputs, and stays in the processor's caches.
extern "C" const char* __asan_default_options() {
    return "quarantine_size_mb=8:malloc_context_size=5:max_malloc_fill_size=64";
}
