// The controlling terminal's keyboard.
#pragma once

namespace StandIn {

// Whether there is a terminal to read a key from.
bool TerminalReadable();

// Whether a key was pressed, or none can come. From then on the terminal does not echo and gives every key at once,
// until one is read or the process is interrupted. A stop or quit in between finds the terminal as it was.
bool TerminalKeyWaits();

// Reads one key press as _getch gives it: a character, or E0h and, at the next call, a second code. -1 when none comes.
int TerminalKeyRead();

} // namespace StandIn
