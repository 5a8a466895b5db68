// Chooses the program's machine before the program begins.
#include "machine/host/HostFile.h"
#include "machine/host/Message.h"
#include "machine/source/MachineChoice.h"
#include "machine/windows/Interrupts.h"
#include "machine/windows/MachineSet.h"

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace {

constexpr int ExitUnusable = 255;

// Whether the caller only probes if the program can be executed, which takes no machine.
bool OnlyProbed() {
    constexpr std::string_view probe("\0/_exec_\0", 9);
    StandIn::Bytes content;
    if (StandIn::HostFileRead("/proc/self/cmdline", &content) != 0) {
        return false;
    }
    const std::string_view words(reinterpret_cast<const char*>(content.data()), content.size());
    return words.substr(std::min(words.find('\0'), words.size()), probe.size()) == probe;
}

// A standard stream that is closed is opened so that its use fails: otherwise the next file takes its place, and what
// is printed goes there.
void StandardStreamsHold() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) < 0) {
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

// Memory that is kept back for the way out when there is no more. It is small enough to lie among the other blocks.
class Reserve {
public:
    static void Keep() { Block = std::malloc(size); }
    // Gives it back; false when that was done before.
    static bool Release() {
        std::free(Block);
        return std::exchange(Block, nullptr) != nullptr;
    }

private:
    static constexpr std::size_t size = 120 << 10;
    static inline void* Block = nullptr;
};

// A request as large as this may fail: who makes it looks whether it did.
constexpr std::size_t LargeRequest = 32 << 10;

bool Started = false; // the machine is read

struct ProgramStart {
    ProgramStart() {
        if (OnlyProbed()) {
            Started = true;
            return;
        }
        Reserve::Keep();
        StandardStreamsHold();
        std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow is an error of its write
        try {
            const char* const choice = std::getenv("QUARRINET_MACHINE");
            std::string error;
            std::string notice;
            std::optional<StandIn::Machine> machine =
                StandIn::MachineRead(choice != nullptr ? choice : "", &error, &notice);
            if (!machine) {
                End(error);
            }
            if (!notice.empty()) {
                StandIn::MessageSay(notice);
            }
            StandIn::MachineSet(std::move(*machine));
        } catch (const std::bad_alloc&) {
            End("not enough memory for the machine");
        }
        Started = true;
    }

    [[noreturn]] static void End(std::string_view error) {
        StandIn::MessageSay(error);
        std::exit(ExitUnusable);
    }
};

const ProgramStart Start;

} // namespace

// While the machine is read, running out of memory is an exception like any other; the reserve lets it be thrown,
// before the standard library has memory of its own for that. Later it ends the run as an interrupt does, and the
// reserve is what the way out takes.
void* operator new(std::size_t size) {
    for (;;) {
        if (void* const block = std::malloc(std::max<std::size_t>(size, 1))) {
            return block;
        }
        if (!Started || size >= LargeRequest || !Reserve::Release()) {
            Reserve::Release();
            throw std::bad_alloc();
        }
        StandIn::InterruptForMemory();
    }
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

// What the standard library calls for an exception that nothing catches. Its own one names the exception, and brings
// along a reader of mangled names for that, a tenth of the program.
namespace __gnu_cxx {                // NOLINT(bugprone-reserved-identifier,cert-dcl51-cpp): the library's own name
void __verbose_terminate_handler() { // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
    std::fputs("quarrinet: ended by an error that nothing here expects\n", stderr);
    std::abort();
}
} // namespace __gnu_cxx
