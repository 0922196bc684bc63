#include <fstream>
#include <iterator>
#include <string>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

namespace {

std::string content_of(const std::string& file)
{
    std::ifstream stream(ZV_PROJECT "/" + file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    for (std::size_t at = 0; file.find(".xml") != std::string::npos && at != std::string::npos;) {
        at = text.find('@', at); // a place that the software grabbers fill in
        if (at != std::string::npos)
            text.replace(at, text.find('@', at + 1) + 1 - at, "100");
    }
    return text;
}

class OwnDescription : public testing::TestWithParam<const char*> {};

/// Every byte of it is 1.
class Ones : public Port {
public:
    void read(std::uint64_t /*address*/, void* data, std::size_t size) override
    {
        std::memset(data, 1, size);
    }
    void write(std::uint64_t /*address*/, const void* /*data*/, std::size_t /*size*/) override {}
};

} // namespace

TEST_P(OwnDescription, AnswersForEveryNode)
{
    NodeMap map = NodeMap::load(content_of(GetParam()));
    EXPECT_THAT(map.problems(), IsEmpty());
    Ones ones;
    map.connect("Device", ones);
    ASSERT_TRUE(map.root());
    for (std::size_t i = 0; i < map.size(); ++i) {
        const Node node = map.at(i);
        EXPECT_NE(AccessMode::NA, node.access()) << node.name();
        if (const auto integer = node.try_as<Integer>()) {
            integer.minimum();
            integer.maximum();
            EXPECT_LE(1, integer.increment()) << node.name();
        }
        // The numbers of entries are not what every byte being 1 gives.
        if (node.is_readable() && !node.is<Category>() && !node.is<Command>() && !node.is<PortNode>() &&
            !node.is<Enumeration>()) {
            EXPECT_NE("", node.to_string()) << node.name();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Files, OwnDescription,
                         testing::Values("simulator/features/camera.xml", "simulator/features/grabber.xml",
                                         "src/resources/ZV_SystemGenTL.xml",
                                         "src/resources/ZV_TLBufferGenTL.xml",
                                         "src/resources/ZV_BufferGenTL.zip"));

} // namespace zvgenapi::test
