// What ends a run early.
#pragma once

namespace StandIn {

// Interrupts the run because memory has run out. Whoever catches no interrupts ends at once.
void InterruptForMemory();

} // namespace StandIn
