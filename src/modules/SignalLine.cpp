#include "modules/SignalLine.h"

#include <utility>

namespace zvgentl {

using platform::WaitResult;

/// A place is gone as soon as its thread is released.
void SignalLine::Released::release_all() noexcept
{
    for (Place* place = std::exchange(m_first, nullptr); place != nullptr;)
        std::exchange(place, place->next)->waiter.release();
}
SignalLine::Released SignalLine::release_first() noexcept
{
    Place* const first = m_first;
    remove(&m_first);
    first->next = nullptr; // the others stay
    return Released{first};
}

SignalLine::Released SignalLine::close() noexcept
{
    m_is_closed = true;
    Place* const first = m_first;
    for (Place* place = first; place != nullptr; place = place->next)
        place->is_in_line = false;
    m_first = nullptr;
    m_end = &m_first;
    return Released{first};
}

WaitResult SignalLine::wait(ShortLock& lock, uint32_t milliseconds) noexcept
{
    Place place;
    {
        const ShortLock::Held held{lock};
        if (m_is_closed || std::exchange(m_is_signalled, false))
            return WaitResult::signalled;
        join(place);
    }
    if (place.waiter.sleep(milliseconds) == WaitResult::signalled)
        return WaitResult::signalled;
    {
        const ShortLock::Held held{lock};
        if (leave(place))
            return WaitResult::timed_out;
    }
    return place.waiter.sleep(platform::wait_forever); // not for long: a signal came at the last moment
}

/// At the end of the line.
void SignalLine::join(Place& place) noexcept
{
    place.is_in_line = true;
    *m_end = &place;
    m_end = &place.next;
}

/// False when the place is in the line no more: its thread is about to be released.
bool SignalLine::leave(Place& place) noexcept
{
    if (!place.is_in_line)
        return false;
    Place** link = &m_first;
    while (*link != &place)
        link = &(*link)->next;
    remove(link);
    return true;
}

void SignalLine::remove(Place** link) noexcept
{
    Place& place = **link;
    place.is_in_line = false;
    *link = place.next;
    if (m_end == &place.next)
        m_end = link;
}

} // namespace zvgentl
