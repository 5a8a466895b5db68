// The viewer's command flow.
#include "viewer/ViewerMain.h"

#include "Lib/API/RyxArg.h"
#include "Lib/API/RyxOption.h"
#include "Lib/API/RyxPrint.h"
#include "viewer/EntryPointDisplay.h"
#include "viewer/Report.h"
#include "viewer/StructDispatch.h"
#include "viewer/StructRead.h"
#include "viewer/ViewerState.h"

#include <cstdio>
#include <cstring>

namespace {

struct ViewerCommand {
    const char* Name;
    const char* Description;
    const char* Format;
    const char* Syntax;
};

constexpr ViewerCommand ViewerCommands[] = {
    {"b", "Enable breakpoint.", "", ""},
    {"eps", "Show SMBIOS entry point structure.", "", ""},
    {"type", "Specify the type number.", "%d=99 %d=0 %d=0", "Number [Instance Number][Field Number]"},
    {"nologo", "Disable logo.", "", ""},
    {"help", "Show command list.", "", ""},
};

// By platform code, from 1 on.
constexpr const char* PlatformNameTable[] = {"DOS", "Shell", "Windows", "Linux"};

// Types from here on can't be shown.
std::int64_t TypeLimit() {
    return RyxSmbiosWholeGet() ? 256 : 128;
}

// How a run, or a step of it, ended: an error number and the status to show with it, both 0 for success.
struct ViewerOutcome {
    std::uint32_t Error = 0;
    RyxStatus Status = RyxOk;
    bool Listed = false; // structures were asked for
};

// What `type` selects. The selected field is kept in the viewer state, where the decoders read it.
struct TypeSelection {
    bool All;
    std::int64_t Type;
    std::int64_t Instance;
};

const char* PlatformName() {
    const std::uint32_t code = RyxPlatformIdGet();
    return code >= 1 && code <= std::size(PlatformNameTable) ? PlatformNameTable[code - 1] : "???";
}

void LogoPrint() {
    RyxPrintf("%s for %s. ", "Korvath Quarrinet", PlatformName());
    RyxPrintf("Version " QUARRINET_VERSION ". (core base: %d.%d.%d.%d)\n", 2, 3, 0, 0);
    RyxPrintf("SMBIOS structure viewer of the Korvath firmware tools.\n\n");
}

// Fetches the three parameters of the `type` command and reads them as a selection.
ViewerOutcome SelectionGet(const ArgNode* node, TypeSelection* selection) {
    constexpr const char* FetchFailures[] = {"Get type number failed.\n\n", "Get handle number failed.\n\n",
                                             "Get field number failed.\n\n"};
    char texts[3][128];
    for (std::uint32_t i = 0; i < 3; ++i) {
        if (const RyxStatus status = RyxArgParamGet(node, i, texts[i], sizeof texts[i]); status != RyxOk) {
            FixedPrint(FetchFailures[i]);
            return {ViewerErrorParameter, status};
        }
    }
    *selection = {true, 0, 0};
    if (std::strcmp(texts[0], "99") == 0 && std::strcmp(texts[1], "0") == 0 && std::strcmp(texts[2], "0") == 0) {
        return {};
    }
    selection->All = false;
    std::int64_t* const numbers[] = {&selection->Type, &selection->Instance, &ViewerFieldSelected};
    for (std::size_t i = 0; i < 3; ++i) {
        if (const RyxStatus status = RyxArgNumberParse(texts[i], numbers[i]); status != RyxOk) {
            RyxPrintf("Please input correct number!\n\n");
            return {ViewerErrorParameter, status};
        }
    }
    return {};
}

void InstanceRangeSet(const TypeSelection& selection) {
    const bool every = selection.All || selection.Instance == 0;
    const std::uint64_t first = every ? 1 : static_cast<std::uint64_t>(selection.Instance);
    ViewerInstanceFirst = static_cast<std::uint8_t>(first);
    ViewerInstanceEnd = static_cast<std::uint8_t>(every ? InstanceEndAll() : first + 1);
}

ViewerOutcome UnsupportedReport(const TypeSelection& selection) {
    RyxPrintf("\nError: Type %lld", static_cast<long long>(selection.Type));
    if (selection.Instance != 0) {
        RyxPrintf(", handle ID [%d]", ViewerInstanceFirst);
    }
    if (ViewerFieldSelected != 0) {
        RyxPrintf(", field ID [%lld]", static_cast<long long>(ViewerFieldSelected));
    }
    RyxPrintf(" is not supported.\n\n");
    return {ViewerErrorUnsupported, RyxErrorUnsupported};
}

// Calls the decoder of the selection's type, where there is one and the selection is acceptable.
RyxStatus TypeShow(const TypeSelection& selection) {
    ViewerDecoderRan = 0;
    if (selection.Type < 0 || selection.Type >= TypeLimit()) {
        return RyxOk;
    }
    const StructDecoder* const decoder = StructDecoderFind(static_cast<std::uint64_t>(selection.Type));
    if (decoder == nullptr ||
        SelectionCheck(static_cast<std::uint64_t>(selection.Type), static_cast<std::uint64_t>(selection.Instance),
                       static_cast<std::uint64_t>(ViewerFieldSelected)) != RyxOk) {
        return RyxOk;
    }
    return (*decoder)(static_cast<std::uint8_t>(selection.Type));
}

ViewerOutcome StructuresShow(TypeSelection selection) {
    InstanceRangeSet(selection);
    for (;; ++selection.Type) {
        if (const RyxStatus status = TypeShow(selection); status != RyxOk) {
            return {ViewerErrorParser, status};
        }
        if (!selection.All) {
            const bool shown = ViewerDecoderRan != 0 && ViewerFieldSelected <= ViewerFieldCounter;
            return shown ? ViewerOutcome{} : UnsupportedReport(selection);
        }
        if (selection.Type >= TypeLimit()) {
            return {};
        }
    }
}

// The run from the registration of the commands on.
ViewerOutcome ViewerRun() {
    for (const ViewerCommand& command : ViewerCommands) {
        RyxArgCommandRegister(command.Name, command.Description, command.Format, command.Syntax);
    }
    // Until the command line is validated, names compare exactly: "/B" does not page and "/NOLOGO" keeps the logo.
    if (!ViewerJson && RyxArgCommandFind("b", nullptr) == RyxOk) {
        RyxOptionSet(RyxOptionPaging, 1, 0);
    }
    if (SmbiosVersionGet(&ViewerSmbiosMajor, &ViewerSmbiosMinor) != RyxOk) {
        ViewerSmbiosMajor = 0;
        ViewerSmbiosMinor = 0;
    }
    const bool logo = RyxArgCommandFind("nologo", nullptr) != RyxOk;
    if (logo && !ViewerJson) {
        LogoPrint();
    }
    if (const RyxStatus status = RyxArgSyntaxProcess(1, 1, nullptr); status != RyxOk) {
        RyxPrintf("Syntax process error.\n\n");
        RyxArgHelpPrint(1);
        return {ViewerErrorCommandLine, status};
    }
    if (RyxArgCommandFind("help", nullptr) == RyxOk) {
        if (ViewerJson) { // help is for people
            RyxPrintToErrorsSet(false);
            if (logo) {
                LogoPrint();
            }
        }
        RyxPrintf("Usage: Quarrinet [Command]\n\n");
        RyxArgHelpPrint(1);
        return {};
    }
    if (logo && !ViewerJson) {
        RyxPrintf("SMBIOS Version : %d.%d\n", ViewerSmbiosMajor, ViewerSmbiosMinor);
    }
    if (RyxArgCommandFind("eps", nullptr) == RyxOk) {
        if (const RyxStatus status = EntryPointDisplay(); status != RyxOk) {
            return {ViewerErrorParser, status};
        }
    }
    ArgNode* type = nullptr;
    if (RyxArgCommandFind("type", &type) != RyxOk) {
        return {};
    }
    TypeSelection selection{};
    const ViewerOutcome fetched = SelectionGet(type, &selection);
    if (fetched.Error != 0) {
        return fetched;
    }
    ViewerOutcome shown = StructuresShow(selection);
    shown.Listed = true;
    return shown;
}

// Tells those who look at a terminal that there is more than they see.
void HiddenTell() {
    if (RyxSmbiosWholeGet() || RyxInterrupted() || !RyxConsoleIsErrors()) {
        return;
    }
    if (const StructCounts counts = StructuresCount(); counts.Hidden != 0) {
        std::fprintf(stderr, "quarrinet: %u of %u structures are not shown; QUARRINET_WHOLE=1 shows them\n",
                     counts.Hidden, counts.All);
    }
}

} // namespace

std::uint32_t ViewerMain() {
    ViewerBinClear();
    ViewerToConsoleForget();
    const ViewerOutcome outcome = ViewerRun();
    ReportRelease();
    ViewerBinsRelease();
    if (outcome.Error != 0) {
        ViewerErrorReport(outcome.Error, outcome.Status);
    }
    if (outcome.Listed) {
        HiddenTell();
    }
    return outcome.Error;
}

RyxStatus ViewerErrorReport(std::uint32_t error, RyxStatus status) {
    const char* text = "";
    switch (error) {
    case ViewerErrorCommandLine:
        text = "Command line error";
        break;
    case ViewerErrorParameter:
        text = "Input error parameter";
        break;
    case ViewerErrorUnsupported:
        text = "Not supported";
        break;
    case ViewerErrorParser:
        text = "Parser entry point or data failed";
        break;
    default:
        break;
    }
    RyxPrintf("\nERROR %03d - %s! Status = %d.\n", static_cast<int>(error % 256), text,
              static_cast<int>(RyxStatusNumber(status)));
    return RyxOk;
}
