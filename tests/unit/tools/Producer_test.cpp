#include <stdexcept>

#include <gmock/gmock.h>

#include "TemporaryFolder.h"
#include "gentl/Error.h"
#include "gentl/Producer.h"
#include "platform/environment.h"
#include "support.h"
#include "zvgentl/Selection.h"

namespace zvgentl::test {

using namespace tool;
namespace fs = std::filesystem;

namespace {

using Files = std::vector<fs::path>;

} // namespace

TEST(FindProducers, TakesAllFilesOfAFolderThatIsNamed)
{
    const TemporaryFolder folder;
    for (const char* const name : {"b.cti", "a.cti", "c.txt"})
        write_text(folder / name, "");
    EXPECT_EQ((Files{folder / "a.cti", folder / "b.cti"}), find_producers(folder.path()));
}

TEST(FindProducers, SearchesTheFoldersOfTheVariableInOrder)
{
    const TemporaryFolder first;
    const TemporaryFolder second;
    write_text(first / "z.cti", "");
    write_text(second / "a.cti", "");
    std::string list;
    for (const std::string& entry : {first.path().string(), std::string(), std::string("/does/not/exist"),
                                     second.path().string(), first.path().string()})
        list += entry + platform::path_list_separator;
    const ScopedVariable variable(producer_path_variable, list);
    EXPECT_EQ((Files{first / "z.cti", second / "a.cti"}), find_producers({}));
}

TEST(FindProducers, PrefersTheFileThatIsNamedOverTheVariable)
{
    const TemporaryFolder folder;
    write_text(folder / "a.cti", "");
    const ScopedVariable variable(producer_path_variable, "/does/not/exist");
    EXPECT_EQ(Files{folder / "a.cti"}, find_producers(folder / "a.cti"));
}

TEST(FindProducers, SaysWhereItLooked)
{
    const TemporaryFolder folder;
    EXPECT_THAT(error_of([&] { find_producers(folder / "a.cti"); }), HasSubstr((folder / "a.cti").string()));
    EXPECT_THAT(error_of([&] { find_producers(folder.path()); }), HasSubstr("contains no .cti file"));
    const ScopedVariable variable(producer_path_variable, folder.path().string());
    EXPECT_THAT(error_of([&] { find_producers({}); }), HasSubstr("GENICAM_GENTL64_PATH"));
    EXPECT_THAT(error_of([&] { find_producers({}); }), HasSubstr("--cti"));
}

TEST(SelectProducer, TakesTheOnlyOneOrItsOwn)
{
    EXPECT_EQ(fs::path("/a/other.cti"), select_producer({"/a/other.cti"}));
    EXPECT_EQ(fs::path("/b/ZVGRLibGenTL.cti"), select_producer({"/a/other.cti", "/b/ZVGRLibGenTL.cti"}));
}

TEST(SelectProducer, DoesNotGuess)
{
    for (const Files& files :
         {Files{"/a/x.cti", "/a/y.cti"}, Files{"/a/ZVGRLibGenTL.cti", "/b/ZVGRLibGenTL.cti"}}) {
        const std::string text = error_of([&] { select_producer(files); });
        for (const std::string& part : {std::string("--cti"), files[0].string(), files[1].string()})
            EXPECT_THAT(text, HasSubstr(part));
    }
}

TEST(Error, GivesTheNumberOfAnUnknownCode)
{
    EXPECT_STREQ("DSClose failed with error -4711 (-4711)", Error(-4711, "DSClose", "").what());
}

} // namespace zvgentl::test
