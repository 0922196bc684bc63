#pragma once

#include <cstdint>

#include "modules/ShortLock.h"
#include "platform/Waiter.h"

namespace zvgentl {

/// A signal that ends one wait, and the line of those who wait for it. A signal releases the thread that has
/// waited longest and is then that thread's, whether or not it has run yet; only if nobody waits it is kept,
/// once, for the next. So do auto-reset events of systems that have them.
///
/// Its owner's lock guards it. Whom a signal releases is handed out, to be released when the lock has been
/// given back.
class SignalLine {
    /// A thread's place, on its stack from join() until it was released or leave() answered true.
    struct Place {
        platform::Waiter waiter;
        Place* next{nullptr};
        bool is_in_line{false};
    };

public:
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

    // Under the lock:
    Released set() noexcept
    {
        if (m_first != nullptr)
            return release_first();
        m_is_signalled = true;
        return {};
    }
    /// Releases everyone, now and later.
    Released close() noexcept;
    /// Forgets a signal that nobody has.
    void reset() noexcept { m_is_signalled = false; }

    /// Takes a signal, or waits for one; without the lock, which it takes now and then. Milliseconds, or
    /// platform::wait_forever.
    platform::WaitResult wait(ShortLock& lock, uint32_t milliseconds) noexcept;

private:
    Released release_first() noexcept;
    void join(Place& place) noexcept;
    bool leave(Place& place) noexcept;
    void remove(Place** link) noexcept;

    bool m_is_signalled{false};
    bool m_is_closed{false};
    Place* m_first{nullptr}; // who waits longest
    Place** m_end{&m_first};
};

} // namespace zvgentl
