#include <cstring>
#include <set>

#include "unit/simulator/configured_camera.h"
#include "unit/simulator/faults.h"

// Grabbers and cameras as they are found and opened, the effects of a configuration file, and the registers
// and values of a grabber.

namespace {

using namespace zvsim_test;

TEST(BuiltInGrabbers, AreTwoAndTheDemoGrabberLast)
{
    ASSERT_EQ(3U, scan());
    EXPECT_STREQ("ZEVA Software Grabber CXP-2", ZV_DeviceDisplayName(0));
    EXPECT_STREQ("ZEVA Demo Grabber", ZV_DeviceDisplayName(2));
}

TEST_F(Scanned, DisplayNameStaysTheSameTextOverScans)
{
    const char* const name = ZV_DeviceDisplayName(coaxpress);
    const std::string before = name;
    const Variable other_configuration{"ZV_GRABBER_RATE", "10"};
    scan();
    EXPECT_EQ(before, name);
    EXPECT_EQ(name, ZV_DeviceDisplayName(coaxpress));
}

TEST_F(Scanned, AnIndexBeyondTheScanIsNotAGrabber)
{
    ZvDeviceInfo info{};
    info.version = 3;
    EXPECT_NE(success, ZV_DeviceInfo(3, &info));
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(3));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(3));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(ZV_NO_HANDLE));
}

TEST_F(OpenGrabber, RecordsOfAnotherVersionAreRefused)
{
    ZvDeviceInfo grabber_record{};
    grabber_record.version = 2;
    EXPECT_NE(success, ZV_DeviceInfo(coaxpress, &grabber_record));
    ZvCameraInfo camera_record{};
    camera_record.version = 1;
    EXPECT_NE(success, ZVGR_CameraInfo2(cameras.front(), &camera_record));
}

TEST_F(Scanned, NothingButTheProtocolIsWritten)
{
    ZvDeviceInfo info;
    std::memset(&info, 0x5A, sizeof info);
    info.version = 3;
    ZvDeviceInfo expected = info;
    ASSERT_EQ(success, ZV_DeviceInfo(camera_link_hs, &info));
    expected.protocol = zv_protocol_clhs;
    EXPECT_EQ(0, std::memcmp(&expected, &info, sizeof info));
}

TEST_F(OpenGrabber, CannotBeOpenedTwiceButOthersCanBeOpenToo)
{
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(coaxpress));
    const uint32_t other = ZVGR_Open(camera_link_hs);
    ASSERT_NE(ZV_NO_HANDLE, other);
    EXPECT_NE(grabber, other);
    EXPECT_EQ(success, ZVGR_Close(other));
}

TEST_F(OpenGrabber, CameraListHasTheSameHandlesAndStaysWithinItsRoom)
{
    for (const uint32_t room : {0U, 1U, 2U}) {
        std::vector<uint32_t> list(3, 77);
        uint32_t count = room;
        ASSERT_EQ(success, ZVGR_UpdateCameraList(grabber, list.data(), &count));
        EXPECT_EQ(2U, count);
        EXPECT_EQ(room > 0 ? cameras[0] : 77, list[0]);
        EXPECT_EQ(room > 1 ? cameras[1] : 77, list[1]);
        EXPECT_EQ(77U, list[2]);
    }
}

TEST_F(OpenGrabber, CamerasKeepTheirHandlesAndRestWhileItIsClosed)
{
    ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[0], nullptr));
    const uint32_t stream = create_stream(cameras[0]);
    ASSERT_EQ(success, ZVGR_Close(grabber));
    ZvCameraInfo info{};
    EXPECT_NE(success, ZVGR_CameraInfo2(cameras[0], &info));
    EXPECT_NE(success, ZVGR_CameraOpen2(cameras[0], nullptr));
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetCameraValueInt(cameras[0], "Width"));

    grabber = ZVGR_Open(coaxpress);
    EXPECT_EQ(cameras, cameras_of(grabber));
    EXPECT_NE(success, ZVGR_CameraClose(cameras[0])) << "it is closed";
    EXPECT_NE(success, ZVGR_StreamDelete(stream)) << "its stream is gone";
    ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[0], nullptr));
    const uint32_t later = create_stream(cameras[0]);
    EXPECT_EQ(success, ZVGR_CameraStartAcquire_GenTL(cameras[0], later, 0));
    EXPECT_EQ(success, ZVGR_CameraStopAcquire_GenTL(cameras[0]));
}

