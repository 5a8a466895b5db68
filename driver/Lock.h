// Requests are served one after another, under one lock.
#pragma once

namespace RyxDriver {

// Called once when the driver starts.
void LockMake();

// Lets others take their turn; what they share may be another afterwards. The caller holds the lock.
void LockPause();

class LockHeld {
public:
    LockHeld();
    ~LockHeld();
    LockHeld(const LockHeld&) = delete;
    LockHeld& operator=(const LockHeld&) = delete;
};

} // namespace RyxDriver
