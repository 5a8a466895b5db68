// The whole library, back at process start.
#include "Lib/Common/LibraryReset.h"

#include "Lib/Common/AcpiData.h"
#include "Lib/Common/Argument.h"
#include "Lib/Common/ArgumentCommand.h"
#include "Lib/Common/CallbackFunctions.h"
#include "Lib/Common/DmiInfoEntryGet.h"
#include "Lib/Common/DmiParser.h"
#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/FirmwareChannel.h"
#include "Lib/Common/Instance.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Common/PowerRequest.h"

void LibraryReset() {
    ArgumentRelease();
    ArgumentCommandRelease();
    CallbackFunctionsRelease();
    LibraryContextGet() = {};
    DmiInfoReset();
    DmiWalkReset();
    InstanceStateReset();
    PowerStateReset();
    FirmwareChannelReset();
    AcpiStateReset();
    DriverStateReset();
}
