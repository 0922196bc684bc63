#include "support/FakeGrabberLibrary.h"

#include <cstring>

#include <gtest/gtest.h>

namespace zvtest {

namespace {

// Runs test code from inside a fake function with allocation faults as the test has set them.
class ResumedAllocationFaults {
public:
    ResumedAllocationFaults() : m_paused(std::exchange(allocation_state().paused, 0)) {}
    ~ResumedAllocationFaults() { allocation_state().paused = m_paused; }
    ResumedAllocationFaults(const ResumedAllocationFaults&) = delete;
    ResumedAllocationFaults& operator=(const ResumedAllocationFaults&) = delete;

private:
    int m_paused;
};

/// The handle of the first entry that satisfies the condition.
template <class Table, class Condition>
uint32_t handle_of(const Table& table, Condition condition)
{
    for (const auto& [handle, entry] : table) {
        if (condition(entry))
            return handle;
    }
    return ZV_NO_HANDLE;
}

} // namespace

FakeGrabberLibrary& FakeGrabberLibrary::instance()
{
    // Never destroyed: what the producer destroys at exit may still call.
    static FakeGrabberLibrary* const fake = new FakeGrabberLibrary;
    return *fake;
}

void FakeGrabberLibrary::reset()
{
    m_script.clear();
    const std::lock_guard<std::mutex> guard(m_lock);
    auto dead = std::move(m_world.dead);
    for (const auto& entry : m_world.grabbers)
        dead[entry.first] = false;
    for (const auto& entry : m_world.cameras)
        dead[entry.first] = true;
    for (const auto& entry : m_world.streams)
        dead[entry.first] = true;
    m_world = FakeWorld();
    m_world.dead = std::move(dead); // so that a handle of an earlier test counts as stale, not as unknown
    m_calls.clear();
    m_allowed.clear();
    m_allowed_for.clear();
    m_allow_stale = false;
}

void FakeGrabberLibrary::has_grabbers(uint32_t count)
{
    locked([=](FakeWorld& world) { world.scanned = count; });
}

GrabberSetup& FakeGrabberLibrary::grabber(uint32_t position)
{
    return *locked([=](FakeWorld& world) { return &world.setup(position); });
}

void FakeGrabberLibrary::set_value(const ValueKey& key, int64_t value)
{
    locked([&](FakeWorld& world) { world.values[key] = value; });
}

void FakeGrabberLibrary::stream_info(uint32_t command, uint64_t value)
{
    locked([=](FakeWorld& world) { world.stream_info[command] = value; });
}

void FakeGrabberLibrary::set_xml_url(uint64_t handle, const std::string& url)
{
    locked([&](FakeWorld& world) { world.xml_urls[handle] = url; });
}

Calls FakeGrabberLibrary::calls() const
{
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_calls;
}

Calls FakeGrabberLibrary::calls_of(const std::string& function) const
{
    return calls_of(std::set<std::string>{function});
}

Calls FakeGrabberLibrary::calls_of(const std::set<std::string>& functions) const
{
    Calls found;
    for (const Call& made : calls()) {
        if (functions.count(made.function) > 0)
            found.push_back(made);
    }
    return found;
}

size_t FakeGrabberLibrary::count(const std::string& function) const { return calls_of(function).size(); }

void FakeGrabberLibrary::clear_calls()
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_calls.clear();
}

void FakeGrabberLibrary::allow_handle(uint64_t handle)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_allowed.insert(handle);
}

void FakeGrabberLibrary::allow_handle(const std::string& function, uint64_t handle)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_allowed_for.emplace(function, handle);
}

void FakeGrabberLibrary::allow_stale_handles()
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_allow_stale = true;
}

size_t FakeGrabberLibrary::open_grabbers() const
{
    return locked([](const FakeWorld& world) { return world.grabbers.size(); });
}

uint32_t FakeGrabberLibrary::grabber_handle(uint32_t position) const
{
    return locked([=](const FakeWorld& world) {
        return handle_of(world.grabbers,
                         [=](const OpenGrabber& grabber) { return grabber.position == position; });
    });
}

uint32_t FakeGrabberLibrary::camera_handle(uint32_t grabber_position, uint32_t camera_position) const
{
    return locked([=](const FakeWorld& world) {
        return handle_of(world.cameras, [=](const LiveCamera& camera) {
            return camera.grabber_position == grabber_position && camera.position == camera_position;
        });
    });
}

uint32_t FakeGrabberLibrary::last_stream() const
{
    return locked([](const FakeWorld& world) { return world.last_stream; });
}

std::vector<uint32_t> FakeGrabberLibrary::streams() const
{
    return locked([](const FakeWorld& world) {
        std::vector<uint32_t> handles;
        for (const auto& entry : world.streams)
            handles.push_back(entry.first);
        return handles;
    });
}

uint64_t FakeGrabberLibrary::last_buffer() const
{
    return locked([](const FakeWorld& world) { return world.last_buffer; });
}

std::vector<uint64_t> FakeGrabberLibrary::buffers(uint32_t stream) const
{
    return locked([=](const FakeWorld& world) {
        std::vector<uint64_t> handles;
        for (const auto& [handle, buffer] : world.buffers) {
            if (buffer.stream == stream)
                handles.push_back(handle);
        }
        return handles;
    });
}

