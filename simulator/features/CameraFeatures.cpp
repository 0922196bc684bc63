#include "simulator/features/CameraFeatures.h"

#include <algorithm>

namespace zvsim {

namespace {

constexpr int64_t execute = 1; // the value of every command

/// Takes an integer from 0 to `last`.
template <class Target>
bool write_number(Target& target, const RegisterValue& value, Target last)
{
    const auto number = std::get<int64_t>(value);
    if (number < 0 || number > static_cast<int64_t>(last))
        return false;
    target = static_cast<Target>(number);
    return true;
}

/// Takes a number between two limits; not a number is none.
bool write_between(double& target, const RegisterValue& value, double lowest, double highest)
{
    const auto number = std::get<double>(value);
    if (!(number >= lowest && number <= highest))
        return false;
    target = number;
    return true;
}

/// A side of the picture, or the space before it: a multiple of the step, at least `smallest`, that leaves
/// the picture on the sensor.
bool write_extent(uint32_t& target, const RegisterValue& value, uint32_t smallest, uint32_t step,
                  uint32_t room)
{
    const auto number = std::get<int64_t>(value);
    if (number < smallest || number > room || number % step != 0)
        return false;
    target = static_cast<uint32_t>(number);
    return true;
}

/// Makes a side of the picture and the space before it fit the step.
void fit(uint32_t& size, uint32_t& offset, uint32_t step, uint32_t sensor)
{
    size = std::max(size - size % step, step);
    offset = std::min(offset, sensor - size);
    offset -= offset % step;
}

} // namespace

bool write_user_id(CameraEdit& edit, const RegisterValue& value)
{
    edit.state.user_id = std::get<std::string>(value);
    return true;
}

bool latch_timestamp(CameraEdit& edit, const RegisterValue& value)
{
    edit.state.latched_timestamp = ticks_of_25_mhz(Clock::now());
    return std::get<int64_t>(value) == execute;
}

bool write_width(CameraEdit& edit, const RegisterValue& value)
{
    CameraSettings& now = edit.state.settings;
    const uint32_t step = now.format->step_x();
    return write_extent(now.width, value, step, step, edit.device.model().sensor_width - now.offset_x);
}

bool write_height(CameraEdit& edit, const RegisterValue& value)
{
    CameraSettings& now = edit.state.settings;
    const uint32_t step = now.format->step_y();
    return write_extent(now.height, value, step, step, edit.device.model().sensor_height - now.offset_y);
}

bool write_offset_x(CameraEdit& edit, const RegisterValue& value)
{
    CameraSettings& now = edit.state.settings;
    return write_extent(now.offset_x, value, 0, now.format->step_x(),
                        edit.device.model().sensor_width - now.width);
}

bool write_offset_y(CameraEdit& edit, const RegisterValue& value)
{
    CameraSettings& now = edit.state.settings;
    return write_extent(now.offset_y, value, 0, now.format->step_y(),
                        edit.device.model().sensor_height - now.height);
}

bool write_pixel_format(CameraEdit& edit, const RegisterValue& value)
{
    const CameraModel& model = edit.device.model();
    const auto code = std::get<int64_t>(value);
    const auto format =
        std::find_if(model.formats.begin(), model.formats.end(), [&](const PixelFormat* offered) {
            return code_of(*offered, model.format_codes) == code;
        });
    if (format == model.formats.end())
        return false;
    const uint32_t step_x = (*format)->step_x();
    const uint32_t step_y = (*format)->step_y();
    if (model.sensor_width < step_x || model.sensor_height < step_y)
        return false;
    CameraSettings& now = edit.state.settings;
    now.format = *format;
    fit(now.width, now.offset_x, step_x, model.sensor_width);
    fit(now.height, now.offset_y, step_y, model.sensor_height);
    return true;
}

bool write_test_pattern(CameraEdit& edit, const RegisterValue& value)
{
    return write_number(edit.state.settings.pattern, value, TestPattern::star);
}

bool write_acquisition_mode(CameraEdit& edit, const RegisterValue& value)
{
    return write_number(edit.state.settings.mode, value, AcquisitionMode::multi_frame);
}

bool write_frame_count(CameraEdit& edit, const RegisterValue& value)
{
    return write_extent(edit.state.settings.frame_count, value, 1, 1, most_frames);
}

bool execute_nothing(CameraEdit& /*edit*/, const RegisterValue& value)
{
    return std::get<int64_t>(value) == execute;
}

bool write_frame_rate(CameraEdit& edit, const RegisterValue& value)
{
    return write_between(edit.state.settings.frames_per_second, value, lowest_rate, highest_rate);
}

bool write_frame_rate_enable(CameraEdit& edit, const RegisterValue& value)
{
    return write_number(edit.state.settings.is_rate_set, value, true);
}

bool write_exposure_time(CameraEdit& edit, const RegisterValue& value)
{
    return write_between(edit.state.settings.exposure_us, value, shortest_exposure_us, longest_exposure_us);
}

bool write_gain(CameraEdit& edit, const RegisterValue& value)
{
    return write_between(edit.state.settings.gain_db, value, lowest_gain_db, highest_gain_db);
}

bool write_trigger_selector(CameraEdit& /*edit*/, const RegisterValue& value)
{
    return std::get<int64_t>(value) == 0; // there is the start of a frame, and nothing else to select
}

bool write_trigger_mode(CameraEdit& edit, const RegisterValue& value)
{
    edit.state.triggers = 0;
    return write_number(edit.state.settings.is_triggered, value, true);
}

bool write_trigger_source(CameraEdit& edit, const RegisterValue& value)
{
    return write_number(edit.state.settings.trigger_source, value, TriggerSource::line1);
}

bool write_trigger_activation(CameraEdit& edit, const RegisterValue& value)
{
    return write_number(edit.state.settings.trigger_activation, value, TriggerActivation::level_low);
}

bool execute_trigger(CameraEdit& edit, const RegisterValue& value)
{
    if (std::get<int64_t>(value) != execute)
        return false;
    const CameraSettings& now = edit.state.settings;
    if (edit.device.is_acquiring() && now.is_triggered && now.trigger_source == TriggerSource::software)
        ++edit.state.triggers;
    return true;
}

bool write_parameter_lock(CameraEdit& edit, const RegisterValue& value)
{
    return write_number(edit.state.is_locked, value, true);
}

} // namespace zvsim
