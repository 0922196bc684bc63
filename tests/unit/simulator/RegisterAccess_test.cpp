#include <cstring>
#include <utility>

#include "unit/simulator/fixtures.h"
#include "unit/simulator/register_calls.h"

// Register access of any address and length, and the URLs of the descriptions.

namespace {

using namespace zvsim_test;

// Places of camera registers.
constexpr uint64_t vendor_name = 0x1000;
constexpr uint64_t user_id = 0x1100;
constexpr uint64_t sensor_width = 0x2000;
constexpr uint64_t width = 0x2008;
constexpr uint64_t height_increment = 0x2028; // the last one before a gap
constexpr uint64_t gain = 0x4000;             // a gap behind it
constexpr uint64_t description = 0x10000000;
constexpr uint64_t statistics_reset = 0x2098; // of a grabber

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

struct ReadRow {
    const char* name;
    uint64_t address;
    uint32_t asked;
    uint32_t transferred;
    Bytes bytes;
};

const ReadRow read_rows[] = {
    {"ARegister", sensor_width, 4, 4, {0, 0, 0, 64}},
    {"PartOfARegister", sensor_width + 2, 2, 2, {0, 64}},
    {"SeveralRegisters", sensor_width + 3, 6, 6, {64, 0, 0, 0, 48, 0}},
    {"WhatLiesBeforeAGap", height_increment, 6, 4, {0, 0, 0, 1, 0xEE, 0xEE}},
    {"NoByteOfARegister", width, 0, 0, {}},
};

TEST_F(OpenCamera, ReadsTransferWhatIsThere)
{
    for (const ReadRow& row : read_rows) {
        const Transfer read = read_camera(camera, row.address, row.asked);
        EXPECT_EQ(success, read.status) << row.name;
        EXPECT_EQ(row.transferred, read.size) << row.name;
        EXPECT_EQ(row.bytes, read.bytes) << row.name;
    }
}

struct WriteRow {
    const char* name;
    uint64_t address;
    Bytes bytes;
    /// 0 for a write that fails.
    uint32_t transferred;
    /// What is there afterwards, from the address or from `read_from` on.
    Bytes expected;
    uint64_t read_from{address};
};

Bytes operator+(Bytes first, const Bytes& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

const WriteRow write_rows[] = {
    {"ARegister", width, {0, 0, 0, 32}, 4, {0, 0, 0, 32}},
    {"PartOfARegister", user_id + 2, {'X', 'Y'}, 2, {'a', 'b', 'X', 'Y', 'e', 'f', 0}, user_id},
    {"SeveralRegisters", width, {0, 0, 0, 32, 0, 0, 0, 16}, 8, {0, 0, 0, 32, 0, 0, 0, 16}},
    {"WhatLiesBeforeAGap", gain, bytes_of(6.0) + Bytes(12), 8, bytes_of(6.0)},
    {"NothingWhenOneRegisterRefuses", width, {0, 0, 0, 32, 0, 0, 0, 49}, 0, {0, 0, 0, 64, 0, 0, 0, 48}},
    {"NothingWhenItReachesAReadOnlyRegister", user_id, Bytes(68, 'x'), 0, {'a', 'b', 'c', 'd', 'e', 'f', 0}},
};

class BlockWrite : public OpenCamera, public testing::WithParamInterface<WriteRow> {};

INSTANTIATE_TEST_SUITE_P(Registers, BlockWrite, testing::ValuesIn(write_rows),
                         [](const auto& row) { return row.param.name; });

TEST_P(BlockWrite, Transfers)
{
    const WriteRow& row = GetParam();
    ASSERT_EQ(success, write_camera(camera, user_id, bytes_of("abcdef", 64)).status);
    const Transfer written = write_camera(camera, row.address, row.bytes);
    EXPECT_EQ(row.transferred != 0, written.status == success);
    EXPECT_EQ(row.transferred, written.size);
    EXPECT_EQ(row.expected,
              read_camera(camera, row.read_from, static_cast<uint32_t>(row.expected.size())).bytes);
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

TEST_F(OpenCamera, ATransferOfNoBytesNeedsARegisterToo)
{
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
    for (const auto read : {ZVGR_CameraReadReg, ZVGR_GrabberReadReg}) {
        const bool is_camera = read == ZVGR_CameraReadReg;
        EXPECT_NE(success, read(is_camera ? camera : grabber, vendor_name, nullptr, &size));
        EXPECT_EQ(0U, std::exchange(size, 4));
        EXPECT_NE(success, read(is_camera ? camera : grabber, vendor_name, &word, nullptr));
    }
    for (const auto write : {ZVGR_CameraWriteReg, ZVGR_GrabberWriteReg}) {
        const bool is_camera = write == ZVGR_CameraWriteReg;
        const uint64_t address = is_camera ? width : statistics_reset;
        EXPECT_NE(success, write(is_camera ? camera : grabber, address, nullptr, &size));
        EXPECT_EQ(0U, std::exchange(size, 4));
        EXPECT_NE(success, write(is_camera ? camera : grabber, address, &word, nullptr));
    }
}

TEST_F(OpenCamera, RegistersAreOutOfReachUnlessTheCameraIsOpen)
{
    ASSERT_EQ(success, ZVGR_CameraClose(camera));
    for (const uint32_t closed : cameras) { // one of them has been open
        const Transfer read = read_camera(closed, width, 4);
        EXPECT_NE(success, read.status);
        EXPECT_EQ(0U, read.size);
        EXPECT_NE(success, write_camera(closed, width, bytes_of(32, 4)).status);
    }
    ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_EQ(success, read_camera(camera, width, 4).status);
}

TEST_F(QueuedStream, EveryHandleHasADescription)
{
    EXPECT_EQ(0U, url_of(camera).rfind("Local:ZV_Camera_SoftCam_CX_640.xml;10000000;", 0));
    EXPECT_EQ(url_of(camera), url_of(stream));
    EXPECT_EQ(0U, url_of(grabber).rfind("Local:ZV_Grabber_Software_Grabber_CXP_2.xml;10000000;", 0));
}

TEST_F(OpenCamera, OneReadServesAWholeDescriptionThatCannotBeWritten)
{
    const uint32_t length = length_in(url_of(camera));
    for (const uint32_t asked : {length, length + 8}) {
        const Transfer read = read_camera(camera, description, asked);
        EXPECT_EQ(success, read.status);
        EXPECT_EQ(length, read.size);
        const std::string text{read.bytes.begin(), read.bytes.begin() + length};
        EXPECT_EQ(0U, text.rfind("<?xml", 0));
        EXPECT_NE(std::string::npos, text.find("</RegisterDescription>"));
    }
    EXPECT_EQ(4U, read_camera(camera, description + length - 4, 8).size);
    EXPECT_NE(success, read_camera(camera, description + length, 4).status);
    const Transfer written = write_camera(camera, description, bytes_of(1, 4));
    EXPECT_NE(success, written.status);
    EXPECT_EQ(0U, written.size);
}

TEST_F(OpenGrabber, OneReadServesTheDescriptionOfAGrabber)
{
    const uint32_t length = length_in(url_of(grabber));
    const Transfer read = read_grabber(grabber, description, length + 8);
    EXPECT_EQ(success, read.status);
    EXPECT_EQ(length, read.size);
}

TEST_F(OpenGrabber, AUrlNeedsRoom)
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
    EXPECT_STREQ("unchanged", url);
    size = needed;
    EXPECT_EQ(success, ZVGR_GetXmlUrl(grabber, url, &size));
}

} // namespace
