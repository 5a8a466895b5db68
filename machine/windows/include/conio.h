// The console input that the operating-system bindings use, answered by the stand-in.
#pragma once

extern "C" int _kbhit();
extern "C" int _getch();
