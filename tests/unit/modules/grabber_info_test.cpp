#include <tuple>

#include "modules/grabber_info.h"
#include "unit/modules/Module_fixtures.h"

namespace zvtest {

namespace {

using namespace zvgentl;

class GrabberInfo : public EmptySystem {
protected:
    void SetUp() override
    {
        EmptySystem::SetUp();
        fake.has_grabbers(3);
        system.init_Interfaces(3);
    }
};

TEST_F(GrabberInfo, GivesTheNameAtThePositionOrNone)
{
    fake.grabber(2).is_named("third");
    EXPECT_EQ("third", display_name_of(*system.get_Interface(2)));
    EXPECT_EQ((Calls{zvtest::call("ZV_DeviceDisplayName", 2)}), fake.calls());
    fake.next("ZV_DeviceDisplayName").answers_pointer(nullptr);
    EXPECT_EQ("", display_name_of(*system.get_Interface(0)));
}

TEST_F(GrabberInfo, NamesTheProtocolAtThePosition)
{
    for (const auto& [protocol, name] :
         {std::pair{0U, "CXP"}, {1U, "CLHS"}, {2U, "GEV"}, {3U, "CXP"}, {0xFFFFFFFFU, "CXP"}}) {
        fake.grabber(1).has_protocol(protocol);
        fake.clear_calls();
        EXPECT_STREQ(name, transport_type_of(*system.get_Interface(1)));
        EXPECT_EQ((Calls{zvtest::call("ZV_DeviceInfo", 1, 3)}), fake.calls());
    }
}

TEST_F(GrabberInfo, AsksForPositionMinusOneOnceAnInterfaceLeftTheList)
{
    const InterfaceModule unlisted(system, "FG9");
    fake.next("ZV_DeviceInfo").answers(any_failure);
    EXPECT_STREQ("CXP", transport_type_of(unlisted));
    EXPECT_EQ((Calls{zvtest::call("ZV_DeviceInfo", 0xFFFFFFFF, 3)}), fake.calls());
}

class GrabberScan : public Doubles {};

TEST_F(GrabberScan, HidesTheLastOfSeveralGrabbersUnlessASettingExposesIt)
{
    for (const auto& [found, listed, exposed] :
         {std::tuple{0U, 0, 0}, {1U, 1, 1}, {2U, 1, 2}, {3U, 2, 3}, {20U, 19, 20}}) {
        fake.has_grabbers(found);
        settings.set("GenTL.Interface.ExposeDemoGrabber", 0);
        EXPECT_EQ(listed, scan_for_grabbers()) << found;
        settings.set("GenTL.Interface.ExposeDemoGrabber", 1);
        EXPECT_EQ(exposed, scan_for_grabbers()) << found;
    }
}

TEST_F(GrabberScan, ReadsTheSettingAlsoWithoutGrabbers)
{
    fake.has_grabbers(0);
    scan_for_grabbers();
    EXPECT_EQ((std::vector<SettingsRead>{plain_read("GenTL.Interface.ExposeDemoGrabber", 0)}),
              settings.reads());
}

TEST_F(GrabberScan, IgnoresTheStatus)
{
    fake.has_grabbers(1);
    fake.next("ZV_DeviceScan").answers_after_effect(any_failure);
    EXPECT_EQ(1, scan_for_grabbers());
    fake.next("ZV_DeviceScan").answers(zv_success); // writes nothing
    EXPECT_EQ(0, scan_for_grabbers());
}

TEST_F(GrabberScan, ReadsTheCountAsSigned)
{
    fake.next("ZV_DeviceScan").gives(0xFFFFFFFE);
    EXPECT_EQ(-2, scan_for_grabbers());
}

TEST(GrabberStatus, KnowsOneSuccess)
{
    EXPECT_TRUE(succeeded(0x3000));
    for (uint32_t status : {0U, 1U, 0x2FFFU, 0x3001U, 0xFFFFFFFFU})
        EXPECT_FALSE(succeeded(status));
}

TEST(GrabberStatus, ReplacesValuesThatAreNotAvailable)
{
    EXPECT_EQ(5, value_or(0x7FFFFFFFFFFFFFFF, 5));
    EXPECT_EQ(0, value_or(0, 5));
    EXPECT_EQ(-1, value_or(-1, 5));
}

} // namespace

} // namespace zvtest
