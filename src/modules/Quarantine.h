#pragma once

#include <array>
#include <cstddef>
#include <mutex>
#include <new>

#include "modules/PortModule.h"

namespace zvgentl {

/// Handles are addresses, so an address must not come back as a handle soon after its object died: a
/// consumer's stale handle would then name another object. The quarantine keeps the memory of the last 256
/// destroyed objects of a class before it returns it; under AddressSanitizer that memory is poisoned. Any
/// thread.
class Quarantine {
public:
    Quarantine() = default;
    ~Quarantine();
    Quarantine(const Quarantine&) = delete;
    Quarantine& operator=(const Quarantine&) = delete;

    void put(void* block, size_t size) noexcept;

private:
    struct Block {
        void* memory;
        size_t size;
    };
    static void give_back(const Block& block) noexcept;

    std::mutex m_mutex;
    std::array<Block, 256> m_blocks{};
    size_t m_next{0}; // the place of the oldest block, which the next one takes
};

// Inline, so that they are made before the device store, whose source includes this header, and destroyed
// after it: the devices of the store leave their buffers and events to them.
inline Quarantine retired_systems;
inline Quarantine retired_interfaces;
inline Quarantine retired_buffers;
inline Quarantine retired_events;

/// Base of the module classes whose objects die while the library is in use.
template <Quarantine& retired>
class QuarantinedModule : public PortModule {
public:
    // NOLINTNEXTLINE(misc-new-delete-overloads): the sized form below is the one that matches
    static void* operator new(size_t size) { return ::operator new(size); }
    static void* operator new(size_t size, const std::nothrow_t& nothrow) noexcept
    {
        return ::operator new(size, nothrow);
    }
    static void operator delete(void* block, size_t size) noexcept { retired.put(block, size); }
    // For a constructor that threw: the address was never a handle.
    static void operator delete(void* block, const std::nothrow_t& nothrow) noexcept
    {
        ::operator delete(block, nothrow);
    }

protected:
    QuarantinedModule() = default;
    ~QuarantinedModule() = default;
};

} // namespace zvgentl
