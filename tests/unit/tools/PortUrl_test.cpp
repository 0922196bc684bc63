#include <gtest/gtest.h>

#include "genapi/FakeRegisters.h"
#include "gentl/Description.h"

namespace zvgentl::test {

using namespace tool;

namespace {

std::string refusal_of(const std::string& url)
{
    return error_of([&url] { parse_port_url(url); });
}

} // namespace

TEST(PortUrl, HasNameAddressAndLength)
{
    const PortUrl url = parse_port_url("Local:ZV_BufferGenTL.zip;0;280");
    EXPECT_EQ("ZV_BufferGenTL.zip", url.file_name);
    EXPECT_EQ(0U, url.address);
    EXPECT_EQ(640U, url.length);
}

TEST(PortUrl, WritesNumbersInHexadecimalOfEitherCase)
{
    const PortUrl url = parse_port_url("local:a.xml;C0FFEE00aBcD;1f0");
    EXPECT_EQ(0xC0FFEE00ABCDU, url.address);
    EXPECT_EQ(0x1F0U, url.length);
    EXPECT_EQ(0x10U, parse_port_url("Local:a.xml;0x10;0X20").address);
    EXPECT_EQ(0x20U, parse_port_url("Local:a.xml;0x10;0X20").length);
}

TEST(PortUrl, MayTellTheVersionOfTheSchema)
{
    EXPECT_EQ(0xD3FU, parse_port_url("Local:a.xml;0;D3F?SchemaVersion=1.1.0").length);
}

TEST(PortUrl, MayHaveSlashesBehindTheScheme)
{
    EXPECT_EQ("a.xml", parse_port_url("Local:///a.xml;10;20").file_name);
}

TEST(PortUrl, ReachesTheLastAddress)
{
    EXPECT_EQ(0xFFFFFFFFFFFFFFF0U, parse_port_url("Local:a.xml;FFFFFFFFFFFFFFF0;10").address);
    EXPECT_TRUE(contains(refusal_of("Local:a.xml;FFFFFFFFFFFFFFF0;11"), "beyond the last address"));
}

TEST(PortUrl, AllowsSixtyFourMebibytes)
{
    EXPECT_EQ(largest_description, parse_port_url("Local:a.xml;0;4000000").length);
    EXPECT_TRUE(contains(refusal_of("Local:a.xml;0;4000001"), "above the limit of 64 MiB"));
}

TEST(PortUrl, IsRefusedWithTheReason)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", "no scheme"},
        {"a.xml", "no scheme"},
        {"File:///a.xml", "file: URLs are not supported"},
        {"http://maker.example/a.xml", "http: URLs are not supported"},
        {"HTTPS://maker.example/a.xml", "https: URLs are not supported"},
        {"ftp:a.xml;0;10", "unknown scheme"},
        {"Local:", "three parts"},
        {"Local:a.xml", "three parts"},
        {"Local:a.xml;10", "three parts"},
        {"Local:a.xml;10;20;30", "three parts"},
        {"Local:;10;20", "no file name"},
        {"Local:a.xml;;20", "the address is not a hexa"},
        {"Local:a.xml;10;", "the length is not a hexa"},
        {"Local:a.xml;1G;20", "the address is not a hexa"},
        {"Local:a.xml;10; 20", "the length is not a hexa"},
        {"Local:a.xml;-1;20", "the address is not a hexa"},
        {"Local:a.xml;0x;20", "the address is not a hexa"},
        {"Local:a.xml;10000000000000000;20", "does not fit into 64 bits"},
        {"Local:a.xml;0;FFFFFFFFFFFFFFFFF", "does not fit into 64 bits"},
        {"Local:a.xml;0;FFFFFFFFFFFFFFFF", "above the limit"},
        {"Local:a.xml;10;0", "the length is 0"},
    };
    for (const auto& [url, reason] : cases)
        EXPECT_TRUE(contains(refusal_of(url), reason)) << url << " -> " << refusal_of(url);
}

TEST(PortUrl, IsShownOnOneLineOfBoundedLength)
{
    const std::string refusal = refusal_of("Local:\n\x1B[2J" + std::string(100000, 'x'));
    EXPECT_EQ(std::string::npos, refusal.find('\n'));
    EXPECT_EQ(std::string::npos, refusal.find('\x1B'));
    EXPECT_GT(500U, refusal.size());
}

} // namespace zvgentl::test
