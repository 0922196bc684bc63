#include "api/device_rows.h"
#include "api/lines.h"

namespace zvtest {

namespace {

class IFGetInfo : public OpenInterface {
protected:
    template <class T = std::string>
    Info<T> ask(INTERFACE_INFO_CMD command, size_t room = default_room)
    {
        forget();
        return query<T>(room, [&](auto... out) { return GenTL::IFGetInfo(iface, command, out...); });
    }
    static ExpectedLine enter(INTERFACE_INFO_CMD command)
    {
        return info_line("Enter IFGetInfo info= " + std::to_string(command) + " ");
    }
    ExpectedLine exit(INTERFACE_INFO_CMD command) const
    {
        return info_line("Exit IFGetInfo fgHandle=" + low_hex(fake.grabber_handle(0)) +
                         ", info= " + std::to_string(command) + " ");
    }
};

TEST_F(IFGetInfo, AnswersTheID)
{
    const auto id = ask(INTERFACE_INFO_ID);
    EXPECT_EQ(GC_ERR_SUCCESS, id.code);
    EXPECT_EQ(INFO_DATATYPE_STRING, id.type);
    EXPECT_EQ("FG0", id.value);
    EXPECT_EQ(4U, id.size);
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_LOG_LINES(enter(0), exit(0));
}

TEST_F(IFGetInfo, AnswersTheDisplayName)
{
    fake.grabber(0).is_named("Left grabber");
    const auto name = ask(INTERFACE_INFO_DISPLAYNAME);
    EXPECT_EQ(INFO_DATATYPE_STRING, name.type);
    EXPECT_EQ("Left grabber", name.value);
    EXPECT_EQ((Calls{call("ZV_DeviceDisplayName", 0)}), fake.calls());
    EXPECT_LOG_LINES(enter(1), exit(1));
}

TEST_F(IFGetInfo, AnswersTheTransportType)
{
    for (const Protocol& row : protocols) {
        fake.grabber(0).has_protocol(row.number);
        const auto type = ask(INTERFACE_INFO_TLTYPE);
        EXPECT_EQ(INFO_DATATYPE_STRING, type.type);
        EXPECT_EQ(row.transport_type, type.value);
        EXPECT_EQ((Calls{call("ZV_DeviceInfo", 0, 3)}), fake.calls());
    }
}

TEST_F(IFGetInfo, AsksForTheGrabberAtItsOwnIndex)
{
    fake.has_grabbers(4);
    fake.grabber(2).is_named("third").has_protocol(2);
    ASSERT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(tl, nullptr, 0));
    iface = open_interface("FG2");
    EXPECT_EQ("third", ask(INTERFACE_INFO_DISPLAYNAME).value);
    EXPECT_EQ("GEV", ask(INTERFACE_INFO_TLTYPE).value);
}

TEST_F(IFGetInfo, AnswersTheSizeAlone)
{
    for (void* nowhere : {static_cast<void*>(nullptr), all_ones<void*>()}) {
        forget();
        INFO_DATATYPE type = 0;
        size_t size = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::IFGetInfo(iface, INTERFACE_INFO_ID, &type, nowhere, &size));
        EXPECT_EQ(INFO_DATATYPE_STRING, type);
        EXPECT_EQ(4U, size);
        EXPECT_LOG_LINES(enter(0), exit(0));
    }
}

TEST_F(IFGetInfo, CopiesTheBeginningOfAText)
{
    const auto id = ask(INTERFACE_INFO_ID, 2);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, id.code);
    EXPECT_EQ(INFO_DATATYPE_STRING, id.type);
    EXPECT_EQ(2U, id.size);
    const std::string text =
        "IFGetInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (2/4)";
    EXPECT_LOG_LINES(enter(0), error_line(text), text_failed_with(GC_ERR_BUFFER_TOO_SMALL));
    EXPECT_EQ(text, last_error());
}

TEST_F(IFGetInfo, CopiesATextWithoutItsTerminator)
{
    const auto id = ask(INTERFACE_INFO_ID, 3);
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, id.code);
    EXPECT_EQ(3U, id.size);
    EXPECT_EQ("IFGetInfo - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL termination (3/4)",
              last_error());
}

TEST_F(IFGetInfo, RefusesUnknownCommands)
{
    for (const INTERFACE_INFO_CMD command : {3, 4, 1000, -1}) {
        const auto answer = ask<uint32_t>(command);
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, answer.code);
        EXPECT_TRUE(is_untouched(answer.type));
        EXPECT_EQ(0U, answer.size);
        EXPECT_LOG_LINES(enter(command), error_line("info= " + std::to_string(command)),
                         FAILED_WITH(GC_ERR_NOT_IMPLEMENTED));
    }
}

TEST_F(IFGetInfo, RefusesABufferOfNoSizeBeforeTheHandle)
{
    for (IF_HANDLE handle : {iface, IF_HANDLE{nullptr}}) {
        forget();
        INFO_DATATYPE type = untouched<INFO_DATATYPE>();
        char byte = 0;
        size_t size = 0;
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GenTL::IFGetInfo(handle, 3, &type, &byte, &size));
        EXPECT_TRUE(is_untouched(type));
        EXPECT_LOG_LINES(enter(3), FAILED_WITH(GC_ERR_INVALID_PARAMETER));
    }
}

