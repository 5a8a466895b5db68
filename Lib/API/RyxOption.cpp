// Options, arguments and the platform's code.
#include "Lib/API/RyxOption.h"

#include "Lib/Common/FirmwareChannel.h"
#include "Lib/Common/LibraryContext.h"

namespace {

// Switches a method on or off. The switch itself sets the flags of the method that it took; a failed one leaves the
// flag 0.
RyxStatus MethodOptionSet(std::uint8_t* flag, std::uint8_t method, std::uint32_t value) {
    if (value > 1) {
        return RyxErrorArgument;
    }
    if (*flag == value) {
        return RyxOk;
    }
    const RyxStatus status = FlashMethodSwitch(value == 1 ? method : FlashMethodNone);
    if (value == 0 || status != RyxOk) {
        *flag = 0;
    }
    return status;
}

} // namespace

RyxStatus RyxOptionSet(std::uint32_t option, std::uint32_t low, std::uint32_t high) {
    if (option >= RyxOptionCount) {
        return RyxErrorArgument;
    }
    OptionArea& options = LibraryContextGet().Options;
    std::uint8_t* byte = &options.Byte[option];
    for (const FlashMethodOption& entry : FlashMethodOptions) {
        if (entry.Option == option) {
            return MethodOptionSet(byte, entry.Method, low);
        }
    }
    switch (option) {
    case RyxOptionQuiet:
        if (low > 1 || high != 0) {
            return RyxErrorArgument;
        }
        break;
    case RyxOptionCommunicationBuffer:
        if (low != 0) {
            return low == 1 ? RyxErrorUnsupported : RyxErrorArgument;
        }
        break;
    case 9:
        options.Word9 = low;
        return RyxOk;
    case 26:
        options.Word26 = low;
        return RyxOk;
    case 30:
        options.Word30 = low;
        return RyxOk;
    case 24:
        options.Long24 = static_cast<std::uint64_t>(high) << 32 | low;
        return RyxOk;
    case 25:
        options.Long25 = static_cast<std::uint64_t>(high) << 32 | low;
        return RyxOk;
    default:
        break;
    }
    *byte = static_cast<std::uint8_t>(low);
    return RyxOk;
}

RyxStatus RyxArgsSet(std::uint32_t count, char** arguments) {
    if (count == 0 || arguments == nullptr) {
        return RyxErrorArgument;
    }
    LibraryContextGet().ArgumentCount = count;
    LibraryContextGet().Arguments = arguments;
    return RyxOk;
}

std::uint32_t RyxPlatformIdGet() {
    constexpr std::uint32_t platformWindows = 3;
    return platformWindows;
}
