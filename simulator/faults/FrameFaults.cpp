#include "simulator/faults/FrameFaults.h"

#include <algorithm>

#include "simulator/faults/FaultEngine.h"

namespace zvsim {

namespace {

constexpr uint64_t stamp_checksum = 24; // where the stamp of a frame has it

} // namespace

void FrameFate::damage(unsigned char* memory, uint64_t size) const
{
    if (damaged_bytes == 0)
        return;
    const uint64_t begin = size > stamp_checksum ? stamp_checksum : 0;
    const uint64_t end = std::min(size, begin + damaged_bytes);
    for (uint64_t i = begin; i < end; ++i)
        memory[i] = static_cast<unsigned char>(~memory[i]);
}

FrameFaults::FrameFaults(FaultEngine& engine, uint32_t stream, const Place& place, bool is_silent)
    : m_engine{&engine}, m_stream{stream}, m_place{place}, m_is_silent{is_silent}, m_start{Clock::now()}
{
}

FrameFate FrameFaults::fate_of(const Frame& frame)
{
    FrameFate fate{frame};
    const Occasion occasion{m_place, frame.id, Clock::now(), m_engine->first_scan(), m_start};
    m_engine->for_each_frame_fault(m_stream, occasion,
                                   [&](const FaultRule& rule) { suffer(rule, frame, fate); });
    fate.id += m_id_shift;
    if (fate.timestamp != 0)
        fate.timestamp += m_timestamp_shift;
    return fate;
}

void FrameFaults::suffer(const FaultRule& rule, const Frame& frame, FrameFate& fate)
{
    const auto amount = static_cast<uint64_t>(rule.amount); // a negative one wraps round, and back when added
    switch (rule.kind) {
    case FaultKind::camera_lost_while_streaming:
        m_engine->lose(m_place, rule.absence);
        fate.ends_acquisition = true;
        break;
    case FaultKind::grabber_lost_while_streaming:
        m_engine->lose({m_place.grabber, Place::none}, rule.absence);
        fate.ends_acquisition = true;
        break;
    case FaultKind::frames_out_of_order:
        fate.is_held = !held;
        break;
    case FaultKind::frame_id_jumps:
        m_id_shift += amount;
        break;
    case FaultKind::timestamp_jumps:
        m_timestamp_shift += amount;
        break;
    case FaultKind::timestamp_backwards:
        fate.timestamp = frame.timestamp - std::min(frame.timestamp, amount);
        break;
    default:
        fate.suffer(rule);
        break;
    }
}

void FrameFate::suffer(const FaultRule& rule)
{
    const auto amount = static_cast<uint64_t>(rule.amount);
    switch (rule.kind) {
    case FaultKind::acquisition_ends_early:
        ends_acquisition = true;
        break;
    case FaultKind::frame_dropped:
        is_dropped = true;
        break;
    case FaultKind::frame_late:
        late += rule.time;
        break;
    case FaultKind::frame_duplicated:
        is_duplicated = true;
        break;
    case FaultKind::frame_id_wrong:
        id += amount;
        break;
    case FaultKind::timestamp_zero:
        timestamp = 0;
        break;
    case FaultKind::frame_truncated:
        drawn_bytes = std::min(drawn_bytes, amount);
        break;
    case FaultKind::frame_corrupted:
        damaged_bytes = std::max(damaged_bytes, amount);
        break;
    case FaultKind::callback_stalls:
        stall += rule.time;
        break;
    case FaultKind::callback_missing:
        is_unreported = true;
        break;
    default: // not a fault of a single frame
        break;
    }
}

} // namespace zvsim
