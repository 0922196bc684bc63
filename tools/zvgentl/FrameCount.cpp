#include "zvgentl/FrameCount.h"

#include <algorithm>
#include <iterator>

#include "zvgr/FrameStamp.h"

namespace zvgentl::tool {

namespace {

// Enough to recognise late frames; the oldest gaps are forgotten so that a grab of weeks needs no more
// memory.
constexpr std::size_t most_gaps = 4096;

} // namespace

void Sequence::add(std::uint64_t number)
{
    if (m_started && number < m_next) {
        add_late(number);
        return;
    }
    if (m_started && number > m_next) {
        m_missing += number - m_next;
        m_gaps.emplace(m_next, number);
        if (m_gaps.size() > most_gaps)
            m_gaps.erase(m_gaps.begin());
    }
    m_started = true;
    m_next = number + 1;
}

void Sequence::add_late(std::uint64_t number)
{
    auto gap = m_gaps.upper_bound(number);
    if (gap == m_gaps.begin() || number >= (--gap)->second) {
        ++m_repeated;
        return;
    }
    const auto [start, end] = *gap;
    m_gaps.erase(gap);
    if (start < number)
        m_gaps.emplace(start, number);
    if (number + 1 < end)
        m_gaps.emplace(number + 1, end);
    --m_missing;
    ++m_late;
}

FrameState FrameCount::add(const Frame& frame)
{
    ++m_delivered;
    m_ids.add(frame.id);
    m_highest_id = std::max(m_highest_id, frame.id);
    if (frame.is_incomplete) {
        ++m_incomplete;
        return FrameState::damaged;
    }
    if (m_stamps == Stamps::ignored)
        return FrameState::not_checked;
    const auto stamp = zvgr::read_stamp(frame.data, frame.size);
    if (!stamp)
        return m_stamped == 0 ? FrameState::not_checked : FrameState::damaged;
    ++m_stamped;
    if (stamp->checksum_ok) {
        m_counters.add(stamp->counter);
        return FrameState::intact;
    }
    ++m_wrong_checksums; // its counter cannot be trusted either, and so the frame counts as lost
    return FrameState::damaged;
}

LossSource FrameCount::loss_source() const noexcept
{
    if (m_delivered == 0)
        return LossSource::unknown;
    if (m_mode == StreamMode::cyclic)
        return m_stamped > 0 ? LossSource::frame_counter : LossSource::unknown;
    // A grabber library that does not number its frames leaves every id at 0.
    return m_delivered > 1 && m_highest_id == 0 ? LossSource::unknown : LossSource::frame_ids;
}

const Sequence* FrameCount::sequence() const noexcept
{
    switch (loss_source()) {
    case LossSource::frame_ids:
        return &m_ids;
    case LossSource::frame_counter:
        return &m_counters;
    default:
        return nullptr;
    }
}

std::optional<std::uint64_t> FrameCount::lost() const noexcept
{
    const Sequence* const numbers = sequence();
    return numbers == nullptr ? std::nullopt : std::optional(numbers->missing());
}

std::uint64_t FrameCount::late() const noexcept
{
    const Sequence* const numbers = sequence();
    return numbers == nullptr ? 0 : numbers->late();
}

std::uint64_t FrameCount::repeated() const noexcept
{
    const Sequence* const numbers = sequence();
    return numbers == nullptr ? 0 : numbers->repeated();
}

std::uint64_t FrameCount::damaged() const noexcept
{
    const std::uint64_t unstamped = m_delivered - m_incomplete - m_stamped;
    return m_incomplete + (m_stamped == 0 ? 0 : m_wrong_checksums + unstamped);
}

} // namespace zvgentl::tool
