#include "simulator/Configuration.h"

#include "zvgr/ZVGRLib.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <tuple>

namespace zvsim {

namespace {

constexpr double default_rate = 25;
constexpr double highest_rate = 100000;
constexpr uint32_t largest_side = 16384;

std::string variable(const char* name)
{
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nothing here changes it
    return value != nullptr ? value : "";
}

std::optional<double> rate_from(const std::string& text)
{
    double rate = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, rate, std::chars_format::fixed);
    if (error != std::errc{} || stop != end || !(rate == 0 || (rate >= 0.001 && rate <= highest_rate)))
        return std::nullopt;
    return rate;
}

struct Size {
    uint32_t width = 0;
    uint32_t height = 0;
};

std::optional<Size> size_from(const std::string& text)
{
    Size size;
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    if (width.ec != std::errc{} || width.ptr == end || *width.ptr != 'x')
        return std::nullopt;
    const auto height = std::from_chars(width.ptr + 1, end, size.height);
    if (height.ec != std::errc{} || height.ptr != end)
        return std::nullopt;
    const auto is_side = [](uint32_t side) { return side >= 1 && side <= largest_side; };
    return is_side(size.width) && is_side(size.height) ? std::optional{size} : std::nullopt;
}

/// Null for a format that the cameras do not offer.
const PixelFormat* format_from(const std::string& text)
{
    return text == "Mono8" || text == "Mono16" ? find_pixel_format(text) : nullptr;
}

CameraModel camera(const char* model, const char* serial, Size size, const char* format)
{
    CameraModel camera;
    camera.vendor = "ZEVA Electronics";
    camera.model = model;
    camera.serial_number = serial;
    camera.version = "1.0.0";
    camera.sensor_width = camera.start.width = size.width;
    camera.sensor_height = camera.start.height = size.height;
    camera.start.format = &pixel_format(format);
    camera.formats = {camera.start.format};
    camera.start.frames_per_second = default_rate;
    return camera;
}

std::vector<GrabberModel> built_in_grabbers()
{
    GrabberModel coaxpress;
    coaxpress.display_name = "ZEVA Software Grabber CXP-2";
    coaxpress.protocol = zv_protocol_cxp;
    coaxpress.has_image_ids = true;
    coaxpress.cameras = {camera("SoftCam CX 640", "SCX640-0001", {640, 480}, "Mono8"),
                         camera("SoftCam CX 800 HDR", "SCX800-0002", {800, 600}, "Mono16")};

    GrabberModel camera_link_hs;
    camera_link_hs.display_name = "ZEVA Software Grabber CLHS-1";
    camera_link_hs.protocol = zv_protocol_clhs;
    camera_link_hs.reports_geometry = true;
    camera_link_hs.cameras = {camera("SoftCam HS 2048", "SHS2048-0003", {2048, 1024}, "Mono8")};

    GrabberModel demo;
    demo.display_name = "ZEVA Demo Grabber";
    demo.protocol = zv_protocol_cxp;
    demo.has_image_ids = true;
    demo.cameras = {camera("SoftCam Demo", "SDEMO-0004", {320, 240}, "Mono8")};

    return {coaxpress, camera_link_hs, demo};
}

std::string rejected(const char* name, const std::string& value, const char* allowed)
{
    return std::string{name} + "=" + value + " is ignored; allowed: " + allowed;
}

/// The settings that hold for every camera.
class Overrides {
public:
    Overrides(const Environment& environment, Configuration& configuration)
    {
        if (!environment.rate.empty() && !(m_rate = rate_from(environment.rate)))
            configuration.warnings.push_back(rejected(
                "ZV_GRABBER_RATE", environment.rate, "0 (free-running), or 0.001 to 100000 frames a second"));
        if (!environment.pixel_format.empty() &&
            (m_format = format_from(environment.pixel_format)) == nullptr)
            configuration.warnings.push_back(
                rejected("ZV_GRABBER_PIXEL_FORMAT", environment.pixel_format, "Mono8, Mono16"));
        if (!environment.size.empty() && !(m_size = size_from(environment.size)))
            configuration.warnings.push_back(
                rejected("ZV_GRABBER_SIZE", environment.size, "WIDTHxHEIGHT, each 1 to 16384"));
        if (!environment.pictures.empty())
            read_pictures(environment.pictures, configuration);
    }

    void apply(CameraModel& camera) const
    {
        if (m_rate && *m_rate > 0)
            camera.start.frames_per_second = *m_rate;
        camera.start.is_rate_set = !m_rate || *m_rate > 0;
        if (m_format != nullptr)
            set_format(camera, *m_format);
        if (m_size)
            set_size(camera, *m_size);
        if (m_pictures == nullptr)
            return;
        camera.pictures = m_pictures;
        set_size(camera, {m_pictures->width(), m_pictures->height()});
        set_format(camera, m_pictures->format());
    }

private:
    static void set_size(CameraModel& camera, Size size)
    {
        camera.sensor_width = camera.start.width = size.width;
        camera.sensor_height = camera.start.height = size.height;
    }

    static void set_format(CameraModel& camera, const PixelFormat& format)
    {
        camera.start.format = &format;
        camera.formats = {&format};
    }

    void read_pictures(const std::string& folder, Configuration& configuration)
    {
        // A relative path would depend on the working directory of whatever application loads the library.
        if (!std::filesystem::path{folder}.is_absolute()) {
            configuration.warnings.push_back(
                rejected("ZV_GRABBER_PICTURES", folder, "the absolute path of a folder"));
            return;
        }
        m_pictures = PictureFolder::read(folder, configuration.warnings);
    }

    std::optional<double> m_rate;
    const PixelFormat* m_format = nullptr;
    std::optional<Size> m_size;
    std::shared_ptr<const PictureFolder> m_pictures;
};

} // namespace

Environment Environment::read()
{
    return {variable("ZV_GRABBER_PICTURES"), variable("ZV_GRABBER_RATE"), variable("ZV_GRABBER_PIXEL_FORMAT"),
            variable("ZV_GRABBER_SIZE")};
}

bool Environment::operator==(const Environment& other) const
{
    return std::tie(pictures, rate, pixel_format, size) ==
           std::tie(other.pictures, other.rate, other.pixel_format, other.size);
}

std::unique_ptr<const Configuration> Configuration::make(const Environment& environment)
{
    auto configuration = std::make_unique<Configuration>();
    configuration->environment = environment;
    configuration->grabbers = built_in_grabbers();
    const Overrides overrides{environment, *configuration};
    for (auto& grabber : configuration->grabbers) {
        for (auto& camera : grabber.cameras)
            overrides.apply(camera);
    }
    return configuration;
}

} // namespace zvsim
