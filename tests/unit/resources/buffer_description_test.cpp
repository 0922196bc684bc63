#include <algorithm>
#include <memory>

#include <gtest/gtest.h>
#include <zip.h>

#include "resources/descriptions.h"
#include "unit/resources/register_description.h"

// The buffer port's register description: the archive, and what is in it.

namespace zvtest {

namespace {

const std::string archive(reinterpret_cast<const char*>(zvgentl::buffer_description),
                          zvgentl::buffer_description_size);

class BufferDescription : public testing::Test {
protected:
    void SetUp() override
    {
        zip_source_t* const source = zip_source_buffer_create(archive.data(), archive.size(), 0, nullptr);
        ASSERT_NE(nullptr, source);
        zip.reset(zip_open_from_source(source, ZIP_RDONLY | ZIP_CHECKCONS, nullptr));
        ASSERT_NE(nullptr, zip) << "not a consistent archive";
    }
    zip_stat_t entry() const
    {
        zip_stat_t stat;
        zip_stat_init(&stat);
        EXPECT_EQ(0, zip_stat_index(zip.get(), 0, 0, &stat));
        return stat;
    }
    std::string unpacked() const
    {
        std::string text(10000, '\0');
        const std::unique_ptr<zip_file_t, decltype(&zip_fclose)> file(zip_fopen_index(zip.get(), 0, 0),
                                                                      &zip_fclose);
        const zip_int64_t length = file ? zip_fread(file.get(), text.data(), text.size()) : 0;
        text.resize(static_cast<size_t>(std::max<zip_int64_t>(length, 0)));
        return text;
    }

    std::unique_ptr<zip_t, decltype(&zip_discard)> zip{nullptr, &zip_discard};
};

TEST_F(BufferDescription, IsTheFileOfTheRepository) { EXPECT_EQ(resource("ZV_BufferGenTL.zip"), archive); }

TEST_F(BufferDescription, HoldsOneFile)
{
    ASSERT_EQ(1, zip_get_num_entries(zip.get(), 0));
    EXPECT_STREQ("ZV_TLBufferGenTL.xml", entry().name);
    EXPECT_EQ(ZIP_CM_DEFLATE, entry().comp_method);
    EXPECT_EQ(ZIP_EM_NONE, entry().encryption_method);
}

TEST_F(BufferDescription, HoldsTheTextOfTheRepository)
{
    EXPECT_EQ(resource("ZV_TLBufferGenTL.xml"), unpacked());
}

// Parsers search for the end of the archive backwards, over the comment.
TEST_F(BufferDescription, MakesUpItsSizeWithAComment)
{
    int length = 0;
    const char* const comment = zip_get_archive_comment(zip.get(), &length, ZIP_FL_ENC_RAW);
    ASSERT_NE(nullptr, comment);
    EXPECT_EQ(std::string(static_cast<size_t>(length), ' '),
              std::string(comment, static_cast<size_t>(length)));
    EXPECT_EQ(archive.size() - 22 - static_cast<size_t>(length), archive.find("PK\5\6"));
}

TEST_F(BufferDescription, DescribesAPortWithoutFeatures)
{
    EXPECT_EQ(described("ZV_TLBufferGenTL", "ZEVA TLBuffer GenTL",
                        R"(<Category Name="Root" NameSpace="Standard"><Visibility>Beginner</Visibility>)"
                        R"(<ImposedAccessMode>RO</ImposedAccessMode></Category>)"
                        R"(<Port Name="Device"><ToolTip>Port giving access to the device.</ToolTip>)"
                        R"(<Visibility>Invisible</Visibility></Port>)"),
              without_layout(unpacked()));
}

} // namespace

} // namespace zvtest
