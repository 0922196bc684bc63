#pragma once

#include <cstddef>

// How test code keeps its own allocations out of allocation faults and counts. Works in every test; only
// programs that link zvtest_allocations have faults and counts.

namespace zvtest {

/// What the replaced operator new asks on the allocating thread. Plain values, because they are read while
/// memory is being allocated.
struct AllocationState {
    int paused{0};
    bool armed{false};
    long countdown{0}; // the allocation at which this reaches 0 fails
    std::size_t fail_from_size{0};
    bool fail_by_size{false};
    long allocations{0};
};

/// The state of the calling thread.
AllocationState& allocation_state() noexcept;

/// While one lives, the calling thread's allocations neither fail nor count. The fakes hold one while they
/// record and answer.
class PausedAllocationFaults {
public:
    PausedAllocationFaults() noexcept { ++allocation_state().paused; }
    ~PausedAllocationFaults() { --allocation_state().paused; }
    PausedAllocationFaults(const PausedAllocationFaults&) = delete;
    PausedAllocationFaults& operator=(const PausedAllocationFaults&) = delete;
};

} // namespace zvtest