class IFGetDeviceInfo : public OpenInterface {
protected:
    void SetUp() override
    {
        OpenInterface::SetUp();
        describe_camera(fake);
        ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
        forget();
    }
    template <class T = std::string>
    Info<T> ask(DEVICE_INFO_CMD command, size_t room = default_room, const char* id = "Device00")
    {
        forget();
        return query<T>(room,
                        [&](auto... out) { return GenTL::IFGetDeviceInfo(iface, id, command, out...); });
    }
    ExpectedLine enter(DEVICE_INFO_CMD command) const
    {
        return info_line("Enter IFGetDeviceInfo handle=0x" + hex16(iface) +
                         ", info=" + std::to_string(command) + " ");
    }
    static ExpectedLine exit(int device, DEVICE_INFO_CMD command)
    {
        return info_line("Exit IFGetDeviceInfo, device id=" + std::to_string(device) +
                         ", info= " + std::to_string(command) + " ");
    }
};

TEST_F(IFGetDeviceInfo, AnswersTextsOfADeviceThatIsNotOpen)
{
    for (const DeviceText& row : device_texts) {
        SCOPED_TRACE(row.command);
        const auto answer = ask(row.command);
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(row.text, answer.value);
        EXPECT_EQ(answer.value.size() + 1, answer.size);
        EXPECT_EQ(0U, fake.count("ZVGR_CameraInfo2")) << "the record is kept";
        EXPECT_LOG_LINES(enter(row.command), exit(0, row.command));
    }
}

TEST_F(IFGetDeviceInfo, AnswersTheSizesOfItsTexts)
{
    for (const DeviceText& row : device_texts) {
        const auto answer = size_query(
            [&](auto... out) { return GenTL::IFGetDeviceInfo(iface, "Device00", row.command, out...); });
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(std::string(row.text).size() + 1, answer.size);
    }
}

TEST_F(IFGetDeviceInfo, AnswersItsNumbers)
{
    const auto access = ask<int32_t>(DEVICE_INFO_ACCESS_STATUS);
    EXPECT_EQ(GC_ERR_SUCCESS, access.code);
    EXPECT_EQ(INFO_DATATYPE_INT32, access.type);
    EXPECT_EQ(DEVICE_ACCESS_STATUS_READWRITE, access.value);
    EXPECT_EQ(4U, access.size);
    EXPECT_LOG_LINES(enter(5), exit(0, 5));

    const auto frequency = ask<uint64_t>(DEVICE_INFO_TIMESTAMP_FREQUENCY);
    EXPECT_EQ(GC_ERR_SUCCESS, frequency.code);
    EXPECT_EQ(INFO_DATATYPE_UINT64, frequency.type);
    EXPECT_EQ(25000000U, frequency.value);
    EXPECT_EQ(8U, frequency.size);
    EXPECT_LOG_LINES(enter(9), exit(0, 9));
}

TEST_F(IFGetDeviceInfo, AnswersFullAccessToAnOpenDevice)
{
    open_device(iface, "Device00");
    EXPECT_EQ(DEVICE_ACCESS_STATUS_READWRITE, ask<int32_t>(DEVICE_INFO_ACCESS_STATUS).value);
}

TEST_F(IFGetDeviceInfo, LogsAndAnswersTheSizeThatANumberNeeds)
{
    const std::string before = last_error();
    const auto access = ask<int32_t>(DEVICE_INFO_ACCESS_STATUS, 3);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, access.code);
    EXPECT_EQ(INFO_DATATYPE_INT32, access.type);
    EXPECT_EQ(4U, access.size);
    EXPECT_EQ(0xA5, access.bytes[0]);
    EXPECT_LOG_LINES(enter(5), error_line("info= 5, size=3(expected=4)"),
                     FAILED_WITH(GC_ERR_BUFFER_TOO_SMALL));

    const auto frequency = ask<uint64_t>(DEVICE_INFO_TIMESTAMP_FREQUENCY, 4);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, frequency.code);
    EXPECT_EQ(INFO_DATATYPE_UINT64, frequency.type);
    EXPECT_EQ(8U, frequency.size);
    EXPECT_LOG_LINES(enter(9), error_line("info= 9, size=4(expected=8)"),
                     FAILED_WITH(GC_ERR_BUFFER_TOO_SMALL));
    EXPECT_EQ(before, last_error());
}

TEST_F(IFGetDeviceInfo, AnswersTheTransportTypeOfTheGrabber)
{
    for (const Protocol& row : protocols) {
        fake.grabber(0).has_protocol(row.number);
        EXPECT_EQ(row.transport_type, ask(DEVICE_INFO_TLTYPE).value);
        EXPECT_EQ((Calls{call("ZV_DeviceInfo", 0, 3)}), fake.calls());
    }
}

