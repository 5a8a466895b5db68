// The library context.
#include "Lib/Common/LibraryContext.h"

constinit LibraryContext CurrentContext{};
