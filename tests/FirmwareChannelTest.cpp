// Tests of the firmware communication channel: methods, platform information, requests, refused commands.
#include "Lib/Common/FirmwareChannel.h"

#include "Lib/API/RyxArg.h"
#include "Lib/API/RyxFirmware.h"
#include "Lib/API/RyxOption.h"
#include "Lib/Common/AcpiData.h"
#include "Lib/Common/ArgumentCommand.h"
#include "Lib/Common/CallbackFunctions.h"
#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/Guid.h"
#include "Lib/Common/Instance.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Platform/Mutex.h"
#include "machine/kernel/Memory.h"
#include "machine/model/AcpiBuilder.h"
#include "machine/model/Faults.h"
#include "machine/model/SampleMachine.h"
#include "tests/Support.h"
#include "tests/ToolRun.h"

#include <cstring>
#include <gtest/gtest.h>
#include <map>

namespace {

using StandIn::AcpiBuilder;
using StandIn::Bytes;
using StandIn::BytesPut;
using StandIn::FirmwareKind;
using StandIn::Machine;

constexpr char Vendor[] = " {8a4acd56-02fc-41ce-b686-9f429a3fc1b3}";
constexpr std::uint32_t Buffer = 0x66000;

int Option(std::size_t number) {
    return LibraryContextGet().Options.Byte[number];
}

// Requests that reached the firmware, by either method.
std::uint64_t Requests() {
    return StandIn::CallCount("SetFirmwareEnvironmentVariableW") + StandIn::ControlCount(DriverPortWriteByte);
}

Machine MachineOf(FirmwareKind kind) {
    Machine machine = StandIn::SampleMachine();
    machine.Firmware = kind;
    return machine;
}

// A machine whose tables name a port and, if wanted, a communication buffer, with no firmware behind it.
Machine BareMachine(bool buffer) {
    constexpr Guid guid = GuidFromText("d29563e8-cfe1-4d41-8e54-da4322fede5c");
    AcpiBuilder fadt("FACP", 132);
    AcpiBuilder maker(buffer ? "BATB" : "OEM0", 70);
    Machine machine;
    machine.AcpiTables["FACP"] = fadt.Put(48, std::uint16_t{0xB2}).Table();
    machine.Memory = {{0xF0000, StandIn::AcpiRootPointer(0, 0x80000)},
                      {0x80000, StandIn::AcpiRootTable<std::uint32_t>({0x81000, 0x82000})},
                      {0x81000, machine.AcpiTables["FACP"]},
                      {0x82000, maker.Put(36, guid).Put(54, Buffer).Table()},
                      {Buffer, Bytes(0x1000)}};
    return machine;
}

// A firmware that the test scripts: when the port has been written, it answers each command with a status and the first
// bytes of the payload.
struct Answer {
    std::uint64_t Status;
    Bytes Payload;
};
std::map<std::uint64_t, Answer> Script;
std::vector<std::uint32_t> Phases;
std::vector<std::uint64_t> Commands;

void ScriptedFirmware(std::uint32_t phase) {
    Phases.push_back(phase);
    FirmwareRequestHeader header;
    ASSERT_EQ(PhysicalMemoryRead(Buffer, sizeof header, &header), RyxOk);
    if (phase == 0) {
        EXPECT_EQ(header.Status, FirmwareStatusPending);
        EXPECT_EQ(header.Reserved, 0U);
        constexpr Guid channel = GuidFromText("b1de44fc-7946-4982-9b4b-2f8ca45ea792");
        EXPECT_EQ(header.Channel, channel);
        return;
    }
    Commands.push_back(header.Command);
    const auto answer = Script.find(header.Command);
    if (answer != Script.end()) {
        header.Status = answer->second.Status;
        PhysicalMemoryWrite(Buffer, sizeof header, &header);
        if (!answer->second.Payload.empty()) {
            PhysicalMemoryWrite(Buffer + sizeof header, static_cast<std::uint32_t>(answer->second.Payload.size()),
                                answer->second.Payload.data());
        }
    }
}

Bytes PlatformInfo(std::uint64_t identifier, std::uint64_t bufferSize, std::uint8_t flags) {
    Bytes info(64);
    BytesPut(info, 0, identifier);
    BytesPut(info, 8, std::uint64_t{0x1111});
    BytesPut(info, 40, std::uint64_t{0x5555});
    BytesPut(info, 48, bufferSize);
    info[56] = flags;
    return info;
}

void StartScripted(std::map<std::uint64_t, Answer> script) {
    StartOver(BareMachine(true));
    Script = std::move(script);
    Phases.clear();
    Commands.clear();
    ASSERT_EQ(CallbackFunctionRegister(CallbackTypeFirmwareTrigger, ScriptedFirmware), RyxOk);
    ASSERT_EQ(Start(), RyxOk);
}

TEST(FirmwareChannel, WithoutAFirmwareEveryMethodIsTriedInOrder) {
    StartOver(BareMachine(false));
    ASSERT_EQ(Start(), RyxOk);
    const FirmwareChannelState& state = FirmwareChannelStateGet();
    ASSERT_EQ(state.AttemptCount, 3);
    EXPECT_EQ(state.Attempts[0].Method, 4);
    EXPECT_EQ(state.Attempts[0].Status, RyxErrorUnsupported);
    EXPECT_EQ(state.Attempts[1].Method, 3);
    EXPECT_EQ(state.Attempts[1].Status, RyxErrorGeneral);
    EXPECT_EQ(StandIn::CallCount("GetFirmwareEnvironmentVariableW"), 2U) << "the probe passes, the session fails";
    EXPECT_EQ(state.Attempts[2].Method, 2);
    EXPECT_EQ(state.Attempts[2].Status, RyxErrorMethodSetup);
    EXPECT_EQ(AcpiStateGet().Result, RyxErrorNoCommunication);
    EXPECT_EQ(StandIn::ControlCount(DriverBufferGet), 0U);
    EXPECT_EQ(state.Method, 0);
    EXPECT_FALSE(PlatformInfoHeld());

    // Commands register without asking; a request finds no method, and known failures are not tried again.
    EXPECT_EQ(RyxArgCommandRegister("type", "", "", ""), RyxOk);
    std::uint64_t answer = 0;
    const std::uint64_t calls = StandIn::CallTotal();
    EXPECT_EQ(RyxFirmwareRequest(0x10000, &answer, nullptr), RyxErrorGeneral);
    EXPECT_EQ(StandIn::CallTotal(), calls);
    EXPECT_EQ(Requests(), 0U);
    EXPECT_EQ(RyxLibExit(), RyxOk);
}

TEST(FirmwareChannel, OpensAsksAndCloses) {
    for (const FirmwareKind kind : {FirmwareKind::Variables, FirmwareKind::Smi}) {
        const bool variables = kind == FirmwareKind::Variables;
        SCOPED_TRACE(variables ? "variables" : "smi");
        StartOver(MachineOf(kind));
        ASSERT_EQ(Start(), RyxOk);
        const FirmwareChannelState& state = FirmwareChannelStateGet();
        EXPECT_EQ(state.Method, variables ? 3 : 2);
        EXPECT_EQ(Option(27), variables);
        EXPECT_EQ(Option(28), 0);
        EXPECT_EQ(Option(29), !variables);
        EXPECT_TRUE(PlatformInfoHeld());
        EXPECT_EQ(Option(38), state.PlatformInfo[56] & 1);
        EXPECT_EQ(Option(32), state.PlatformInfo[56] >> 1 & 1);
        EXPECT_NE(state.HostBufferSize, 0U);
        EXPECT_EQ(Requests(), 2U) << "platform information and details";
        EXPECT_EQ(StandIn::ControlCount(DriverBufferGet), variables ? 0U : 1U);

        EXPECT_EQ(RyxArgCommandRegister("type", "", "", ""), RyxOk);
        EXPECT_EQ(Requests(), 3U);
        EXPECT_EQ(state.LastStatus, 0U);
        EXPECT_EQ(StandIn::CallCount("ReleaseMutex"), 5U) << "the driver's load, the count of tools, each request";
        std::uint64_t answer = 0;
        EXPECT_EQ(RyxFirmwareRequest(0x12900, &answer, nullptr), RyxOk);
        // What fits the method travels, and one byte more does not.
        RyxBin* bin = nullptr;
        ASSERT_EQ(RyxBinCreate(variables ? 8152 : 4056, &bin), RyxOk);
        EXPECT_EQ(RyxFirmwareRequest(0x12900, &answer, bin), RyxOk);
        RyxBinFree(bin);
        ASSERT_EQ(RyxBinCreate(variables ? 8153 : 4057, &bin), RyxOk);
        EXPECT_EQ(RyxFirmwareRequest(0x12900, &answer, bin), RyxErrorFirmwareRequest);
        EXPECT_EQ(answer, 255U);
        RyxBinFree(bin);

        const std::uint64_t before = Requests();
        EXPECT_EQ(RyxLibExit(), RyxOk);
        EXPECT_EQ(Requests(), before + (variables ? 1 : 0)) << "the session is closed by a variable";
        EXPECT_EQ(StandIn::ControlCount(DriverBufferRelease), variables ? 0U : 1U);
        EXPECT_TRUE(StandIn::MemoryAllocated().Data.empty());
    }
}

TEST(FirmwareChannel, OptionsSwitchTheMethod) {
    StartOver(MachineOf(FirmwareKind::Variables));
    ASSERT_EQ(Start(), RyxOk);
    RyxOptionSet(13, 7, 0);
    // A switch to the method in use does nothing; the session stays open.
    const std::uint64_t requests = Requests();
    EXPECT_EQ(RyxOptionSet(27, 1, 0), RyxOk);
    EXPECT_EQ(FlashMethodSwitch(FlashMethodVariables), RyxOk);
    EXPECT_EQ(Option(13), 7);
    EXPECT_EQ(Requests(), requests);
    EXPECT_EQ(RyxOptionSet(28, 1, 0), RyxErrorGeneral);
    EXPECT_EQ(Option(28), 0);
    EXPECT_EQ(FirmwareChannelStateGet().Method, 3) << "a failed switch leaves the method in use";
    EXPECT_EQ(RyxOptionSet(27, 0, 0), RyxOk);
    EXPECT_EQ(Option(27), 0);
    EXPECT_EQ(FirmwareChannelStateGet().Method, 0);
    EXPECT_EQ(Option(13), 7);
    // Where variables work, a switch to the buffer is one to them.
    EXPECT_EQ(RyxOptionSet(29, 1, 0), RyxOk);
    EXPECT_EQ(FirmwareChannelStateGet().Method, 3);
    EXPECT_EQ(Option(29), 0);
    EXPECT_EQ(Option(27), 1);
    EXPECT_EQ(Option(13), 0);
    EXPECT_EQ(RyxLibExit(), RyxOk);

    StartOver(MachineOf(FirmwareKind::Smi));
    ASSERT_EQ(Start(), RyxOk);
    EXPECT_EQ(RyxOptionSet(27, 1, 0), RyxErrorGeneral);
    EXPECT_EQ(RyxOptionSet(29, 0, 0), RyxOk);
    EXPECT_EQ(FirmwareChannelStateGet().Method, 0);
    EXPECT_EQ(RyxOptionSet(29, 1, 0), RyxOk);
    EXPECT_EQ(FirmwareChannelStateGet().Method, 2);
    EXPECT_EQ(StandIn::ControlCount(DriverBufferGet), 1U) << "set up once";
    FirmwareChannelStateGet().Method = FlashMethodSettingUp;
    EXPECT_EQ(FlashMethodSwitch(0), RyxErrorUnsupported);
    FirmwareChannelStateGet().Method = FlashMethodBuffer;
    EXPECT_EQ(RyxLibExit(), RyxOk);
}

TEST(FirmwareChannel, PlatformInformationIsKeptAndRead) {
    Bytes details(8);
    details[5] = 1;
    StartScripted({{0x10000, {0, PlatformInfo(0x1234, 0x2000, 3)}}, {0x12900, {0, details}}});
    const FirmwareChannelState& state = FirmwareChannelStateGet();
    EXPECT_EQ(state.Method, 2);
    EXPECT_EQ(state.PlatformValues[0], 0x1111U);
    EXPECT_EQ(state.PlatformValues[4], 0x5555U);
    EXPECT_EQ(state.HostBufferSize, 0x2000U);
    EXPECT_EQ(Option(38), 1);
    EXPECT_EQ(Option(32), 1);
    EXPECT_EQ(Option(36), 0);
    EXPECT_EQ(Option(37), 1);
    EXPECT_EQ(Commands, (std::vector<std::uint64_t>{0x10000, 0x12900}));
    EXPECT_EQ(Phases, (std::vector<std::uint32_t>{0, 1, 0, 1}));
    EXPECT_EQ(PlatformInfoQuery(), RyxOk);
    EXPECT_EQ(Commands.size(), 2U) << "what is held is not asked for again";
    EXPECT_EQ(RyxLibExit(), RyxOk);

    StartScripted({{0x10000, {0, PlatformInfo(1, 0, 2)}}, {0x12900, {5, {}}}});
    EXPECT_EQ(FirmwareChannelStateGet().HostBufferSize, 4096U);
    EXPECT_EQ(Option(38), 0);
    EXPECT_EQ(Option(32), 1);
    RyxLibExit();

    // No identifier in an answer: it is kept all the same. A refusal or no answer is asked for again.
    StartScripted({{0x10000, {0, PlatformInfo(0, 0x2000, 3)}}});
    EXPECT_EQ(PlatformInfoQuery(), RyxErrorNoPlatformInfo);
    EXPECT_EQ(Commands.size(), 1U);
    EXPECT_EQ(Option(38), 0);
    EXPECT_FALSE(PlatformInfoHeld());
    RyxLibExit();
    StartScripted({{0x10000, {1, PlatformInfo(9, 0x2000, 3)}}});
    EXPECT_EQ(Commands.size(), 2U);
    EXPECT_EQ(PlatformInfoQuery(), RyxErrorNoPlatformInfo);
    EXPECT_EQ(Commands.size(), 3U);
    EXPECT_FALSE(PlatformInfoHeld());

    const std::pair<std::uint64_t, RyxStatus> refusals[] = {{3, RyxErrorUnsupported},
                                                            {0x800000000000044D, RyxErrorNoPlatformInfo},
                                                            {255, RyxErrorPlatformDetail},
                                                            {0x100000000, RyxErrorPlatformDetail}};
    for (const auto& [status, expected] : refusals) {
        Script = {{0x10000, {0, PlatformInfo(1, 0, 0)}}, {0x12900, {status, {}}}};
        FirmwareChannelStateGet().PlatformInfo = {};
        FirmwareChannelStateGet().PlatformInfoCached = false;
        EXPECT_EQ(PlatformInfoQuery(), expected) << status;
    }
    RyxLibExit();
}

TEST(FirmwareChannel, TransportFailuresAreReported) {
    const std::pair<StandIn::Fault, const char*> faults[] = {
        {{*StandIn::OperationFind("DeviceIoControl"), DriverMemoryWrite, 0}, "buffer not writable"},
        {{*StandIn::OperationFind("DeviceIoControl"), DriverPortWriteByte, 0}, "port not writable"},
        {{*StandIn::OperationFind("DeviceIoControl"), DriverMemoryRead, 0}, "buffer not readable"},
        {{*StandIn::OperationFind("SetFirmwareEnvironmentVariableW")}, "request not writable"},
        {{*StandIn::OperationFind("GetFirmwareEnvironmentVariableW")}, "answer not readable"},
    };
    for (const auto& [fault, name] : faults) {
        SCOPED_TRACE(name);
        StartOver(MachineOf(fault.ControlCode != 0 ? FirmwareKind::Smi : FirmwareKind::Variables));
        ASSERT_EQ(Start(), RyxOk);
        StandIn::MachineGet().Faults = {fault};
        std::uint64_t answer = 0;
        EXPECT_EQ(RyxFirmwareRequest(0x10000, &answer, nullptr), RyxErrorFirmwareRequest);
        EXPECT_EQ(answer, 255U);
        EXPECT_EQ(FirmwareChannelStateGet().LastStatus, 255U);
        EXPECT_EQ(RyxArgCommandRegister("type", "", "", ""), RyxOk) << "no answer is no refusal";
        StandIn::MachineGet().Faults.clear();
        EXPECT_EQ(RyxLibExit(), RyxOk);
    }
    // A buffer that the driver keeps ends the exit at once.
    StartOver(MachineOf(FirmwareKind::Smi));
    ASSERT_EQ(Start(), RyxOk);
    StandIn::MachineGet().Faults = {{*StandIn::OperationFind("DeviceIoControl"), DriverBufferRelease, 0}};
    EXPECT_EQ(RyxLibExit(), RyxErrorDriverRequest);
    RyxStatus tools = RyxOk;
    RyxInstanceStateGet(&tools, nullptr);
    EXPECT_EQ(tools, RyxInstanceFirst) << "the tool stays registered";
}

TEST(FirmwareChannel, VariablesThatDoNotServe) {
    using StandIn::FirmwareVariable;
    const std::string open = std::string("OpenSessionId") + Vendor;
    const Bytes session{'A', 0, 'B', 0, 'C', 0, 'D', 0};
    const std::string answer = std::string("ABCD") + Vendor;
    const char* const probe = " {00000000-0000-0000-0000-000000000000}";
    // A firmware of fixed variables: a session, and one answer to everything.
    Bytes record(104);
    std::copy(session.begin(), session.end(), record.begin() + 40);
    struct Case {
        const char* Name;
        std::function<void(Machine&)> Change;
        std::uint8_t Method;
        RyxStatus Request;
    };
    const Case cases[] = {
        {"all there", [](Machine&) {}, 3, RyxOk},
        {"session missing", [&](Machine& m) { m.Variables.erase(open); }, 0, RyxErrorGeneral},
        {"session too short", [&](Machine& m) { m.Variables[open].Data.resize(7); }, 0, RyxErrorGeneral},
        {"session failing", [&](Machine& m) { m.Variables[open].Error = 5; }, 0, RyxErrorGeneral},
        {"privilege refused", [](Machine& m) { m.VariablePrivilege = false; }, 0, RyxErrorGeneral},
        {"probe failing otherwise", [&](Machine& m) { m.Variables[probe].Error = 1; }, 0, RyxErrorGeneral},
        {"answer missing", [&](Machine& m) { m.Variables.erase(answer); }, 3, RyxErrorFirmwareRequest},
        {"half a header", [&](Machine& m) { m.Variables[answer].Data.resize(39); }, 3, RyxErrorFirmwareRequest},
        {"answer of a header alone", [&](Machine& m) { m.Variables[answer].Data.resize(40); }, 3, RyxOk},
        {"answer with a status", [&](Machine& m) { m.Variables[answer].Data[8] = 1; }, 3, RyxOk},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.Name);
        Machine machine;
        machine.Variables = {{open, {session, 0}}, {answer, {record, 0}}};
        expected.Change(machine);
        StartOver(machine);
        ASSERT_EQ(Start(), RyxOk);
        EXPECT_EQ(FirmwareChannelStateGet().Method, expected.Method);
        EXPECT_EQ(PlatformInfoHeld(), &expected == cases) << "only a whole answer tells of the platform";
        std::uint64_t result = 0;
        EXPECT_EQ(RyxFirmwareRequest(0x10000, &result, nullptr), expected.Request);
        if (expected.Method == 0) {
            // Unavailable for the rest of the process, whatever the machine says later.
            StandIn::MachineGet().Variables = {{open, {session, 0}}, {answer, {record, 0}}};
            StandIn::MachineGet().VariablePrivilege = true;
            EXPECT_EQ(FlashMethodSwitch(3), RyxErrorGeneral);
        }
        EXPECT_EQ(RyxLibExit(), RyxOk);
    }
}

