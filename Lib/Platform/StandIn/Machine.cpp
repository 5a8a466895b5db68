// The process's machine.
#include "Lib/Platform/StandIn/Machine.h"

namespace StandIn {

Machine& MachineGet() {
    static Machine machine;
    return machine;
}

} // namespace StandIn
