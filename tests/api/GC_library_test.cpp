#include "api/lines.h"

namespace zvtest {

namespace {

class GCInitLib : public Library {};

TEST_F(GCInitLib, Initialises)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::GCInitLib());
    EXPECT_LOG_LINES(info_line("Enter GCInitLib"), info_line("Exit GCInitLib"));
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_TRUE(settings.reads().empty());
}

TEST_F(GCInitLib, IsRefusedASecondTime)
{
    GenTL::GCInitLib();
    forget();
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, GenTL::GCInitLib());
    EXPECT_LOG_LINES(info_line("Enter GCInitLib"), FAILED_WITH(GC_ERR_RESOURCE_IN_USE));
}

TEST_F(GCInitLib, LeavesAnOpenSystemAloneWhenItIsRefused)
{
    GenTL::GCInitLib();
    TL_HANDLE system = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::TLOpen(&system));
    GenTL::GCInitLib();
    uint32_t count = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, TLGetNumInterfaces(system, &count));
}

class GCCloseLib : public Library {};

TEST_F(GCCloseLib, SucceedsWithoutASystem)
{
    GenTL::GCInitLib();
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::GCCloseLib());
    EXPECT_LOG_LINES(info_line("Enter GCCloseLib"), info_line("Enter TLClose"), info_line("Exit GCCloseLib"));
}

class GCCloseLibWithEverythingOpen : public RunningQueuedStream {};

TEST_F(GCCloseLibWithEverythingOpen, ClosesOnlyTheGrabber)
{
    const uint32_t handle = grabber();
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::GCCloseLib());
    EXPECT_EQ((Calls{call("ZVGR_Close", handle)}), fake.calls());
    EXPECT_LOG_LINES(info_line("Enter GCCloseLib"), info_line("Enter TLClose"), info_line("Exit TLClose"),
                     info_line("Exit GCCloseLib"));
}

TEST_F(GCCloseLibWithEverythingOpen, LeavesNothingBehindForTheNextSession)
{
    GenTL::GCCloseLib();
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::GCInitLib());
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::TLOpen(&tl));
    iface = open_interface("FG0");
    EXPECT_EQ(0U, num_devices(iface));
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    dev = open_device(iface, "Device00");
    ds = open_stream(dev, "Stream000");
    EXPECT_EQ(0U, stream_info<size_t>(STREAM_INFO_NUM_ANNOUNCED).value);
}

/// Must run in a process where nothing has failed yet.
class GCGetLastErrorAtLoad : public OpenLibrary {};

TEST_F(GCGetLastErrorAtLoad, IsNoError)
{
    GC_ERROR code = untouched<GC_ERROR>();
    char text[64] = {};
    size_t size = sizeof text;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetLastError(&code, text, &size));
    EXPECT_STREQ("No Error", text);
    EXPECT_EQ(9U, size);
}

class GCGetLastError : public OpenLibrary {
protected:
    const std::string text{"TLUpdateInterfaceList - GC_ERR_INVALID_HANDLE: invalid system handle"};
    GC_ERROR code{untouched<GC_ERROR>()};
    std::array<char, 128> room{};

    void SetUp() override
    {
        OpenLibrary::SetUp();
        TLUpdateInterfaceList(nullptr, nullptr, 0); // records `text`
        room.fill('\xA5');
        forget();
    }
};

TEST_F(GCGetLastError, GivesTheRecordedTextWithItsTerminator)
{
    for (size_t size : {room.size(), text.size() + 1}) {
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::GCGetLastError(&code, room.data(), &size));
        EXPECT_EQ(text, room.data());
        EXPECT_EQ(text.size() + 1, size);
        EXPECT_EQ('\xA5', room[size]);
        EXPECT_LOG_LINES({Priority::debug, "Enter GCGetLastError"}, {Priority::debug, "Exit GCGetLastError"});
    }
}

TEST_F(GCGetLastError, GivesOnlyTheSizeWithoutABuffer)
{
    for (char* no_text : {static_cast<char*>(nullptr), all_ones<char*>()}) {
        forget();
        size_t size = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::GCGetLastError(&code, no_text, &size));
        EXPECT_EQ(text.size() + 1, size);
        EXPECT_LOG_LINES({Priority::debug, "Enter GCGetLastError"}, {Priority::debug, "Exit GCGetLastError"});
    }
}

TEST_F(GCGetLastError, CopiesNothingWhenTheRoomIsTooSmall)
{
    for (size_t size : {text.size(), size_t{1}, size_t{0}}) {
        forget();
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, GenTL::GCGetLastError(&code, room.data(), &size));
        EXPECT_EQ(text.size() + 1, size);
        EXPECT_EQ('\xA5', room[0]);
        EXPECT_LOG_LINES({Priority::debug, "Enter GCGetLastError"});
    }
}

TEST_F(GCGetLastError, NeverWritesTheCode)
{
    size_t size = room.size();
    GenTL::GCGetLastError(&code, room.data(), &size);
    EXPECT_TRUE(is_untouched(code));
    GenTL::GCGetLastError(&code, nullptr, &size);
    EXPECT_TRUE(is_untouched(code));
    size = 1;
    GenTL::GCGetLastError(&code, room.data(), &size);
    EXPECT_TRUE(is_untouched(code));
}

TEST_F(GCGetLastError, OutlivesSuccessesAndSessions)
{
    TL_HANDLE system = nullptr;
    GenTL::TLOpen(&system);
    EXPECT_EQ(text, last_error());
    GenTL::GCCloseLib();
    GenTL::GCInitLib();
    EXPECT_EQ(text, last_error());
}

} // namespace

} // namespace zvtest
