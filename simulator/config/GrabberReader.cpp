#include "simulator/config/GrabberReader.h"

#include <map>
#include <utility>

#include "zvgr/ZVGRLib.h"

#include "simulator/config/CameraReader.h"
#include "simulator/faults/FaultConfiguration.h"

namespace zvsim {

namespace {

YamlKeys grabber_keys()
{
    return {"grabber",
            {"name", "protocol", "count", "reports_geometry", "image_ids", "segments_per_buffer", "cameras"}};
}

YamlChoices<uint32_t> protocol_names()
{
    return {
        {"CoaXPress", zv_protocol_cxp},
        {"CameraLinkHS", zv_protocol_clhs},
        {"GigEVision", zv_protocol_gev},
    };
}

std::string numbered(const std::string& text, const char* separator, uint32_t number, uint32_t count)
{
    return count == 1 || text.empty() ? text : text + separator + std::to_string(number);
}

/// The cameras of one grabber.
class CameraList {
public:
    CameraList(GrabberModel& grabber, uint32_t position) : m_grabber{grabber}, m_position{position} {}

    void add(const CameraEntry& entry)
    {
        if (m_grabber.cameras.size() + entry.count > most_cameras) {
            entry.map.report("a grabber has more than " + std::to_string(most_cameras) + " cameras",
                             "up to " + std::to_string(most_cameras) + " cameras, including repeated ones");
            return;
        }
        for (uint32_t number = 1; number <= entry.count; ++number) {
            CameraModel camera = entry.model;
            camera.user_id = numbered(camera.user_id, " ", number, entry.count);
            camera.serial_number = camera.serial_number.empty()
                                       ? serial_number_of(m_grabber.cameras.size() + 1)
                                       : numbered(camera.serial_number, "-", number, entry.count);
            const auto [first, is_new] = m_serial_numbers.emplace(camera.serial_number, entry.map.line());
            if (!is_new)
                entry.map.report("the serial number " + in_quotes(camera.serial_number) +
                                     " is already used by the camera on line " +
                                     std::to_string(first->second),
                                 "a different serial number for each camera of a grabber");
            m_grabber.cameras.push_back(std::move(camera));
        }
    }

private:
    std::string serial_number_of(size_t camera) const
    {
        return "SIM" + std::to_string(m_position) + "-" + std::to_string(camera);
    }

    GrabberModel& m_grabber;
    uint32_t m_position;
    /// With the lines of their cameras.
    std::map<std::string, int> m_serial_numbers;
};

/// A grabber without its cameras, but named as if there were only one.
GrabberModel read_identity(const YamlMap& map)
{
    GrabberModel grabber;
    grabber.display_name = "ZEVA Software Grabber";
    grabber.protocol = zv_protocol_cxp;
    map.text("name", grabber.display_name, longest_identity, 1);
    map.choice("protocol", grabber.protocol, protocol_names());
    // Where the file says nothing, a grabber does what those of its kind do.
    grabber.has_image_ids = grabber.protocol == zv_protocol_cxp;
    grabber.reports_geometry = grabber.protocol == zv_protocol_clhs;
    map.flag("image_ids", grabber.has_image_ids);
    map.flag("reports_geometry", grabber.reports_geometry);
    map.integer("segments_per_buffer", grabber.segments_per_buffer, 1, most_segments);
    return grabber;
}

void read_grabber(const YamlValue& value, std::vector<GrabberModel>& grabbers, PictureFolders& folders)
{
    const YamlMap map = value.map(grabber_keys());
    const GrabberModel model = read_identity(map);
    uint32_t count = 1;
    map.integer("count", count, 1, most_grabbers);
    std::vector<CameraEntry> cameras;
    for (const YamlValue& camera : map.list("cameras", most_cameras))
        cameras.push_back(read_camera(camera, model.segments_per_buffer, folders));
    if (grabbers.size() + count > most_grabbers) {
        map.report("there are more than " + std::to_string(most_grabbers) + " grabbers",
                   "up to " + std::to_string(most_grabbers) + " grabbers, including repeated ones");
        return;
    }
    for (uint32_t number = 1; number <= count; ++number) {
        GrabberModel& grabber = grabbers.emplace_back(model);
        grabber.display_name = numbered(model.display_name, " ", number, count);
        CameraList list{grabber, static_cast<uint32_t>(grabbers.size())};
        for (const CameraEntry& camera : cameras)
            list.add(camera);
    }
}

} // namespace

YamlKeys file_keys()
{
    YamlKeys keys{"configuration file", {"demo_grabber", "grabbers"}};
    for (const std::string_view key : fault_keys())
        keys.keys.push_back(key);
    return keys;
}

std::vector<YamlKeys> configuration_sections()
{
    std::vector<YamlKeys> sections{file_keys(), grabber_keys(), camera_keys()};
    for (YamlKeys& keys : fault_sections())
        sections.push_back(std::move(keys));
    return sections;
}

std::vector<GrabberModel> read_grabbers(const YamlMap& file, std::vector<std::string>& warnings)
{
    std::vector<GrabberModel> grabbers;
    PictureFolders folders{warnings};
    for (const YamlValue& grabber : file.list("grabbers", most_grabbers))
        read_grabber(grabber, grabbers, folders);
    return grabbers;
}

bool read_demo_grabber(const YamlMap& file)
{
    bool has_demo_grabber = true;
    file.flag("demo_grabber", has_demo_grabber);
    return has_demo_grabber;
}

GrabberModel demo_grabber()
{
    CameraModel camera;
    camera.vendor = "ZEVA Electronics";
    camera.model = "SoftCam Demo";
    camera.serial_number = "SDEMO-0004";
    camera.version = "1.0.0";
    set_format(camera, pixel_format("Mono8"));
    set_size(camera, 320, 240);

    GrabberModel grabber;
    grabber.display_name = "ZEVA Demo Grabber";
    grabber.protocol = zv_protocol_cxp;
    grabber.has_image_ids = true;
    grabber.cameras = {camera};
    return grabber;
}

} // namespace zvsim
