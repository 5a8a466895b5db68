// Start and stop of the library.
#include "Lib/API/RyxLib.h"

#include "Lib/API/RyxOption.h"
#include "Lib/API/RyxPrint.h"
#include "Lib/Common/AcpiData.h"
#include "Lib/Common/Argument.h"
#include "Lib/Common/ArgumentCommand.h"
#include "Lib/Common/CallbackFunctions.h"
#include "Lib/Common/DescFunctions.h"
#include "Lib/Common/DriverError.h"
#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/FirmwareChannel.h"
#include "Lib/Common/Instance.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Common/PowerRequest.h"
#include "Lib/Platform/System.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr std::uint8_t ErrorCodeStart = 255;

// Keeps the process on processor 0, unless it may run on processor 0 alone or on processor 1 alone.
RyxStatus ProcessorPin() {
    std::uint64_t allowed = 0;
    if (!ProcessAffinityGet(&allowed) || allowed <= 2) {
        return RyxOk;
    }
    return ProcessAffinitySet(1) || ThreadAffinitySet(1) ? RyxOk : RyxErrorGeneral;
}

RyxStatus PlatformPrepare() {
    if (const RyxStatus status = ProcessorPin(); status != RyxOk) {
        return status;
    }
    ProcessPriorityRaise();
    if (!ProcessIsAdministrator()) {
        RyxPrintf("\nFlash tool must be run with administrator privilege!\n\n");
        return RyxErrorNotAdministrator;
    }
    if (DriverRequest(DriverLoad) != RyxOk) {
        RyxPrintf("\nFlash tool load driver failed!\n\n");
        if (!RyxInterrupted()) {
            std::fprintf(stderr, "quarrinet: %s\n", DriverErrorLine(DriverLoadError()).c_str());
        }
        return RyxErrorDriverLoad;
    }
    return RyxOk;
}

// Whether an argument is a switch, "/file" and "-file" apart: those name a file to work on.
bool IsSwitch(const char* argument) {
    return (argument[0] == '-' || argument[0] == '/') && !TextEqual(argument + 1, "file", true);
}

void ArgumentsScan(std::uint32_t count, char** arguments) {
    for (std::uint32_t i = 1; i < count && arguments[i] != nullptr; ++i) {
        if (IsSwitch(arguments[i])) {
            LibraryContextGet().Options.Byte[RyxOptionSwitchGiven] = 1;
            return;
        }
    }
}

// Keeps the folder of packages, cut to the space that there is.
void PackageFolderKeep() {
    if (const char* const folder = EnvironmentGet("PACKORGDIR")) {
        InstanceState& instance = InstanceStateGet();
        std::snprintf(instance.PackageFolder, sizeof instance.PackageFolder, "%s", folder);
        instance.PackageFolderSet = true;
    }
}

// Whether the environment asks for the whole table.
bool WholeTableWanted() {
    const char* const value = EnvironmentGet("QUARRINET_WHOLE");
    return value != nullptr && *value != '\0' ? std::strcmp(value, "0") != 0 : LibraryContextGet().WholeByDefault;
}

RyxStatus PowerChange(std::uint8_t operation) {
    const RyxStatus status = PowerRequest(operation);
    return status == RyxOk || status == RyxErrorUnsupported ? RyxOk : RyxErrorPowerRequest;
}

} // namespace

RyxStatus RyxLibInit(std::uint32_t argumentCount, char** arguments) {
    LibraryContextGet().Options = {};
    LibraryContextGet().WholeTable = WholeTableWanted();
    RyxArgsSet(argumentCount, arguments);
    if (const RyxStatus status = PlatformPrepare(); status != RyxOk) {
        return status;
    }
    RyxInstanceRegister();
    if (argumentCount != 0 && arguments != nullptr) {
        ArgumentsScan(argumentCount, arguments);
        PackageFolderKeep();
    }
    if (const RyxStatus status = PowerChange(PowerHoldAwake); status != RyxOk) {
        return status;
    }
    if (std::uint16_t version = 0; DriverVersionGet(&version) == RyxOk) {
        InstanceStateGet().DriverVersion = version;
    }
    // A machine without a firmware that answers is as good as any other here.
    FlashMethodSelect();
    return RyxOk;
}

RyxStatus RyxLibExit() {
    CallbackFunctionsRelease();
    ArgumentRelease();
    ArgumentCommandRelease();
    if (const RyxStatus status = PowerChange(PowerLetSleep); status != RyxOk) {
        return status;
    }
    AcpiDataRelease();
    if (const RyxStatus status = FirmwareChannelEnd(); status != RyxOk) {
        return status;
    }
    RyxInstanceUnregister();
    if (DriverRequest(DriverUnload) != RyxOk) {
        return RyxErrorDriverUnload;
    }
    InstanceStateGet().Package = {};
    return RyxOk;
}

RyxStatus RyxInstanceRegister() {
    InstanceState& instance = InstanceStateGet();
    instance.Tools = ToolsRefCountGet() != 0 ? RyxInstanceAnother : RyxInstanceFirst;
    instance.Image = ImageRegister();
    instance.Counted = ToolsRefCountIncrement();
    instance.GlobalEnabled = true;
    return RyxOk;
}

RyxStatus RyxInstanceUnregister() {
    InstanceState& instance = InstanceStateGet();
    if (instance.Counted) {
        ToolsRefCountDecrement();
        instance.Counted = false;
    }
    MutexClose(instance.ImageMutex);
    instance.ImageMutex = nullptr;
    instance.Tools = RyxErrorArgument;
    instance.Image = RyxErrorArgument;
    if (ToolsRefCountGet() == 0) {
        GlobalMutexClose();
    }
    return RyxOk;
}

void RyxInstanceStateGet(RyxStatus* tools, RyxStatus* image) {
    if (tools != nullptr) {
        *tools = InstanceStateGet().Tools;
    }
    if (image != nullptr) {
        *image = InstanceStateGet().Image;
    }
}

void RyxLibInitErrorPrint() {
    std::FILE* const stream = PrintStream();
    std::fprintf(stream, "\nERROR %03d - %s!\n", RyxLibErrorCodeGet(), "RYX library initialization failed");
    std::fflush(stream);
}

std::uint8_t RyxLibErrorCodeGet() {
    return ErrorCodeStart;
}
