#include "logger/Notices.h"

#include <utility>

#include <Poco/Message.h>

namespace zvlog {

Notices::Notices(Poco::AutoPtr<Poco::Channel> log) : m_log(std::move(log)) {}

void Notices::post(const std::string& text)
{
    const std::lock_guard lock(m_mutex);
    m_texts.push_back("ZVLogger::" + text);
    m_is_waiting.store(true, std::memory_order_relaxed);
}

void Notices::deliver() noexcept
try {
    if (!m_is_waiting.load(std::memory_order_relaxed))
        return;
    std::vector<std::string> texts;
    {
        const std::lock_guard lock(m_mutex);
        texts.swap(m_texts);
        m_is_waiting.store(false, std::memory_order_relaxed);
    }
    for (const std::string& text : texts)
        m_log->log(Poco::Message("ZVLogger", text, Poco::Message::PRIO_WARNING));
} catch (...) {
    // Without a log there is nobody left to tell.
}

} // namespace zvlog
