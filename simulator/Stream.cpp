#include "simulator/Stream.h"

#include <optional>
#include <string>
#include <utility>

#include "simulator/Devices.h"
#include "simulator/Library.h"

namespace zvsim {

Stream::Stream(Library& library, uint32_t handle, uint32_t camera, CameraDevice& device)
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
    m_next.emplace(Acquisition{m_started + 1,
                               frames,
                               m_device.frames_of_acquisition(),
                               0,
                               Pacer{m_device.pace(), first_frame, m_device.model().jitter},
                               make_picture_source(m_device),
                               {}});
    FaultEngine* const faults = m_library.faults().get();
    const Camera* const camera = m_library.find_camera(m_camera);
    if (faults != nullptr && camera != nullptr)
        m_next->faults = faults->begin_acquisition(m_handle, camera->place);
    if (!m_thread.joinable()) {
        m_library_module = platform::LoadedModule::own();
        m_thread = std::thread{&Stream::work, this};
    }
    ++m_started;
    m_is_acquiring = true;
    m_has_run_out = false;
    m_device.begin_acquisition();
    wake();
}

void Stream::stop()
{
    idle();
    m_stopped = m_started;
    wake();
}

void Stream::idle()
{
    if (std::exchange(m_is_acquiring, false))
        m_device.end_acquisition();
}

void Stream::run_out()
{
    m_has_run_out = m_has_run_out || m_is_acquiring;
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
    m_delivered = 0;
    prepare();
    while (wait_for_frame(lock, acquisition)) {
        const Frame frame = acquisition.pacer.take(Clock::now());
        m_device.count_lost(frame.id - std::exchange(acquisition.next_frame, frame.id + 1));
        --acquisition.frames_to_send;
        expose(lock, acquisition, frame);
    }
    if (!is_current(acquisition))
        return;
    idle(); // before the report, so that its receiver can start again
    m_is_reporting_end = true;
    report_end(lock);
    m_is_reporting_end = false;
}

void Stream::expose(Lock& lock, Acquisition& acquisition, const Frame& frame)
{
    if (!acquisition.faults.can_happen()) {
        deliver_one(lock, acquisition, frame, FrameFate{frame});
        return;
    }
    const FrameFate fate = acquisition.faults.fate_of(frame);
    if (fate.ends_acquisition)
        run_out();
    hold_up(lock, acquisition, fate.late);
    if (fate.is_dropped)
        m_device.count_lost(1);
    if (fate.is_dropped || is_over(acquisition))
        return;
    if (fate.is_held) {
        acquisition.faults.held = HeldFrame{frame, fate};
        return;
    }
    deliver_one(lock, acquisition, frame, fate);
    if (fate.is_duplicated && wait_for_room(lock, acquisition))
        deliver_one(lock, acquisition, frame, fate);
    const std::optional<HeldFrame> held = std::exchange(acquisition.faults.held, std::nullopt);
    if (held && wait_for_room(lock, acquisition))
        deliver_one(lock, acquisition, held->frame, held->fate);
}

void Stream::deliver_one(Lock& lock, Acquisition& acquisition, const Frame& frame, const FrameFate& fate)
{
    if (deliver(lock, acquisition, frame, fate)) {
        ++m_delivered;
        m_device.count_delivered();
    } else if (is_current(acquisition)) {
        m_device.count_lost(1);
    }
    if (acquisition.frames != 0 && m_delivered >= acquisition.frames && is_current(acquisition))
        m_has_run_out = true;
}

void Stream::hold_up(Lock& lock, const Acquisition& acquisition, std::chrono::microseconds time)
{
    if (time.count() > 0)
        m_wake.wait_for(lock, time, [&] { return is_over(acquisition); });
}

void Stream::log_delivery(const FrameFate& fate) const
{
    const FaultEngine* const faults = m_library.faults().get();
    CallLog* const log = faults != nullptr ? faults->call_log() : nullptr;
    if (log != nullptr)
        log->add(m_handle, log->name_of('s', m_handle) + " frame " + std::to_string(fate.id));
}

bool Stream::wait_for_frame(Lock& lock, Acquisition& acquisition)
{
    while (!is_over(acquisition)) { // whatever wakes the thread, settings may have changed
        const Clock::time_point now = Clock::now();
        acquisition.pacer.set_pace(m_device.pace(), now);
        const bool is_silent = acquisition.faults.is_silent() || acquisition.frames_to_send == 0;
        if (!is_silent && now < acquisition.pacer.due())
            m_wake.wait_until(lock, acquisition.pacer.due());
        else if (!is_silent && can_expose(acquisition))
            return true;
        else
            m_wake.wait(lock);
    }
    return false;
}

bool Stream::can_expose(const Acquisition& acquisition)
{
    if (m_device.pace().is_triggered)
        return m_device.take_trigger();
    return !acquisition.pacer.is_free_running() || has_room();
}

bool Stream::wait_for_room(Lock& lock, const Acquisition& acquisition)
{
    if (acquisition.pacer.is_free_running())
        m_wake.wait(lock, [&] { return is_over(acquisition) || has_room(); });
    return !is_over(acquisition);
}

} // namespace zvsim
