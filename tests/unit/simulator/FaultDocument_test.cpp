#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include <gmock/gmock.h>

#include "simulator/faults/FaultKind.h"
#include "unit/simulator/configuration_texts.h"

// The page about faults and the list of what the producer answers to them, next to the kinds that there are.

namespace {

using testing::ContainerEq;
using testing::IsEmpty;
using zvsim_test::configured_by;

const std::filesystem::path project{ZV_PROJECT_FOLDER};

/// The lines of a file that begin like this, without it.
std::vector<std::string> lines_after(const char* file, const std::string& begin)
{
    std::ifstream stream{project / file};
    EXPECT_TRUE(stream) << file;
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        if (line.compare(0, begin.size(), begin) == 0)
            lines.push_back(line.substr(begin.size()));
    }
    return lines;
}

std::set<std::string> kinds()
{
    std::set<std::string> names;
    for (size_t kind = 0; kind < zvsim::fault_kind_count; ++kind)
        names.insert(row_of(static_cast<zvsim::FaultKind>(kind)).name);
    return names;
}

/// The rows of the page that describe a kind: those with an example.
std::vector<std::string> rows_of_page()
{
    std::vector<std::string> rows;
    for (const std::string& row : lines_after("docs/faults.md", "| `")) {
        if (row.find("| `{kind: ") != std::string::npos)
            rows.push_back(row);
    }
    return rows;
}

std::string name_in(const std::string& row) { return row.substr(0, row.find('`')); }

std::string example_in(const std::string& row)
{
    const size_t begin = row.find("{kind: ");
    return row.substr(begin, row.find('`', begin) - begin);
}

TEST(FaultDocument, NamesEveryKindOnce)
{
    std::multiset<std::string> documented;
    for (const std::string& row : rows_of_page())
        documented.insert(name_in(row));
    const auto known = kinds();
    EXPECT_THAT(documented, ContainerEq(std::multiset<std::string>(known.begin(), known.end())));
}

TEST(FaultDocument, HasAnExampleOfEveryKindThatIsRead)
{
    for (const std::string& row : rows_of_page()) {
        const auto configuration = configured_by("faults: [" + example_in(row) + "]");
        EXPECT_THAT(configuration->errors, IsEmpty()) << row;
        ASSERT_EQ(1U, configuration->faults.faults.size()) << row;
        EXPECT_EQ(name_in(row), row_of(configuration->faults.faults.front().kind).name);
    }
}

TEST(FaultDocument, EveryKindIsTriedOnTheProducer)
{
    std::set<std::string> tried;
    const std::string row = "row(\"";
    for (const std::string& line : lines_after("tests/system/faults/matrix.cpp", "")) {
        for (size_t at = line.find(row); at != std::string::npos; at = line.find(row, at + 1)) {
            const size_t begin = at + row.size();
            tried.insert(line.substr(begin, line.find_first_of(",\"", begin) - begin));
        }
    }
    EXPECT_THAT(tried, ContainerEq(kinds()));
}

} // namespace
