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

TEST_F(SystemModuleTest, ListsNothingForANegativeCount)
{
    system.init_Interfaces(2);
    system.init_Interfaces(-1);
    EXPECT_EQ(0, system.get_InterfaceCount());
    EXPECT_EQ(nullptr, system.get_Interface(0));
}

TEST_F(SystemModuleTest, ServesOnlyItsDescription)
{
    EXPECT_EQ("Local:ZV_SystemGenTL.xml;88888888;d3f", system.get_Url());
    expect_description(system, "SystemModule", "<?xml", 3391);
}

} // namespace

} // namespace zvtest