TEST_F(Scanned, HandlesOfAllKindsDifferAndAreNotGivenOutAgain)
{
    std::set<uint64_t> handles{0, ZV_NO_HANDLE};
    uint32_t first_camera = 0;
    for (int round = 0; round < 50; ++round) {
        const uint32_t grabber = ZVGR_Open(camera_link_hs);
        const uint32_t camera = cameras_of(grabber).at(0);
        if (round == 0)
            first_camera = camera;
        EXPECT_EQ(first_camera, camera);
        ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
        const uint32_t stream = create_stream(camera);
        const uint64_t buffer = announce(stream);
        ASSERT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
        for (const uint64_t handle : std::vector<uint64_t>{
                 grabber, stream, create_stream(camera, Mode::cyclic), buffer, announce(stream)})
            EXPECT_TRUE(handles.insert(handle).second) << handle << " came back";
        ASSERT_EQ(success, ZVGR_Close(grabber));
    }
    EXPECT_TRUE(handles.insert(first_camera).second);
}

TEST_F(OpenCamera, CanBeOpenedAgainAndIsClosedByOneClose)
{
    EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_EQ(success, ZVGR_CameraClose(camera));
    EXPECT_NE(success, ZVGR_CameraClose(camera));
}

TEST_F(OpenCamera, TakesNoForeignDescription)
{
    EXPECT_NE(success, ZVGR_CameraOpen2(camera, "/etc/hostname"));
}

TEST_F(OpenCamera, StreamsOutliveTheCloseOfTheirCamera)
{
    const uint32_t stream = create_stream(camera);
    ASSERT_EQ(success, ZVGR_CameraClose(camera));
    EXPECT_EQ(frame_size, stream_info(stream, zv_stream_payload_now));
    EXPECT_NE(success, start_stream(stream)) << "the camera is closed";
    ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_EQ(success, start_stream(stream));
    EXPECT_EQ(success, ZVGR_StreamDelete(stream));
    EXPECT_NE(success, ZVGR_StreamDelete(stream));
}

TEST_F(OpenGrabber, AClosedCameraHasNoStreams)
{
    uint32_t stream = 77;
    EXPECT_NE(success, ZVGR_StreamCreate(cameras.front(), &stream, 0));
    EXPECT_NE(success, ZVGR_StreamCreateAndAlloc(cameras.front(), &stream, 4, 0));
    EXPECT_EQ(77U, stream);
}

/// A file that the library reads.
class ConfiguredByFile : public testing::Test {
protected:
    ~ConfiguredByFile() override { ZVGR_Close(grabber); }

    /// How many grabbers a file with this text leads to.
    uint32_t scan_with(const std::string& text) const
    {
        file.write(text);
        return scan();
    }
    /// The cameras of the first grabber, which it opens.
    std::vector<uint32_t> open_first()
    {
        grabber = ZVGR_Open(0);
        return cameras_of(grabber);
    }

    ConfigurationFile file;
    uint32_t grabber{ZV_NO_HANDLE};
};

TEST_F(ConfiguredByFile, OffersTheGrabbersOfTheFile)
{
    ASSERT_EQ(3U, scan_with("grabbers: [{name: First, protocol: GigEVision},"
                            " {name: Second, protocol: CameraLinkHS}]\n"));
    EXPECT_STREQ("First", ZV_DeviceDisplayName(0));
    EXPECT_STREQ("Second", ZV_DeviceDisplayName(1));
    EXPECT_STREQ("ZEVA Demo Grabber", ZV_DeviceDisplayName(2));
    EXPECT_EQ(uint32_t{zv_protocol_gev}, protocol_of(0));
    EXPECT_EQ(uint32_t{zv_protocol_clhs}, protocol_of(1));
    EXPECT_EQ(uint32_t{zv_protocol_cxp}, protocol_of(2));
}

