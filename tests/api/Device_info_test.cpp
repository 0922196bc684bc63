#include "api/lines.h"

// What is special to IFGetDeviceInfo and DevGetInfo among the info queries: which device they find, and where
// its texts come from.

namespace zvtest {

namespace {

constexpr DEVICE_INFO_CMD texts_of_the_record[] = {
    DEVICE_INFO_VENDOR,        DEVICE_INFO_MODEL,   DEVICE_INFO_DISPLAYNAME, DEVICE_INFO_USER_DEFINED_NAME,
    DEVICE_INFO_SERIAL_NUMBER, DEVICE_INFO_VERSION,
};

class IFGetDeviceInfo : public OpenInterface {
protected:
    void SetUp() override
    {
        OpenInterface::SetUp();
        fake.grabber(0).camera(0).vendor("Vendor").model("Model X").serial("SN-0042").version("1.2.3");
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
    static std::string asked_of(DEV_HANDLE dev, DEVICE_INFO_CMD command)
    {
        const auto answer =
            query<std::string>(1024, [&](auto... out) { return DevGetInfo(dev, command, out...); });
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        return answer.value;
    }
};

TEST_F(IFGetDeviceInfo, AnswersForADeviceThatIsNotOpen)
{
    EXPECT_EQ("Device00", ask(DEVICE_INFO_ID).value);
    EXPECT_EQ("SN-0042", ask(DEVICE_INFO_SERIAL_NUMBER).value);
    EXPECT_TRUE(fake.calls().empty()) << "the record is kept";
    EXPECT_EQ(DEVICE_ACCESS_STATUS_READWRITE, ask<int32_t>(DEVICE_INFO_ACCESS_STATUS).value);
    EXPECT_EQ(25000000U, ask<uint64_t>(DEVICE_INFO_TIMESTAMP_FREQUENCY).value);
}

TEST_F(IFGetDeviceInfo, ReadsFieldsWithinTheirBounds)
{
    const std::string whole(65, 'x'); // no terminator
    fake.grabber(0).has_cameras(2);
    fake.grabber(0).camera(1).vendor(whole).model(whole).serial(whole).version(whole);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    const DEV_HANDLE dev = open_device(iface, "Device01");
    for (const DEVICE_INFO_CMD command : texts_of_the_record) {
        EXPECT_EQ(whole, ask(command, default_room, "Device01").value);
        EXPECT_EQ(whole, asked_of(dev, command));
    }
}

TEST_F(IFGetDeviceInfo, ReportsEmptyTextsAfterDevClose)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(open_device(iface, "Device00")));
    for (const DEVICE_INFO_CMD command : texts_of_the_record) {
        const auto answer = ask(command);
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ("", answer.value);
        EXPECT_EQ(1U, answer.size);
    }
    EXPECT_EQ("Device00", ask(DEVICE_INFO_ID).value);
    EXPECT_EQ("CXP", ask(DEVICE_INFO_TLTYPE).value);
}

TEST_F(IFGetDeviceInfo, StillReportsEmptyTextsWhenTheDeviceIsOpenAgain)
{
    ASSERT_EQ(GC_ERR_SUCCESS, DevClose(open_device(iface, "Device00")));
    const DEV_HANDLE dev = open_device(iface, "Device00");
    for (const DEVICE_INFO_CMD command : texts_of_the_record) {
        EXPECT_EQ("", ask(command).value);
        EXPECT_EQ("", asked_of(dev, command));
    }
    EXPECT_EQ("Device00", asked_of(dev, DEVICE_INFO_ID));
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
            EXPECT_LOG_LINES(info_line("Enter IFGetDeviceInfo handle=0x" + hex16(iface) +
                                       ", info=" + std::to_string(command) + " "),
                             error_line(std::string("Invalid device Id ") + id),
                             FAILED_WITH(GC_ERR_INVALID_ID));
        }
    }
    EXPECT_EQ(before, last_error());
}

TEST_F(IFGetDeviceInfo, RefusesIDsOfAnEarlierList)
{
    for (const uint32_t cameras : {2U, 1U}) {
        fake.grabber(0).has_cameras(cameras);
        ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    }
    EXPECT_EQ(GC_ERR_INVALID_ID, ask(DEVICE_INFO_ID, default_room, "Device01").code);
}

} // namespace

} // namespace zvtest