TEST_F(IFGetDeviceInfo, NamesTheDeviceByItsIndexInTheExitLine)
{
    fake.grabber(0).has_cameras(3);
    fake.grabber(0).camera(2).model("third");
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    EXPECT_EQ("third", ask(DEVICE_INFO_MODEL, default_room, "Device02").value);
    EXPECT_LOG_LINES(enter(2), exit(2, 2));
}

TEST_F(IFGetDeviceInfo, ReadsFieldsWithinTheirBounds)
{
    const std::string whole(65, 'x'); // no terminator
    fake.grabber(0).has_cameras(2);
    fake.grabber(0).camera(1).vendor(whole).model(whole).serial(whole).version(whole);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    for (const DeviceText& row : device_texts) {
        if (row.is_from_record) {
            EXPECT_EQ(whole, ask(row.command, default_room, "Device01").value);
        }
    }
}

TEST_F(IFGetDeviceInfo, ReportsEmptyTextsAfterDevClose)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(open_device(iface, "Device00")));
    for (const bool is_open_again : {false, true}) {
        if (is_open_again)
            open_device(iface, "Device00");
        for (const DeviceText& row : device_texts) {
            const auto answer = ask(row.command);
            EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
            EXPECT_EQ(row.is_from_record ? "" : row.text, answer.value);
        }
    }
}

TEST_F(IFGetDeviceInfo, KnowsTheCameraAgainAfterARebuild)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(open_device(iface, "Device00")));
    fake.grabber(0).has_cameras(2);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    EXPECT_EQ("Model X", ask(DEVICE_INFO_MODEL).value);
}

TEST_F(IFGetDeviceInfo, RefusesUnknownIDsBeforeUnknownCommands)
{
    const std::string before = last_error();
    for (const char* id :
         {"", "Device", "Device0", "Device000", "device00", "Device00 ", "Device01", "FG0"}) {
        for (const DEVICE_INFO_CMD command : {0, 10}) {
            const auto answer = ask<uint32_t>(command, 4, id);
            EXPECT_EQ(GC_ERR_INVALID_ID, answer.code);
            EXPECT_TRUE(is_untouched(answer.type));
            EXPECT_EQ(4U, answer.size);
            EXPECT_LOG_LINES(enter(command), error_line(std::string("Invalid device Id ") + id),
                             FAILED_WITH(GC_ERR_INVALID_ID));
        }
    }
    EXPECT_EQ(before, last_error());
}

TEST_F(IFGetDeviceInfo, RefusesIDsOfAnEarlierList)
{
    fake.grabber(0).has_cameras(2);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    fake.grabber(0).has_cameras(1);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    EXPECT_EQ(GC_ERR_INVALID_ID, ask(DEVICE_INFO_ID, default_room, "Device01").code);
}

TEST_F(IFGetDeviceInfo, RefusesUnknownCommands)
{
    for (const DEVICE_INFO_CMD command : unknown_device_commands) {
        const auto answer = ask<uint32_t>(command);
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, answer.code);
        EXPECT_TRUE(is_untouched(answer.type));
        EXPECT_EQ(0U, answer.size);
        EXPECT_LOG_LINES(enter(command), error_line("info= " + std::to_string(command)),
                         FAILED_WITH(GC_ERR_NOT_IMPLEMENTED));
    }
}

TEST_F(IFGetDeviceInfo, CopiesTheBeginningOfAText)
{
    const auto model = ask(DEVICE_INFO_MODEL, 5);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, model.code);
    EXPECT_EQ(5U, model.size);
    EXPECT_EQ(0, std::memcmp("Model", model.bytes.data(), 5));
    const std::string text =
        "IFGetDeviceInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (5/8)";
    EXPECT_LOG_LINES(enter(2), error_line(text), text_failed_with(GC_ERR_BUFFER_TOO_SMALL));
    EXPECT_EQ(text, last_error());
}

TEST_F(IFGetDeviceInfo, RefusesABufferOfNoSizeBeforeTheHandle)
{
    for (IF_HANDLE handle : {iface, IF_HANDLE{nullptr}}) {
        forget();
        INFO_DATATYPE type = untouched<INFO_DATATYPE>();
        char byte = 0;
        size_t size = 0;
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER,
                  GenTL::IFGetDeviceInfo(handle, "Device00", DEVICE_INFO_ID, &type, &byte, &size));
        EXPECT_TRUE(is_untouched(type));
        EXPECT_EQ("Exit, Returning error GC_ERR_INVALID_PARAMETER (0xFFFFFC0F)", logged_messages().back());
    }
}

TEST_F(IFGetDeviceInfo, TakesABufferWithAllBitsSetAsASizeQuery)
{
    INFO_DATATYPE type = 0;
    size_t size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS,
              GenTL::IFGetDeviceInfo(iface, "Device00", DEVICE_INFO_ID, &type, all_ones<void*>(), &size));
    EXPECT_EQ(9U, size);
}

} // namespace

} // namespace zvtest