TEST_F(ConfiguredByFile, OffersSixtyFourGrabbersWithSixteenCamerasEach)
{
    ASSERT_EQ(64U, scan_with("demo_grabber: false\n"
                             "grabbers:\n"
                             "  - count: 64\n"
                             "    cameras:\n"
                             "      - {count: 16, serial: S, sensor_width: 32, sensor_height: 16}\n"));
    std::vector<uint32_t> grabbers;
    std::set<uint32_t> cameras;
    for (uint32_t index = 0; index < 64; ++index) {
        grabbers.push_back(ZVGR_Open(index));
        for (const uint32_t camera : cameras_of(grabbers.back())) {
            cameras.insert(camera);
            EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
            EXPECT_EQ(32, ZVGR_GetCameraValueInt(camera, "Width"));
        }
    }
    EXPECT_EQ(size_t{64} * 16, cameras.size());
    for (const uint32_t opened : grabbers)
        EXPECT_EQ(success, ZVGR_Close(opened));
}

TEST_F(ConfiguredByFile, CameraRecordsHoldTheirLongestTexts)
{
    const std::string texts[] = {std::string(64, 'V'), std::string(64, 'M'), std::string(64, '1'),
                                 std::string(64, 'S')};
    ASSERT_EQ(2U, scan_with("grabbers: [{cameras: [{vendor: " + texts[0] + ", model: " + texts[1] +
                            ", version: " + texts[2] + ", serial: " + texts[3] + "}]}]\n"));
    const ZvCameraInfo info = camera_info(open_first().at(0));
    EXPECT_EQ(texts[0], info.vendor_name);
    EXPECT_EQ(texts[1], info.model_name);
    EXPECT_EQ(texts[2], info.device_version);
    EXPECT_EQ(texts[3], info.serial_number);
}

TEST_F(ConfiguredByFile, OffersNothingWhileTheFileIsBrokenOrMissingAndRecovers)
{
    EXPECT_EQ(0U, scan()) << "missing";
    EXPECT_EQ(2U, scan_with("grabbers: [{}]\n"));
    EXPECT_EQ(0U, scan_with("grabbers: [{name: }]\n"));
    EXPECT_EQ(nullptr, ZV_DeviceDisplayName(0));
    ZvDeviceInfo info{};
    info.version = 3;
    EXPECT_NE(success, ZV_DeviceInfo(0, &info));
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(0));
    EXPECT_EQ(0U, scan());
    EXPECT_EQ(2U, scan_with("grabbers: [{name: A}]\n"));
    EXPECT_STREQ("A", ZV_DeviceDisplayName(0));
    std::filesystem::remove(file.path());
    EXPECT_EQ(0U, scan());
}

TEST_F(ConfiguredByFile, SeesAnotherTextOfTheSameSizeAndThatAnotherFileIsNamed)
{
    ASSERT_EQ(2U, scan_with("grabbers: [{name: A}]\n"));
    ASSERT_EQ(2U, scan_with("grabbers: [{name: Z}]\n"));
    EXPECT_STREQ("Z", ZV_DeviceDisplayName(0));
    const ConfigurationFile other{"grabbers: [{name: B}, {name: C}]\n"};
    EXPECT_EQ(3U, scan());
    EXPECT_STREQ("C", ZV_DeviceDisplayName(1));
}

