// Fuzz target: what the maker's firmware answers, through its variables or in its communication buffer.
// Input: which; for variables the session identifier; the answers, each with its length before it.
#include "Lib/API/RyxBin.h"
#include "Lib/API/RyxFirmware.h"
#include "Lib/Common/AcpiData.h"
#include "Lib/Common/CallbackFunctions.h"
#include "Lib/LittleEndian.h"
#include "Lib/Platform/Driver.h"
#include "fuzz/Harness.h"

#include <deque>
#include <memory>

namespace {

constexpr char Vendor[] = " {8a4acd56-02fc-41ce-b686-9f429a3fc1b3}";

std::deque<StandIn::Bytes> Answers;

StandIn::Bytes AnswerNext() {
    if (Answers.empty()) {
        return {};
    }
    StandIn::Bytes answer = std::move(Answers.front());
    Answers.pop_front();
    return answer;
}

// Right after the interrupt, what the firmware left in the buffer is replaced.
void BufferFill(std::uint32_t phase) {
    const StandIn::Bytes answer = phase == 1 ? AnswerNext() : StandIn::Bytes();
    if (!answer.empty()) {
        PhysicalMemoryWrite(AcpiStateGet().CommunicationBuffer, static_cast<std::uint32_t>(answer.size()),
                            answer.data());
    }
}

// The variable whose name the session identifier gives, as the library reads it.
std::string AnswerVariable(const StandIn::Bytes& identifier) {
    std::string name;
    for (std::size_t i = 0; i + 1 < identifier.size() && i < 8; i += 2) {
        const auto unit = LittleEndianRead<std::uint16_t>(&identifier[i]);
        if (unit == 0) {
            break;
        }
        name += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return name + Vendor;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const bool variables = input.Byte() % 2 == 0;
    StandIn::Machine machine;
    std::string answerVariable;
    if (variables) {
        const StandIn::Bytes identifier = input.Piece();
        answerVariable = AnswerVariable(identifier);
        machine.Variables[std::string("OpenSessionId") + Vendor].Data = identifier;
    } else {
        machine.Firmware = StandIn::FirmwareKind::Smi;
    }
    Answers.clear();
    while (!input.Empty()) {
        Answers.push_back(input.Piece());
    }
    const auto answer = [&] {
        if (variables) {
            machine.Variables[answerVariable].Data = AnswerNext();
            if (&machine != &StandIn::MachineGet()) {
                StandIn::MachineGet().Variables[answerVariable] = machine.Variables[answerVariable];
            }
        }
    };
    answer();
    StartOver(machine);
    CallbackFunctionRegister(CallbackTypeFirmwareTrigger, BufferFill);
    const int code = ProgramRun({"/help"}, [&] {
        answer();
        ViewerMain();
        for (int request = 0; request < 3; ++request) {
            answer();
            RyxBin* bin = nullptr;
            RyxBinCreate(1ULL << (4 * request + 4), &bin);
            std::uint64_t status = 0;
            RyxFirmwareRequest(0x12200, &status, bin);
            RyxBinFree(bin);
        }
        return 0;
    });
    if (code != 0) {
        Fault("the library did not start");
    }
    LeftoversCheck();
    return 0;
}
