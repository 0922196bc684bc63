#include <fstream>
#include <iterator>

#include <gmock/gmock.h>

#include "simulator/PictureFolder.h"
#include "unit/simulator/tiff_files.h"

namespace {

using namespace zvsim_test;
using testing::HasSubstr;

std::string content_of(const std::filesystem::path& file)
{
    std::ifstream stream{file, std::ios::binary};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

/// Reads a file and sees to it that it is read or refused with a reason, and that nobody hears of it
/// otherwise.
class HostilePicture : public testing::TestWithParam<const char*> {
protected:
    HostilePicture()
    {
        const TestPicture picture = test_picture(23, 11, Pixels::grey_16, 1);
        if (is_tiff())
            write_tiff(m_folder.file("good.tif"), picture);
        else
            write_png(m_folder.file("good.png"), picture);
        m_content = content_of(m_folder.file(is_tiff() ? "good.tif" : "good.png"));
    }

    bool is_tiff() const { return GetParam() == std::string{"tif"}; }
    const std::string& content() const { return m_content; }

    bool is_read(const std::string& content)
    {
        const std::string name = std::string{"a."} + GetParam();
        std::filesystem::remove(
            m_folder.file(name)); // a new file each: file systems hurry to save a rewritten one
        m_folder.write(name, content);
        std::string problem;
        const auto picture = zvsim::read_picture(m_folder.file(name), problem);
        EXPECT_NE(picture.has_value(), !problem.empty()) << problem;
        if (picture) {
            EXPECT_LE(picture->pixels.size(), 3000 * content.size());
        }
        return picture.has_value();
    }

private:
    Folder m_folder;
    std::string m_content;
};

TEST_P(HostilePicture, OfEveryLengthIsReadOrRefused)
{
    testing::internal::CaptureStderr();
    ASSERT_TRUE(is_read(content()));
    size_t read = 0;
    for (size_t length = 0; length < content().size(); ++length)
        read += is_read(content().substr(0, length)) ? 1 : 0;
    EXPECT_LT(read, 20U) << "only what follows the pixels may be missing";
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST_P(HostilePicture, WithAnyByteChangedIsReadOrRefused)
{
    testing::internal::CaptureStderr();
    for (size_t at = 0; at < content().size(); ++at) {
        for (const char change : {'\x01', '\x80', '\xFF'}) {
            std::string changed = content();
            changed[at] = static_cast<char>(changed[at] ^ change);
            is_read(changed);
        }
    }
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST_P(HostilePicture, OfTheOtherKindIsRefused)
{
    const Folder folder;
    const TestPicture picture = test_picture(8, 8, Pixels::grey_8, 1);
    const std::string name = std::string{"a."} + GetParam();
    if (is_tiff())
        write_png(folder.file(name), picture);
    else
        write_tiff(folder.file(name), picture);
    EXPECT_FALSE(is_read(content_of(folder.file(name))));
}

INSTANTIATE_TEST_SUITE_P(Kinds, HostilePicture, testing::Values("png", "tif"),
                         [](const auto& kind) { return std::string{kind.param}; });

/// Width and height are the first two numbers of the first chunk, followed by what its checksum covers.
std::string png_of_size(const Folder& folder, const std::string& width, const std::string& height)
{
    write_png(folder.file("small.png"), test_picture(1, 1, Pixels::grey_8, 1));
    std::string content = content_of(folder.file("small.png"));
    content.replace(16, 8, width + height);
    uint32_t sum = 0xFFFFFFFF;
    for (size_t at = 12; at < 29; ++at) {
        sum ^= static_cast<unsigned char>(content[at]);
        for (unsigned bit = 0; bit < 8; ++bit)
            sum = sum >> 1U ^ (sum % 2 == 1 ? 0xEDB88320U : 0U);
    }
    sum = ~sum;
    for (unsigned byte = 0; byte < 4; ++byte)
        content[29 + byte] = static_cast<char>(sum >> (24 - 8 * byte) & 0xFF);
    return content;
}

TEST(HostilePng, ThatClaimsToBeHugeIsRefusedUnread)
{
    using namespace std::string_literals;
    const Folder folder;
    const std::vector<std::pair<std::string, std::string>> claims{
        {png_of_size(folder, "\x7F\xFF\xFF\xFF"s, "\x7F\xFF\xFF\xFF"s), "65536 pixels on a side"},
        {png_of_size(folder, "\0\0\xFF\xFF"s, "\0\0\xFF\xFF"s), "more than 1 GiB"},
        {png_of_size(folder, "\0\0\x7F\xFF"s, "\0\0\x7F\xFF"s), "too short for its pixels"}};
    for (const auto& [content, reason] : claims) {
        folder.write("a.png", content);
        std::string problem;
        EXPECT_FALSE(zvsim::read_picture(folder.file("a.png"), problem));
        EXPECT_THAT(problem, HasSubstr(reason));
    }
}

TEST(HostilePictures, AreLeftOutOfTheirFolderEachWithItsReason)
{
    const Folder folder;
    write_tiff(folder.file("a.tif"), test_picture(8, 8, Pixels::grey_8, 1));
    write_png(folder.file("b-alpha.png"), test_picture(8, 8, Pixels::rgba_8, 1));
    folder.write("c-text.tiff", "II*?");
    write_png(folder.file("d.png"), test_picture(8, 8, Pixels::grey_8, 2));
    std::vector<std::string> warnings;
    testing::internal::CaptureStderr();
    const auto read = zvsim::PictureFolder::read(folder.path(), warnings);
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    ASSERT_NE(nullptr, read);
    EXPECT_THAT(warnings,
                testing::ElementsAre(testing::AllOf(HasSubstr("b-alpha.png"), HasSubstr("alpha channel")),
                                     HasSubstr("c-text.tiff is left out: ")));
    EXPECT_EQ(test_picture(8, 8, Pixels::grey_8, 2).in_memory(), read->picture(1).pixels);
}

int errors_of_the_application = 0;
void count_error(const char* /*module*/, const char* /*format*/, va_list /*arguments*/)
{
    ++errors_of_the_application;
}

TEST(HostilePictures, DoNotTouchTheHandlersOfTheApplication)
{
    const Folder folder;
    folder.write("a.tif", "MM");
    const TIFFErrorHandler former_errors = TIFFSetErrorHandler(count_error);
    const TIFFErrorHandler former_warnings = TIFFSetWarningHandler(count_error);
    std::string problem;
    EXPECT_FALSE(zvsim::read_picture(folder.file("a.tif"), problem));
    EXPECT_EQ(&count_error, TIFFSetErrorHandler(former_errors));
    EXPECT_EQ(&count_error, TIFFSetWarningHandler(former_warnings));
    EXPECT_EQ(0, errors_of_the_application);
}

} // namespace