const void* FakeGrabberLibrary::memory_of(uint64_t buffer) const
{
    return locked([=](const FakeWorld& world) {
        const auto found = world.buffers.find(buffer);
        return found == world.buffers.end() ? nullptr : found->second.memory;
    });
}

int FakeGrabberLibrary::queue_of(uint64_t buffer) const
{
    return locked([=](const FakeWorld& world) {
        const auto found = world.buffers.find(buffer);
        return found == world.buffers.end() ? -1 : found->second.queue;
    });
}

bool FakeGrabberLibrary::is_acquiring(uint32_t stream) const
{
    return locked([=](const FakeWorld& world) {
        const auto found = world.streams.find(stream);
        return found != world.streams.end() && world.cameras.at(found->second.camera).acquiring == stream;
    });
}

bool FakeGrabberLibrary::has_callback(uint32_t stream) const
{
    return locked([=](const FakeWorld& world) {
        const auto found = world.streams.find(stream);
        if (found == world.streams.end())
            return false;
        return found->second.ring_frames > 0 ? world.cameras.at(found->second.camera).callback != nullptr
                                             : found->second.callback != nullptr;
    });
}

uint8_t* FakeGrabberLibrary::ring_frame(uint32_t stream, uint32_t index)
{
    return locked(
        [=](FakeWorld& world) { return world.streams.at(stream).ring.get() + index * ring_frame_bytes; });
}

void FakeGrabberLibrary::deliver_cyclic(uint32_t stream, uint32_t index, const Frame& frame)
{
    ZvCameraCallback callback = nullptr;
    void* context = nullptr;
    {
        const PausedAllocationFaults pause;
        const std::lock_guard<std::mutex> guard(m_lock);
        const auto found = m_world.streams.find(stream);
        if (found == m_world.streams.end() || m_world.cameras.at(found->second.camera).callback == nullptr ||
            index >= found->second.ring_frames) {
            ADD_FAILURE() << "ring frame " << index << " of stream " << stream << " has nowhere to go";
            return;
        }
        const LiveCamera& camera = m_world.cameras.at(found->second.camera);
        callback = camera.callback;
        context = camera.context;
        found->second.last_frame = index;
        ++m_world.frames;
        found->second.aux[index].timestamp = frame.timestamp != 0 ? frame.timestamp : m_world.frames * 1000;
        if (frame.fill >= 0)
            std::memset(found->second.ring.get() + index * ring_frame_bytes, frame.fill, ring_frame_bytes);
    }
    callback(context, stream);
}

void FakeGrabberLibrary::deliver_queued(uint64_t buffer, const Frame& frame)
{
    uint32_t stream = ZV_NO_HANDLE;
    {
        const PausedAllocationFaults pause;
        const std::lock_guard<std::mutex> guard(m_lock);
        const auto alive = m_world.buffers.find(buffer);
        const auto dead = m_world.dead_buffers.find(buffer);
        if (alive == m_world.buffers.end() && dead == m_world.dead_buffers.end()) {
            ADD_FAILURE() << "buffer " << buffer << " was never announced";
            return;
        }
        ++m_world.frames;
        stream = alive != m_world.buffers.end() ? alive->second.stream : dead->second;
        if (alive != m_world.buffers.end()) {
            LiveBuffer& filled = alive->second;
            filled.queue = zv_queue_output;
            filled.timestamp = frame.timestamp != 0 ? frame.timestamp : m_world.frames * 1000;
            filled.frame_id = frame.frame_id != 0 ? frame.frame_id : m_world.frames;
            filled.image_id = frame.image_id != 0 ? frame.image_id : m_world.frames + 1000000;
            if (frame.fill >= 0)
                std::memset(filled.memory, frame.fill, filled.size);
        }
    }
    call_back(stream, buffer);
}

void FakeGrabberLibrary::deliver_queued_to(uint32_t stream, uint64_t buffer) { call_back(stream, buffer); }

void FakeGrabberLibrary::call_back(uint32_t stream, uint64_t buffer)
{
    ZvStreamBufferCallback callback = nullptr;
    void* context = nullptr;
    {
        const PausedAllocationFaults pause;
        const std::lock_guard<std::mutex> guard(m_lock);
        const auto found = m_world.streams.find(stream);
        if (found == m_world.streams.end() || found->second.callback == nullptr) {
            ADD_FAILURE() << "buffer " << buffer << " of stream " << stream << " has nowhere to go";
            return;
        }
        callback = found->second.callback;
        context = found->second.context;
    }
    callback(buffer, context);
}

void FakeGrabberLibrary::verify_finished() const
{
    for (const std::string& function : m_script.unused())
        ADD_FAILURE() << "the scripted answer of " << function << " was never asked for";
    EXPECT_EQ(0U, open_grabbers()) << "a grabber was left open";
}

void FakeGrabberLibrary::complain(const Call& made, uint64_t handle, bool stale) const
{
    if (m_allowed.count(handle) > 0 || m_allowed_for.count({made.function, handle}) > 0 ||
        (stale && m_allow_stale))
        return;
    ADD_FAILURE() << made << " was called with a handle that " << (stale ? "is dead" : "was never given out");
}

void FakeGrabberLibrary::record(const Call& made)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_calls.push_back(made);
}

void FakeGrabberLibrary::run(const std::vector<Script::Hook>& hooks, const Call& made)
{
    if (hooks.empty())
        return;
    const ResumedAllocationFaults resumed;
    for (const Script::Hook& hook : hooks)
        hook(made);
}

} // namespace zvtest
