#include "simulator/Stream.h"

#include "simulator/Devices.h"
#include "simulator/Library.h"

#include <utility>

namespace zvsim {

Stream::Stream(Library& library, uint32_t handle, uint32_t camera, const CameraDevice& device)
    : m_library{library}, m_handle{handle}, m_camera{camera}, m_device{device}, m_payload{device.payload()}
{
}

Stream::~Stream()
{
    if (m_thread.joinable())
        m_thread.join();
}

void Stream::start(uint32_t frames)
{
    const Clock::time_point first_frame = Clock::now() + m_device.model().start_up;
    const CameraSettings& settings = m_device.settings();
    const double rate = settings.is_rate_set ? settings.frames_per_second : 0;
    m_next = Acquisition{
        m_started + 1, frames, Pacer{rate, first_frame},
            make_picture_source(m_device)
    };
    if (!m_thread.joinable())
        m_thread = std::thread{&Stream::work, this};
    ++m_started;
    m_is_acquiring = true;
    wake();
}

void Stream::stop()
{
    m_is_acquiring = false;
    m_stopped = m_started;
    wake();
}

void Stream::kill()
{
    m_is_dead = true;
    stop();
}

Exposure Stream::exposure_of(const Frame& frame) const
{
    const CameraSettings& settings = m_device.settings();
    return {frame.id, settings.pattern, settings.brightness()};
}

bool Stream::is_current(const Acquisition& acquisition) const
{
    return m_is_acquiring && acquisition.number == m_started;
}

void Stream::work()
{
    Lock lock = m_library.lock();
    while (!m_is_dead) {
        m_wake.wait(lock, [this] { return m_is_dead || m_ended < m_started; });
        if (m_ended == m_started)
            break;
        Acquisition acquisition = *std::exchange(m_next, std::nullopt);
        m_ended = acquisition.number - 1; // those before it were stopped before they began
        acquire(lock, acquisition);
        m_ended = acquisition.number;
        m_library.changed().notify_all();
    }
    m_has_left = true;
    m_library.changed().notify_all();
}

void Stream::acquire(Lock& lock, Acquisition& acquisition)
{
    uint64_t delivered = 0;
    while (wait_for_frame(lock, acquisition)) {
        const Frame frame = acquisition.pacer.take(Clock::now());
        delivered += deliver(lock, acquisition, frame) ? 1 : 0;
        if (acquisition.frames == 0 || delivered < acquisition.frames || !is_current(acquisition))
            continue;
        m_is_acquiring = false; // before the report, so that its receiver can start again
        report_end(lock);
        return;
    }
}

bool Stream::wait_for_frame(Lock& lock, const Acquisition& acquisition)
{
    const auto is_over = [&] { return !is_current(acquisition); };
    const Clock::time_point due = acquisition.pacer.due();
    if (Clock::now() < due && m_wake.wait_until(lock, due, is_over))
        return false;
    if (acquisition.pacer.is_free_running())
        m_wake.wait(lock, [&] { return is_over() || has_room(); });
    return !is_over();
}

} // namespace zvsim
