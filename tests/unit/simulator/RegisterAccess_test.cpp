#include <cstring>
#include <utility>

#include "unit/simulator/fixtures.h"
#include "unit/simulator/register_calls.h"

// Register access of any address and length, and the URLs of the descriptions.

namespace {

using namespace zvsim_test;

constexpr uint32_t success = zv_success;

// Places of camera registers.
constexpr uint64_t vendor_name = 0x1000;
constexpr uint64_t user_id = 0x1100;
constexpr uint64_t major_version = 0x1140;
constexpr uint64_t sensor_width = 0x2000;
constexpr uint64_t width = 0x2008;
constexpr uint64_t height_increment = 0x2028; // the last one before a gap
constexpr uint64_t gain = 0x4000;             // a gap behind it
constexpr uint64_t description = 0x10000000;

std::string url_of(uint32_t handle)
{
    char url[zv_url_capacity] = "";
    uint64_t size = sizeof url;
    EXPECT_EQ(success, ZVGR_GetXmlUrl(handle, url, &size));
    EXPECT_EQ(std::strlen(url) + 1, size);
    return url;
}

uint32_t length_in(const std::string& url)
{
    return static_cast<uint32_t>(std::stoul(url.substr(url.rfind(';') + 1), nullptr, 16));
}

TEST_F(OpenCamera, ARegisterIsRead)
{
    const Transfer read = read_camera(camera, sensor_width, 4);
    EXPECT_EQ(success, read.status);
    EXPECT_EQ(4U, read.size);
    EXPECT_EQ(bytes_of(64, 4), read.bytes);
}

TEST_F(OpenCamera, ARegisterIsWritten)
{
    const Transfer written = write_camera(camera, width, bytes_of(32, 4));
    EXPECT_EQ(success, written.status);
    EXPECT_EQ(4U, written.size);
    EXPECT_EQ(bytes_of(32, 4), read_camera(camera, width, 4).bytes);
}

TEST_F(OpenCamera, PartOfARegisterIsRead)
{
    const Transfer read = read_camera(camera, sensor_width + 2, 2);
    EXPECT_EQ(success, read.status);
    EXPECT_EQ(bytes_of(64, 2), read.bytes);
}

TEST_F(OpenCamera, PartOfARegisterIsWrittenAndTheRestStays)
{
    ASSERT_EQ(success, write_camera(camera, user_id, bytes_of("abcdef", 64)).status);
    const Transfer written = write_camera(camera, user_id + 2, bytes_of("XY", 2));
    EXPECT_EQ(success, written.status);
    EXPECT_EQ(2U, written.size);
    EXPECT_EQ(bytes_of("abXYef", 64), read_camera(camera, user_id, 64).bytes);
}

TEST_F(OpenCamera, AReadSpansRegisters)
{
    const Transfer read = read_camera(camera, sensor_width + 3, 6);
    EXPECT_EQ(success, read.status);
    EXPECT_EQ(6U, read.size);
    EXPECT_EQ((Bytes{64, 0, 0, 0, 48, 0}), read.bytes);
}

TEST_F(OpenCamera, AReadBeyondTheLastRegisterIsShort)
{
    const Transfer read = read_camera(camera, height_increment, 12);
    EXPECT_EQ(success, read.status);
    EXPECT_EQ(4U, read.size);
    EXPECT_EQ((Bytes{0, 0, 0, 1, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}), read.bytes);
}

TEST_F(OpenCamera, AWriteBeyondTheLastRegisterIsShort)
{
    Bytes bytes = bytes_of(6.0);
    bytes.resize(20);
    const Transfer written = write_camera(camera, gain, bytes);
    EXPECT_EQ(success, written.status);
    EXPECT_EQ(8U, written.size);
    EXPECT_EQ(6.0, float_from(read_camera(camera, gain, 8).bytes));
}

TEST_F(OpenCamera, AWriteSpansRegisters)
{
    Bytes bytes = bytes_of(32, 4);
    const Bytes height = bytes_of(16, 4);
    bytes.insert(bytes.end(), height.begin(), height.end());
    const Transfer written = write_camera(camera, width, bytes);
    EXPECT_EQ(success, written.status);
    EXPECT_EQ(8U, written.size);
    EXPECT_EQ(bytes, read_camera(camera, width, 8).bytes);
}

TEST_F(OpenCamera, AWriteThatOneRegisterRefusesChangesNone)
{
    const Bytes before = read_camera(camera, width, 8).bytes;
    Bytes bytes = bytes_of(32, 4);
    const Bytes height = bytes_of(49, 4); // higher than the sensor
    bytes.insert(bytes.end(), height.begin(), height.end());
    const Transfer written = write_camera(camera, width, bytes);
    EXPECT_NE(success, written.status);
    EXPECT_EQ(0U, written.size);
    EXPECT_EQ(before, read_camera(camera, width, 8).bytes);
}

TEST_F(OpenCamera, AWriteThatReachesAReadOnlyRegisterChangesNothing)
{
    const Bytes before = read_camera(camera, user_id, 68).bytes;
    Bytes bytes = bytes_of("name", 64);
    bytes.resize(68);
    const Transfer written = write_camera(camera, user_id, bytes);
    EXPECT_NE(success, written.status);
    EXPECT_EQ(0U, written.size);
    EXPECT_EQ(before, read_camera(camera, user_id, 68).bytes);
}

TEST_F(OpenCamera, ReadOnlyRegistersRefuseWrites)
{
    for (const uint64_t address : {vendor_name, major_version, sensor_width, description}) {
        const Transfer written = write_camera(camera, address, bytes_of(1, 4));
        EXPECT_NE(success, written.status) << address;
        EXPECT_EQ(0U, written.size) << address;
    }
}

TEST_F(OpenCamera, UnmappedAddressesFail)
{
    for (const uint64_t address :
         {uint64_t{0}, uint64_t{0xFFC}, uint64_t{0x1170}, uint64_t{0x202C}, uint64_t{0x4008},
          uint64_t{0x5010}, uint64_t{0x0FFFFFFF}, uint64_t{0x20000000}, uint64_t{0x100001000},
          uint64_t{0x100002008}, UINT64_MAX}) {
        const Transfer read = read_camera(camera, address, 4);
        EXPECT_NE(success, read.status) << address;
        EXPECT_EQ(0U, read.size) << address;
        EXPECT_EQ((Bytes{0xEE, 0xEE, 0xEE, 0xEE}), read.bytes) << address;
        const Transfer written = write_camera(camera, address, bytes_of(1, 4));
        EXPECT_NE(success, written.status) << address;
        EXPECT_EQ(0U, written.size) << address;
    }
}

TEST_F(OpenGrabber, UnmappedAddressesOfAGrabberFail)
{
    for (const uint64_t address : {0x0U, 0xFFCU, 0x10D0U, 0x1FFCU, 0x20A8U, 0x21A8U, 0x2200U, 0x20000000U}) {
        const Transfer read = read_grabber(grabber, address, 4);
        EXPECT_NE(success, read.status) << address;
        EXPECT_EQ(0U, read.size) << address;
        EXPECT_NE(success, write_grabber(grabber, address, bytes_of(1, 4)).status) << address;
    }
}

TEST_F(OpenCamera, NoBytesAreTransferredWhereARegisterIs)
{
    EXPECT_EQ(success, read_camera(camera, width, 0).status);
    EXPECT_EQ(success, write_camera(camera, width, {}).status);
    EXPECT_NE(success, read_camera(camera, 0, 0).status);
    EXPECT_NE(success, write_camera(camera, 0, {}).status);
}

TEST_F(OpenCamera, HugeSizesAreServedAsFarAsRegistersGo)
{
    Bytes bytes(8, 0xEE);
    uint32_t size = UINT32_MAX;
    EXPECT_EQ(success, ZVGR_CameraReadReg(camera, gain, bytes.data(), &size));
    EXPECT_EQ(8U, size);
}

TEST_F(OpenCamera, NullPointersFail)
{
    uint32_t word = 0;
    uint32_t size = 4;
    EXPECT_NE(success, ZVGR_CameraReadReg(camera, width, nullptr, &size));
    EXPECT_EQ(0U, std::exchange(size, 4));
    EXPECT_NE(success, ZVGR_CameraWriteReg(camera, width, nullptr, &size));
    EXPECT_EQ(0U, std::exchange(size, 4));
    EXPECT_NE(success, ZVGR_GrabberReadReg(grabber, vendor_name, nullptr, &size));
    EXPECT_EQ(0U, std::exchange(size, 4));
    EXPECT_NE(success, ZVGR_GrabberWriteReg(grabber, vendor_name, nullptr, &size));
    EXPECT_EQ(0U, size);
    EXPECT_NE(success, ZVGR_CameraReadReg(camera, width, &word, nullptr));
    EXPECT_NE(success, ZVGR_CameraWriteReg(camera, width, &word, nullptr));
    EXPECT_NE(success, ZVGR_GrabberReadReg(grabber, vendor_name, &word, nullptr));
    EXPECT_NE(success, ZVGR_GrabberWriteReg(grabber, vendor_name, &word, nullptr));
}

TEST_F(QueuedStream, OtherHandlesHaveNoRegisters)
{
    for (const uint32_t handle : {grabber, stream, cameras[1], 0U, ZV_NO_HANDLE}) {
        const Transfer read = read_camera(handle, width, 4);
        EXPECT_NE(success, read.status) << handle;
        EXPECT_EQ(0U, read.size) << handle;
        EXPECT_NE(success, write_camera(handle, width, bytes_of(32, 4)).status) << handle;
    }
    for (const uint32_t handle : {camera, stream, 0U, ZV_NO_HANDLE}) {
        EXPECT_NE(success, read_grabber(handle, vendor_name, 4).status) << handle;
        EXPECT_NE(success, write_grabber(handle, 0x2098, bytes_of(1, 4)).status) << handle;
    }
}

TEST_F(OpenCamera, RegistersOfAClosedCameraAreOutOfReach)
{
    ASSERT_EQ(success, ZVGR_CameraClose(camera));
    EXPECT_NE(success, read_camera(camera, width, 4).status);
    ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_EQ(success, read_camera(camera, width, 4).status);
}

TEST_F(QueuedStream, EveryHandleHasADescription)
{
    EXPECT_EQ(0U, url_of(camera).rfind("Local:ZV_Camera_SoftCam_CX_640.xml;10000000;", 0));
    EXPECT_EQ(url_of(camera), url_of(stream));
    EXPECT_EQ(0U, url_of(grabber).rfind("Local:ZV_Grabber_Software_Grabber_CXP_2.xml;10000000;", 0));
}

TEST_F(OpenCamera, OneReadServesAWholeDescription)
{
    const uint32_t length = length_in(url_of(camera));
    const Transfer read = read_camera(camera, description, length + 8);
    EXPECT_EQ(success, read.status);
    EXPECT_EQ(length, read.size);
    const std::string text{read.bytes.begin(), read.bytes.begin() + length};
    EXPECT_EQ(0U, text.rfind("<?xml", 0));
    EXPECT_NE(std::string::npos, text.find("</RegisterDescription>"));
    EXPECT_EQ(std::string::npos, text.find('@')) << "a place of the template that nothing was put into";
    EXPECT_EQ(length, read_camera(camera, description, length).size);
    const Transfer end = read_camera(camera, description + length - 4, 8);
    EXPECT_EQ(4U, end.size);
    EXPECT_NE(success, read_camera(camera, description + length, 4).status);
    EXPECT_EQ(0U, length % 4);
}

TEST_F(OpenGrabber, OneReadServesTheDescriptionOfAGrabber)
{
    const uint32_t length = length_in(url_of(grabber));
    const Transfer read = read_grabber(grabber, description, length + 8);
    EXPECT_EQ(success, read.status);
    EXPECT_EQ(length, read.size);
    EXPECT_EQ(std::string::npos, std::string(read.bytes.begin(), read.bytes.end()).find('@'));
}

TEST_F(OpenGrabber, AUrlNeedsRoomAndAHandle)
{
    char url[zv_url_capacity] = "unchanged";
    const uint64_t needed = url_of(grabber).size() + 1;
    uint64_t size = needed - 1;
    EXPECT_NE(success, ZVGR_GetXmlUrl(grabber, url, &size));
    EXPECT_EQ(0U, size);
    EXPECT_STREQ("unchanged", url);
    size = sizeof url;
    EXPECT_NE(success, ZVGR_GetXmlUrl(grabber, nullptr, &size));
    EXPECT_NE(success, ZVGR_GetXmlUrl(grabber, url, nullptr));
    for (const uint32_t handle : {0U, ZV_NO_HANDLE, grabber + 1000}) {
        size = sizeof url;
        EXPECT_NE(success, ZVGR_GetXmlUrl(handle, url, &size));
        EXPECT_EQ(0U, size);
    }
    EXPECT_STREQ("unchanged", url);
    size = needed;
    EXPECT_EQ(success, ZVGR_GetXmlUrl(grabber, url, &size));
}

} // namespace
