#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>
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

} // namespace

TEST(ReadDescription, ReadsTheWholeFileAtOnce)
{
    FakeRegisters port;
    port.bytes[0x10] = 'a';
    port.bytes[0x11] = 'b';
    const DescriptionFile file = read_description(port, {"Local:x.xml;10;2"});
    EXPECT_EQ("x.xml", file.name);
    EXPECT_EQ("ab", file.data);
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
    EXPECT_TRUE(contains(error_of([&] { read_description(port, {}); }), "has no description"));
    const std::string reason = error_of([&] { read_description(port, {"File:///a.xml", "Local:b"}); });
    EXPECT_TRUE(contains(reason, "file: URLs are not supported")) << reason;
}

TEST(ReadDescription, PassesOnWhatThePortSays)
{
    FakeRegisters port;
    port.refusal = "the cable is out";
    EXPECT_EQ("the cable is out", error_of([&] { read_description(port, {"Local:x.xml;10;2"}); }));
}

TEST(Unpack, LeavesTextAloneButForTheZerosBehindIt)
{
    EXPECT_EQ("<a/>", unpack({"a.xml", std::string("<a/>\0\0\0\0", 8)}));
}

TEST(Unpack, UnpacksWhatIsNamedLikeAnArchive)
{
    const std::string archive = archive_of({{"a.xml", "<description/>"}});
    EXPECT_EQ("<description/>", unpack({"a.zip", archive}));
    EXPECT_EQ("<description/>", unpack({"A.ZIP", archive}));
    EXPECT_EQ(archive.substr(0, 2), unpack({"a.xml", archive}).substr(0, 2));
}

TEST(Unpack, PrefersTheXmlAmongSeveralFiles)
{
    EXPECT_EQ("<b/>", unpack({"a.zip", archive_of({{"readme.txt", "no"}, {"b.XML", "<b/>"}})}));
    EXPECT_EQ("<c/>", unpack({"a.zip", archive_of({{"only", "<c/>"}})}));
    EXPECT_TRUE(contains(refusal_of({"a.zip", archive_of({{"a.txt", "1"}, {"b.txt", "2"}})}),
                         "no file whose name ends in .xml"));
}

TEST(Unpack, RefusesWhatUnpacksToMoreThanTheLimit)
{
    const DescriptionFile bomb{"a.zip", archive_of({{"a.xml", std::string(1U << 20U, ' ')}})};
    EXPECT_GT(10000U, bomb.data.size());
    EXPECT_TRUE(contains(refusal_of(bomb, 100000), "more than the allowed 100000 bytes"));
    EXPECT_EQ("no error", refusal_of(bomb, 1U << 20U));
}

TEST(Unpack, RefusesDamagedArchives)
{
    const std::string archive = archive_of({{"a.xml", std::string(5000, 'x') + "<end/>"}});
    for (std::size_t size = 0; size < archive.size(); ++size)
        EXPECT_TRUE(contains(refusal_of({"a.zip", archive.substr(0, size)}), "a.zip cannot be unpacked"))
            << size;
    std::string damaged = archive;
    damaged[40] = static_cast<char>(damaged[40] ^ 0x55); // within the packed data
    EXPECT_TRUE(contains(refusal_of({"a.zip", damaged}), "zvgentl xml --raw"));
}

} // namespace zvgentl::test
