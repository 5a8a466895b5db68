// The library context.
#include "Lib/Common/LibraryContext.h"

#include "Lib/Common/AcpiData.h"
#include "Lib/Common/CallbackFunctions.h"
#include "Lib/Common/FirmwareChannel.h"
#include "Lib/Common/Instance.h"
#include "Lib/Platform/Driver.h"

LibraryContext& LibraryContextGet() {
    static LibraryContext context{};
    return context;
}

void OptionsClear() {
    LibraryContextGet().Options = {};
}

void LibraryContextReset() {
    ArgumentRelease();
    ArgumentCommandRelease();
    LibraryContextGet() = {};
    InstanceStateReset();
    FirmwareChannelReset();
    AcpiStateReset();
    CallbackFunctionsReset();
    DriverStateReset();
}
