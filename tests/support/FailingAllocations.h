#pragma once

#include "support/AllocationFaults.h"

namespace zvtest {

/// While one lives, one kind of allocation of this thread fails: std::bad_alloc, or null from the nothrow
/// forms.
class FailingAllocations {
public:
    /// The n-th allocation from now fails, 1 being the next; later ones succeed again.
    static FailingAllocations nth(long n);
    /// Every allocation of at least `size` bytes fails.
    static FailingAllocations of_at_least(std::size_t size);

    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;

    /// Whether an allocation has failed since construction: a fault that never struck proves nothing.
    bool struck() const noexcept;

private:
    FailingAllocations(long countdown, std::size_t size, bool by_size);
};

/// Counts the allocations of this thread from construction on.
class CountedAllocations {
public:
    CountedAllocations() noexcept : m_start(allocation_state().allocations) {}
    long count() const noexcept { return allocation_state().allocations - m_start; }

private:
    long m_start;
};

} // namespace zvtest
