#include "simulator/features/CameraRegisters.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "simulator/features/CameraFeatures.h"
#include "simulator/features/Description.h"

namespace zvsim {

namespace {

using Subject = CameraDevice;
using Value = RegisterValue;

constexpr auto integer = RegisterKind::integer;
constexpr auto enumeration = RegisterKind::enumeration;
constexpr auto boolean = RegisterKind::boolean;
constexpr auto command = RegisterKind::command;
constexpr auto floating = RegisterKind::floating;
constexpr auto text = RegisterKind::text;
constexpr auto never = Locking::never;
constexpr auto while_streaming = Locking::while_streaming;
constexpr bool (*read_only)(CameraEdit&, const Value&) = nullptr;

template <class Number>
Value number(Number value)
{
    return static_cast<int64_t>(value);
}

Value done(const Subject& /*subject*/) { return int64_t{0}; }

// By address, a blank line wherever the addresses have a gap. The names, lengths and addresses are those of
// camera.xml.
// clang-format off
constexpr CameraRow rows[] = {
    {"DeviceVendorName",           0x1000, 64, text,        never,           [](const Subject& s) -> Value { return s.model().vendor; },                       read_only},
    {"DeviceModelName",            0x1040, 64, text,        never,           [](const Subject& s) -> Value { return s.model().model; },                        read_only},
    {"DeviceSerialNumber",         0x1080, 64, text,        never,           [](const Subject& s) -> Value { return s.model().serial_number; },                read_only},
    {"DeviceVersion",              0x10C0, 64, text,        never,           [](const Subject& s) -> Value { return s.model().version; },                      read_only},
    {"DeviceUserID",               0x1100, 64, text,        never,           [](const Subject& s) -> Value { return s.state().user_id; },                      write_user_id},
    {"DeviceSFNCVersionMajor",     0x1140, 4,  integer,     never,           [](const Subject&) { return number(2); },                                         read_only},
    {"DeviceSFNCVersionMinor",     0x1144, 4,  integer,     never,           [](const Subject&) { return number(4); },                                         read_only},
    {"DeviceSFNCVersionSubMinor",  0x1148, 4,  integer,     never,           [](const Subject&) { return number(0); },                                         read_only},
    {"TimestampLatch",             0x114C, 4,  command,     never,           done,                                                                             latch_timestamp},
    {"DeviceTemperature",          0x1150, 8,  floating,    never,           [](const Subject& s) -> Value { return s.temperature(Clock::now()); },            read_only},
    {"Timestamp",                  0x1158, 8,  integer,     never,           [](const Subject&) { return number(ticks_of_25_mhz(Clock::now())); },             read_only},
    {"TimestampLatchValue",        0x1160, 8,  integer,     never,           [](const Subject& s) { return number(s.state().latched_timestamp); },             read_only},
    {"TimestampTickFrequency",     0x1168, 8,  integer,     never,           [](const Subject&) { return number(25000000); },                                  read_only},

    {"SensorWidth",                0x2000, 4,  integer,     never,           [](const Subject& s) { return number(s.model().sensor_width); },                  read_only},
    {"SensorHeight",               0x2004, 4,  integer,     never,           [](const Subject& s) { return number(s.model().sensor_height); },                 read_only},
    {"Width",                      0x2008, 4,  integer,     while_streaming, [](const Subject& s) { return number(s.settings().width); },                      write_width},
    {"Height",                     0x200C, 4,  integer,     while_streaming, [](const Subject& s) { return number(s.settings().height); },                     write_height},
    {"OffsetX",                    0x2010, 4,  integer,     while_streaming, [](const Subject& s) { return number(s.settings().offset_x); },                   write_offset_x},
    {"OffsetY",                    0x2014, 4,  integer,     while_streaming, [](const Subject& s) { return number(s.settings().offset_y); },                   write_offset_y},
    {"PixelFormat",                0x2018, 4,  enumeration, while_streaming, [](const Subject& s) { return number(s.format_code()); },                         write_pixel_format},
    {"PixelSize",                  0x201C, 4,  enumeration, never,           [](const Subject& s) { return number(s.settings().format->bits_per_pixel()); },   read_only},
    {"TestPattern",                0x2020, 4,  enumeration, never,           [](const Subject& s) { return number(s.settings().pattern); },                    write_test_pattern},
    {"WidthIncrement",             0x2024, 4,  integer,     never,           [](const Subject& s) { return number(s.settings().format->step_x()); },           read_only},
    {"HeightIncrement",            0x2028, 4,  integer,     never,           [](const Subject& s) { return number(s.settings().format->step_y()); },           read_only},

    {"AcquisitionMode",            0x3000, 4,  enumeration, while_streaming, [](const Subject& s) { return number(s.settings().mode); },                       write_acquisition_mode},
    {"AcquisitionFrameCount",      0x3004, 4,  integer,     while_streaming, [](const Subject& s) { return number(s.settings().frame_count); },                write_frame_count},
    {"AcquisitionStart",           0x3008, 4,  command,     never,           done,                                                                             execute_nothing},
    {"AcquisitionStop",            0x300C, 4,  command,     never,           done,                                                                             execute_nothing},
    {"AcquisitionFrameRate",       0x3010, 8,  floating,    never,           [](const Subject& s) -> Value { return s.settings().frames_per_second; },         write_frame_rate},
    {"ExposureTime",               0x3018, 8,  floating,    never,           [](const Subject& s) -> Value { return s.settings().exposure_us; },               write_exposure_time},
    {"AcquisitionFrameRateEnable", 0x3020, 4,  boolean,     never,           [](const Subject& s) { return number(s.settings().is_rate_set); },                write_frame_rate_enable},
    {"TriggerSelector",            0x3024, 4,  enumeration, never,           [](const Subject&) { return number(0); },                                         write_trigger_selector},
    {"TriggerMode",                0x3028, 4,  enumeration, never,           [](const Subject& s) { return number(s.settings().is_triggered); },               write_trigger_mode},
    {"TriggerSource",              0x302C, 4,  enumeration, never,           [](const Subject& s) { return number(s.settings().trigger_source); },             write_trigger_source},
    {"TriggerActivation",          0x3030, 4,  enumeration, never,           [](const Subject& s) { return number(s.settings().trigger_activation); },         write_trigger_activation},
    {"TriggerSoftware",            0x3034, 4,  command,     never,           done,                                                                             execute_trigger},

    {"Gain",                       0x4000, 8,  floating,    never,           [](const Subject& s) -> Value { return s.settings().gain_db; },                   write_gain},

    {"PayloadSize",                0x5000, 8,  integer,     never,           [](const Subject& s) { return number(s.payload()); },                             read_only},
    {"TLParamsLocked",             0x5008, 4,  integer,     never,           [](const Subject& s) { return number(s.state().is_locked); },                     write_parameter_lock},
    {"ParametersAreLocked",        0x500C, 4,  integer,     never,           [](const Subject& s) { return number(s.has_locked_parameters()); },               read_only},
};
// clang-format on

const CameraRow& row_of(const RegisterPlace& place) { return *static_cast<const CameraRow*>(place.row); }

} // namespace

CameraRows camera_rows() { return {rows, std::size(rows)}; }

const CameraRow* find_camera_row(std::string_view name)
{
    const auto* const found = std::find_if(std::begin(rows), std::end(rows),
                                           [name](const CameraRow& row) { return row.name == name; });
    return found != std::end(rows) ? found : nullptr;
}

CameraSpace::CameraSpace(CameraDevice& device) : m_device{device}, m_edit{device, device.state()} {}

void CameraSpace::commit() { m_device.set_state(std::move(m_edit.state)); }

std::optional<RegisterPlace> CameraSpace::find(uint64_t address) const
{
    const auto* const after =
        std::upper_bound(std::begin(rows), std::end(rows), address,
                         [](uint64_t at, const CameraRow& row) { return at < row.address; });
    if (after == std::begin(rows))
        return std::nullopt;
    const CameraRow& row = *std::prev(after);
    if (address - row.address >= row.length)
        return std::nullopt;
    return RegisterPlace{row.address, row.length, &row, 0};
}

void CameraSpace::load(const RegisterPlace& place, unsigned char* bytes) const
{
    const CameraRow& row = row_of(place);
    encode(row.read(m_device), row.kind, bytes, row.length);
}

bool CameraSpace::store(const RegisterPlace& place, const unsigned char* bytes)
{
    const CameraRow& row = row_of(place);
    if (row.write == nullptr)
        return false;
    if (row.locking == Locking::while_streaming && m_device.has_locked_parameters())
        return false;
    return row.write(m_edit, decode(row.kind, bytes, row.length));
}

const std::string& CameraSpace::description() const { return m_device.description().text; }

} // namespace zvsim