TEST_F(ConfiguredByFile, ChangesNothingWhileAGrabberIsOpen)
{
    ASSERT_EQ(2U, scan_with("grabbers: [{name: A}]\n"));
    open_first();
    EXPECT_EQ(2U, scan_with("grabbers: [{name: B}, {name: C}]\n"));
    EXPECT_STREQ("A", ZV_DeviceDisplayName(0));
    EXPECT_EQ(2U, scan_with("garbage\n"));
    EXPECT_EQ(success, ZVGR_Close(grabber));
    EXPECT_EQ(0U, scan());
}

TEST_F(ConfiguredByFile, AGrabberWithoutCamerasOpensAndHasNone)
{
    ASSERT_EQ(1U, scan_with("demo_grabber: false\ngrabbers: [{cameras: []}]\n"));
    EXPECT_TRUE(open_first().empty());
    EXPECT_NE(ZV_NO_HANDLE, grabber);
    EXPECT_EQ(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueInt(grabber, "Width"));
}

std::string text_at(uint32_t grabber, const char* name, uint64_t offset = 0)
{
    return text_from(read_grabber(grabber, grabber_register(name).address + offset, 64).bytes);
}

TEST_F(ConfiguredCamera, ItsGrabberSaysWhoItIs)
{
    EXPECT_EQ("ZEVA Electronics", text_at(grabber, "InterfaceVendorName"));
    EXPECT_EQ("Software Grabber CLHS-2", text_at(grabber, "InterfaceModelName"));
    EXPECT_EQ("Test Grabber", text_at(grabber, "InterfaceDisplayName"));
    EXPECT_EQ(0U, grabber_number("InterfaceIndex"));
    EXPECT_EQ(1U, grabber_number("InterfaceType")) << "Camera Link HS";
    EXPECT_EQ(2U, grabber_number("CameraCount"));
}

TEST_F(ConfiguredCamera, ItsGrabberHasRegistersForEachOfItsCameras)
{
    EXPECT_EQ("Test Camera", text_at(grabber, "CameraModelName"));
    EXPECT_EQ("Other Camera", text_at(grabber, "CameraModelName", 0x100));
    EXPECT_EQ("T-1", text_at(grabber, "CameraSerialNumber"));
    EXPECT_EQ("T-2", text_at(grabber, "CameraSerialNumber", 0x100));
    const uint64_t third = grabber_register("CameraModelName").address + 0x200;
    EXPECT_NE(success, read_grabber(grabber, third, 4).status);
}

TEST_F(ConfiguredCamera, ItsGrabberRefusesWritesToAllButTheReset)
{
    for (const RegisterPlace& place : grabber_registers()) {
        const Transfer written = write_grabber(grabber, place.address, bytes_of(1, place.length));
        const bool is_reset = place.access == Access::command;
        EXPECT_EQ(is_reset, written.status == success) << place.name;
        EXPECT_EQ(is_reset ? 4U : 0U, written.size) << place.name;
    }
    const RegisterPlace& reset = grabber_register("CameraStatisticsReset");
    EXPECT_NE(success, write_grabber(grabber, reset.address, bytes_of(0, 4)).status);
    EXPECT_NE(success, write_grabber(grabber, reset.address, bytes_of(2, 4)).status);
    EXPECT_EQ(0U, grabber_number("CameraStatisticsReset"));
}

TEST_F(ConfiguredCamera, ItsGrabberFollowsTheSizeOfTheCamera)
{
    set("Width", 32);
    set("Height", 20);
    EXPECT_EQ(1U, grabber_number("GeometryIsReported"));
    EXPECT_EQ(32U, grabber_number("Width"));
    EXPECT_EQ(20U, grabber_number("Height"));
    EXPECT_EQ(1U, grabber_number("SegmentsPerBuffer"));
    EXPECT_EQ(66U, grabber_number("Width", 1));
    EXPECT_EQ(50U, grabber_number("Height", 1));
    EXPECT_EQ(32, ZVGR_GetGrabberValueInt(camera, "Width"));
    EXPECT_EQ(66, ZVGR_GetGrabberValueInt(cameras[1], "Width"));
}

