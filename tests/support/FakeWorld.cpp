#include "support/FakeWorld.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "support/FakeGrabberLibrary.h"

namespace zvtest {

namespace {

// Over the whole process, so that no handle comes back after a reset. Buffer handles need more than 32 bits,
// which shows where one is cut.
std::atomic<uint32_t> handles_given{0x100};
std::atomic<uint64_t> buffers_given{0x100000000};

std::unique_ptr<GrabberSetup> make_setup(uint32_t position)
{
    auto setup = std::make_unique<GrabberSetup>();
    setup->display_name = "Fake grabber " + std::to_string(position);
    for (uint32_t i = 0; i < setup->camera_setups.size(); ++i) {
        const std::string number = std::to_string(position) + "." + std::to_string(i);
        setup->camera(i).vendor("Fake vendor " + number).model("Fake model " + number);
        setup->camera(i).serial("Fake serial " + number).version("Fake version " + number);
    }
    return setup;
}

} // namespace

CameraSetup& CameraSetup::fill(char (&field)[65], const std::string& text)
{
    std::memset(field, 0, sizeof field);
    std::memcpy(field, text.data(), std::min(text.size(), sizeof field));
    return *this;
}

GrabberSetup& GrabberSetup::has_cameras(uint32_t count)
{
    cameras = count;
    return *this;
}

GrabberSetup& GrabberSetup::has_protocol(uint32_t number)
{
    protocol = number;
    return *this;
}

GrabberSetup& GrabberSetup::is_named(const std::string& text)
{
    display_name = text;
    return *this;
}

FakeWorld::FakeWorld()
{
    stream_info[zv_stream_payload_at_creation] = default_payload;
    stream_info[zv_stream_payload_now] = default_payload;
    stream_info[zv_stream_buffer_alignment] = 4096;
    xml_urls[any_handle] = "Local:Fake.xml;10000;200";
}

GrabberSetup& FakeWorld::setup(uint32_t position)
{
    while (setups.size() <= position)
        setups.push_back(make_setup(static_cast<uint32_t>(setups.size())));
    return *setups[position];
}

bool FakeWorld::is_alive(uint32_t handle) const
{
    return grabbers.count(handle) + cameras.count(handle) + streams.count(handle) > 0;
}

uint32_t FakeWorld::next_handle() { return ++handles_given; }

uint32_t FakeWorld::open_grabber(uint32_t position)
{
    const uint32_t handle = next_handle();
    grabbers.emplace(handle, OpenGrabber{position, {}});
    return handle;
}

void FakeWorld::close_grabber(uint32_t handle)
{
    for (auto stream = streams.begin(); stream != streams.end();) {
        const uint32_t stream_handle = (stream++)->first;
        if (cameras.at(streams.at(stream_handle).camera).grabber == handle)
            delete_stream(stream_handle, true);
    }
    for (auto camera = cameras.begin(); camera != cameras.end();) {
        if (camera->second.grabber != handle) {
            ++camera;
            continue;
        }
        dead[camera->first] = true;
        camera = cameras.erase(camera);
    }
    grabbers.erase(handle);
    dead[handle] = false;
}

uint32_t FakeWorld::find_camera(uint32_t grabber, uint32_t position)
{
    OpenGrabber& owner = grabbers.at(grabber);
    uint32_t& handle = owner.cameras.at(position);
    if (handle == 0) {
        handle = next_handle();
        LiveCamera camera = {};
        camera.grabber = grabber;
        camera.grabber_position = owner.position;
        camera.position = position;
        camera.acquiring = ZV_NO_HANDLE;
        cameras.emplace(handle, camera);
    }
    return handle;
}

uint32_t FakeWorld::create_stream(uint32_t camera, uint32_t ring_frames)
{
    LiveStream stream = {};
    stream.camera = camera;
    stream.ring_frames = ring_frames;
    if (ring_frames > 0) {
        stream.ring = std::make_unique<uint8_t[]>(ring_frames * ring_frame_bytes + ring_slack_bytes);
        stream.aux.resize(ring_frames);
    }
    last_stream = next_handle();
    streams.emplace(last_stream, std::move(stream));
    return last_stream;
}

void FakeWorld::delete_stream(uint32_t handle, bool with_its_grabber)
{
    LiveCamera& camera = cameras.at(streams.at(handle).camera);
    if (camera.acquiring == handle)
        camera.acquiring = ZV_NO_HANDLE;
    if (streams.at(handle).ring_frames > 0)
        camera.callback = nullptr;
    for (auto buffer = buffers.begin(); buffer != buffers.end();) {
        const uint64_t buffer_handle = (buffer++)->first;
        if (buffers.at(buffer_handle).stream == handle)
            revoke(buffer_handle);
    }
    streams.erase(handle);
    dead[handle] = with_its_grabber;
}

uint64_t FakeWorld::announce(uint32_t stream, void* memory, uint64_t size)
{
    LiveBuffer buffer = {};
    buffer.stream = stream;
    buffer.memory = memory;
    buffer.size = size;
    buffer.queue = -1;
    if (memory == nullptr) {
        buffer.owned = std::make_unique<uint8_t[]>(size == 0 ? 1 : size);
        buffer.memory = buffer.owned.get();
    }
    last_buffer = ++buffers_given;
    buffers.emplace(last_buffer, std::move(buffer));
    return last_buffer;
}

void FakeWorld::revoke(uint64_t buffer)
{
    dead_buffers[buffer] = buffers.at(buffer).stream;
    buffers.erase(buffer);
}

int64_t FakeWorld::value(const std::string& function, uint32_t handle, const std::string& name) const
{
    auto found = values.find({function, handle, name});
    if (found == values.end())
        found = values.find({function, any_handle, name});
    return found == values.end() ? ZV_NOT_AVAILABLE : found->second;
}

std::string FakeWorld::xml_url(uint32_t handle) const
{
    const auto found = xml_urls.find(handle);
    return found == xml_urls.end() ? xml_urls.at(any_handle) : found->second;
}

Value& Value::operator=(int64_t value)
{
    m_fake.set_value(m_key, value);
    return *this;
}

} // namespace zvtest
