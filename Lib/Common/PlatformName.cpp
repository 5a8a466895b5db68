// The platform's name.
#include "Lib/Common/PlatformName.h"

#include "Lib/Common/LibraryContext.h"
#include "Lib/Platform/System.h"

#include <cstdio>
#include <cstring>

RyxStatus RyxPlatformNameGet(const char** text) {
    if (text == nullptr) {
        return RyxErrorArgument;
    }
    constexpr int libraryBits = 32;
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    SystemVersionGet(&major, &minor);
    char* description = LibraryContextGet().PlatformDescription;
    std::snprintf(description, sizeof LibraryContext::PlatformDescription, "MS Windows %d-bit version %ld.%ld",
                  libraryBits, static_cast<long>(major), static_cast<long>(minor));
    constexpr char widthEnd[] = "-bit";
    if (char* width = std::strstr(description, widthEnd); width != nullptr) {
        width[sizeof widthEnd - 1] = '\0';
    }
    *text = description;
    return RyxOk;
}