// A command is asked about by its name, in 32 bytes; only an answer that says no is a refusal.
TEST(FirmwareChannel, CommandsAreAskedAbout) {
    StartOver(BareMachine(false));
    EXPECT_EQ(ArgumentCommandQuery("type"), RyxErrorNoPlatformInfo);
    const std::pair<std::uint64_t, RyxStatus> answers[] = {{0, RyxOk},
                                                           {3, RyxErrorNoAnswer},
                                                           {0x80000003, RyxErrorNoAnswer},
                                                           {255, RyxErrorNoAnswer},
                                                           {4, RyxErrorFirmwareRefusal}};
    for (const auto& [answer, status] : answers) {
        StartScripted({{0x10000, {0, PlatformInfo(1, 0, 0)}}, {0x12200, {answer, {}}}});
        EXPECT_EQ(ArgumentCommandQuery("type"), status) << answer;
        EXPECT_EQ(Commands.back(), 0x12200U);
        std::string sent(33, '?');
        EXPECT_EQ(PhysicalMemoryRead(Buffer + 40, 32, sent.data()), RyxOk);
        EXPECT_EQ(sent, "type" + std::string(28, '\0') + "?");
        StandIn::MachineGet().Faults = {{*StandIn::OperationFind("DeviceIoControl"), DriverPortWriteByte, 0}};
        EXPECT_EQ(ArgumentCommandQuery("type"), RyxErrorFirmwareRequest);
        EXPECT_EQ(RyxLibExit(), RyxOk);
    }
}

