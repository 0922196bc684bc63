#include "platform/Interrupt.h"

#include <cstdlib>
#include <utility>

namespace platform {

void Interrupt::on_request(int exit_code)
{
    int none = 0;
    if (!m_exit_code.compare_exchange_strong(none, exit_code))
        std::_Exit(exit_code);
    const std::lock_guard lock(m_mutex);
    if (m_action)
        m_action();
}

Interrupt::Action::Action(Interrupt& interrupt, std::function<void()> action) : m_interrupt(interrupt)
{
    const std::lock_guard lock(m_interrupt.m_mutex);
    if (m_interrupt.requested())
        action();
    m_interrupt.m_action = std::move(action);
}

Interrupt::Action::~Action()
{
    const std::lock_guard lock(m_interrupt.m_mutex);
    m_interrupt.m_action = nullptr;
}

} // namespace platform
