#include <gmock/gmock.h>

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

TEST(PortUrl, HasNameAddressAndLengthInHexadecimal)
{
    const struct {
        const char* url;
        const char* file_name;
        std::uint64_t address;
        std::size_t length;
    } cases[] = {
        {"Local:ZV_BufferGenTL.zip;0;280", "ZV_BufferGenTL.zip", 0, 640},
        {"local:a.xml;C0FFEE00aBcD;1f0", "a.xml", 0xC0FFEE00ABCD, 0x1F0},
        {"Local:a.xml;0x10;0X20", "a.xml", 0x10, 0x20},
        {"Local:a.xml;0;D3F?SchemaVersion=1.1.0", "a.xml", 0, 0xD3F},
        {"Local:///a.xml;10;20", "a.xml", 0x10, 0x20},
        {"Local:a.xml;FFFFFFFFFFFFFFF0;10", "a.xml", 0xFFFFFFFFFFFFFFF0, 0x10},
        {"Local:a.xml;0;4000000", "a.xml", 0, std::size_t{64} << 20U},
    };
    for (const auto& row : cases) {
        EXPECT_THAT(parse_port_url(row.url), testing::FieldsAre(row.file_name, row.address, row.length))
            << row.url;
    }
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
        {"Local:a.xml;FFFFFFFFFFFFFFF0;11", "beyond the last address"},
        {"Local:a.xml;0;4000001", "above the limit of 64 MiB"},
    };
    for (const auto& [url, reason] : cases)
        EXPECT_THAT(refusal_of(url), HasSubstr(reason)) << url;
}

TEST(PortUrl, IsShownOnOneLineOfBoundedLength)
{
    const std::string refusal = refusal_of("Local:\n\x1B[2J" + std::string(100000, 'x'));
    EXPECT_EQ(std::string::npos, refusal.find_first_of("\n\x1B"));
    EXPECT_GT(500U, refusal.size());
}

} // namespace zvgentl::test
