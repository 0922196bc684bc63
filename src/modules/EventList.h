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
    enum class Registration { made, existed, failed };

    /// Registers an event of the type unless there is one. `failed` when there is no memory for it.
    Registration add(StreamModule& source, GenTL::EVENT_TYPE type);

    EventRef find(GenTL::EVENT_TYPE type) const;
    EventRef find(const void* handle) const;

    /// Closes the event of the type and takes it out; false when there is none.
    bool remove(GenTL::EVENT_TYPE type);
    /// Closes every event, in order, and takes it out.
    void clear();

private:
    template <class Condition>
    EventRef find_if(Condition condition) const;

    mutable std::mutex m_mutex;
    std::deque<EventRef> m_events;
};

} // namespace zvgentl
