#include <string>

#include "unit/modules/Module_fixtures.h"

namespace zvtest {

namespace {

using zvgentl::InterfaceModule;
using zvgentl::SystemModule;

class SystemModuleTest : public EmptySystem {};

TEST_F(SystemModuleTest, StartsWithAnEmptyList)
{
    EXPECT_EQ("System0", system.getId());
    EXPECT_EQ(0, system.get_InterfaceCount());
    EXPECT_EQ(nullptr, system.get_Interface(0));
    EXPECT_EQ(nullptr, system.find_Interface("FG0"));
    EXPECT_EQ(-1, system.get_InterfaceIndex(nullptr));
}

TEST_F(SystemModuleTest, ListsClosedInterfacesWithoutACall)
{
    system.init_Interfaces(12);
    ASSERT_EQ(12, system.get_InterfaceCount());
    for (uint32_t i = 0; i < 12; ++i) {
        const InterfaceModule* const iface = system.get_Interface(i);
        ASSERT_NE(nullptr, iface);
        EXPECT_EQ("FG" + std::to_string(i), iface->getId());
        EXPECT_FALSE(iface->is_Open());
        EXPECT_EQ(&system, &iface->get_Parent());
        EXPECT_EQ(static_cast<int32_t>(i), system.get_InterfaceIndex(iface));
        EXPECT_EQ(iface, system.find_Interface(iface->getId()));
    }
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_TRUE(settings.reads().empty());
}

TEST_F(SystemModuleTest, ReadsIndexesAsSigned)
{
    system.init_Interfaces(2);
    for (uint32_t index : {2U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(nullptr, system.get_Interface(index));
}

TEST_F(SystemModuleTest, FindsWholeIDsOnly)
{
    system.init_Interfaces(11);
    for (const char* id : {"", "FG", "fg0", "FG00", "FG1 ", "FG11", "0"})
        EXPECT_EQ(nullptr, system.find_Interface(id)) << id;
    EXPECT_EQ(system.get_Interface(1), system.find_Interface("FG1"));
    EXPECT_EQ(system.get_Interface(10), system.find_Interface("FG10"));
}

TEST_F(SystemModuleTest, ListsNothingForANegativeCount)
{
    system.init_Interfaces(2);
    system.init_Interfaces(-1);
    EXPECT_EQ(0, system.get_InterfaceCount());
    EXPECT_EQ(nullptr, system.get_Interface(0));
}

TEST_F(SystemModuleTest, ClosesOpenGrabbersInOrderWhenTheListIsRebuilt)
{
    fake.has_grabbers(3);
    system.init_Interfaces(3);
    ASSERT_TRUE(system.get_Interface(2)->open_Grabber());
    ASSERT_TRUE(system.get_Interface(0)->open_Grabber());
    const uint32_t third = system.get_Interface(2)->get_GrabberHandle();
    const uint32_t first = system.get_Interface(0)->get_GrabberHandle();
    forget();
    system.init_Interfaces(3);
    EXPECT_EQ((Calls{call("ZVGR_Close", first), call("ZVGR_Close", third)}), fake.calls());
    EXPECT_FALSE(system.get_Interface(0)->is_Open());
}

TEST_F(SystemModuleTest, ServesItsDescriptionAlone)
{
    EXPECT_EQ("Local:ZV_SystemGenTL.xml;88888888;d3f", system.get_Url());
    expect_description(system, "SystemModule", "<?xml", 3391);
}

TEST_F(SystemModuleTest, ClosesOpenGrabbersWhenItIsDestroyed)
{
    auto other = std::make_unique<SystemModule>();
    other->init_Interfaces(1);
    ASSERT_TRUE(other->get_Interface(0)->open_Grabber());
    forget();
    other.reset();
    EXPECT_EQ(1U, fake.calls().size());
    EXPECT_EQ(0U, fake.open_grabbers());
}

} // namespace

} // namespace zvtest
