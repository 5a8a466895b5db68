// Counts of calls, and the faults that make calls fail.
#include "machine/model/Faults.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace StandIn {

constinit CallCounts Calls{};

namespace {

struct CodeCount {
    std::uint32_t Code;
    std::uint64_t Count;
};

[[gnu::init_priority(StatePriority)]] std::vector<CodeCount> CodeCounts; // of the few codes that programs request

CodeCount* CodeCountFind(std::uint32_t code) {
    for (CodeCount& known : CodeCounts) {
        if (known.Code == code) {
            return &known;
        }
    }
    return nullptr;
}

} // namespace

std::optional<Operation> OperationFind(std::string_view name) {
    const auto* const end = std::end(OperationNames) - 1; // the last one can't fail
    const auto* const found = std::find(std::begin(OperationNames), end, name);
    return found != end ? std::optional(static_cast<Operation>(found - std::begin(OperationNames))) : std::nullopt;
}

bool FaultStrikes(Operation which, std::uint32_t controlCode) {
    const std::uint64_t call = CallCount(which);
    for (const Intrusion& one : MachineGet().Intrusions) {
        if (one.Before == which && one.At == call) {
            one.Act();
        }
    }
    for (const Fault& fault : MachineGet().Faults) {
        if (fault.Which != which || (fault.ControlCode != 0 && fault.ControlCode != controlCode)) {
            continue;
        }
        const std::uint64_t count = fault.ControlCode != 0 ? ControlCount(controlCode) : CallCount(which);
        if (fault.At == 0 || fault.At == count || (fault.Stays && fault.At < count)) {
            return true;
        }
    }
    return false;
}

void ControlSeen(std::uint32_t code) {
    CodeCount* count = CodeCountFind(code);
    if (count == nullptr) {
        count = &CodeCounts.emplace_back(CodeCount{code, 0});
    }
    ++count->Count;
}

void CallsForget() {
    Calls = CallCounts{};
    CodeCounts.clear();
}

std::uint64_t CallCount(Operation operation) {
    return Calls[static_cast<std::size_t>(operation)];
}

std::uint64_t CallCount(std::string_view operation) {
    const auto* const found = std::find(std::begin(OperationNames), std::end(OperationNames), operation);
    return found != std::end(OperationNames) ? Calls[static_cast<std::size_t>(found - OperationNames)] : 0;
}

std::uint64_t ControlCount(std::uint32_t code) {
    const CodeCount* const count = CodeCountFind(code);
    return count != nullptr ? count->Count : 0;
}

std::uint64_t CallTotal() {
    return std::accumulate(Calls.begin(), Calls.end() - 1, std::uint64_t{0});
}

} // namespace StandIn
