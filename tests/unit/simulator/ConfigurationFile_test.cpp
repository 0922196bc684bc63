#include <filesystem>
#include <fstream>

#include <sys/stat.h>

#include "simulator/config/YamlDocument.h"
#include "unit/simulator/configuration_texts.h"
#include "unit/simulator/picture_files.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace zvsim;
using namespace zvsim_test;

/// A user whose home is a new folder.
class AUser : public testing::Test {
protected:
    static void write(const fs::path& file, const std::string& text)
    {
        fs::create_directories(file.parent_path());
        std::ofstream{file} << text;
    }

    const zvsim_test::Folder home;
    const fs::path usual_file{home.path() / ".config/zvgentl/grabbers.yaml"};
#ifdef _WIN32
    static constexpr const char* folder_variable = "APPDATA";
    const Variable chosen_variable{folder_variable, (home.path() / ".config").string()};
    const Variable system_variable{"ProgramData", (home.path() / "machine").string()};
    const std::string system_file{(home.path() / "machine" / "zvgentl" / "grabbers.yaml").string()};
#else
    static constexpr const char* folder_variable = "XDG_CONFIG_HOME";
    const Variable home_variable{"HOME", home.path().string()};
    const Variable chosen_variable{folder_variable, ""};
    const std::string system_file{"/etc/zvgentl/grabbers.yaml"};
#endif
    const Variable named{"ZV_GRABBER_CONFIG", ""};
};

TEST_F(AUser, WithoutAFileReadsNoneButTheSystems)
{
    EXPECT_THAT(ConfigurationFile::find().path, testing::AnyOf("", system_file));
}

TEST_F(AUser, HasAFileOfTheirOwn)
{
    write(usual_file, "usual");
    const ConfigurationFile file = ConfigurationFile::find();
    EXPECT_EQ(usual_file, fs::u8path(file.path));
    EXPECT_EQ("usual", file.text);
    EXPECT_EQ("", file.problem);
}

TEST_F(AUser, ChoosesAnotherFolder)
{
    write(home.path() / "chosen/zvgentl/grabbers.yaml", "chosen");
    const Variable variable{folder_variable, home.file("chosen").string()};
    EXPECT_EQ("chosen", ConfigurationFile::find().text);
}

TEST_F(AUser, KeepsTheUsualFolderWhenTheChosenOneIsRelative)
{
    write(usual_file, "usual");
    const Variable variable{folder_variable, "chosen"};
    EXPECT_EQ("usual", ConfigurationFile::find().text);
}

TEST_F(AUser, CanNameAnyFile)
{
    write(usual_file, "usual");
    write(home.file("any.yaml"), "any");
    const Variable variable{"ZV_GRABBER_CONFIG", home.file("any.yaml").string()};
    EXPECT_EQ("any", ConfigurationFile::find().text);
}

/// A file that the variable names and that cannot be read.
class AnUnreadableFile : public AUser {
protected:
    static void expect_problem(const fs::path& path, const std::string& problem)
    {
        const Variable variable{"ZV_GRABBER_CONFIG", path.string()};
        zvsim::Environment environment;
        environment.file = ConfigurationFile::find();
        const auto configuration = Configuration::make(environment);
        EXPECT_THAT(configuration->errors, ElementsAre(Like(path.string() + ":" + problem)));
        EXPECT_THAT(configuration->grabbers, IsEmpty());
    }
};

TEST_F(AnUnreadableFile, IsReportedWithItsReason)
{
    expect_problem("any.yaml", " ZV_GRABBER_CONFIG must be an absolute path");
    expect_problem(home.file("none.yaml"), " cannot be found: No such file~");
    expect_problem(home.path(), " not a regular file");
    write(home.file("long.yaml"), std::string(3 * zvsim::YamlDocument::largest_text, '#'));
    expect_problem(home.file("long.yaml"), " the file is larger than 1 MiB; allowed: up to 1 MiB");
    write(home.file("binary.yaml"), {"\x7F\x45LF\0\0", 6});
    expect_problem(home.file("binary.yaml"), "1: character 127 is not text; allowed: YAML in UTF-8");
}

TEST_F(AnUnreadableFile, MayBeADeviceAPipeOrALinkToItself)
{
    expect_problem("/dev/zero", " not a regular file");
    ASSERT_EQ(0, mkfifo(home.file("pipe").string().c_str(), 0600));
    expect_problem(home.file("pipe"), " not a regular file");
    fs::create_symlink("loop", home.file("loop"));
    expect_problem(home.file("loop"), " cannot be found: Too many levels of symbolic links~");
}

TEST_F(AnUnreadableFile, MayBeOneThatItsOwnerKeepsPrivate)
{
    write(home.file("secret.yaml"), "grabbers: []");
    fs::permissions(home.file("secret.yaml"), fs::perms::none);
    if (std::ifstream{home.file("secret.yaml")})
        GTEST_SKIP() << "this user may read everything";
    expect_problem(home.file("secret.yaml"), " cannot be opened: Permission denied");
}

TEST(ConfigurationFile, DiffersWhenPathTextOrProblemDiffer)
{
    const ConfigurationFile file{"a", "b", "c"};
    EXPECT_EQ(file, (ConfigurationFile{"a", "b", "c"}));
    EXPECT_FALSE(file == (ConfigurationFile{"x", "b", "c"}));
    EXPECT_FALSE(file == (ConfigurationFile{"a", "x", "c"}));
    EXPECT_FALSE(file == (ConfigurationFile{"a", "b", "x"}));
}

} // namespace
