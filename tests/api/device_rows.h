#pragma once

#include "support/fixtures.h"

// What is known of a device, whether its interface or the device itself is asked.

namespace zvtest {

/// Fills the record of the fixture's one camera with texts that differ from one another.
inline void describe_camera(FakeGrabberLibrary& fake)
{
    fake.grabber(0).camera(0).vendor("Vendor of cameras").model("Model X").serial("SN-0042").version("1.2.3");
}

struct DeviceText {
    DEVICE_INFO_CMD command;
    const char* text; // of the camera that describe_camera() describes
    bool is_from_record;
};

constexpr DeviceText device_texts[] = {
    {DEVICE_INFO_ID, "Device00", false},          {DEVICE_INFO_VENDOR, "Vendor of cameras", true},
    {DEVICE_INFO_MODEL, "Model X", true},         {DEVICE_INFO_TLTYPE, "CXP", false},
    {DEVICE_INFO_DISPLAYNAME, "Model X", true},   {DEVICE_INFO_USER_DEFINED_NAME, "Model X", true},
    {DEVICE_INFO_SERIAL_NUMBER, "SN-0042", true}, {DEVICE_INFO_VERSION, "1.2.3", true},
};

constexpr DEVICE_INFO_CMD unknown_device_commands[] = {10, 11, 1000, -1, INT32_MIN, INT32_MAX};

struct Protocol {
    uint32_t number;
    const char* transport_type;
};

constexpr Protocol protocols[] = {
    {0, "CXP"}, {1, "CLHS"}, {2, "GEV"}, {3, "CXP"}, {0xFFFFFFFF, "CXP"},
};

} // namespace zvtest
