#include "simulator/Library.h"

#include <algorithm>
#include <new>
#include <utility>

#include "platform/process.h"
#include "platform/unloading.h"
#include "simulator/CyclicStream.h"
#include "simulator/Log.h"
#include "simulator/QueuedStream.h"
#include "simulator/faults/HookedCall.h"

namespace zvsim {

namespace {

constexpr std::chrono::seconds longest_wait_at_exit{5};

/// Ends what still runs when the library is unloaded or the process ends, as far as the system lets it.
struct ShutDown {
    ShutDown() = default;
    ShutDown(const ShutDown&) = delete;
    ShutDown& operator=(const ShutDown&) = delete;
    ~ShutDown()
    {
        if (!platform::other_threads_were_stopped() && !Library::instance().is_of_parent())
            Library::instance().shut_down();
    }
};

const ShutDown at_unload;

void log_outcome(const Configuration& configuration)
{
    const std::string& file = configuration.environment.file.path;
    if (!configuration.errors.empty())
        log_error("no grabbers are offered: their configuration has errors");
    else if (!file.empty())
        log_information(std::to_string(configuration.grabbers.size()) + " grabbers are configured by " +
                        file);
    for (const std::string& error : configuration.errors)
        log_error(error);
    for (const std::string& warning : configuration.warnings)
        log_warning(warning);
}

/// Whoever looks at the grabbers must not take them for what was configured.
void report_outcome(const Configuration& configuration)
{
    std::string text;
    if (!configuration.errors.empty())
        text = "no software grabbers are offered: their configuration has errors";
    else if (!configuration.warnings.empty())
        text = "the software grabbers are not as they are configured";
    for (const auto* const lines : {&configuration.errors, &configuration.warnings})
        for (const std::string& line : *lines)
            text += "\n" + line;
    report(text);
}

} // namespace

Library& Library::instance()
{
    alignas(Library) static unsigned char storage[sizeof(Library)];
    static auto* const library = new (storage) Library;
    return *library;
}

uint32_t Library::new_handle() { return m_last_handle < ZV_NO_HANDLE - 1 ? ++m_last_handle : ZV_NO_HANDLE; }

void Library::configure()
{
    const Environment environment = Environment::read();
    Lock guard = lock();
    release_left_streams(guard);
    const auto is_settled = [&] {
        return m_is_shut_down || !m_grabbers.empty() || !m_streams.empty() ||
               (m_configuration != nullptr && m_configuration->environment == environment);
    };
    if (is_settled())
        return;
    guard.unlock();
    auto configuration = Configuration::make(environment); // reads pictures: not under the lock
    std::vector<std::unique_ptr<GrabberDevice>> devices;
    for (const GrabberModel& model : configuration->grabbers)
        devices.push_back(std::make_unique<GrabberDevice>(model, static_cast<uint32_t>(devices.size())));
    log_outcome(*configuration);
    guard.lock();
    if (is_settled())
        return;
    m_devices.swap(devices);
    m_configuration.swap(configuration);
    report_outcome(*m_configuration);
    scan();
    renew_faults();
}

void Library::scan()
{
    m_present.clear();
    for (uint32_t i = 0; i < m_devices.size(); ++i) {
        if (is_there({i, Place::none}))
            m_present.push_back(i);
    }
}

GrabberDevice* Library::grabber_device(uint32_t index) const
{
    return index < grabber_count() ? m_devices[m_present[index]].get() : nullptr;
}

void Library::update_links(const Grabber& grabber)
{
    for (const uint32_t handle : grabber.cameras) {
        const Camera& camera = m_cameras.at(handle);
        camera.device->set_connected(is_there(camera.place));
    }
}

const char* Library::keep_text(const std::string& text) { return m_texts.insert(text).first->c_str(); }

uint32_t Library::open_grabber(uint32_t index)
{
    GrabberDevice* const device = grabber_device(index);
    const auto is_taken = [device](const auto& grabber) { return grabber.second.device == device; };
    if (device == nullptr || std::any_of(m_grabbers.begin(), m_grabbers.end(), is_taken))
        return ZV_NO_HANDLE;
    const uint32_t handle = new_handle();
    std::map<uint32_t, Camera> cameras;
    Place place{m_present[index], Place::none};
    Grabber grabber{place, device, {}};
    place.camera = 0;
    for (const auto& camera : device->cameras()) {
        const auto [kept, is_new] = m_camera_handles.try_emplace({place.grabber, place.camera}, 0);
        if (is_new)
            kept->second = new_handle();
        grabber.cameras.push_back(kept->second);
        cameras.emplace(kept->second, Camera{handle, camera.get(), place});
        ++place.camera;
    }
    if (m_last_handle == ZV_NO_HANDLE - 1)
        return ZV_NO_HANDLE;
    m_process = platform::process_id();
    watch_plugs();
    m_grabbers.emplace(handle, std::move(grabber));
    m_cameras.merge(cameras);
    return handle;
}

uint32_t Library::close_grabber(Lock& lock, uint32_t handle)
{
    const auto grabber = m_grabbers.extract(handle);
    if (grabber.empty())
        return status_bad_handle;
    const auto& cameras = grabber.mapped().cameras;
    for (const uint32_t camera : cameras)
        m_cameras.erase(camera);
    retire_streams(lock, [&cameras](uint32_t /*stream*/, uint32_t camera) {
        return std::find(cameras.begin(), cameras.end(), camera) != cameras.end();
    });
    if (m_grabbers.empty())
        end_plug_timer(lock);
    return status_ok;
}

Grabber* Library::find_grabber(uint32_t handle)
{
    const auto found = m_grabbers.find(handle);
    return found != m_grabbers.end() ? &found->second : nullptr;
}

Camera* Library::find_camera(uint32_t handle)
{
    const auto found = m_cameras.find(handle);
    return found != m_cameras.end() ? &found->second : nullptr;
}

uint32_t Library::close_camera(Lock& lock, uint32_t handle)
{
    Camera* const camera = find_camera(handle);
    if (camera == nullptr)
        return status_bad_handle;
    if (!std::exchange(camera->is_open, false))
        return status_not_ready;
    camera->has_been_lost = false;
    stop_streams_of(lock, handle);
    return status_ok;
}

uint32_t Library::add_stream(uint32_t camera, const MakeStream& make)
{
    const Camera* const owner = find_camera(camera);
    if (owner == nullptr || !owner->is_open)
        return ZV_NO_HANDLE;
    const uint32_t handle = new_handle();
    if (handle != ZV_NO_HANDLE)
        m_streams.emplace(handle, make(handle, *owner->device));
    return handle;
}

uint32_t Library::delete_stream(Lock& lock, uint32_t handle)
{
    Stream* const stream = find_stream<Stream>(handle);
    if (stream == nullptr)
        return status_bad_handle;
    Camera* const camera = find_camera(stream->camera());
    if (camera != nullptr && dynamic_cast<CyclicStream*>(stream) != nullptr)
        camera->forget_callback(); // its context belongs to the stream's user
    retire_streams(lock, [handle](uint32_t candidate, uint32_t /*camera*/) { return candidate == handle; });
    return status_ok;
}

Stream* Library::find_any_stream(uint32_t handle)
{
    const auto found = m_streams.find(handle);
    return found != m_streams.end() ? found->second.get() : nullptr;
}

Stream* Library::acquiring_stream(uint32_t camera)
{
    for (const auto& entry : m_streams) {
        if (entry.second->camera() == camera && entry.second->is_acquiring())
            return entry.second.get();
    }
    return nullptr;
}

uint32_t Library::start(Lock& lock, uint32_t camera, uint32_t stream, uint32_t frames)
{
    m_changed.wait(lock, [this, stream] {
        const auto* const ending = find_stream<Stream>(stream);
        return ending == nullptr || !ending->is_reporting_end() || ending->is_own_thread();
    });
    const Camera* const owner = find_camera(camera);
    Stream* const started = find_stream<Stream>(stream);
    if (owner == nullptr || started == nullptr || started->camera() != camera)
        return status_bad_handle;
    if (!owner->is_open || owner->has_been_lost)
        return status_not_ready;
    if (acquiring_stream(camera) != nullptr)
        return status_in_use;
    // Created this late, it is destroyed before everything that exists by now: at the end of the process no
    // callback finds its receiver half destroyed.
    static const ShutDown before_the_receivers;
    started->start(frames);
    return status_ok;
}

uint32_t Library::stop(Lock& lock, uint32_t camera)
{
    if (find_camera(camera) == nullptr)
        return status_bad_handle;
    stop_streams_of(lock, camera);
    return status_ok;
}

void Library::stop_streams_of(Lock& lock, uint32_t camera)
{
    for (const auto& entry : m_streams) {
        if (entry.second->camera() == camera)
            entry.second->stop();
    }
    m_changed.wait(lock, [this, camera] {
        return std::all_of(m_streams.begin(), m_streams.end(), [camera](const auto& entry) {
            const Stream& stream = *entry.second;
            return stream.camera() != camera || stream.has_stopped() || stream.is_own_thread();
        });
    });
}

template <class Belongs>
void Library::retire_streams(Lock& lock, const Belongs& belongs)
{
    for (const auto& entry : m_streams) {
        if (belongs(entry.first, entry.second->camera()))
            entry.second->kill();
    }
    m_changed.wait(lock, [this, &belongs] {
        return std::all_of(m_streams.begin(), m_streams.end(), [&belongs](const auto& entry) {
            const Stream& stream = *entry.second;
            return !belongs(entry.first, stream.camera()) || stream.has_left() || stream.is_own_thread();
        });
    });
    release_left_streams(lock);
}

void Library::release_left_streams(Lock& lock)
{
    std::map<uint32_t, std::unique_ptr<Stream>> left;
    for (auto entry = m_streams.begin(); entry != m_streams.end();) {
        const auto candidate = entry++;
        if (candidate->second->is_dead() && candidate->second->has_left())
            left.insert(m_streams.extract(candidate));
    }
    lock.unlock();
    left.clear();
    lock.lock();
}

void Library::renew_faults()
{
    const FaultPlan& plan = m_configuration->faults;
    if (m_faults != nullptr)
        m_faults->end_log(); // before the next one begins in the same file
    m_faults = nullptr;
    if (FaultEngine::is_needed(plan))
        m_faults = std::make_shared<FaultEngine>(plan, m_devices.size());
    HookedCall::set_needed(m_faults != nullptr);
}

// While no grabber is open, every call checks the plugs itself, and no thread may be left.
void Library::watch_plugs()
{
    if (m_faults == nullptr || m_faults->event_times().empty() || m_plug_timer != nullptr)
        return;
    const auto advance = [this] {
        const Lock guard = lock();
        if (m_faults != nullptr)
            m_faults->advance();
    };
    m_plug_timer = std::make_unique<PlugTimer>(m_faults->event_times(), advance);
}

void Library::end_plug_timer(Lock& lock)
{
    std::unique_ptr<PlugTimer> ended = std::move(m_plug_timer);
    lock.unlock(); // its thread may wait for the lock
    ended.reset();
    lock.lock();
}

Place Library::place_of(const Target& target) const
{
    switch (target.type) {
    case Target::Type::index:
        return {target.value < m_present.size() ? m_present[static_cast<size_t>(target.value)] : Place::none,
                Place::none};
    case Target::Type::handle:
        return place_of_handle(static_cast<uint32_t>(target.value));
    case Target::Type::buffer:
        return place_of_handle(QueuedStream::stream_of(target.value));
    case Target::Type::none:
        break;
    }
    return {};
}

Place Library::place_of_handle(uint32_t handle) const
{
    const auto stream = m_streams.find(handle);
    const auto camera = m_cameras.find(stream != m_streams.end() ? stream->second->camera() : handle);
    if (camera != m_cameras.end())
        return camera->second.place;
    const auto grabber = m_grabbers.find(handle);
    return grabber != m_grabbers.end() ? grabber->second.place : Place{};
}

char Library::kind_of(uint32_t handle) const
{
    if (m_grabbers.count(handle) != 0)
        return 'g';
    if (m_cameras.count(handle) != 0)
        return 'c';
    return m_streams.count(handle) != 0 ? 's' : '?';
}

std::vector<uint32_t> Library::streams_of(const Target& target) const
{
    std::vector<uint32_t> found;
    for (const auto& entry : m_streams) {
        const uint32_t camera = entry.second->camera();
        const auto owner = m_cameras.find(camera);
        const bool is_of_grabber = owner != m_cameras.end() && owner->second.grabber == target.value;
        if (target.value == entry.first || target.value == camera || is_of_grabber)
            found.push_back(entry.first);
    }
    return found;
}

uint32_t Library::stream_of_this_thread() const
{
    for (const auto& entry : m_streams) {
        if (entry.second->is_own_thread())
            return entry.first;
    }
    return 0;
}

void Library::follow_presence()
{
    for (uint32_t i = 0; i < m_devices.size(); ++i) {
        uint32_t position = 0;
        for (const auto& camera : m_devices[i]->cameras())
            camera->set_connected(is_there({i, position++}));
    }
    for (auto& entry : m_cameras)
        entry.second.has_been_lost = entry.second.has_been_lost || !is_there(entry.second.place);
    for (const auto& entry : m_streams) {
        const auto owner = m_cameras.find(entry.second->camera());
        if (owner != m_cameras.end() && owner->second.has_been_lost)
            entry.second->run_out();
    }
}

bool Library::is_of_parent() const noexcept
{
    const uint32_t process = m_process;
    return process != 0 && process != platform::process_id();
}

void Library::shut_down()
{
    Lock guard = lock();
    if (std::exchange(m_is_shut_down, true))
        return;
    std::shared_ptr<FaultEngine> faults = std::exchange(m_faults, nullptr);
    HookedCall::set_needed(false);
    end_plug_timer(guard);
    m_grabbers.clear();
    m_cameras.clear();
    for (const auto& entry : m_streams)
        entry.second->kill();
    m_changed.wait_for(guard, longest_wait_at_exit, [this] {
        return std::all_of(m_streams.begin(), m_streams.end(), [](const auto& entry) {
            return entry.second->has_left() || entry.second->is_own_thread();
        });
    });
    release_left_streams(guard);
    if (!m_streams.empty()) {
        m_faults.swap(faults); // those that are left behind still ask for them
        return;
    }
    if (faults != nullptr)
        faults->end_log();
    // This object is never destroyed: its memory must be given back by hand.
    std::vector<uint32_t>{}.swap(m_present);
    std::vector<std::unique_ptr<GrabberDevice>>{}.swap(m_devices);
    m_configuration.reset();
    m_texts.clear();
    m_camera_handles.clear();
}

} // namespace zvsim
