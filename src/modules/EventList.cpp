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
    if (EventRef known = find(type))
        return {Outcome::existed, std::move(known)};
    try {
        EventRef made{new EventModule{source, type}}; // its constructor reads a setting: not under the mutex
        if (!made->can_signal())
            return {Outcome::failed, {}};
        const std::lock_guard lock{m_mutex};
        // Another thread may have been faster, or is closing the stream.
        const auto known = std::find_if(m_events.begin(), m_events.end(), is_of_type(type));
        if (known != m_events.end())
            return {Outcome::existed, *known};
        if (!m_is_open)
            return {Outcome::failed, {}};
        m_events.push_back(made);
        return {Outcome::made, std::move(made)};
    } catch (const std::bad_alloc&) {
        return {Outcome::failed, {}};
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

void EventList::end_waits()
{
    const std::lock_guard lock{m_mutex};
    for (const EventRef& event : m_events)
        event->close();
}

void EventList::open()
{
    const std::lock_guard lock{m_mutex};
    m_is_open = true;
}

void EventList::close()
{
    // One by one and without an allocation: closing a stream cannot fail.
    for (;;) {
        EventRef first;
        {
            const std::lock_guard lock(m_mutex);
            m_is_open = false;
            if (m_events.empty())
                return;
            first = std::move(m_events.front());
            m_events.pop_front();
        }
        first->close();
    }
}

} // namespace zvgentl
