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
    /// Appends an entry to the new-buffer event and signals it, if there is one.
    SignalLine::Released deliver(const ShortLock::Held& held, const BufferQueue::Entry& entry) const
    {
        EventModule* const event = m_new_buffer_event.load(std::memory_order_relaxed);
        return event != nullptr ? event->append_and_signal(held, entry) : SignalLine::Released{};
    }
    /// Takes the oldest entry of the new-buffer event as a datum at `destination`, as a wait for it does that
    /// ends at once. False, and nothing has changed, when the handle is not that event's or there is more to
    /// do.
    bool take_at_once(const void* handle, void* destination) const;

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
    /// The event of nearly every call. Changed under the lock; its address is also compared without it.
    std::atomic<EventModule*> m_new_buffer_event{nullptr};
    bool m_is_open{true};
    std::deque<EventRef> m_events;
};

} // namespace zvgentl
