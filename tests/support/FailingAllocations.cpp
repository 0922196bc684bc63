#include "support/FailingAllocations.h"

#include <cstdlib>
#include <new>

namespace zvtest {

namespace {

thread_local bool fault_struck = false;

bool must_fail(std::size_t size) noexcept
{
    AllocationState& state = allocation_state();
    if (state.paused > 0)
        return false;
    ++state.allocations;
    if (!state.armed)
        return false;
    const bool fails = state.fail_by_size ? size >= state.fail_from_size : --state.countdown == 0;
    fault_struck = fault_struck || fails;
    return fails;
}

#ifdef _WIN32
void* allocate_aligned(std::size_t align, std::size_t size) noexcept { return _aligned_malloc(size, align); }
void free_aligned(void* memory) noexcept { _aligned_free(memory); }
#else
void* allocate_aligned(std::size_t align, std::size_t size) noexcept
{
    return std::aligned_alloc(align, size);
}
void free_aligned(void* memory) noexcept { std::free(memory); }
#endif

void* allocate(std::size_t size) noexcept
{
    return must_fail(size) ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* allocate(std::size_t size, std::align_val_t alignment) noexcept
{
    if (must_fail(size))
        return nullptr;
    const auto align = static_cast<std::size_t>(alignment);
    const std::size_t wanted = size == 0 ? 1 : size;
    const std::size_t rounded = (wanted + align - 1) / align * align;
    return rounded < wanted ? nullptr : allocate_aligned(align, rounded);
}

template <class... Arguments>
void* allocate_or_throw(Arguments... arguments)
{
    void* const memory = allocate(arguments...);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

} // namespace

FailingAllocations::FailingAllocations(long countdown, std::size_t size, bool by_size)
{
    fault_struck = false;
    AllocationState& state = allocation_state();
    state.countdown = countdown;
    state.fail_from_size = size;
    state.fail_by_size = by_size;
    state.armed = true;
}

FailingAllocations FailingAllocations::nth(long n) { return {n, 0, false}; }

FailingAllocations FailingAllocations::of_at_least(std::size_t size) { return {0, size, true}; }

FailingAllocations::~FailingAllocations() { allocation_state().armed = false; }

bool FailingAllocations::struck() const noexcept { return fault_struck; }

} // namespace zvtest

void* operator new(std::size_t size) { return zvtest::allocate_or_throw(size); }
void* operator new[](std::size_t size) { return zvtest::allocate_or_throw(size); }
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return zvtest::allocate_or_throw(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return zvtest::allocate_or_throw(size, alignment);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return zvtest::allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return zvtest::allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return zvtest::allocate(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return zvtest::allocate(size, alignment);
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { zvtest::free_aligned(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { zvtest::free_aligned(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { zvtest::free_aligned(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { zvtest::free_aligned(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept
{
    zvtest::free_aligned(memory);
}
void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept
{
    zvtest::free_aligned(memory);
}
