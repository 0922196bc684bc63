#include <string>
#include <utility>

#include "port/Port.h"
#include "support/pointers.h"
#include "unit/port/Port_fixtures.h"

namespace zvtest {

namespace {

using zvgentl::ModuleKind;
using zvgentl::PinnedBuffer;
using zvgentl::Port;

TEST_F(PortTree, HasAPortOfEachKind)
{
    const std::vector<Port> all = ports();
    for (size_t i = 0; i < all.size(); ++i) {
        EXPECT_TRUE(all[i]);
        EXPECT_EQ(static_cast<ModuleKind>(i + 1), all[i].kind());
        EXPECT_STREQ(handle_type_name(all[i].kind()), all[i].kind_name());
    }
}

TEST_F(PortTree, NamesPortsAfterTheirModules)
{
    std::vector<std::string> ids;
    for (const Port& port : ports())
        ids.push_back(port.getId());
    EXPECT_EQ((std::vector<std::string>{"System0", "FG0", "Device01", "Stream010",
                                        "Buffer0x" + hex(buffer()->get_GrabberHandle()), "Camera01"}),
              ids);
}

TEST_F(PortTree, MovesPorts)
{
    Port first(buffer());
    const Port second(std::move(first));
    EXPECT_EQ(ModuleKind::buffer, second.kind());
    EXPECT_EQ("Buffer0x" + hex(buffer()->get_GrabberHandle()), second.getId());
}

TEST(Port, IsNoneByDefault)
{
    const Port none;
    EXPECT_FALSE(none);
    EXPECT_EQ(ModuleKind::invalid, none.kind());
    EXPECT_STREQ("Invalid handle", none.kind_name());
    EXPECT_EQ("", none.getId());
}

TEST(Port, IsNoneForABufferThatWasNotFound) { EXPECT_FALSE(Port(PinnedBuffer())); }

} // namespace

} // namespace zvtest
