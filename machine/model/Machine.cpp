// The process's machine, and its clock.
#include "machine/model/Machine.h"

#include <ctime>

namespace StandIn {

std::uint64_t SystemClock(std::uint32_t pause) {
    timespec time{0, static_cast<long>(pause) * 1'000'000};
    if (pause != 0) {
        clock_nanosleep(CLOCK_MONOTONIC, 0, &time, nullptr);
    }
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1000 + static_cast<std::uint64_t>(time.tv_nsec) / 1'000'000;
}

[[gnu::init_priority(StatePriority)]] Machine CurrentMachine;

} // namespace StandIn
