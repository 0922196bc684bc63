#include <new>
#include <utility>

#include "modules/DeviceModule.h"
#include "modules/DeviceStore.h"
#include "modules/Quarantine.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZV_ADDRESS_SANITIZER
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define ZV_ADDRESS_SANITIZER
#endif

#if defined(ZV_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(memory, size) ((void)(memory), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(memory, size) ((void)(memory), (void)(size))
#endif

namespace zvgentl {

// One file for all, because the order of destruction matters: the store's devices go first and leave their
// buffers and events to the quarantines.
Quarantine retired_systems;
Quarantine retired_interfaces;
Quarantine retired_buffers;
Quarantine retired_events;
DeviceStore device_store;

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

DeviceStore::~DeviceStore()
{
    if (m_users.load() != 0) {
        // Never destroyed, and still to be found by a leak checker.
        using Devices = decltype(m_devices);
        alignas(Devices) static unsigned char kept[sizeof(Devices)];
        new (kept) Devices(std::move(m_devices));
        return;
    }
    for (const auto& device : m_devices)
        device->abandon();
}

DeviceModule* DeviceStore::keep(std::unique_ptr<DeviceModule> device)
{
    const std::lock_guard lock(m_mutex);
    m_devices.push_back(std::move(device));
    return m_devices.back().get();
}

} // namespace zvgentl
