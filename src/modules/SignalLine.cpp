#include "modules/SignalLine.h"

#include <utility>

namespace zvgentl {

/// A place is gone as soon as its thread is released.
void SignalLine::Released::release_all() noexcept
{
    for (Place* place = std::exchange(m_first, nullptr); place != nullptr;)
        std::exchange(place, place->m_next)->waiter.release();
}
SignalLine::Released SignalLine::release_first() noexcept
{
    Place* const first = m_first;
    remove(&m_first);
    first->m_next = nullptr; // the others stay
    return Released{first};
}

SignalLine::Released SignalLine::set_all() noexcept
{
    Place* const first = m_first;
    for (Place* place = first; place != nullptr; place = place->m_next)
        place->m_is_in_line = false;
    m_first = nullptr;
    m_end = &m_first;
    return Released{first};
}

void SignalLine::join(Place& place) noexcept
{
    place.m_is_in_line = true;
    *m_end = &place;
    m_end = &place.m_next;
}

bool SignalLine::leave(Place& place) noexcept
{
    if (!place.m_is_in_line)
        return false;
    Place** link = &m_first;
    while (*link != &place)
        link = &(*link)->m_next;
    remove(link);
    return true;
}

void SignalLine::remove(Place** link) noexcept
{
    Place& place = **link;
    place.m_is_in_line = false;
    *link = place.m_next;
    if (m_end == &place.m_next)
        m_end = link;
}

} // namespace zvgentl
