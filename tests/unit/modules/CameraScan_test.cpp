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

TEST_F(CameraScanTest, FindsSixteenCamerasAtMost)
{
    fake.grabber(0).has_cameras(17);
    EXPECT_TRUE(found.find_cameras(grabber()));
    EXPECT_EQ(16U, found.count());
    EXPECT_THROW(found.handle(16), std::out_of_range);
    EXPECT_THROW(found.identity(16), std::out_of_range);
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

} // namespace

} // namespace zvtest
