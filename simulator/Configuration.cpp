#include "simulator/Configuration.h"

#include <charconv>
#include <filesystem>
#include <optional>
#include <tuple>
#include <utility>

#include "platform/environment.h"
#include "simulator/config/CameraReader.h"
#include "simulator/config/GrabberReader.h"
#include "simulator/config/YamlReader.h"
#include "simulator/faults/FaultConfiguration.h"

namespace zvsim {

namespace {

std::optional<double> rate_from(const std::string& text)
{
    double rate = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, rate, std::chars_format::fixed);
    if (error != std::errc{} || stop != end || !(rate == 0 || (rate >= lowest_rate && rate <= highest_rate)))
        return std::nullopt;
    return rate;
}

struct Size {
    uint32_t width{0};
    uint32_t height{0};
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
            (m_format = find_pixel_format(environment.pixel_format)) == nullptr)
            configuration.warnings.push_back(rejected("ZV_GRABBER_PIXEL_FORMAT", environment.pixel_format,
                                                      "the name of a pixel format, such as Mono8 or Mono16"));
        if (!environment.size.empty() && !(m_size = size_from(environment.size)))
            configuration.warnings.push_back(
                rejected("ZV_GRABBER_SIZE", environment.size, "WIDTHxHEIGHT, each 1 to 16384"));
        if (!environment.pictures.empty())
            read_pictures(environment.pictures, configuration);
    }

    void apply(CameraModel& camera, uint32_t segments, std::vector<std::string>& warnings) const
    {
        if (m_rate && *m_rate > 0)
            camera.start.frames_per_second = *m_rate;
        if (m_rate)
            camera.start.is_rate_set = *m_rate > 0;
        if (m_pictures == nullptr && m_format == nullptr && !m_size)
            return;
        CameraModel changed = with_picture(camera);
        if (fits_formats(changed) && largest_payload_of(changed, segments) <= largest_payload)
            camera = std::move(changed);
        else
            warnings.push_back(
                "camera " + camera.serial_number +
                " keeps its picture settings: those of the environment are too small for its pixel format or "
                "too large for a buffer");
    }

private:
    CameraModel with_picture(CameraModel camera) const
    {
        if (m_pictures != nullptr) {
            camera.pictures = m_pictures;
            set_format(camera, m_pictures->format());
            set_size(camera, m_pictures->width(), m_pictures->height());
            return camera;
        }
        if (m_format != nullptr)
            set_format(camera, *m_format);
        const Size size = m_size.value_or(Size{camera.sensor_width, camera.sensor_height});
        set_size(camera, size.width, size.height);
        return camera;
    }

    void read_pictures(const std::string& folder, Configuration& configuration)
    {
        // A relative path would depend on the working directory of whatever application loads the library.
        const auto path = std::filesystem::u8path(folder);
        if (!path.is_absolute()) {
            configuration.warnings.push_back(
                rejected("ZV_GRABBER_PICTURES", folder, "the absolute path of a folder"));
            return;
        }
        m_pictures = PictureFolder::read(path, configuration.warnings);
    }

    std::optional<double> m_rate;
    const PixelFormat* m_format{nullptr};
    std::optional<Size> m_size;
    std::shared_ptr<const PictureFolder> m_pictures;
};

void read_file(const ConfigurationFile& file, Configuration& configuration)
{
    YamlErrors errors{file.path.empty() ? "the built-in configuration" : file.path};
    if (!file.problem.empty())
        errors.add(0, file.problem);
    const YamlDocument built_in{default_configuration, errors};
    const YamlDocument own{file.problem.empty() ? file.text : "", errors};
    const YamlMap defaults{YamlValue{built_in.root(), "the file", errors}, file_keys()};
    const bool is_empty = own.root().kind == YamlNode::Kind::nothing;
    const YamlMap map = is_empty ? defaults : YamlMap{YamlValue{own.root(), "the file", errors}, file_keys()};
    // A file that speaks of faults only is about the built-in grabbers.
    configuration.grabbers = read_grabbers(map.has("grabbers") ? map : defaults, configuration.warnings);
    if (read_demo_grabber(map))
        configuration.grabbers.push_back(demo_grabber());
    configuration.faults = read_fault_plan(map);
    configuration.errors = errors.lines();
    if (errors.is_empty())
        return;
    configuration.grabbers.clear();
    configuration.faults = {};
}

} // namespace

Environment Environment::read()
{
    return {ConfigurationFile::find(),
            platform::environment("ZV_GRABBER_PICTURES"),
            platform::environment("ZV_GRABBER_RATE"),
            platform::environment("ZV_GRABBER_PIXEL_FORMAT"),
            platform::environment("ZV_GRABBER_SIZE"),
            platform::environment("ZV_GRABBER_FAULTS")};
}

bool Environment::operator==(const Environment& other) const
{
    return std::tie(file, pictures, rate, pixel_format, size, faults) ==
           std::tie(other.file, other.pictures, other.rate, other.pixel_format, other.size, other.faults);
}

std::unique_ptr<const Configuration> Configuration::make(const Environment& environment)
{
    auto configuration = std::make_unique<Configuration>();
    configuration->environment = environment;
    read_file(environment.file, *configuration);
    if (environment.faults == "off")
        configuration->faults.is_enabled = false;
    else if (!environment.faults.empty() && environment.faults != "on")
        configuration->warnings.push_back(rejected("ZV_GRABBER_FAULTS", environment.faults, "on, off"));
    const Overrides overrides{environment, *configuration};
    for (auto& grabber : configuration->grabbers) {
        for (auto& camera : grabber.cameras)
            overrides.apply(camera, grabber.segments_per_buffer, configuration->warnings);
    }
    return configuration;
}

} // namespace zvsim
