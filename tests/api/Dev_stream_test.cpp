#include <optional>

#include "api/lines.h"

// DevGetNumDataStreams and DevOpenDataStream.

namespace zvtest {

namespace {

class DevGetNumDataStreams : public OpenDevice {};

TEST_F(DevGetNumDataStreams, AnswersOne)
{
    uint32_t count = untouched<uint32_t>();
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DevGetNumDataStreams(dev, &count));
    EXPECT_EQ(1U, count);
    EXPECT_LOG_LINES(info_line("Enter DevGetNumDataStreams, handle=0x" + hex16(dev)),
                     info_line("Exit DevGetNumDataStreams, stream amount=1"));
}

class DevOpenDataStream : public OpenDevice {
protected:
    DS_HANDLE ds{untouched<DS_HANDLE>()};

    GC_ERROR open(const char* id = "Stream000") { return GenTL::DevOpenDataStream(dev, id, &ds); }
    void offers_queued_mode(int64_t value) { fake.grabber_int("FW_Dma_Capable_QueuedBuffers_Imp") = value; }
    ExpectedLine enter(const char* id = "Stream000") const
    {
        return info_line(std::string("Enter DevOpenDataStream, sDataStreamID=") + id);
    }
    ExpectedLine exit() const
    {
        return info_line("Exit DevOpenDataStream, streamId=0 streamHandle=0x" + hex16(ds));
    }
    static ExpectedLine opening(const std::string& mode)
    {
        return {Priority::information, "Opening stream type=" + mode, "CameraModule::open_Stream",
                "CameraModule"};
    }
};

TEST_F(DevOpenDataStream, MakesAStreamAndConnectsIt)
{
    const Call capability = call("ZVGR_GetGrabberValueInt", grabber(), "FW_Dma_Capable_QueuedBuffers_Imp");
    const Call image_ids = call("ZVGR_GetGrabberValueInt", grabber(), "FW_Dma_Capable_FrameImageId_Imp");
    for (const bool is_queued : {true, false}) {
        offers_queued_mode(is_queued ? 1 : 0);
        fake.grabber_int("FW_Dma_Capable_FrameImageId_Imp") = is_queued ? 1 : -5;
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, open());
        const uint32_t made = fake.last_stream();
        const Calls queued = {capability, call("ZVGR_StreamCreate", camera(), 0), image_ids,
                              call("ZVGR_StreamBufferCallbackRegister", made, any(), ds)};
        const Calls cyclic = {capability, call("ZVGR_StreamCreateAndAlloc", camera(), 4, 0), image_ids,
                              call("ZVGR_CameraCallbackRegister", camera(), any(), ds)};
        EXPECT_EQ(is_queued ? queued : cyclic, fake.calls());

        const std::string mode = is_queued ? "Queued" : "Cyclic";
        EXPECT_LOG_LINES(enter(), opening(mode),
                         info_line("Connect callback for stream=0x" + hex(made) + ", type=" + mode),
                         info_line("Is ZV_STREAM_BUFFER_INFO_IMAGEID supported for grabber 0x" +
                                   low_hex(grabber()) + (is_queued ? ": 1" : ": -5")),
                         info_line("Successful callback connect for stream=0x" + hex(made)), exit());
        EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    }
}

