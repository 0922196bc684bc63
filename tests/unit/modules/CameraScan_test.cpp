#include <cstring>
#include <stdexcept>

#include "unit/modules/Module_fixtures.h"

namespace zvtest {

namespace {

using zvgentl::CameraScan;

class CameraScanTest : public OneGrabber {
protected:
    CameraScan found;
};

TEST_F(CameraScanTest, FindsCamerasInTheOrderOfTheLibrary)
{
    fake.grabber(0).has_cameras(3);
    EXPECT_TRUE(found.find_cameras(grabber()));
    EXPECT_EQ((Calls{call("ZVGR_UpdateCameraList", grabber(), 16)}), fake.calls());
    ASSERT_EQ(3U, found.count());
    for (uint32_t i = 0; i < 3; ++i)
        EXPECT_EQ(fake.camera_handle(0, i), found.handle(i));
}

TEST_F(CameraScanTest, FindsSixteenCamerasAtMost)
{
    fake.grabber(0).has_cameras(17);
    EXPECT_TRUE(found.find_cameras(grabber()));
    EXPECT_EQ(16U, found.count());
    EXPECT_THROW(found.handle(16), std::out_of_range);
    EXPECT_THROW(found.identity(16), std::out_of_range);
}

TEST_F(CameraScanTest, FailsWithTheLibrary)
{
    fake.next("ZVGR_UpdateCameraList").answers(any_failure);
    EXPECT_FALSE(found.find_cameras(grabber()));
    EXPECT_EQ(0U, found.count());
}

TEST_F(CameraScanTest, ReadsEachIdentity)
{
    fake.grabber(0).has_cameras(2);
    fake.grabber(0).camera(0).model("first");
    fake.grabber(0).camera(1).model("second");
    ASSERT_TRUE(found.find_cameras(grabber()));
    forget();
    EXPECT_TRUE(found.read_identities());
    EXPECT_EQ(
        (Calls{call("ZVGR_CameraInfo2", found.handle(0), 0), call("ZVGR_CameraInfo2", found.handle(1), 0)}),
        fake.calls());
    EXPECT_STREQ("first", found.identity(0).model_name);
    EXPECT_STREQ("second", found.identity(1).model_name);
}

TEST_F(CameraScanTest, ZeroesTheRecordsThatTheLibraryFills)
{
    ASSERT_TRUE(found.find_cameras(grabber()));
    ASSERT_TRUE(found.read_identities());
    fake.next("ZVGR_CameraInfo2").answers(zv_success); // fills nothing
    ASSERT_TRUE(found.read_identities());
    const ZvCameraInfo zeros{};
    EXPECT_EQ(0, std::memcmp(&zeros, &found.identity(0), sizeof zeros));
}

TEST_F(CameraScanTest, StopsAtTheFirstIdentityThatTheLibraryRefuses)
{
    fake.grabber(0).has_cameras(4);
    ASSERT_TRUE(found.find_cameras(grabber()));
    fake.nth("ZVGR_CameraInfo2", 3).answers(any_failure);
    EXPECT_FALSE(found.read_identities());
    EXPECT_EQ(3U, fake.count("ZVGR_CameraInfo2"));
}

} // namespace

} // namespace zvtest
