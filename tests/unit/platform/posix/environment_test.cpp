#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/paths.h"

namespace {

namespace fs = std::filesystem;

/// What a program says that is started with two variables.
std::string answer_of(const fs::path& program)
{
    const std::string command = "env ZV_TEST=set XDG_STATE_HOME=/somewhere " + program.string();
    std::FILE* const pipe = popen(command.c_str(), "r");
    std::array<char, 200> line{};
    const bool has_line = std::fgets(line.data(), line.size(), pipe) != nullptr;
    pclose(pipe);
    return has_line ? line.data() : "";
}

TEST(Environment, IsNotReadWithTheRightsOfAnotherUser)
{
    EXPECT_EQ("value=set, state=/somewhere/zvgentl, current=1\n", answer_of(ZV_ENVIRONMENT_CHILD));
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can make a program of another user's";
    const fs::path folder = platform::make_private_folder("zvgentl-setuid-");
    const fs::path program = folder / "child";
    fs::copy_file(ZV_ENVIRONMENT_CHILD, program);
    ASSERT_EQ(0, chmod(folder.c_str(), 0755));
    ASSERT_EQ(0, chown(program.c_str(), 65534, 65534));
    ASSERT_EQ(0, chmod(program.c_str(), 04755));
    EXPECT_EQ("value=, state=, current=1\n", answer_of(program));
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

} // namespace
