#include <cstdio>
#include <fstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "support/LogLineTable.h"

// Captured lines: how they are taken apart, and what the table of lines objects to.

using namespace zvtest;

namespace {

/// A table file that exists as long as the object.
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

bool accepts(const LogLineTable& table, Priority priority, const std::string& line)
{
    return table.objection_to(parse_log_line("Unit", priority, "thr00000001:" + line)).empty();
}

} // namespace

TEST(LogLine, IsTakenApart)
{
    const LogLine line = parse_log_line("SystemModule.cpp", Priority::information,
                                        "thr00001A2C:SystemModule::{SystemModule::ReadPort}[589]: [x]: y");
    EXPECT_EQ(0x1A2CU, line.thread);
    EXPECT_EQ("SystemModule", line.logger);
    EXPECT_EQ("SystemModule::ReadPort", line.function);
    EXPECT_EQ(589, line.number);
    EXPECT_EQ("[x]: y", line.message);
    EXPECT_FALSE(parse_log_line("a", Priority::debug, "thr00000001:A::[3]: m").has_function);
}

TEST(LogLine, OfATimerHasNoColon)
{
    const LogLine line = parse_log_line(
        "a", Priority::information, "thr00000001:ZVGRLibGenTL::{TLOpenInterface}[1855] duration: 12 usec");
    EXPECT_EQ(1855, line.number);
    EXPECT_EQ("duration: 12 usec", line.message);
}

TEST(LogLine, IsLeftWholeWhenItLooksDifferent)
{
    for (const char* const text : {"", "hello", "thr1:A::[3]: m", "thr00000001:A[3]: m",
                                   "thr00000001:A::{f}3: m", "thr0000000g:A::[3]: m"}) {
        const LogLine line = parse_log_line("a", Priority::debug, text);
        EXPECT_EQ(-1, line.number) << text;
        EXPECT_EQ(text, line.message);
    }
}

TEST(LogLineFormat, MatchesNothingButWhatPrintfCanWrite)
{
    struct Row {
        const char* format;
        const char* message;
        const char* other;
    };
    for (const Row& row : {Row{"plain", "plain", "plain "},
                           {"plain", "plain", "plai"},
                           {"a=%d", "a=-5", "a="},
                           {"a=%d", "a=5", "a=x"},
                           {"a=%u", "a=7", "a=-1"},
                           {"0x%X", "0xFFFFFC08", "0xbeef"},
                           {"0x%x", "0xbeef", "0xBEEF"},
                           {"0x%016llX", "0x00007F0000000010", "0x10"},
                           {"%s - CLOSED", "IFClose - CLOSED", "IFClose - OPEN"},
                           {"%zu of 100%%", "3 of 100%", "3 of 100"},
                           {"%lld usec", "-12 usec", "12"},
                           {"%s", "", nullptr}}) {
        EXPECT_TRUE(matches_format(row.format, row.message)) << row.format;
        if (row.other != nullptr) {
            EXPECT_FALSE(matches_format(row.format, row.other)) << row.format;
        }
    }
}

TEST(LogLineTable, AcceptsLinesAsTheirRowsSay)
{
    const TableFile file("# comment\n"
                         "Unit\t10\tf\tinformation\tEnter f, n=%d\n"
                         "Unit\t20\t*\tdebug|trace\tdone\n");
    const LogLineTable table(file.path());
    EXPECT_TRUE(accepts(table, Priority::information, "Unit::{f}[10]: Enter f, n=-3"));
    EXPECT_TRUE(accepts(table, Priority::debug, "Unit::{g}[20]: done"));
    EXPECT_TRUE(accepts(table, Priority::trace, "Unit::{h}[20]: done"));
    EXPECT_TRUE(accepts(table, Priority::error, "Elsewhere::{f}[99]: whatever"));
}

TEST(LogLineTable, ObjectsToEveryOtherLine)
{
    const TableFile file("Unit\t10\tf\tinformation\tEnter f, n=%d\n"
                         "Unit\t20\tf\terror\tgone\tnothing answers so\n");
    const LogLineTable table(file.path());
    EXPECT_FALSE(accepts(table, Priority::information, "Unit::{f}[11]: Enter f, n=3"));
    EXPECT_FALSE(accepts(table, Priority::information, "Unit::{g}[10]: Enter f, n=3"));
    EXPECT_FALSE(accepts(table, Priority::debug, "Unit::{f}[10]: Enter f, n=3"));
    EXPECT_FALSE(accepts(table, Priority::information, "Unit::{f}[10]: Enter f"));
    EXPECT_FALSE(accepts(table, Priority::error, "Unit::{f}[20]: gone")) << "it cannot be reached";
}

TEST(LogLineTable, RefusesBrokenTables)
{
    for (const char* const rows :
         {"U\t1\tf\terror\ta\nU\t1\tf\terror\ta\n", "U\t1\tf\terror\n", "U\t1\tf\tloud\ta\n"}) {
        const TableFile file(rows);
        EXPECT_THROW(LogLineTable{file.path()}, std::runtime_error) << rows;
    }
}
