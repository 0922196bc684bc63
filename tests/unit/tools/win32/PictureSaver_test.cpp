#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include "zvgentl/PictureSaver.h"

namespace zvgentl::test {

namespace {

/// Of a drive that is not there.
std::string free_letter()
{
    for (char letter = 'A'; letter <= 'Z'; ++letter)
        if ((GetLogicalDrives() & (1U << static_cast<unsigned>(letter - 'A'))) == 0)
            return {letter};
    return {};
}

} // namespace

TEST(PictureSaverOnADrive, SaysThatItIsNotThere)
{
    const std::string letter = free_letter();
    ASSERT_NE("", letter);
    try {
        const tool::PictureSaver saver(letter + ":/pictures", tool::FileFormat::png, 1);
        FAIL() << "there is no such drive";
    } catch (const std::runtime_error& reason) {
        EXPECT_EQ("cannot create the folder " + letter + ":/pictures: there is no " + letter + ":/",
                  std::string(reason.what()));
    }
}

} // namespace zvgentl::test
