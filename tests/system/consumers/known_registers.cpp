#include "system/consumers/known_registers.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace zvclient {

namespace {

constexpr auto text = RegisterType::text;
constexpr auto integer = RegisterType::integer;
constexpr auto floating = RegisterType::floating;
constexpr auto command = RegisterType::command;

// docs/camera-features.md and the templates of the descriptions tell them. All numbers are big-endian.
// clang-format off
constexpr KnownRegister camera_registers[] = {
    {"DeviceVendorName",           0x1000, 64, text,     nullptr},
    {"DeviceModelName",            0x1040, 64, text,     nullptr},
    {"DeviceSerialNumber",         0x1080, 64, text,     nullptr},
    {"DeviceVersion",              0x10C0, 64, text,     nullptr},
    {"DeviceUserID",               0x1100, 64, text,     "a name as long as its register, which leaves no place for a zero"},
    {"DeviceSFNCVersionMajor",     0x1140, 4,  integer,  nullptr},
    {"DeviceSFNCVersionMinor",     0x1144, 4,  integer,  nullptr},
    {"DeviceSFNCVersionSubMinor",  0x1148, 4,  integer,  nullptr},
    {"DeviceTemperature",          0x1150, 8,  floating, nullptr},
    {"Timestamp",                  0x1158, 8,  integer,  nullptr},
    {"TimestampLatch",             0x114C, 4,  command,  nullptr},
    {"TimestampLatchValue",        0x1160, 8,  integer,  nullptr},
    {"TimestampTickFrequency",     0x1168, 8,  integer,  nullptr},
    {"SensorWidth",                0x2000, 4,  integer,  nullptr},
    {"SensorHeight",               0x2004, 4,  integer,  nullptr},
    {"PixelFormat",                0x2018, 4,  integer,  "Mono8"},
    {"Width",                      0x2008, 4,  integer,  "96"},
    {"Height",                     0x200C, 4,  integer,  "48"},
    {"OffsetX",                    0x2010, 4,  integer,  "32"},
    {"OffsetY",                    0x2014, 4,  integer,  "16"},
    {"PixelSize",                  0x201C, 4,  integer,  nullptr},
    {"TestPattern",                0x2020, 4,  integer,  "13"},
    {"AcquisitionMode",            0x3000, 4,  integer,  "MultiFrame"},
    {"AcquisitionFrameCount",      0x3004, 4,  integer,  "65535"},
    {"AcquisitionStart",           0x3008, 4,  command,  nullptr},
    {"AcquisitionStop",            0x300C, 4,  command,  nullptr},
    {"AcquisitionFrameRateEnable", 0x3020, 4,  integer,  "0"},
    {"AcquisitionFrameRate",       0x3010, 8,  floating, "0.001"},
    {"ExposureTime",               0x3018, 8,  floating, "2500.5"},
    {"TriggerSelector",            0x3024, 4,  integer,  "0"},
    {"TriggerMode",                0x3028, 4,  integer,  "1"},
    {"TriggerSource",              0x302C, 4,  integer,  "2"},
    {"TriggerActivation",          0x3030, 4,  integer,  "4"},
    {"TriggerSoftware",            0x3034, 4,  command,  nullptr},
    {"Gain",                       0x4000, 8,  floating, "-12"},
    {"PayloadSize",                0x5000, 8,  integer,  nullptr},
    {"TLParamsLocked",             0x5008, 4,  integer,  "1"},
};

// Of the cameras the first: those of the others lie 0x100 further up each.
constexpr KnownRegister grabber_registers[] = {
    {"InterfaceVendorName",        0x1000, 64, text,     nullptr},
    {"InterfaceModelName",         0x1040, 64, text,     nullptr},
    {"InterfaceDisplayName",       0x1080, 64, text,     nullptr},
    {"InterfaceIndex",             0x10C0, 4,  integer,  nullptr},
    {"InterfaceType",              0x10C4, 4,  integer,  nullptr},
    {"CameraCount",                0x10C8, 4,  integer,  nullptr},
    {"CameraModelName",            0x2000, 64, text,     nullptr},
    {"CameraSerialNumber",         0x2040, 64, text,     nullptr},
    {"CameraLinkState",            0x2080, 4,  integer,  nullptr},
    {"CameraChannelState",         0x2084, 4,  integer,  nullptr},
    {"CameraFramesDelivered",      0x2088, 8,  integer,  nullptr},
    {"CameraFramesLost",           0x2090, 8,  integer,  nullptr},
    {"CameraStatisticsReset",      0x2098, 4,  command,  nullptr},
    {"Width",                      0x209C, 4,  integer,  nullptr},
    {"Height",                     0x20A0, 4,  integer,  nullptr},
    {"SegmentsPerBuffer",          0x20A4, 4,  integer,  nullptr},
};

constexpr KnownEntry entries[] = {
    {"AcquisitionMode", "Continuous",  0,          0    },
    {"AcquisitionMode", "SingleFrame", 1,          1    },
    {"AcquisitionMode", "MultiFrame",  2,          2    },
    {"PixelFormat",     "Mono8",       0x01080001, 0x101},
    {"PixelFormat",     "Mono12",      0x01100005, 0x103},
    {"PixelFormat",     "Mono16",      0x01100007, 0x105},
};
// clang-format on

} // namespace

const KnownRegister& KnownRegisters::at(const std::string& feature) const
{
    const auto* const found =
        std::find_if(m_begin, m_end, [&](const KnownRegister& known) { return known.feature == feature; });
    if (found == m_end)
        throw std::runtime_error("no register of " + feature + " is known");
    return *found;
}

KnownRegisters registers_below(const std::string& category)
{
    if (category == "DeviceControl")
        return KnownRegisters{camera_registers};
    if (category == "InterfaceControl")
        return KnownRegisters{grabber_registers};
    if (category == "SystemInformation" || category.empty()) // constants of the description, and nothing
        return {};
    throw std::runtime_error("no registers of " + category + " are known");
}

const KnownEntry* find_entry(const std::string& feature, const std::string& name)
{
    const auto* const found =
        std::find_if(std::begin(entries), std::end(entries),
                     [&](const KnownEntry& entry) { return entry.feature == feature && entry.name == name; });
    return found == std::end(entries) ? nullptr : found;
}

} // namespace zvclient
