#include <memory>
#include <string>
#include <vector>

#include <zip.h>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

namespace {

/// An archive of files with these names and contents.
std::string archive_of(const std::vector<std::pair<std::string, std::string>>& files)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* const target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_source_keep(target);
    zip_t* const archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    for (const auto& [name, content] : files)
        zip_file_add(archive, name.c_str(), zip_source_buffer(archive, content.data(), content.size(), 0),
                     ZIP_FL_ENC_UTF_8);
    EXPECT_EQ(0, zip_close(archive));
    EXPECT_EQ(0, zip_source_open(target));
    zip_stat_t stat;
    EXPECT_EQ(0, zip_source_stat(target, &stat));
    std::string bytes(stat.size, '\0');
    EXPECT_EQ(static_cast<zip_int64_t>(bytes.size()), zip_source_read(target, bytes.data(), bytes.size()));
    zip_source_close(target);
    zip_source_free(target);
    zip_error_fini(&error);
    return bytes;
}

std::pair<std::string, std::string> refusal_of(const std::string& bytes, const Limits& limits = {})
{
    return error_of([&] { NodeMap::load(bytes, limits); });
}

} // namespace

TEST(Archive, HoldsADescription)
{
    const std::string description = description_of(integer("A", "<Value>3</Value>"));
    for (const auto& files : std::vector<std::vector<std::pair<std::string, std::string>>>{
             {{"camera.xml", description}},
             {{"readme.txt", "hello"}, {"Camera.XML", description}, {"other.xml", "nothing"}},
             {{"description", description}}}) {
        const NodeMap map = NodeMap::load(archive_of(files));
        EXPECT_EQ(3, map.get("A").as<Integer>().value());
    }
}

TEST(Archive, IsRefusedWithoutADescription)
{
    EXPECT_THAT(refusal_of(archive_of({{"a.txt", "hello"}, {"b.txt", "hello"}})),
                testing::Pair("description", HasSubstr("no file whose name ends in .xml")));
    EXPECT_EQ("description", refusal_of(archive_of({{"a.xml", ""}})).first);
    EXPECT_EQ("description", refusal_of("PK\x03\x04").first);
}

TEST(Archive, IsRefusedWhenItIsCutOffOrDamaged)
{
    const std::string whole = archive_of({{"camera.xml", description_of(integer("A", "<Value>3</Value>"))}});
    for (std::size_t size = 4; size < whole.size(); ++size)
        EXPECT_EQ("description", refusal_of(whole.substr(0, size)).first) << size;
    for (std::size_t place = 4; place < whole.size(); ++place) {
        std::string damaged = whole;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x55);
        const std::string kind = refusal_of(damaged).first; // nothing else may come of it
        EXPECT_TRUE(kind == "description" || kind == "limit" || kind == "no error") << place << kind;
    }
}

TEST(Archive, IsRefusedWhenItUnpacksToTooMuch)
{
    Limits limits;
    limits.description_bytes = std::size_t{1} << 20U;
    const std::string bomb = archive_of({{"bomb.xml", std::string(std::size_t{100} << 20U, ' ')}});
    ASSERT_LT(bomb.size(), limits.description_bytes);
    EXPECT_THAT(refusal_of(bomb, limits),
                testing::Pair("limit", HasSubstr("unpacks to more than 1048576 bytes")));
}

} // namespace zvgenapi::test
