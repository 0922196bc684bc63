#include "modules/Quarantine.h"

#if defined(ZV_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(memory, size) ((void)(memory), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(memory, size) ((void)(memory), (void)(size))
#endif

namespace zvgentl {

Quarantine::~Quarantine()
{
    for (const Block& block : m_blocks)
        give_back(block);
}

void Quarantine::put(void* block, size_t size) noexcept
{
    ASAN_POISON_MEMORY_REGION(block, size);
    Block oldest{};
    {
        const std::lock_guard lock(m_mutex);
        oldest = m_blocks[m_next];
        m_blocks[m_next] = {block, size};
        m_next = (m_next + 1) % m_blocks.size();
    }
    give_back(oldest);
}

void Quarantine::give_back(const Block& block) noexcept
{
    if (block.memory == nullptr)
        return;
    ASAN_UNPOISON_MEMORY_REGION(block.memory, block.size);
    ::operator delete(block.memory);
}

} // namespace zvgentl