TEST_F(OpenGrabber, GeometryThatIsNotReportedReadsZeros)
{
    for (const char* const name : {"GeometryIsReported", "Width", "Height", "SegmentsPerBuffer"}) {
        const Transfer read = read_grabber(grabber, grabber_register(name).address, 4);
        EXPECT_EQ(success, read.status) << name;
        EXPECT_EQ(0U, number_from(read.bytes)) << name;
    }
}

TEST_F(ConfiguredCamera, ItsGrabberSaysWhetherItGrabsAlsoWhenAnotherStreamIsDeleted)
{
    const uint32_t other = create_stream(camera);
    EXPECT_EQ(1U, grabber_number("CameraLinkState"));
    EXPECT_EQ(1U, grabber_number("CameraLinkState", 1));
    EXPECT_EQ(1U, grabber_number("CameraChannelState"));
    ASSERT_EQ(success, start());
    EXPECT_EQ(17U, grabber_number("CameraChannelState"));
    EXPECT_EQ(1U, grabber_number("CameraChannelState", 1));
    ASSERT_EQ(success, ZVGR_StreamDelete(other));
    EXPECT_EQ(17U, grabber_number("CameraChannelState"));
    EXPECT_EQ(1U, number("ParametersAreLocked"));
    ASSERT_EQ(success, stop());
    EXPECT_EQ(1U, grabber_number("CameraChannelState"));
}

TEST_F(ConfiguredCamera, ItsGrabberCountsFramesUntilAReset)
{
    frame();
    frame();
    EXPECT_EQ(2U, grabber_number("CameraFramesDelivered"));
    EXPECT_EQ(0U, grabber_number("CameraFramesLost"));
    EXPECT_EQ(0U, grabber_number("CameraFramesDelivered", 1));
    const RegisterPlace& reset = grabber_register("CameraStatisticsReset");
    ASSERT_EQ(success, write_grabber(grabber, reset.address + 0x100, bytes_of(1, 4)).status);
    EXPECT_EQ(2U, grabber_number("CameraFramesDelivered"))
        << "only the counters of the other camera were reset";
    ASSERT_EQ(success, write_grabber(grabber, reset.address, bytes_of(1, 4)).status);
    EXPECT_EQ(0U, grabber_number("CameraFramesDelivered"));
}

TEST_F(Faulty, AGrabberSeesWhichCamerasAreThere)
{
    plan(
        "events: [{scan: 2, do: unplug, grabber: 0, camera: 1}, {scan: 3, do: plug, grabber: 0, camera: 1}]");
    scan();
    const uint32_t grabber = open_grabber();
    const uint64_t address = grabber_register("CameraLinkState").address;
    for (const uint64_t state : {1U, 0U, 1U}) {
        EXPECT_EQ(state, number_from(read_grabber(grabber, address + 0x100, 4).bytes));
        EXPECT_EQ(1U, number_from(read_grabber(grabber, address, 4).bytes));
        scan();
    }
}

/// Asks for a value by the name of each register, of both types, with every kind of handle.
template <class Get, class Number>
void expect_values(const std::vector<RegisterPlace>& places, Get* get_integer, Get* get_enumeration,
                   const std::vector<uint32_t>& handles, const Number& number)
{
    for (const RegisterPlace& place : places) {
        if (place.name == std::string{"Timestamp"}) // changes between two calls
            continue;
        const auto expected = [&](Value type) {
            return place.value == type ? static_cast<int64_t>(number(place.name)) : ZV_NOT_AVAILABLE;
        };
        for (const uint32_t handle : handles) {
            EXPECT_EQ(expected(Value::integer), get_integer(handle, place.name)) << place.name;
            EXPECT_EQ(expected(Value::enumeration), get_enumeration(handle, place.name)) << place.name;
        }
    }
}

