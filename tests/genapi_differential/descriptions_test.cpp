#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "genapi_differential/comparison.h"
#include "genapi_differential/random_description.h"

namespace zvgenapi::differential {

namespace {

#ifdef ZV_SANITIZED
constexpr std::uint32_t random_descriptions = 400; // each takes several times as long
#else
constexpr std::uint32_t random_descriptions = 2000;
#endif

/// Without the marks of a template, whose values are attributes that nothing depends on.
std::string description_of(const std::string& file)
{
    std::ifstream stream(std::string(ZV_SOURCE_DIR) + "/" + file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    for (std::size_t start = text.find('@'); start != std::string::npos; start = text.find('@', start)) {
        const std::size_t end = text.find('@', start + 1);
        text.replace(start, end - start + 1, "1");
    }
    return text;
}

class ShippedDescription : public testing::TestWithParam<const char*> {};

TEST_P(ShippedDescription, MeansTheSameToBothLibraries)
{
    const std::string description = description_of(GetParam());
    ASSERT_FALSE(description.empty());
    for (std::uint32_t seed = 0; seed < 10 && !HasFailure(); ++seed)
        compare(description, seed, GetParam());
}

constexpr const char* shipped_descriptions[] = {
    "simulator/features/camera.xml", "simulator/features/grabber.xml", "src/resources/ZV_SystemGenTL.xml",
    "src/resources/ZV_TLBufferGenTL.xml"};
INSTANTIATE_TEST_SUITE_P(All, ShippedDescription, testing::ValuesIn(shipped_descriptions));

TEST(RandomDescriptions, MeanTheSameToBothLibraries)
{
    Comparison all;
    for (std::uint32_t seed = 0; seed < random_descriptions && all.failures < 10; ++seed) {
        const Comparison one = compare(random_description(seed), seed, "description " + std::to_string(seed));
        all.values += one.values;
        all.writes += one.writes;
        all.known += one.known;
        all.failures += one.failures;
    }
    RecordProperty("values", std::to_string(all.values));
    RecordProperty("writes", std::to_string(all.writes));
    RecordProperty("known", std::to_string(all.known));
    EXPECT_GT(all.values, 1000u * random_descriptions);
    EXPECT_GT(all.writes, 8u * random_descriptions);
}

} // namespace

} // namespace zvgenapi::differential
