#pragma once

#include <atomic>
#include <deque>
#include <optional>

#include "modules/EventModule.h"
#include "modules/ShortLock.h"

namespace zvgentl {

class StreamModule;

/// The events registered on a stream, at most one per type. Owned by the stream, whose lock guards the list;
/// entered by consumer threads and the library's callback thread. What it hands out is a reference, which
/// keeps an event alive after it left the list.
class EventList {
public:
    explicit EventList(ShortLock& lock) : m_lock{lock} {}

    enum class Outcome { made, existed, failed };
    struct Registration {
        Outcome outcome;
        EventRef event; // what was registered, or was before; none when that failed
    };

    /// Registers an event of the type unless there is one. `failed` when there is no memory for any part of
    /// it, or when the list is closed.
    Registration add(StreamModule& source, GenTL::EVENT_TYPE type);

    EventRef find(GenTL::EVENT_TYPE type) const;
    EventRef find(const void* handle) const;
    /// The type of the event of a handle; nothing when there is none.
    std::optional<GenTL::EVENT_TYPE> type_of(const void* handle) const;
    /// Appends a buffer to the new-buffer event and signals it, if there is one.
    SignalLine::Released deliver(const ShortLock::Held& held, BufferModule* buffer) const;
    /// Waits for an entry of the event of a handle: GC_ERR_SUCCESS, GC_ERR_ABORT or GC_ERR_TIMEOUT. Takes a
    /// reference only if there is something to wait for. `timeout` in milliseconds.
    GenTL::GC_ERROR get_event_data(const void* handle, void* destination, uint64_t timeout) const;

    /// Closes the event of the type and takes it out; false when there is none.
    bool remove(GenTL::EVENT_TYPE type);
    /// Aborts the waits for every event, now and later; the events stay.
    void end_waits();
    /// Closes every event, in order, takes it out, and refuses new ones until open().
    void close();
    void open();

private:
    EventModule* look_up(GenTL::EVENT_TYPE type) const noexcept;
    EventModule* look_up(const void* handle) const noexcept;

    ShortLock& m_lock;
    /// Says of most handles what type their event has, without the lock.
    std::atomic<const EventModule*> m_new_buffer_event{nullptr};
    bool m_is_open{true};
    std::deque<EventRef> m_events;
};

} // namespace zvgentl
