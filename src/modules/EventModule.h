#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "GenTL/GenTL.h"

#include "modules/BufferModule.h"
#include "modules/BufferQueue.h"
#include "modules/Quarantine.h"
#include "modules/ShortLock.h"
#include "modules/SignalLine.h"

namespace zvgentl {

class StreamModule;

/// A registered event: its queue of delivered buffers and the signal that consumers wait for.
/// Its address is the event handle.
///
/// Owned by whoever holds a reference (EventRef): the stream's event list from registration to unregistration
/// or close, a consumer inside a call, a callback while it delivers. So a waiter outlives the closing of its
/// event. The queue never owns buffers and may hold handles of revoked ones. Entered by consumer and callback
/// threads; its source's lock guards the queue, and makes one step of a change of queue and signal.
class EventModule final : public QuarantinedModule<retired_events> {
public:
    EventModule(StreamModule& source, GenTL::EVENT_TYPE type);
    /// Nobody waits any more, or somebody would hold a reference.
    ~EventModule();

    std::string getId() const override;

    StreamModule& get_Source() const noexcept { return m_source; }
    GenTL::EVENT_TYPE get_Type() const noexcept { return m_type; }
    /// Bytes of one datum: 16 for a new-buffer event, 0 for every other.
    static constexpr size_t data_size_of(GenTL::EVENT_TYPE type) noexcept
    {
        return type == GenTL::EVENT_NEW_BUFFER ? sizeof(GenTL::EVENT_NEW_BUFFER_DATA) : 0;
    }
    size_t get_DataSize() const noexcept { return data_size_of(m_type); }
    /// Entries ever appended.
    uint64_t get_FiredCount() const noexcept { return m_fired.load(std::memory_order_relaxed); }
    size_t get_QueueLength() const;
    /// Whether there is probably something to take, without a lock; a taker in between is not noticed.
    bool has_entries() const noexcept { return !m_queue.empty(); }

    /// Adds a buffer at the back of the queue. Does not signal.
    void append(BufferModule* buffer);
    /// Adds a buffer and signals, in one step: no consumer sees the entry without its signal, so none takes
    /// the entry and leaves the signal for a later wait.
    SignalLine::Released append_and_signal(const ShortLock::Held& /*held*/, const BufferQueue::Entry& entry)
    {
        push(entry);
        return m_signal.set();
    }
    /// Drops every entry; a pending signal stays.
    void flush();
    /// Aborts one wait: the present one, or the next.
    void kill() noexcept;
    /// Aborts every wait, now and later.
    void close() noexcept;
    /// True once: when a kill waits for a consumer to see it.
    bool take_abort() noexcept { return m_abort.load() && m_abort.exchange(false); }

    /// Takes the oldest entry, as a datum at `destination` unless that is null. False when there is none.
    bool try_take(void* destination);
    /// What a wait that finds an entry does. False, and nothing has changed, when there is none or when the
    /// wait would be aborted.
    bool take_at_once(const ShortLock::Held& held, void* destination);
    /// Waits for an entry: GC_ERR_SUCCESS, GC_ERR_ABORT or GC_ERR_TIMEOUT. `timeout` in milliseconds.
    GenTL::GC_ERROR get_event_data(void* destination, uint64_t timeout);

private:
    friend class EventRef;

    void push(const BufferQueue::Entry& entry)
    {
        m_fired.store(m_fired.load(std::memory_order_relaxed) + 1,
                      std::memory_order_relaxed); // under the lock
        m_queue.push(entry);
    }
    bool pop(const ShortLock::Held& held, void* destination);
    void drop_front() noexcept;
    void* private_of(const BufferQueue::Entry& entry) const noexcept;
    GenTL::GC_ERROR wait_for_entry(void* destination, uint64_t timeout);

    StreamModule& m_source;
    ShortLock& m_lock; // the source's
    const GenTL::EVENT_TYPE m_type;
    std::atomic<bool> m_closing{false};
    std::atomic<bool> m_abort{false};
    std::atomic<int32_t> m_references{0};
    // What is changed for every frame has lines of the caches to itself.
    alignas(64) BufferQueue m_queue;
    SignalLine m_signal; // of queue and kills
    std::atomic<uint64_t> m_fired{0};
};

/// A counted reference to an event; the last one destroys it. Empty by default.
class EventRef {
public:
    EventRef() = default;
    explicit EventRef(EventModule* event) noexcept;
    EventRef(const EventRef& other) noexcept : EventRef(other.m_event) {}
    EventRef(EventRef&& other) noexcept : m_event(other.m_event) { other.m_event = nullptr; }
    EventRef& operator=(EventRef other) noexcept;
    ~EventRef();

    explicit operator bool() const noexcept { return m_event != nullptr; }
    EventModule* get() const noexcept { return m_event; }
    EventModule* operator->() const noexcept { return m_event; }
    EventModule& operator*() const noexcept { return *m_event; }

private:
    EventModule* m_event{nullptr};
};

} // namespace zvgentl
