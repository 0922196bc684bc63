#pragma once

#include <deque>
#include <mutex>

#include "modules/EventModule.h"

namespace zvgentl {

class StreamModule;

/// The events registered on a stream, at most one per type. Owned by the stream; entered by consumer threads
/// and the library's callback thread. Its mutex guards the list and is a leaf. What it hands out is a
/// reference, which keeps an event alive after it left the list.
class EventList {
public:
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

    /// Closes the event of the type and takes it out; false when there is none.
    bool remove(GenTL::EVENT_TYPE type);
    /// Aborts the waits for every event, now and later; the events stay.
    void end_waits();
    /// Closes every event, in order, takes it out, and refuses new ones until open().
    void close();
    void open();

private:
    template <class Condition>
    EventRef find_if(Condition condition) const;

    mutable std::mutex m_mutex;
    bool m_is_open{true};
    std::deque<EventRef> m_events;
};

} // namespace zvgentl