TEST_F(DevOpenDataStream, ChoosesTheModeBySettingAndCapability)
{
    struct Row {
        std::optional<int64_t> capability;
        std::optional<uint32_t> setting;
        const char* mode;
    };
    constexpr uint32_t unset = 0xFFFFFFFF;
    for (const Row& row :
         {Row{std::nullopt, std::nullopt, "Cyclic"}, Row{0, std::nullopt, "Cyclic"},
          Row{1, std::nullopt, "Queued"}, Row{2, std::nullopt, "Cyclic"}, Row{-1, std::nullopt, "Cyclic"},
          Row{1, unset, "Queued"}, Row{0, unset, "Cyclic"}, Row{1, 0, "Cyclic"}, Row{0, 0, "Cyclic"},
          Row{0, 1, "Queued"}, Row{std::nullopt, 1, "Queued"}, Row{0, 7, "Queued"}}) {
        offers_queued_mode(row.capability.value_or(ZV_NOT_AVAILABLE));
        if (row.setting)
            settings.set_override("GenTL.Stream.QueuedBufferMode", *row.setting);
        else
            settings.remove("GenTL.Stream.QueuedBufferMode-Overwrite");
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, open());
        EXPECT_TRUE(logged(opening(row.mode)));
        EXPECT_EQ(1U, fake.count("ZVGR_GetGrabberValueInt") - 1) << "the capability is asked for in any case";
        EXPECT_EQ((std::vector<SettingsRead>{override_read("GenTL.Stream.QueuedBufferMode")}),
                  settings.reads());
        EXPECT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    }
    EXPECT_FALSE(settings.stored("GenTL.Stream.QueuedBufferMode"));
}

TEST_F(DevOpenDataStream, GivesTheOpenOne)
{
    ASSERT_EQ(GC_ERR_SUCCESS, open());
    const DS_HANDLE first = ds;
    ds = untouched<DS_HANDLE>();
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, open());
    EXPECT_EQ(first, ds);
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_LOG_LINES(enter(), info_line("DevOpenDataStream - GC_ERR_SUCCESS, already open, stream id=0"));
}

TEST_F(DevOpenDataStream, RefusesUnknownIDs)
{
    const std::string before = last_error();
    for (const char* id :
         {"", "Stream", "Stream0", "Stream00", "stream000", "Stream0000", "Stream000 ", "Device00"}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_ID, open(id));
        EXPECT_TRUE(is_untouched(ds));
        EXPECT_TRUE(fake.calls().empty());
        EXPECT_LOG_LINES(enter(id), error_line(std::string("Invalid stream Id ") + id),
                         FAILED_WITH(GC_ERR_INVALID_ID));
    }
    EXPECT_EQ(before, last_error());
}

TEST_F(DevOpenDataStream, RefusesAPrefixOfALongerID)
{
    fake.grabber(0).has_cameras(2);
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    dev = open_device(iface, "Device01");
    EXPECT_EQ(GC_ERR_INVALID_ID, open("Stream01"));
    EXPECT_EQ(GC_ERR_SUCCESS, open("Stream010"));
}

TEST_F(DevOpenDataStream, ReportsALibraryThatRefuses)
{
    const std::string before = last_error();
    for (const bool is_queued : {false, true}) {
        offers_queued_mode(is_queued ? 1 : 0);
        forget();
        fake.next(is_queued ? "ZVGR_StreamCreate" : "ZVGR_StreamCreateAndAlloc").answers(any_failure);
        EXPECT_EQ(GC_ERR_NOT_AVAILABLE, open());
        EXPECT_TRUE(is_untouched(ds));
        EXPECT_EQ(2U, fake.calls().size()) << "nothing is connected";
        EXPECT_LOG_LINES(enter(), opening(is_queued ? "Queued" : "Cyclic"),
                         error_line("wasn't able to allocate buffer"), FAILED_WITH(GC_ERR_NOT_AVAILABLE));
    }
    EXPECT_EQ(before, last_error());
    EXPECT_EQ(GC_ERR_SUCCESS, open()) << "the stream counts as open";
}

TEST_F(DevOpenDataStream, TakesALibrarySuccessWithoutAHandleForASuccess)
{
    offers_queued_mode(1);
    fake.allow_handle(ZV_NO_HANDLE);
    fake.next("ZVGR_StreamCreate").gives(ZV_NO_HANDLE);
    EXPECT_EQ(GC_ERR_SUCCESS, open());
    EXPECT_TRUE(logged(exit()));
    size_t announced = 0;
    INFO_DATATYPE type = 0;
    size_t size = sizeof announced;
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, DSGetInfo(ds, STREAM_INFO_NUM_ANNOUNCED, &type, &announced, &size));
    EXPECT_LOGGED(Priority::information, "DSGetInfo - GC_ERR_INVALID_HANDLE, stream is closed");
}

} // namespace

} // namespace zvtest
