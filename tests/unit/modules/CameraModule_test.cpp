#include <cstring>

#include "unit/modules/Module_fixtures.h"

namespace zvtest {

namespace {

using zvgentl::CameraModule;

bool is_zeroed(const ZvCameraInfo& info)
{
    const ZvCameraInfo zeros{};
    return std::memcmp(&info, &zeros, sizeof info) == 0;
}

/// A camera that no interface lists.
class CameraModuleTest : public OneGrabber {
protected:
    void SetUp() override
    {
        OneGrabber::SetUp();
        fake.grabber(0).has_cameras(1).camera(0).model("Model X");
        const auto found = scan();
        camera = std::make_unique<CameraModule>(&iface(), "Camera00");
        camera->init_Camera(found.handle(0), found.identity(0));
        forget();
    }
    void TearDown() override
    {
        camera.reset();
        OneGrabber::TearDown();
    }
    uint32_t handle() { return fake.camera_handle(0, 0); }

    std::unique_ptr<CameraModule> camera;
};

TEST_F(CameraModuleTest, StartsClosedWithHandleZeroAndTakesOverHandleAndIdentity)
{
    const CameraModule fresh(&iface(), "Camera01");
    EXPECT_EQ("Camera01", fresh.getId());
    EXPECT_EQ(&iface(), fresh.get_Parent());
    EXPECT_FALSE(fresh.is_Open());
    EXPECT_EQ(0U, fresh.get_CameraHandle());
    EXPECT_EQ(handle(), camera->get_CameraHandle());
    EXPECT_STREQ("Model X", camera->get_CameraInfo().model_name);
}

TEST_F(CameraModuleTest, ClosesItsStreamAndWipesItsIdentityWhenItIsMarkedClosed)
{
    camera->mark_open();
    ASSERT_TRUE(camera->open_Stream(0));
    const uint32_t stream = fake.last_stream();
    forget();
    camera->mark_closed_and_wipe();
    EXPECT_EQ((Calls{call("ZVGR_StreamDelete", stream)}), fake.calls());
    EXPECT_FALSE(camera->is_Open());
    EXPECT_FALSE(camera->get_Stream(0)->is_Open());
    EXPECT_TRUE(is_zeroed(camera->get_CameraInfo()));
    EXPECT_EQ(handle(), camera->get_CameraHandle()) << "it can be opened again";
}

TEST_F(CameraModuleTest, HasOneStreamAtEveryIndexBelowOne)
{
    EXPECT_EQ(1U, camera->get_StreamAmount());
    ASSERT_NE(nullptr, camera->get_Stream(0));
    EXPECT_EQ(camera->get_Stream(0), camera->get_Stream(-1));
    EXPECT_EQ(camera->get_Stream(0), camera->get_Stream(INT32_MIN));
    EXPECT_EQ(nullptr, camera->get_Stream(1));
    EXPECT_EQ(nullptr, camera->get_Stream(INT32_MAX));
    EXPECT_FALSE(camera->get_Stream(0)->is_Open());
    EXPECT_TRUE(camera->is_Stream(camera->get_Stream(0)));
    EXPECT_FALSE(camera->is_Stream(nullptr));
    EXPECT_FALSE(camera->is_Stream(camera.get()));
}

TEST_F(CameraModuleTest, MakesAQueuedStreamAtTheIndexOrACyclicOneOfFourFramesAtZero)
{
    struct Row {
        int64_t capability;
        const char* function;
        Call made;
        const char* line;
    };
    for (const Row& row :
         {Row{1, "ZVGR_StreamCreate", call("ZVGR_StreamCreate", handle(), 5), "Opening stream type=Queued"},
          Row{0, "ZVGR_StreamCreateAndAlloc", call("ZVGR_StreamCreateAndAlloc", handle(), 4, 0),
              "Opening stream type=Cyclic"}}) {
        fake.grabber_int("FW_Dma_Capable_QueuedBuffers_Imp") = row.capability;
        fake.next(row.function).answers(any_failure);
        EXPECT_FALSE(camera->open_Stream(0));
        EXPECT_FALSE(camera->get_Stream(0)->is_Open());
        EXPECT_EQ(0U, fake.count("ZVGR_CameraCallbackRegister"));
        EXPECT_EQ(0U, fake.count("ZVGR_StreamBufferCallbackRegister"));
        forget();
        EXPECT_TRUE(camera->open_Stream(5));
        EXPECT_EQ(Calls{row.made}, fake.calls_of(row.function));
        EXPECT_LOGGED(Priority::information, row.line, "CameraModule::open_Stream", "CameraModule");
        EXPECT_EQ(fake.last_stream(), camera->get_Stream(0)->get_Handle());
        camera->get_Stream(0)->close();
        forget();
    }
}

TEST_F(CameraModuleTest, ClosesAnOpenCameraAndThenItsStreamWhenItIsDestroyed)
{
    camera->mark_open();
    ASSERT_TRUE(camera->open_Stream(0));
    const uint32_t stream = fake.last_stream();
    forget();
    fake.next("ZVGR_CameraClose").answers(any_failure); // nothing can be done about it
    camera.reset();
    EXPECT_EQ((Calls{call("ZVGR_CameraClose", handle()), call("ZVGR_StreamDelete", stream)}), fake.calls());
    EXPECT_LOG_LINES();
    forget();
    CameraModule(&iface(), "Camera01"); // closed
    EXPECT_EQ(Calls{}, fake.calls());
}

} // namespace

} // namespace zvtest
