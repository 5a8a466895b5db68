// The library context.
#include "Lib/Common/LibraryContext.h"

LibraryContext& LibraryContextGet() {
    static LibraryContext context{};
    return context;
}
