// Handles of the system.
#pragma once

#include <memory>

// Closes a handle when its owner goes; null is none.
struct HandleClose {
    void operator()(void* handle) const;
};
using HandleOwner = std::unique_ptr<void, HandleClose>;
