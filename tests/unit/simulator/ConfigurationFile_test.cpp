#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "simulator/config/ConfigurationFile.h"
#include "simulator/config/YamlDocument.h"
#include "unit/simulator/configuration_texts.h"
#include "unit/simulator/picture_files.h"

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using zvsim::Configuration;
using zvsim::ConfigurationFile;

/// An environment variable for the length of a test; then it is again what it was.
class Variable {
public:
    Variable(const char* name, const std::string& value) : m_name{name}
    {
        if (const char* const before = std::getenv(name))
            m_before = before;
        setenv(name, value.c_str(), 1);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable()
    {
        if (m_before)
            setenv(m_name, m_before->c_str(), 1);
        else
            unsetenv(m_name);
    }

private:
    const char* m_name;
    std::optional<std::string> m_before;
};

/// A user whose home is a new folder.
class AUser : public testing::Test {
protected:
    static void write(const fs::path& file, const std::string& text)
    {
        fs::create_directories(file.parent_path());
        std::ofstream{file} << text;
    }

    const zvsim_test::Folder home;
    const fs::path chosen{home.file("chosen")};
    const fs::path usual_file{home.path() / ".config/zvgentl/grabbers.yaml"};
    const fs::path chosen_file{chosen / "zvgentl/grabbers.yaml"};
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

TEST_F(AUser, HasAFileOfTheirOwn)
{
    write(usual_file, "one");
    const ConfigurationFile file = ConfigurationFile::find();
    EXPECT_EQ(usual_file, fs::u8path(file.path));
    EXPECT_EQ("one", file.text);
    EXPECT_EQ("", file.problem);
}

TEST_F(AUser, MayHaveChosenAnotherFolder)
{
    write(usual_file, "one");
    write(chosen_file, "two");
    const Variable variable{folder_variable, chosen.string()};
    EXPECT_EQ("two", ConfigurationFile::find().text);
}

TEST_F(AUser, WhoHasChosenARelativeFolderHasChosenNothing)
{
    write(usual_file, "one");
    const Variable variable{folder_variable, "chosen"};
    EXPECT_EQ("one", ConfigurationFile::find().text);
}

TEST_F(AUser, CanNameAnyFile)
{
    write(usual_file, "one");
    write(home.file("any.yaml"), "three");
    const Variable variable{"ZV_GRABBER_CONFIG", home.file("any.yaml").string()};
    EXPECT_EQ("three", ConfigurationFile::find().text);
}

TEST_F(AUser, WhoNamesARelativePathGetsNoGrabbers)
{
    write(usual_file, "grabbers: []");
    const Variable variable{"ZV_GRABBER_CONFIG", "any.yaml"};
    zvsim::Environment environment;
    environment.file = ConfigurationFile::find();
    const auto configuration = Configuration::make(environment);
    EXPECT_THAT(configuration->errors, ElementsAre("any.yaml: ZV_GRABBER_CONFIG must be an absolute path"));
    EXPECT_THAT(configuration->grabbers, IsEmpty());
}

TEST_F(AUser, WithoutAFileReadsNoneButTheSystems)
{
    EXPECT_THAT(ConfigurationFile::find().path, testing::AnyOf("", system_file));
}

/// Files that cannot be read, named by the variable.
class AnUnreadableFile : public AUser {
protected:
    void expect_problem(const fs::path& path, const std::string& problem) const
    {
        const Variable variable{"ZV_GRABBER_CONFIG", path.string()};
        zvsim::Environment environment;
        environment.file = ConfigurationFile::find();
        const auto configuration = Configuration::make(environment);
        EXPECT_THAT(configuration->errors,
                    ElementsAre(AllOf(testing::StartsWith(path.string() + ":"), HasSubstr(problem))));
        EXPECT_THAT(configuration->grabbers, IsEmpty());
    }
};

TEST_F(AnUnreadableFile, ThatIsMissing)
{
    expect_problem(home.file("none.yaml"), "it cannot be found: No such file");
}

TEST_F(AnUnreadableFile, ThatIsAFolder) { expect_problem(home.path(), "it is no regular file"); }

TEST_F(AnUnreadableFile, ThatIsAPipe)
{
    ASSERT_EQ(0, mkfifo(home.file("pipe").string().c_str(), 0600));
    expect_problem(home.file("pipe"), "it is no regular file");
}

TEST_F(AnUnreadableFile, ThatIsADeviceWithoutEnd) { expect_problem("/dev/zero", "it is no regular file"); }

TEST_F(AnUnreadableFile, ThatIsALinkToItself)
{
    fs::create_symlink("loop", home.file("loop"));
    expect_problem(home.file("loop"), "it cannot be found: Too many levels of symbolic links");
}

TEST_F(AnUnreadableFile, ThatIsTooLong)
{
    write(home.file("long.yaml"), std::string(3 * zvsim::YamlDocument::largest_text, '#'));
    expect_problem(home.file("long.yaml"), "the file has more than 1 MiB; allowed: up to 1 MiB");
}

TEST_F(AnUnreadableFile, ThatIsNoText)
{
    write(home.file("binary.yaml"), std::string{"\x7F"
                                                "ELF\0\0",
                                                6});
    expect_problem(home.file("binary.yaml"), ":1: character 127 belongs to no text; allowed: YAML in UTF-8");
}

TEST_F(AnUnreadableFile, ThatItsOwnerKeepsToThemselves)
{
    write(home.file("secret.yaml"), "grabbers: []");
    fs::permissions(home.file("secret.yaml"), fs::perms::none);
    if (std::ifstream{home.file("secret.yaml")})
        GTEST_SKIP() << "this user may read everything";
    expect_problem(home.file("secret.yaml"), "it cannot be opened: Permission denied");
}

TEST(ConfigurationFile, DiffersWhenPathTextOrProblemDiffer)
{
    const ConfigurationFile file{"a", "b", "c"};
    EXPECT_EQ(file, (ConfigurationFile{"a", "b", "c"}));
    EXPECT_FALSE(file == (ConfigurationFile{"x", "b", "c"}));
    EXPECT_FALSE(file == (ConfigurationFile{"a", "x", "c"}));
    EXPECT_FALSE(file == (ConfigurationFile{"a", "b", "x"}));
}

TEST(ConfigurationFile, BuiltInOneHasNoErrors)
{
    EXPECT_THAT(zvsim_test::configured_by(zvsim::default_configuration)->errors, IsEmpty());
    EXPECT_EQ(3U, zvsim_test::configured_by(zvsim::default_configuration)->grabbers.size());
}

} // namespace
