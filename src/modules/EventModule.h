#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "GenTL/GenTL.h"

#include "modules/BufferQueue.h"
#include "modules/Quarantine.h"
#include "modules/SerialLock.h"
#include "platform/AutoResetEvent.h"

namespace zvgentl {

class StreamModule;

/// A registered event: its queue of delivered buffers and the operating-system event that consumers wait for.
/// Its address is the event handle.
///
/// Owned by whoever holds a reference (EventRef): the stream's event list from registration to unregistration
/// or close, a consumer inside a call, a callback while it delivers. So a waiter outlives the closing of its
/// event. The queue never owns buffers and may hold handles of revoked ones. Entered by consumer and callback
/// threads.
class EventModule final : public QuarantinedModule<retired_events> {
public:
    EventModule(StreamModule& source, GenTL::EVENT_TYPE type);
    ~EventModule();

    std::string getId() const override;

    StreamModule& get_Source() const noexcept { return m_source; }
    GenTL::EVENT_TYPE get_Type() const noexcept { return m_type; }
    /// Bytes of one datum: 16 for a new-buffer event, 0 for every other.
    size_t get_DataSize() const noexcept;
    /// Entries ever appended.
    uint64_t get_FiredCount() const noexcept { return m_fired.load(std::memory_order_relaxed); }
    size_t get_QueueLength() const;

    /// False when there was no memory for what consumers wait for.
    bool can_signal() const noexcept { return m_os_event.exists(); }

    /// Adds a buffer at the back of the queue. Does not signal.
    void append(BufferModule* buffer);
    /// Adds a buffer and signals, in one step: no consumer sees the entry without its signal, so none takes
    /// the entry and leaves the signal for a later wait.
    void append_and_signal(BufferModule* buffer);
    /// Drops every entry; a pending signal stays.
    void flush();
    /// Aborts one wait: the present one, or the next.
    void kill() noexcept;
    /// Aborts every wait, now and later.
    void close() noexcept;
    /// True once: when a kill waits for a consumer to see it.
    bool take_abort() noexcept { return m_abort.exchange(false); }

    /// What happens to the signal when an entry is taken, in one step with the taking.
    enum class Signal { keep, reset };

    /// Takes the oldest entry, as a datum at `destination` unless that is null. False when there is none.
    bool try_take(void* destination, Signal signal = Signal::keep);
    /// Waits for an entry: GC_ERR_SUCCESS, GC_ERR_ABORT or GC_ERR_TIMEOUT. `timeout` in milliseconds.
    GenTL::GC_ERROR get_event_data(void* destination, uint64_t timeout);

private:
    friend class EventRef;

    void push(BufferModule* buffer);
    void drop_front();
    void reset_os_event() noexcept;

    StreamModule& m_source;
    std::atomic<bool> m_closing{false};
    mutable SerialLock m_queue_lock;
    platform::AutoResetEvent m_os_event;
    const GenTL::EVENT_TYPE m_type;
    std::atomic<uint64_t> m_fired{0};
    std::atomic<bool> m_abort{false};
    mutable std::mutex m_container; // guards the queue also when a setting turns the queue lock off
    BufferQueue m_queue;
    std::atomic<int32_t> m_references{0};
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
