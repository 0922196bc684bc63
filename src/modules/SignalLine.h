#pragma once

#include <utility>

#include "platform/Waiter.h"

namespace zvgentl {

/// A signal that ends one wait, and the line of those who wait for it. A signal releases the thread that has
/// waited longest and is then that thread's, whether or not it has run yet; only if nobody waits it is kept,
/// once, for the next. So do auto-reset events of systems that have them.
///
/// It has no lock: its owner's guards it, also the places in the line. Whoever is to be released is handed
/// out, to be released when the lock has been given back.
class SignalLine {
public:
    /// A thread's place, on its stack from join() until it was released or leave() answered true.
    class Place {
    public:
        platform::Waiter waiter;

    private:
        friend class SignalLine;
        Place* m_next{nullptr};
        bool m_is_in_line{false};
    };

    /// Whom a signal releases: with release(), once the lock has been given back.
    class [[nodiscard]] Released {
    public:
        Released() = default; // nobody
        void release() noexcept
        {
            if (m_first != nullptr)
                release_all();
        }

    private:
        friend class SignalLine;
        void release_all() noexcept;
        explicit Released(Place* first) noexcept : m_first{first} {}
        Place* m_first{nullptr};
    };

    Released set() noexcept
    {
        if (m_first != nullptr)
            return release_first();
        m_is_signalled = true;
        return {};
    }
    /// Releases everyone, and keeps a signal for nobody.
    Released set_all() noexcept;
    /// Forgets a signal that nobody has.
    void reset() noexcept { m_is_signalled = false; }
    /// True when there was a signal, which is forgotten.
    bool take() noexcept { return std::exchange(m_is_signalled, false); }

    /// At the end of the line.
    void join(Place& place) noexcept;
    /// False when the place is in the line no more: its thread is about to be released.
    bool leave(Place& place) noexcept;

private:
    Released release_first() noexcept;
    void remove(Place** link) noexcept;

    bool m_is_signalled{false};
    Place* m_first{nullptr}; // who waits longest
    Place** m_end{&m_first};
};

} // namespace zvgentl