TEST(FirmwareChannel, RefusedCommandsAreUnknown) {
    const TemporaryFolder folder;
    for (const char* firmware : {"variables", "smi"}) {
        SCOPED_TRACE(firmware);
        const std::string machine = folder.Write("machine", "firmware = " + std::string(firmware) +
                                                                "\nfirmware-refuses type = yes\nconsole = none\n");
        const Ran refused = RunProgram({"/type", "1"}, machine, folder.Path);
        EXPECT_NE(refused.Output.find("type : is not a valid command!\n"), std::string::npos) << refused.Output;
        EXPECT_NE(refused.Output.find("Status = 14."), std::string::npos) << refused.Output;
        EXPECT_EQ(refused.ExitCode, 105);
        const Ran help = RunProgram({"/help"}, machine, folder.Path);
        EXPECT_EQ(help.ExitCode, 0);
        EXPECT_EQ(help.Output.find("type "), std::string::npos) << help.Output;
        EXPECT_NE(help.Output.find("eps "), std::string::npos) << help.Output;
    }
}

TEST(FirmwareChannel, WaitsForTheMutexOnlySoLong) {
    const TemporaryFolder folder;
    Machine machine = MachineOf(FirmwareKind::Variables);
    machine.StateFolder = folder.Path + "/state";
    StartOver(machine);
    ASSERT_EQ(Start(), RyxOk);
    OtherProcess other(
        [&machine] {
            StartOver(machine);
            return MutexAcquire(MutexCreate("RyxGlobalMutex", nullptr), 0) ? 1U : 0U;
        },
        [] {});
    ASSERT_EQ(other.Told, 1U);
    static std::uint64_t now;
    StandIn::MachineGet().Clock = [](std::uint32_t pause) { return now += pause; };
    const auto waited = [] {
        std::uint64_t answer = 0;
        const std::uint64_t begin = now;
        EXPECT_EQ(RyxFirmwareRequest(0x12900, &answer, nullptr), RyxOk);
        return now - begin;
    };
    EXPECT_EQ(waited(), 5000U);
    EXPECT_FALSE(InstanceStateGet().GlobalHeld);
    // The mutex of a process that ended is free.
    other.Kill();
    EXPECT_EQ(waited(), 0U);
    EXPECT_EQ(RyxLibExit(), RyxOk);
}

} // namespace
