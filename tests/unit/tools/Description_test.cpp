#include <memory>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <zip.h>

#include "genapi/FakeRegisters.h"
#include "gentl/Description.h"

namespace zvgentl::test {

using namespace tool;

namespace {

struct Member {
    std::string name;
    std::string text;
};

/// An archive that holds these files, packed.
std::string archive_of(const std::vector<Member>& members)
{
    zip_source_t* const memory = zip_source_buffer_create(nullptr, 0, 0, nullptr);
    zip_source_keep(memory); // survives the archive
    zip_t* const archive = zip_open_from_source(memory, ZIP_TRUNCATE, nullptr);
    if (archive == nullptr)
        throw std::runtime_error("libzip makes no archive");
    for (const auto& member : members)
        zip_file_add(archive, member.name.c_str(),
                     zip_source_buffer(archive, member.text.data(), member.text.size(), 0), 0);
    if (zip_close(archive) != 0)
        throw std::runtime_error("libzip packs nothing");
    zip_source_open(memory);
    zip_source_seek(memory, 0, SEEK_END);
    std::string bytes(static_cast<std::size_t>(zip_source_tell(memory)), '\0');
    zip_source_seek(memory, 0, SEEK_SET);
    zip_source_read(memory, bytes.data(), bytes.size());
    zip_source_close(memory);
    zip_source_free(memory);
    return bytes;
}

std::string refusal_of(const DescriptionFile& file, std::size_t limit = largest_description)
{
    return error_of([&] { unpack(file, limit); });
}

std::string refusal_of_url(const std::string& url)
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
        EXPECT_THAT(refusal_of_url(url), HasSubstr(reason)) << url;
}

TEST(PortUrl, IsShownOnOneLineOfBoundedLength)
{
    const std::string refusal = refusal_of_url("Local:\n\x1B[2J" + std::string(100000, 'x'));
    EXPECT_EQ(std::string::npos, refusal.find_first_of("\n\x1B"));
    EXPECT_GT(500U, refusal.size());
}

TEST(ReadDescription, ReadsTheWholeFileAtOnce)
{
    FakeRegisters port;
    port.bytes[0x10] = 'a';
    port.bytes[0x11] = 'b';
    EXPECT_THAT(read_description(port, {"Local:x.xml;10;2"}), testing::FieldsAre("x.xml", "ab"));
    EXPECT_EQ(1, port.reads);
}

TEST(ReadDescription, TakesTheFirstThatLiesInTheDevice)
{
    FakeRegisters port;
    port.bytes[1] = 'b';
    const std::vector<std::string> urls{"http://maker.example/a.xml", "Local:b.xml;1;1", "Local:c.xml;2;1"};
    EXPECT_EQ("b.xml", read_description(port, urls).name);
}

TEST(ReadDescription, SaysWhyNoneCanBeRead)
{
    const FakeRegisters port;
    EXPECT_THAT(error_of([&] { read_description(port, {}); }), HasSubstr("has no description"));
    EXPECT_THAT(error_of([&] {
                    read_description(port, {"File:///a.xml", "Local:b"});
                }),
                HasSubstr("file: URLs are not supported"));
}

TEST(ReadDescription, PassesOnWhatThePortSays)
{
    FakeRegisters port;
    port.refusal = "the cable is out";
    EXPECT_EQ("the cable is out", error_of([&] { read_description(port, {"Local:x.xml;10;2"}); }));
}

TEST(Unpack, UnpacksWhatIsNamedLikeAnArchiveAndPrefersItsXml)
{
    const std::string archive = archive_of({{"a.xml", "<description/>"}});
    const std::pair<DescriptionFile, std::string> cases[] = {
        {{"a.xml", std::string("<a/>\0\0\0\0", 8)}, "<a/>"}, // without the zeros behind it
        {{"a.zip", archive}, "<description/>"},
        {{"A.ZIP", archive}, "<description/>"},
        {{"a.xml", archive}, archive.substr(0, archive.find_last_not_of('\0') + 1)},
        {{"a.zip", archive_of({{"readme.txt", "no"}, {"b.XML", "<b/>"}})}, "<b/>"},
        {{"a.zip", archive_of({{"only", "<c/>"}})}, "<c/>"},
    };
    for (const auto& [file, text] : cases)
        EXPECT_EQ(text, unpack(file));
    EXPECT_THAT(refusal_of({"a.zip", archive_of({{"a.txt", "1"}, {"b.txt", "2"}})}),
                HasSubstr("no file whose name ends in .xml"));
}

TEST(Unpack, RefusesWhatUnpacksToMoreThanTheLimit)
{
    const DescriptionFile bomb{"a.zip", archive_of({{"a.xml", std::string(1U << 20U, ' ')}})};
    EXPECT_GT(10000U, bomb.data.size());
    EXPECT_THAT(refusal_of(bomb, 100000), HasSubstr("more than the allowed 100000 bytes"));
    EXPECT_EQ("no error", refusal_of(bomb, 1U << 20U));
}

TEST(Unpack, RefusesDamagedArchives)
{
    const std::string archive = archive_of({{"a.xml", std::string(5000, 'x') + "<end/>"}});
    for (std::size_t size = 0; size < archive.size(); ++size)
        EXPECT_THAT(refusal_of({"a.zip", archive.substr(0, size)}), HasSubstr("a.zip cannot be unpacked"))
            << size;
    std::string damaged = archive;
    damaged[40] = static_cast<char>(damaged[40] ^ 0x55); // within the packed data
    EXPECT_THAT(refusal_of({"a.zip", damaged}), HasSubstr("zvgentl xml --raw"));
}

} // namespace zvgentl::test
