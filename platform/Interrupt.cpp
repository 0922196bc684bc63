#include "platform/Interrupt.h"

#include <cstdlib>
#include <utility>

namespace platform {

void Interrupt::on_request()
{
    if (m_requested.exchange(true)) {
        m_give_up();
        std::_Exit(exit_interrupted);
    }
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
