// The platform's name.
#pragma once

#include "Lib/RyxStatus.h"

// The platform description, such as "MS Windows 32-bit"; the text is the library's. RyxErrorArgument: no out-parameter.
RyxStatus RyxPlatformNameGet(const char** text);
