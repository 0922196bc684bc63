#include <filesystem>

#include "support/fixtures.h"

// What is special to GCGetInfo and TLGetInfo among the info queries: the producer's path.

namespace zvtest {

namespace {

class NumbersAndSizes : public OpenLibrary {};

// The size is written last.
TEST_F(NumbersAndSizes, MayShareTheirMemory)
{
    INFO_DATATYPE type = untouched<INFO_DATATYPE>();
    size_t both = sizeof both;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetInfo(TL_INFO_GENTL_VER_MINOR, &type, &both, &both));
    EXPECT_EQ(sizeof(uint32_t), both);
}

class ProducerPath : public OpenSystem {};

TEST_F(ProducerPath, NamesTheFileThatTheProducerWasLoadedFrom)
{
    const auto answer =
        query<std::string>(1024, [](auto... out) { return GCGetInfo(TL_INFO_PATHNAME, out...); });
    EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
    EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
    const std::filesystem::path path = answer.value;
    EXPECT_TRUE(path.is_absolute());
    EXPECT_TRUE(std::filesystem::is_regular_file(path)) << path;
    EXPECT_EQ(ZV_PROGRAM_NAME, path.stem()); // these tests have the producer linked in
}

TEST_F(ProducerPath, IsTheSameForTheSystem)
{
    const auto path =
        query<std::string>(1024, [](auto... out) { return GCGetInfo(TL_INFO_PATHNAME, out...); });
    const auto of_system = system_info<std::string>(TL_INFO_PATHNAME);
    EXPECT_EQ(path.value, of_system.value);
    EXPECT_EQ(path.size, of_system.size);
    EXPECT_EQ(Calls{}, fake.calls()) << "no scan is needed";
}

} // namespace

} // namespace zvtest
