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

std::optional<PixelFormat> format_from(const std::string& text)
{
    for (const PixelFormat& format : {mono8, mono16}) {
        if (text == format.name)
            return format;
    }
    return std::nullopt;
}

CameraModel camera(const char* model, const char* serial, Size size, const PixelFormat& format,
                   FormatCodes codes)
{
    CameraModel camera;
    camera.vendor = "ZEVA Electronics";
    camera.model = model;
    camera.serial_number = serial;
    camera.version = "1.0.0";
    camera.width = size.width;
    camera.height = size.height;
    camera.format = format;
    camera.format_codes = codes;
    camera.frames_per_second = default_rate;
    return camera;
}

std::vector<GrabberModel> built_in_grabbers()
{
    GrabberModel coaxpress;
    coaxpress.display_name = "ZEVA Software Grabber CXP-2";
    coaxpress.protocol = zv_protocol_cxp;
    coaxpress.has_image_ids = true;
    coaxpress.cameras = {
        camera("SoftCam CX 640", "SCX640-0001", {640, 480}, mono8, FormatCodes::coaxpress),
        camera("SoftCam CX 800 HDR", "SCX800-0002", {800, 600}, mono16, FormatCodes::coaxpress)};

    GrabberModel camera_link_hs;
    camera_link_hs.display_name = "ZEVA Software Grabber CLHS-1";
    camera_link_hs.protocol = zv_protocol_clhs;
    camera_link_hs.reports_geometry = true;
    camera_link_hs.cameras = {
        camera("SoftCam HS 2048", "SHS2048-0003", {2048, 1024}, mono8, FormatCodes::pfnc)};

    GrabberModel demo;
    demo.display_name = "ZEVA Demo Grabber";
    demo.protocol = zv_protocol_cxp;
    demo.has_image_ids = true;
    demo.cameras = {camera("SoftCam Demo", "SDEMO-0004", {320, 240}, mono8, FormatCodes::coaxpress)};

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
        if (!environment.pixel_format.empty() && !(m_format = format_from(environment.pixel_format)))
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
        camera.frames_per_second = m_rate.value_or(camera.frames_per_second);
        camera.format = m_format.value_or(camera.format);
        camera.width = m_size.value_or(Size{camera.width, camera.height}).width;
        camera.height = m_size.value_or(Size{camera.width, camera.height}).height;
        if (m_pictures == nullptr)
            return;
        camera.pictures = m_pictures;
        camera.width = m_pictures->width();
        camera.height = m_pictures->height();
        camera.format = m_pictures->format();
    }

private:
    void read_pictures(const std::string& folder, Configuration& configuration)
    {
        // A relative path would depend on the working directory of whatever application loads the library.
        if (!std::filesystem::path{folder}.is_absolute()) {
            configuration.warnings.push_back(
                rejected("ZV_GRABBER_PICTURES", folder, "the absolute path of a folder"));
            return;
        }
        configuration.pictures = PictureFolder::read(folder, configuration.warnings);
        m_pictures = configuration.pictures.get();
    }

    std::optional<double> m_rate;
    std::optional<PixelFormat> m_format;
    std::optional<Size> m_size;
    const PictureFolder* m_pictures = nullptr;
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
