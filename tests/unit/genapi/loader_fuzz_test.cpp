#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "unit/genapi/ElementMutator.h"
#include "unit/genapi/Mutator.h"
#include "unit/genapi/try_description.h"

namespace zvgenapi {

namespace {

/// Of the rounds; with sanitizers each takes many times as long.
#ifdef ZV_SANITIZED
constexpr int part = 5;
#else
constexpr int part = 1;
#endif

std::string contents_of(const std::string& file)
{
    std::ifstream stream(std::string(ZV_PROJECT) + "/" + file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_FALSE(bytes.empty()) << file;
    return bytes;
}

const std::vector<std::string_view> pieces = {"<Integer Name=\"I\">",
                                              "</Integer>",
                                              "<pValue>I</pValue>",
                                              "<",
                                              ">",
                                              "/>",
                                              "</",
                                              "<!--",
                                              "-->",
                                              "<![CDATA[",
                                              "]]>",
                                              "&amp;",
                                              "&#0;",
                                              "&lt;",
                                              "&unknown;",
                                              "<!DOCTYPE a [",
                                              "<!ENTITY b \"b\">",
                                              "]>",
                                              "<?xml",
                                              "?>",
                                              "\"",
                                              "xmlns=\"\"",
                                              "<Group>",
                                              "</Group>",
                                              "Name=\"",
                                              "\xFF\xFE",
                                              "\xC0\x80"};

/// Mutates the description `rounds` times; whether it stays readable is up to chance.
void mutate_bytes(const std::string& description, unsigned int seed, int rounds)
{
    Mutator mutator(seed, pieces);
    EXPECT_TRUE(try_description(description));
    for (int i = 0; i < rounds / part; ++i)
        try_description(mutator.mutate(description, description));
}

TEST(LoaderFuzz, XmlWithOtherBytes)
{
    mutate_bytes(contents_of("src/resources/ZV_SystemGenTL.xml"), 1, 10'000);
}

TEST(LoaderFuzz, ArchivesWithOtherBytes)
{
    mutate_bytes(contents_of("src/resources/ZV_BufferGenTL.zip"), 2, 10'000);
}

void mutate_elements(const std::string& file, unsigned int seed, int rounds)
{
    ElementMutator mutator(seed, contents_of(file));
    int loaded = 0;
    for (int i = 0; i < rounds / part; ++i)
        loaded += try_description(mutator.mutate()) ? 1 : 0;
    EXPECT_GT(loaded, rounds / part / 2) << "well-formed descriptions can be loaded, most of the time";
}

TEST(LoaderFuzz, CamerasWithOtherElements) { mutate_elements("simulator/features/camera.xml", 3, 300); }

TEST(LoaderFuzz, GrabbersWithOtherElements) { mutate_elements("simulator/features/grabber.xml", 4, 600); }

} // namespace

} // namespace zvgenapi
