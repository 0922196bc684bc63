#include "unit/simulator/configured_camera.h"

#include <stdexcept>

namespace zvsim_test {

namespace {

constexpr const char* configuration = R"(
grabbers:
  - name: Test Grabber
    protocol: CameraLinkHS
    reports_geometry: true
    cameras:
      - {vendor: Test Maker, model: Test Camera, serial: T-1, version: 2.3.4, user_id: first,
         pixel_formats: [Mono8, Mono16, Mono12p, BayerRG8, YUV411_8_UYYVYY],
         sensor_width: 66, sensor_height: 50, rate: free-running, start_up: 0 ms, stamp: false}
      - {model: Other Camera, serial: T-2, pixel_formats: [Mono8, RGB8], pixel_format_codes: CoaXPress,
         sensor_width: 66, sensor_height: 50, rate: free-running, start_up: 0 ms, stamp: false}
)";

const RegisterPlace& find(const std::vector<RegisterPlace>& places, const std::string& name)
{
    for (const RegisterPlace& place : places) {
        if (place.name == name)
            return place;
    }
    throw std::invalid_argument{"no register " + name};
}

} // namespace

const std::vector<RegisterPlace>& camera_registers()
{
    static const std::vector<RegisterPlace> places{
        {"DeviceVendorName", 0x1000, 64},
        {"DeviceModelName", 0x1040, 64},
        {"DeviceSerialNumber", 0x1080, 64},
        {"DeviceVersion", 0x10C0, 64},
        {"DeviceUserID", 0x1100, 64, Access::write},
        {"DeviceSFNCVersionMajor", 0x1140, 4, Access::read, Value::integer},
        {"DeviceSFNCVersionMinor", 0x1144, 4, Access::read, Value::integer},
        {"DeviceSFNCVersionSubMinor", 0x1148, 4, Access::read, Value::integer},
        {"TimestampLatch", 0x114C, 4, Access::command},
        {"DeviceTemperature", 0x1150, 8},
        {"Timestamp", 0x1158, 8},
        {"TimestampLatchValue", 0x1160, 8, Access::read, Value::integer},
        {"TimestampTickFrequency", 0x1168, 8, Access::read, Value::integer},
        {"SensorWidth", 0x2000, 4, Access::read, Value::integer},
        {"SensorHeight", 0x2004, 4, Access::read, Value::integer},
        {"Width", 0x2008, 4, Access::write_unlocked, Value::integer},
        {"Height", 0x200C, 4, Access::write_unlocked, Value::integer},
        {"OffsetX", 0x2010, 4, Access::write_unlocked, Value::integer},
        {"OffsetY", 0x2014, 4, Access::write_unlocked, Value::integer},
        {"PixelFormat", 0x2018, 4, Access::write_unlocked, Value::enumeration},
        {"PixelSize", 0x201C, 4, Access::read, Value::enumeration},
        {"TestPattern", 0x2020, 4, Access::write, Value::enumeration},
        {"WidthIncrement", 0x2024, 4, Access::read, Value::integer},
        {"HeightIncrement", 0x2028, 4, Access::read, Value::integer},
        {"AcquisitionMode", 0x3000, 4, Access::write_unlocked, Value::enumeration},
        {"AcquisitionFrameCount", 0x3004, 4, Access::write_unlocked, Value::integer},
        {"AcquisitionStart", 0x3008, 4, Access::command},
        {"AcquisitionStop", 0x300C, 4, Access::command},
        {"AcquisitionFrameRate", 0x3010, 8, Access::write},
        {"ExposureTime", 0x3018, 8, Access::write},
        {"AcquisitionFrameRateEnable", 0x3020, 4, Access::write, Value::integer},
        {"TriggerSelector", 0x3024, 4, Access::write, Value::enumeration},
        {"TriggerMode", 0x3028, 4, Access::write, Value::enumeration},
        {"TriggerSource", 0x302C, 4, Access::write, Value::enumeration},
        {"TriggerActivation", 0x3030, 4, Access::write, Value::enumeration},
        {"TriggerSoftware", 0x3034, 4, Access::command},
        {"Gain", 0x4000, 8, Access::write},
        {"PayloadSize", 0x5000, 8, Access::read, Value::integer},
        {"TLParamsLocked", 0x5008, 4, Access::write, Value::integer},
        {"ParametersAreLocked", 0x500C, 4, Access::read, Value::integer},
    };
    return places;
}

const std::vector<RegisterPlace>& grabber_registers()
{
    static const std::vector<RegisterPlace> places{
        {"InterfaceVendorName", 0x1000, 64},
        {"InterfaceModelName", 0x1040, 64},
        {"InterfaceDisplayName", 0x1080, 64},
        {"InterfaceIndex", 0x10C0, 4, Access::read, Value::integer},
        {"InterfaceType", 0x10C4, 4, Access::read, Value::enumeration},
        {"CameraCount", 0x10C8, 4, Access::read, Value::integer},
        {"GeometryIsReported", 0x10CC, 4, Access::read, Value::integer},
        {"CameraModelName", 0x2000, 64},
        {"CameraSerialNumber", 0x2040, 64},
        {"CameraLinkState", 0x2080, 4, Access::read, Value::enumeration},
        {"CameraChannelState", 0x2084, 4, Access::read, Value::enumeration},
        {"CameraFramesDelivered", 0x2088, 8, Access::read, Value::integer},
        {"CameraFramesLost", 0x2090, 8, Access::read, Value::integer},
        {"CameraStatisticsReset", 0x2098, 4, Access::command},
        {"Width", 0x209C, 4, Access::read, Value::integer},
        {"Height", 0x20A0, 4, Access::read, Value::integer},
        {"SegmentsPerBuffer", 0x20A4, 4, Access::read, Value::integer},
    };
    return places;
}

const RegisterPlace& camera_register(const std::string& name) { return find(camera_registers(), name); }
const RegisterPlace& grabber_register(const std::string& name) { return find(grabber_registers(), name); }

ConfiguredCamera::ConfiguredCamera() : QueuedStream{{0, "0", configuration}} {}

void ConfiguredCamera::open()
{
    scan();
    grabber = ZVGR_Open(0);
    cameras = cameras_of(grabber);
    camera = cameras.at(0);
    EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    stream = create_stream(camera, Mode::queued, &receiver);
}

void ConfiguredCamera::reopen()
{
    EXPECT_EQ(success, ZVGR_Close(grabber));
    open();
}

std::vector<Bytes> ConfiguredCamera::everything() const
{
    std::vector<Bytes> all;
    for (const RegisterPlace& place : camera_registers()) {
        const std::string name = place.name;
        if (name != "Timestamp" && name != "DeviceTemperature")
            all.push_back(bytes(name));
    }
    return all;
}

std::vector<unsigned char> ConfiguredCamera::frame()
{
    const uint64_t buffer = queued();
    const uint64_t size = stream_info(stream, zv_stream_payload_now);
    acquire(receiver.reported.size() + 2, 1); // the frame and the end
    std::vector<unsigned char> pixels(memory_of(buffer), memory_of(buffer) + size);
    EXPECT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
    return pixels;
}

} // namespace zvsim_test
