#include "modules/EventList.h"

#include <algorithm>
#include <new>
#include <utility>

namespace zvgentl {

using GenTL::EVENT_TYPE;

namespace {

auto is_of_type(EVENT_TYPE type)
{
    return [type](const EventRef& event) { return event->get_Type() == type; };
}

} // namespace

template <class Condition>
EventRef EventList::find_if(Condition condition) const
{
    const std::lock_guard lock(m_mutex);
    const auto position = std::find_if(m_events.begin(), m_events.end(), condition);
    return position == m_events.end() ? EventRef() : *position;
}

EventRef EventList::find(EVENT_TYPE type) const { return find_if(is_of_type(type)); }

EventRef EventList::find(const void* handle) const
{
    return find_if([handle](const EventRef& event) { return event.get() == handle; });
}

EventList::Registration EventList::add(StreamModule& source, EVENT_TYPE type)
{
    if (find(type))
        return Registration::existed;
    try {
        const EventRef made(
            new EventModule(source, type)); // its constructor reads a setting: not under the mutex
        const std::lock_guard lock(m_mutex);
        // Another thread may have been faster.
        if (std::any_of(m_events.begin(), m_events.end(), is_of_type(type)))
            return Registration::existed;
        m_events.push_back(made);
        return Registration::made;
    } catch (const std::bad_alloc&) {
        return Registration::failed;
    }
}

bool EventList::remove(EVENT_TYPE type)
{
    EventRef found;
    {
        const std::lock_guard lock(m_mutex);
        const auto position = std::find_if(m_events.begin(), m_events.end(), is_of_type(type));
        if (position == m_events.end())
            return false;
        found = *position;
        m_events.erase(position);
    }
    found->close();
    return true;
}

void EventList::clear()
{
    // One by one and without an allocation: closing a stream cannot fail.
    for (;;) {
        EventRef first;
        {
            const std::lock_guard lock(m_mutex);
            if (m_events.empty())
                return;
            first = std::move(m_events.front());
            m_events.pop_front();
        }
        first->close();
    }
}

} // namespace zvgentl