TEST_F(ConfiguredCamera, ValuesHaveTheNamesOfNumericRegisters)
{
    set_picture(32, 20, 8, 4);
    expect_values(camera_registers(), &ZVGR_GetCameraValueInt, &ZVGR_GetCameraValueEnum,
                  {grabber, camera, stream}, [this](const char* name) { return number(name); });
    expect_values(grabber_registers(), &ZVGR_GetGrabberValueInt, &ZVGR_GetGrabberValueEnum,
                  {grabber, camera, stream}, [this](const char* name) { return grabber_number(name); });
}

struct ValueRow {
    const char* name;
    /// Of the CoaXPress and of the Camera Link HS grabber.
    int64_t expected[2];
};

const ValueRow value_rows[] = {
    {"FW_Dma_Capable_QueuedBuffers_Imp", {1, 1}},
    {"FW_Dma_Capable_FrameImageId_Imp", {1, 0}},
    {"Width", {ZV_NOT_AVAILABLE, 64}},
    {"Height", {ZV_NOT_AVAILABLE, 48}},
    {"SegmentsPerBuffer", {ZV_NOT_AVAILABLE, 1}},
};

/// By the index of the grabber.
class Values : public QueuedStream, public testing::WithParamInterface<uint32_t> {
protected:
    Values() : QueuedStream{{GetParam()}} {}
};

INSTANTIATE_TEST_SUITE_P(Grabbers, Values, testing::Values(0U, 1U));

TEST_P(Values, AnswerEveryKindOfHandle)
{
    for (const ValueRow& row : value_rows) {
        for (const uint32_t handle : {grabber, camera, stream})
            EXPECT_EQ(row.expected[GetParam()], ZVGR_GetGrabberValueInt(handle, row.name)) << row.name;
    }
    uint64_t image_id = 77;
    const uint32_t status = ZVGR_BufferGetInfo(announce(stream), zv_buffer_image_id, &image_id);
    EXPECT_EQ(GetParam() == coaxpress, status == success);
    EXPECT_EQ(GetParam() == coaxpress, image_id != 77);
}

TEST_F(QueuedStream, UnknownNamesAndHandlesAreNotAvailable)
{
    for (const auto get : {ZVGR_GetGrabberValueInt, ZVGR_GetGrabberValueEnum, ZVGR_GetCameraValueInt,
                           ZVGR_GetCameraValueEnum}) {
        for (const char* const name : {"NoSuchValue", "WidthRegister", "", static_cast<const char*>(nullptr)})
            EXPECT_EQ(ZV_NOT_AVAILABLE, get(camera, name));
        for (const uint32_t handle : {0U, 1U, ZV_NO_HANDLE, stream + 1000}) {
            for (const char* const name : {"Width", "PixelFormat", "CameraChannelState"})
                EXPECT_EQ(ZV_NOT_AVAILABLE, get(handle, name));
        }
    }
}

TEST_P(EitherMode, ChannelStateSaysWhetherTheCameraGrabs)
{
    const auto states = [this] {
        std::vector<bool> grabbing;
        for (const uint32_t handle : {grabber, camera, stream, cameras[1]})
            grabbing.push_back(is_grabbing(handle));
        return grabbing;
    };
    const std::vector<bool> idle{false, false, false, false};
    EXPECT_NE(ZV_NOT_AVAILABLE, ZVGR_GetGrabberValueEnum(camera, "CameraChannelState"));
    EXPECT_EQ(idle, states());
    ASSERT_EQ(success, start());
    EXPECT_EQ((std::vector<bool>{true, true, true, false}), states());
    ASSERT_EQ(success, stop());
    EXPECT_EQ(idle, states());
}

TEST_F(QueuedStream, AlignmentIsAPowerOfTwo)
{
    const uint64_t alignment = stream_info(stream, zv_stream_buffer_alignment);
    EXPECT_GT(alignment, 0U);
    EXPECT_EQ(0U, alignment & (alignment - 1));
    EXPECT_EQ(0U, buffer_info(announce(stream), zv_buffer_address) % alignment);
}

} // namespace
