#include <stdexcept>

#include <gtest/gtest.h>

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

TEST(FindProducers, TakesTheFileThatIsNamed)
{
    const TemporaryFolder folder;
    write_text(folder / "a.cti", "");
    EXPECT_EQ(Files{folder / "a.cti"}, find_producers(folder / "a.cti"));
}

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
    EXPECT_TRUE(contains(error_of([&] { find_producers(folder / "a.cti"); }), (folder / "a.cti").string()));
    EXPECT_TRUE(contains(error_of([&] { find_producers(folder.path()); }), "contains no .cti file"));
    const ScopedVariable variable(producer_path_variable, folder.path().string());
    EXPECT_TRUE(contains(error_of([&] { find_producers({}); }), "GENICAM_GENTL64_PATH"));
    EXPECT_TRUE(contains(error_of([&] { find_producers({}); }), "--cti"));
}

TEST(SelectProducer, TakesTheOnlyOne)
{
    EXPECT_EQ(fs::path("/a/other.cti"), select_producer({"/a/other.cti"}));
}

TEST(SelectProducer, PrefersItsOwnAmongOthers)
{
    EXPECT_EQ(fs::path("/b/ZVGRLibGenTL.cti"), select_producer({"/a/other.cti", "/b/ZVGRLibGenTL.cti"}));
}

TEST(SelectProducer, DoesNotGuess)
{
    for (const Files& files :
         {Files{"/a/x.cti", "/a/y.cti"}, Files{"/a/ZVGRLibGenTL.cti", "/b/ZVGRLibGenTL.cti"}}) {
        const std::string text = error_of([&] { select_producer(files); });
        EXPECT_TRUE(contains(text, "--cti")) << text;
        EXPECT_TRUE(contains(text, files[0].string())) << text;
        EXPECT_TRUE(contains(text, files[1].string())) << text;
    }
}

TEST(Error, NamesFunctionCodeAndText)
{
    const Error error(GenTL::GC_ERR_ACCESS_DENIED, "IFOpenDevice", "somebody has it");
    EXPECT_EQ(GenTL::GC_ERR_ACCESS_DENIED, error.code());
    EXPECT_STREQ("IFOpenDevice failed with GC_ERR_ACCESS_DENIED (-1005): somebody has it", error.what());
}

TEST(Error, GivesTheNumberOfAnUnknownCode)
{
    EXPECT_STREQ("DSClose failed with error -4711 (-4711)", Error(-4711, "DSClose", "").what());
}

} // namespace zvgentl::test
