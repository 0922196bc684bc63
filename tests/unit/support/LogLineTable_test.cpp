#include <cstdio>
#include <fstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "support/LogLineTable.h"

using namespace zvtest;

namespace {

// A table file that exists as long as the object.
class TableFile {
public:
    explicit TableFile(const std::string& rows)
        : m_path(testing::TempDir() + "zv_table_" +
                 testing::UnitTest::GetInstance()->current_test_info()->name() + ".tsv")
    {
        std::ofstream(m_path) << rows;
    }
    ~TableFile() { std::remove(m_path.c_str()); }
    TableFile(const TableFile&) = delete;
    TableFile& operator=(const TableFile&) = delete;
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

LogLine line(const std::string& logger, const std::string& function, int number, Priority priority,
             const std::string& message)
{
    return parse_log_line(logger, priority,
                          "thr00000001:" + logger + "::{" + function + "}[" + std::to_string(number) +
                              "]: " + message);
}

} // namespace

TEST(LogLineTable, AcceptsLinesAsTheirRowsSay)
{
    const TableFile file("# comment\n"
                         "Unit\t10\tf\tinformation\tEnter f, n=%d\n"
                         "Unit\t20\t*\tdebug|trace\tdone\n");
    const LogLineTable table(file.path());
    EXPECT_EQ("", table.objection_to(line("Unit", "f", 10, Priority::information, "Enter f, n=-3")));
    EXPECT_EQ("", table.objection_to(line("Unit", "g", 20, Priority::debug, "done")));
    EXPECT_EQ("", table.objection_to(line("Unit", "h", 20, Priority::trace, "done")));
    EXPECT_EQ("", table.objection_to(line("Elsewhere", "f", 99, Priority::error, "whatever")));
}

TEST(LogLineTable, ObjectsToLinesThatDiffer)
{
    const TableFile file("Unit\t10\tf\tinformation\tEnter f, n=%d\n");
    const LogLineTable table(file.path());
    EXPECT_NE("", table.objection_to(line("Unit", "f", 11, Priority::information, "Enter f, n=3")));
    EXPECT_NE("", table.objection_to(line("Unit", "g", 10, Priority::information, "Enter f, n=3")));
    EXPECT_NE("", table.objection_to(line("Unit", "f", 10, Priority::debug, "Enter f, n=3")));
    EXPECT_NE("", table.objection_to(line("Unit", "f", 10, Priority::information, "Enter f")));
}

TEST(LogLineTable, ObjectsToLinesThatCannotBeReached)
{
    const TableFile file("Unit\t10\tf\terror\tgone\tnothing answers so\n");
    const LogLineTable table(file.path());
    EXPECT_NE("", table.objection_to(line("Unit", "f", 10, Priority::error, "gone")));
}

TEST(LogLineTable, RefusesBrokenTables)
{
    const TableFile doubled("U\t1\tf\terror\ta\nU\t1\tf\terror\ta\n");
    EXPECT_THROW(LogLineTable{doubled.path()}, std::runtime_error);
    const TableFile short_row("U\t1\tf\terror\n");
    EXPECT_THROW(LogLineTable{short_row.path()}, std::runtime_error);
    const TableFile no_priority("U\t1\tf\tloud\ta\n");
    EXPECT_THROW(LogLineTable{no_priority.path()}, std::runtime_error);
}

TEST(LogLineTable, OfThisSourceTreeCanBeRead) { EXPECT_NO_THROW(LogLineTable{ZV_LOG_LINES}); }
