#include "platform/RingMemory.h"

#include <cstdint>
#include <new>
#include <tuple>

#include <sys/mman.h>

namespace platform {

namespace {

void* map(void* place, size_t size, int protection, int flags)
{
    return mmap(place, size, protection, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
}

} // namespace

// Pages that are only read stay the system's one page of zeros, so the space behind the ring costs addresses
// and page tables but no memory. The ring is mapped apart from it, so that the system can refuse a size that
// it does not have.
RingMemory::RingMemory(size_t size) : m_mapped{size + readable_beyond}, m_data{nullptr}
{
    if (size > PTRDIFF_MAX - readable_beyond)
        throw std::bad_alloc{};
    void* const zeros = map(nullptr, m_mapped, PROT_READ, MAP_NORESERVE);
    if (zeros == MAP_FAILED)
        throw std::bad_alloc{};
    if (map(zeros, size, PROT_READ | PROT_WRITE, MAP_FIXED) == MAP_FAILED) {
        std::ignore = munmap(zeros, m_mapped); // the mapping is whole: nothing to fail
        throw std::bad_alloc{};
    }
    m_data = static_cast<unsigned char*>(zeros);
}

RingMemory::~RingMemory()
{
    std::ignore = munmap(m_data, m_mapped); // the mapping is whole: nothing to fail
}

} // namespace platform
