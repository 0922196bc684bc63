#include "simulator/config/CameraReader.h"

#include <algorithm>

#include "simulator/PictureFolder.h"

namespace zvsim {

namespace {

// The tables are built where they are used, so that they still exist for a call while the process ends.

using namespace std::chrono_literals;

constexpr auto longest_jitter = 1s;
constexpr auto longest_start_up = 60s;

YamlChoices<FormatCodes> code_names()
{
    return {
        {"PFNC", FormatCodes::pfnc},
        {"CoaXPress", FormatCodes::coaxpress},
    };
}

YamlChoices<TestPattern> pattern_names()
{
    return {
        {"DiagonalRampMoving", TestPattern::diagonal_ramp},
        {"GreyHorizontalRamp", TestPattern::horizontal_ramp},
        {"GreyVerticalRamp", TestPattern::vertical_ramp},
        {"ColorBar", TestPattern::color_bars},
        {"Checkerboard", TestPattern::checkerboard},
        {"Black", TestPattern::black},
        {"White", TestPattern::white},
        {"Grey", TestPattern::grey},
        {"Grid", TestPattern::grid},
        {"VerticalLineMoving", TestPattern::moving_bar},
        {"Blinking", TestPattern::blinking},
        {"Noise", TestPattern::noise},
        {"FrameCounter", TestPattern::frame_counter},
        {"Star", TestPattern::star},
    };
}

YamlChoices<AcquisitionMode> mode_names()
{
    return {
        {"Continuous", AcquisitionMode::continuous},
        {"SingleFrame", AcquisitionMode::single_frame},
        {"MultiFrame", AcquisitionMode::multi_frame},
    };
}

YamlChoices<TriggerSource> source_names()
{
    return {
        {"Software", TriggerSource::software},
        {"Line0", TriggerSource::line0},
        {"Line1", TriggerSource::line1},
    };
}

YamlChoices<TriggerActivation> activation_names()
{
    return {
        {"RisingEdge", TriggerActivation::rising_edge}, {"FallingEdge", TriggerActivation::falling_edge},
        {"AnyEdge", TriggerActivation::any_edge},       {"LevelHigh", TriggerActivation::level_high},
        {"LevelLow", TriggerActivation::level_low},
    };
}

std::chrono::nanoseconds in_nanoseconds(double microseconds)
{
    return std::chrono::nanoseconds{static_cast<int64_t>(microseconds * 1000)};
}

using Formats = std::vector<const PixelFormat*>;

YamlChoices<const PixelFormat*> names_of(const Formats& formats)
{
    YamlChoices<const PixelFormat*> names;
    for (const PixelFormat* const format : formats)
        names.emplace_back(format->name, format);
    return names;
}

Formats every_format()
{
    Formats formats;
    for (const PixelFormat& format : pixel_formats())
        formats.push_back(&format);
    return formats;
}

Formats read_format_list(const YamlValue& value)
{
    if (value.raw() == "all")
        return every_format();
    Formats formats;
    if (!value.is_list()) {
        value.wrong("all, or a list of pixel formats");
        return formats;
    }
    const auto names = names_of(every_format());
    for (const YamlValue& item : value.list(names.size(), 1)) {
        const auto format = item.choice(names);
        if (!format)
            continue;
        if (std::find(formats.begin(), formats.end(), *format) != formats.end())
            item.report(item.name() + " repeats " + (*format)->name, "each format once");
        else
            formats.push_back(*format);
    }
    return formats;
}

void read_formats(const YamlMap& map, CameraModel& camera)
{
    if (const auto list = map.find("pixel_formats"))
        camera.formats = read_format_list(*list);
    const PixelFormat* usual =
        camera.pictures != nullptr ? &camera.pictures->format() : &pixel_format("Mono8");
    const PixelFormat* first = camera.formats.empty() ? usual : camera.formats.front();
    const auto choices = names_of(camera.formats.empty() ? every_format() : camera.formats);
    map.choice("pixel_format", first, choices);
    camera.start.format = first;
    if (camera.formats.empty())
        camera.formats = {first};
    map.choice("pixel_format_codes", camera.format_codes, code_names());
}

void read_identity(const YamlMap& map, CameraEntry& entry)
{
    CameraModel& camera = entry.model;
    camera.vendor = "ZEVA Electronics";
    camera.model = "SoftCam";
    camera.version = "1.0.0";
    map.integer("count", entry.count, 1, most_cameras);
    // Repeated cameras get numbers appended to the texts that identify them.
    const size_t longest = entry.count == 1 ? longest_identity : longest_identity - 3;
    map.text("vendor", camera.vendor, longest_identity);
    map.text("model", camera.model, longest_identity);
    map.text("version", camera.version, longest_identity);
    map.text("serial", camera.serial_number, longest, 1);
    map.text("user_id", camera.user_id, longest);
}

void read_acquisition(const YamlMap& map, CameraModel& camera)
{
    CameraSettings& start = camera.start;
    if (const auto rate = map.find("rate")) {
        start.is_rate_set = rate->raw() != "free-running";
        if (start.is_rate_set)
            start.frames_per_second =
                rate->number(lowest_rate, highest_rate, "free-running, or ").value_or(lowest_rate);
    }
    map.duration("jitter", camera.jitter, 0s, longest_jitter);
    map.duration("start_up", camera.start_up, 0s, longest_start_up);
    std::chrono::duration<double, std::micro> exposure{start.exposure_us};
    map.duration("exposure", exposure, in_nanoseconds(shortest_exposure_us),
                 in_nanoseconds(longest_exposure_us));
    start.exposure_us = exposure.count();
    map.number("gain", start.gain_db, lowest_gain_db, highest_gain_db);
    map.choice("acquisition_mode", start.mode, mode_names());
    map.integer("frame_count", start.frame_count, 1, most_frames);
    map.flag("triggered", start.is_triggered);
    map.choice("trigger_source", start.trigger_source, source_names());
    map.choice("trigger_activation", start.trigger_activation, activation_names());
}

void read_picture(const YamlMap& map, CameraModel& camera, PictureFolders& folders)
{
    map.choice("test_pattern", camera.start.pattern, pattern_names());
    map.flag("stamp", camera.has_stamp);
    const auto pictures = map.find("pictures");
    if (const auto folder = pictures ? pictures->path("a folder") : std::nullopt)
        camera.pictures = folders.read(*folder);
}

constexpr uint32_t usual_width = 640;
constexpr uint32_t usual_height = 480;

/// One direction of the picture: its keys, and what they set.
struct Side {
    const char* sensor_key;
    const char* size_key;
    const char* offset_key;
    uint32_t CameraModel::*sensor;
    uint32_t CameraSettings::*size;
    uint32_t CameraSettings::*offset;
    uint32_t (PixelFormat::*step)() const;
};

constexpr Side across{"sensor_width",
                      "width",
                      "offset_x",
                      &CameraModel::sensor_width,
                      &CameraSettings::width,
                      &CameraSettings::offset_x,
                      &PixelFormat::step_x};
constexpr Side down{"sensor_height",
                    "height",
                    "offset_y",
                    &CameraModel::sensor_height,
                    &CameraSettings::height,
                    &CameraSettings::offset_y,
                    &PixelFormat::step_y};

uint32_t in_steps(uint32_t size, uint32_t step) { return size - size % step; }

/// A number that must be a multiple of the step of the camera's format.
void read_in_steps(const YamlMap& map, const char* key, uint32_t& target, uint32_t least, uint32_t most,
                   uint32_t step)
{
    uint32_t number = 0;
    if (!map.integer(key, number, 0, largest_side))
        return;
    if (number >= least && number <= most && number % step == 0) {
        target = number;
        return;
    }
    map.find(key)->wrong(std::to_string(least) + " to " + std::to_string(most) + " in steps of " +
                         std::to_string(step) + ", limited by the sensor and the pixel format");
}

void read_side(const YamlMap& map, CameraModel& camera, const Side& side, uint32_t usual_sensor)
{
    uint32_t& sensor = camera.*side.sensor = usual_sensor;
    map.integer(side.sensor_key, sensor, 1, largest_side);
    for (const PixelFormat* const format : camera.formats) {
        if (sensor >= (format->*side.step)())
            continue;
        map.report(std::string{side.sensor_key} + " is " + std::to_string(sensor),
                   "at least " + std::to_string((format->*side.step)()) + " for " + format->name);
        return;
    }
    const uint32_t step = (camera.start.format->*side.step)();
    uint32_t& offset = camera.start.*side.offset;
    read_in_steps(map, side.offset_key, offset, 0, in_steps(sensor - step, step), step);
    uint32_t& size = camera.start.*side.size = in_steps(sensor - offset, step);
    read_in_steps(map, side.size_key, size, step, size, step);
}

/// The formats must have been read.
void read_geometry(const YamlMap& map, CameraModel& camera)
{
    const PictureFolder* const pictures = camera.pictures.get();
    read_side(map, camera, across, pictures != nullptr ? pictures->width() : usual_width);
    read_side(map, camera, down, pictures != nullptr ? pictures->height() : usual_height);
}

/// Reports a buffer that is larger than any application should have to provide.
void check_payload(const YamlMap& map, const CameraModel& camera, uint32_t segments)
{
    const uint64_t payload = largest_payload_of(camera, segments);
    if (payload > largest_payload)
        map.report("a buffer of this camera can need " + std::to_string(payload) + " bytes",
                   "up to " + std::to_string(largest_payload) +
                       " (sensor size times bytes of the largest pixel format times segments_per_buffer)");
}

} // namespace

YamlKeys camera_keys()
{
    return {"camera",
            {"vendor",
             "model",
             "serial",
             "version",
             "user_id",
             "count",
             "sensor_width",
             "sensor_height",
             "width",
             "height",
             "offset_x",
             "offset_y",
             "pixel_formats",
             "pixel_format",
             "pixel_format_codes",
             "test_pattern",
             "stamp",
             "pictures",
             "rate",
             "jitter",
             "start_up",
             "exposure",
             "gain",
             "acquisition_mode",
             "frame_count",
             "triggered",
             "trigger_source",
             "trigger_activation"}};
}

std::shared_ptr<const PictureFolder> PictureFolders::read(const std::filesystem::path& folder)
{
    const auto found = m_folders.find(folder);
    if (found != m_folders.end())
        return found->second;
    const std::shared_ptr<const PictureFolder> pictures = PictureFolder::read(folder, m_warnings, m_memory);
    m_memory -= pictures != nullptr ? pictures->size() : 0;
    return m_folders.emplace(folder, pictures).first->second;
}

CameraEntry read_camera(const YamlValue& value, uint32_t segments, PictureFolders& folders)
{
    CameraEntry entry{{}, 1, value.map(camera_keys())};
    read_identity(entry.map, entry);
    read_picture(entry.map, entry.model, folders);
    read_formats(entry.map, entry.model);
    read_geometry(entry.map, entry.model);
    read_acquisition(entry.map, entry.model);
    check_payload(entry.map, entry.model, segments);
    return entry;
}

uint64_t largest_payload_of(const CameraModel& camera, uint32_t segments)
{
    uint64_t largest = 0;
    for (const PixelFormat* const format : camera.formats)
        largest = std::max(largest, format->size_of(camera.sensor_width, camera.sensor_height));
    return largest * segments;
}

bool fits_formats(const CameraModel& camera)
{
    return std::all_of(camera.formats.begin(), camera.formats.end(), [&camera](const PixelFormat* format) {
        return camera.sensor_width >= format->step_x() && camera.sensor_height >= format->step_y();
    });
}

void set_size(CameraModel& camera, uint32_t width, uint32_t height)
{
    camera.sensor_width = width;
    camera.sensor_height = height;
    camera.start.offset_x = camera.start.offset_y = 0;
    camera.start.width = in_steps(width, camera.start.format->step_x());
    camera.start.height = in_steps(height, camera.start.format->step_y());
}

void set_format(CameraModel& camera, const PixelFormat& format)
{
    camera.start.format = &format;
    camera.formats = {&format};
}

} // namespace zvsim
