#include "support/AllocationFaults.h"

namespace zvtest {

AllocationState& allocation_state() noexcept
{
    thread_local AllocationState state;
    return state;
}

} // namespace zvtest
