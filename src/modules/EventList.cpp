#include "modules/EventList.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

namespace zvgentl {

using namespace GenTL;

inline EventModule* EventList::look_up(EVENT_TYPE type) const noexcept
{
    for (const EventRef& event : m_events) {
        if (event->get_Type() == type)
            return event.get();
    }
    return nullptr;
}

inline EventModule* EventList::look_up(const void* handle) const noexcept
{
    for (const EventRef& event : m_events) {
        if (event.get() == handle)
            return event.get();
    }
    return nullptr;
}

EventRef EventList::find(EVENT_TYPE type) const
{
    const ShortLock::Held held{m_lock};
    return EventRef{look_up(type)};
}

EventRef EventList::find(const void* handle) const
{
    const ShortLock::Held held{m_lock};
    return EventRef{look_up(handle)};
}

std::optional<EVENT_TYPE> EventList::type_of(const void* handle) const
{
    if (handle != nullptr && handle == m_new_buffer_event.load(std::memory_order_acquire))
        return EVENT_NEW_BUFFER;
    const ShortLock::Held held{m_lock};
    const EventModule* const event = look_up(handle);
    return event != nullptr ? std::optional{event->get_Type()} : std::nullopt;
}

bool EventList::take_at_once(const void* handle, void* destination) const
{
    const ShortLock::Held held{m_lock};
    EventModule* const event = m_new_buffer_event.load(std::memory_order_relaxed);
    return event != nullptr && event == handle && event->take_at_once(held, destination);
}

EventList::Registration EventList::add(StreamModule& source, EVENT_TYPE type)
{
    if (EventRef known = find(type))
        return {Outcome::existed, std::move(known)};
    try {
        EventRef made{new EventModule{source, type}}; // its constructor reads a setting: not under the mutex
        const ShortLock::Held held{m_lock};
        // Another thread may have been faster, or is closing the stream.
        if (EventModule* const known = look_up(type))
            return {Outcome::existed, EventRef{known}};
        if (!m_is_open)
            return {Outcome::failed, {}};
        m_events.push_back(made);
        if (type == EVENT_NEW_BUFFER)
            m_new_buffer_event.store(made.get(), std::memory_order_release);
        return {Outcome::made, std::move(made)};
    } catch (const std::bad_alloc&) {
        return {Outcome::failed, {}};
    }
}

bool EventList::remove(EVENT_TYPE type)
{
    EventRef found;
    {
        const ShortLock::Held held{m_lock};
        const auto position = std::find_if(m_events.begin(), m_events.end(), [type](const EventRef& event) {
            return event->get_Type() == type;
        });
        if (position == m_events.end())
            return false;
        found = *position;
        m_events.erase(position);
        if (type == EVENT_NEW_BUFFER)
            m_new_buffer_event.store(nullptr, std::memory_order_release);
    }
    found->close();
    return true;
}

void EventList::end_waits()
{
    for (const EVENT_TYPE type : {EVENT_NEW_BUFFER, EVENT_REMOTE_DEVICE}) {
        if (const EventRef event = find(type))
            event->close();
    }
}

void EventList::open()
{
    const ShortLock::Held held{m_lock};
    m_is_open = true;
}

void EventList::close()
{
    // One by one and without an allocation: closing a stream cannot fail.
    for (;;) {
        EventRef first;
        {
            const ShortLock::Held held{m_lock};
            m_is_open = false;
            m_new_buffer_event.store(nullptr, std::memory_order_release);
            if (m_events.empty())
                return;
            first = std::move(m_events.front());
            m_events.pop_front();
        }
        first->close();
    }
}

} // namespace zvgentl
