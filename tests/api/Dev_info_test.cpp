#include "api/device_rows.h"
#include "api/lines.h"

namespace zvtest {

namespace {

class DevGetInfo : public OpenDevice {
protected:
    void SetUp() override
    {
        OpenInterface::SetUp();
        describe_camera(fake);
        ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
        dev = open_device(iface, "Device00");
        forget();
    }
    template <class T = std::string>
    Info<T> ask(DEVICE_INFO_CMD command, size_t room = default_room)
    {
        forget();
        return query<T>(room, [&](auto... out) { return GenTL::DevGetInfo(dev, command, out...); });
    }
    ExpectedLine enter(DEVICE_INFO_CMD command) const
    {
        return info_line("Enter DevGetInfo, handle=0x" + hex16(dev) + " info= " + std::to_string(command) +
                         " ");
    }
    static ExpectedLine exit() { return info_line("Exit DevGetInfo"); }
};

TEST_F(DevGetInfo, AnswersItsTexts)
{
    for (const DeviceText& row : device_texts) {
        SCOPED_TRACE(row.command);
        const auto answer = ask(row.command);
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(row.text, answer.value);
        EXPECT_EQ(answer.value.size() + 1, answer.size);
        EXPECT_EQ(0U, fake.count("ZVGR_CameraInfo2")) << "the record is kept";
        EXPECT_LOG_LINES(enter(row.command), exit());
    }
}

TEST_F(DevGetInfo, AnswersTheSizesOfItsTexts)
{
    for (const DeviceText& row : device_texts) {
        const auto answer =
            size_query([&](auto... out) { return GenTL::DevGetInfo(dev, row.command, out...); });
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(std::string(row.text).size() + 1, answer.size);
    }
}

TEST_F(DevGetInfo, AnswersItsNumbers)
{
    const auto access = ask<int32_t>(DEVICE_INFO_ACCESS_STATUS);
    EXPECT_EQ(GC_ERR_SUCCESS, access.code);
    EXPECT_EQ(INFO_DATATYPE_INT32, access.type);
    EXPECT_EQ(DEVICE_ACCESS_STATUS_READWRITE, access.value);
    EXPECT_EQ(4U, access.size);
    EXPECT_LOG_LINES(enter(5), exit());

    const auto frequency = ask<uint64_t>(DEVICE_INFO_TIMESTAMP_FREQUENCY);
    EXPECT_EQ(GC_ERR_SUCCESS, frequency.code);
    EXPECT_EQ(INFO_DATATYPE_UINT64, frequency.type);
    EXPECT_EQ(25000000U, frequency.value);
    EXPECT_EQ(8U, frequency.size);
    EXPECT_LOG_LINES(enter(9), exit());
}

TEST_F(DevGetInfo, AnswersTheSizesOfItsNumbers)
{
    for (const auto& [command, type, size] : {std::tuple{DEVICE_INFO_CMD{DEVICE_INFO_ACCESS_STATUS},
                                                         INFO_DATATYPE{INFO_DATATYPE_INT32}, size_t{4}},
                                              {DEVICE_INFO_TIMESTAMP_FREQUENCY, INFO_DATATYPE_UINT64, 8}}) {
        const DEVICE_INFO_CMD asked = command;
        const auto answer = size_query([&](auto... out) { return GenTL::DevGetInfo(dev, asked, out...); });
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(type, answer.type);
        EXPECT_EQ(size, answer.size);
    }
}

TEST_F(DevGetInfo, LogsAndAnswersTheSizeThatANumberNeeds)
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
    EXPECT_EQ(8U, frequency.size);
    EXPECT_LOG_LINES(enter(9), error_line("info= 9, size=4(expected=8)"),
                     FAILED_WITH(GC_ERR_BUFFER_TOO_SMALL));
    EXPECT_EQ(before, last_error());
}

TEST_F(DevGetInfo, AnswersTheTransportTypeOfTheGrabber)
{
    for (const Protocol& row : protocols) {
        fake.grabber(0).has_protocol(row.number);
        EXPECT_EQ(row.transport_type, ask(DEVICE_INFO_TLTYPE).value);
        EXPECT_EQ((Calls{call("ZV_DeviceInfo", 0, 3)}), fake.calls());
    }
}

TEST_F(DevGetInfo, ReadsFieldsWithinTheirBounds)
{
    const std::string whole(65, 'x'); // no terminator
    fake.grabber(0).has_cameras(2);
    fake.grabber(0).camera(0).vendor(whole).model(whole).serial(whole).version(whole);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    dev = open_device(iface, "Device00");
    for (const DeviceText& row : device_texts) {
        if (row.is_from_record) {
            EXPECT_EQ(whole, ask(row.command).value);
        }
    }
}

TEST_F(DevGetInfo, AnswersEmptyTextsOfADeviceThatWasOpenedAgain)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(dev));
    open_device(iface, "Device00");
    for (const DeviceText& row : device_texts) {
        const auto answer = ask(row.command);
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(row.is_from_record ? "" : row.text, answer.value);
    }
}

TEST_F(DevGetInfo, RefusesUnknownCommands)
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

TEST_F(DevGetInfo, CopiesWhatFitsOfAText)
{
    const auto model = ask(DEVICE_INFO_MODEL, 5);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, model.code);
    EXPECT_EQ(5U, model.size);
    EXPECT_EQ(0, std::memcmp("Model", model.bytes.data(), 5));
    const std::string text =
        "DevGetInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (5/8)";
    EXPECT_LOG_LINES(enter(2), error_line(text), text_failed_with(GC_ERR_BUFFER_TOO_SMALL));
    EXPECT_EQ(text, last_error());

    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, ask(DEVICE_INFO_MODEL, 7).code);
    EXPECT_EQ(
        "DevGetInfo - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL termination (7/8)",
        last_error());
}

TEST_F(DevGetInfo, RefusesABufferOfNoSizeBeforeTheHandle)
{
    for (DEV_HANDLE handle : {dev, DEV_HANDLE{nullptr}}) {
        forget();
        INFO_DATATYPE type = untouched<INFO_DATATYPE>();
        char byte = 0;
        size_t size = 0;
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GenTL::DevGetInfo(handle, 99, &type, &byte, &size));
        EXPECT_TRUE(is_untouched(type));
        EXPECT_EQ("Exit, Returning error GC_ERR_INVALID_PARAMETER (0xFFFFFC0F)", logged_messages().back());
    }
}

TEST_F(DevGetInfo, TakesABufferWithAllBitsSetAsASizeQuery)
{
    INFO_DATATYPE type = 0;
    size_t size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DevGetInfo(dev, DEVICE_INFO_ID, &type, all_ones<void*>(), &size));
    EXPECT_EQ(9U, size);
}

} // namespace

} // namespace zvtest
