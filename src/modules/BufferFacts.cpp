#include "modules/BufferFacts.h"

namespace zvgentl {

BufferFactsStore::Borrowed BufferFactsStore::take()
{
    const std::lock_guard lock{m_mutex};
    if (m_free.empty()) {
        if (m_free.capacity() <= m_facts.size())
            m_free.reserve(2 * (m_facts.size() + 1));
        return Borrowed{&m_facts.emplace_back()};
    }
    BufferFacts& facts = *m_free.back();
    m_free.pop_back();
    facts.queue.set(BUFFER_QUEUE_TYPE::GENERAL);
    facts.fill_state.set(FillState::never_filled);
    facts.timestamp.set(0);
    facts.frame_id.set(0);
    return Borrowed{&facts};
}

void BufferFactsStore::GiveBack::operator()(BufferFacts* facts) const noexcept
{
    const std::lock_guard lock{buffer_facts.m_mutex};
    buffer_facts.m_free.push_back(facts);
}

} // namespace zvgentl
