#include "platform/RingMemory.h"

#include <cstdint>
#include <new>
#include <tuple>

#include <windows.h>

namespace platform {

// The space behind the ring counts as memory that the system has promised, but takes none until it is read.
// Both are committed apart from the reservation, so that the system can refuse a size that it does not have.
RingMemory::RingMemory(size_t size) : m_mapped{0}, m_data{nullptr}
{
    if (size > PTRDIFF_MAX - readable_beyond)
        throw std::bad_alloc{};
    const size_t ring_size = (size + page_size - 1) / page_size * page_size;
    m_mapped = ring_size + readable_beyond;
    void* const addresses = VirtualAlloc(nullptr, m_mapped, MEM_RESERVE, PAGE_NOACCESS);
    if (addresses == nullptr)
        throw std::bad_alloc{};
    m_data = static_cast<unsigned char*>(addresses);
    if (VirtualAlloc(m_data, ring_size, MEM_COMMIT, PAGE_READWRITE) == nullptr ||
        VirtualAlloc(m_data + ring_size, readable_beyond, MEM_COMMIT, PAGE_READONLY) == nullptr) {
        std::ignore = VirtualFree(addresses, 0, MEM_RELEASE); // reserved above: nothing to fail
        throw std::bad_alloc{};
    }
}

RingMemory::~RingMemory()
{
    std::ignore = VirtualFree(m_data, 0, MEM_RELEASE); // reserved by the constructor: nothing to fail
}

} // namespace platform
