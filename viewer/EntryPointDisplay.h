// The display of the entry point structure.
#pragma once

#include "Lib/RyxStatus.h"

// Prints the entry point structure line by line. The first field that can't be read ends it with that read's status.
RyxStatus EntryPointDisplay();
