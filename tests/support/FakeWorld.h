#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "zvgr/ZVGRLib.h"

// The hardware behind the fake grabber library: plain records without locks; FakeGrabberLibrary guards them.

namespace zvtest {

class FakeGrabberLibrary;

constexpr uint64_t any_handle = UINT64_MAX;
constexpr uint32_t any_failure = 0x3001;
constexpr uint64_t ring_frame_bytes = 256 * 1024;
constexpr uint64_t ring_slack_bytes = 1024 * 1024;
constexpr uint64_t default_payload = 640 * 480;

/// Bytes of a register space; addresses never written read as 0.
using Registers = std::map<uint64_t, uint8_t>;

/// A camera as the test sets it up.
struct CameraSetup {
    ZvCameraInfo info{};
    Registers registers;

    /// Fills a text field of the record; a text of 65 bytes leaves no terminator.
    CameraSetup& vendor(const std::string& text) { return fill(info.vendor_name, text); }
    CameraSetup& model(const std::string& text) { return fill(info.model_name, text); }
    CameraSetup& serial(const std::string& text) { return fill(info.serial_number, text); }
    CameraSetup& version(const std::string& text) { return fill(info.device_version, text); }

private:
    CameraSetup& fill(char (&field)[65], const std::string& text);
};

/// A grabber as the test sets it up.
struct GrabberSetup {
    uint32_t protocol{zv_protocol_cxp};
    std::string display_name;
    Registers registers;
    uint32_t cameras{1};
    std::array<CameraSetup, zv_max_cameras + 8> camera_setups;

    /// How many cameras the next scan finds. More than 16 are reported as a count only.
    GrabberSetup& has_cameras(uint32_t count);
    GrabberSetup& has_protocol(uint32_t number);
    GrabberSetup& is_named(const std::string& text);
    CameraSetup& camera(uint32_t position) { return camera_setups.at(position); }
};

struct OpenGrabber {
    uint32_t position;
    std::array<uint32_t, zv_max_cameras> cameras; // handles, 0 until first found
};

struct LiveCamera {
    uint32_t grabber;
    uint32_t grabber_position;
    uint32_t position;
    bool open{false};
    uint32_t acquiring{ZV_NO_HANDLE}; // the stream that runs
    ZvCameraCallback callback{nullptr};
    void* context{nullptr};
};

struct LiveStream {
    uint32_t camera;
    uint32_t ring_frames; // 0 in queued mode
    std::unique_ptr<uint8_t[]> ring;
    std::vector<ZvFrameAux> aux;
    uint32_t last_frame{0};
    ZvStreamBufferCallback callback{nullptr};
    void* context{nullptr};
};

struct LiveBuffer {
    uint32_t stream;
    void* memory;
    uint64_t size;
    int queue{-1};
    std::unique_ptr<uint8_t[]> owned;
    uint64_t timestamp{0};
    uint64_t image_id{0};
    uint64_t frame_id{0};
};

using ValueKey = std::tuple<std::string, uint64_t, std::string>; // function, handle, name

struct FakeWorld {
    FakeWorld();

    std::vector<std::unique_ptr<GrabberSetup>> setups;
    uint32_t scanned{1};
    std::map<uint32_t, OpenGrabber> grabbers;
    std::map<uint32_t, LiveCamera> cameras;
    std::map<uint32_t, LiveStream> streams;
    std::map<uint64_t, LiveBuffer> buffers;
    std::map<uint64_t, uint32_t> dead_buffers; // with their streams
    std::map<uint32_t, bool> dead;             // grabbers, cameras, streams; true: died with its grabber
    std::map<ValueKey, int64_t> values;
    std::map<uint32_t, uint64_t> stream_info;
    std::map<uint64_t, std::string> xml_urls;
    uint32_t last_stream{ZV_NO_HANDLE};
    uint64_t last_buffer{0};
    uint64_t frames{0};

    GrabberSetup& setup(uint32_t position);
    bool is_alive(uint32_t handle) const;

    uint32_t open_grabber(uint32_t position);
    void close_grabber(uint32_t handle);
    uint32_t find_camera(uint32_t grabber, uint32_t position);
    uint32_t create_stream(uint32_t camera, uint32_t ring_frames);
    void delete_stream(uint32_t handle, bool with_its_grabber);
    uint64_t announce(uint32_t stream, void* memory, uint64_t size);
    void revoke(uint64_t buffer);
    int64_t value(const std::string& function, uint32_t handle, const std::string& name) const;
    std::string xml_url(uint32_t handle) const;

private:
    uint32_t next_handle();
};

/// A value that can be assigned: `fake.grabber_int("Width") = 640`.
class Value {
public:
    Value(FakeGrabberLibrary& fake, const char* function, uint64_t handle, const std::string& name)
        : m_fake(fake), m_key(function, handle, name)
    {
    }
    Value& operator=(int64_t value);

private:
    FakeGrabberLibrary& m_fake;
    ValueKey m_key;
};

} // namespace zvtest
