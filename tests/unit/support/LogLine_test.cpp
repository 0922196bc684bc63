#include <gtest/gtest.h>

#include "support/LogLine.h"

using namespace zvtest;

TEST(LogLine, TakesALineApart)
{
    const LogLine line = parse_log_line("ZVGRLibGenTL.cpp", Priority::information,
                                        "thr00001A2C:ZVGRLibGenTL::{GCInitLib}[589]: Enter GCInitLib");
    EXPECT_EQ(0x1A2CU, line.thread);
    EXPECT_EQ("ZVGRLibGenTL", line.logger);
    EXPECT_EQ("GCInitLib", line.function);
    EXPECT_EQ(589, line.number);
    EXPECT_EQ(Priority::information, line.priority);
    EXPECT_EQ("Enter GCInitLib", line.message);
    EXPECT_EQ("ZVGRLibGenTL.cpp", line.source);
}

TEST(LogLine, KeepsTheFunctionsOfClassesWhole)
{
    const LogLine line = parse_log_line("SystemModule", Priority::error,
                                        "thr00000001:SystemModule::{SystemModule::ReadPort}[10]: [x]: y");
    EXPECT_EQ("SystemModule", line.logger);
    EXPECT_EQ("SystemModule::ReadPort", line.function);
    EXPECT_EQ("[x]: y", line.message);
}

TEST(LogLine, ReadsTimerLinesWithoutAColon)
{
    const LogLine line = parse_log_line(
        "a", Priority::information, "thr00000001:ZVGRLibGenTL::{TLOpenInterface}[1855] duration: 12 usec");
    EXPECT_EQ(1855, line.number);
    EXPECT_EQ("duration: 12 usec", line.message);
}

TEST(LogLine, ReadsLinesWithoutAFunction)
{
    const LogLine line = parse_log_line("a", Priority::debug, "thr00000001:A::[3]: m");
    EXPECT_FALSE(line.has_function);
    EXPECT_EQ(3, line.number);
    EXPECT_EQ("m", line.message);
}

TEST(LogLine, LeavesOtherTextsWhole)
{
    for (const char* const text : {"", "hello", "thr1:A::[3]: m", "thr00000001:A[3]: m",
                                   "thr00000001:A::{f}3: m", "thr0000000g:A::[3]: m"}) {
        const LogLine line = parse_log_line("a", Priority::debug, text);
        EXPECT_EQ(-1, line.number) << text;
        EXPECT_EQ(text, line.message);
    }
}

TEST(LogLineFormat, MatchesWhatPrintfMakes)
{
    EXPECT_TRUE(matches_format("plain", "plain"));
    EXPECT_TRUE(matches_format("a=%d b=%u", "a=-5 b=7"));
    EXPECT_TRUE(matches_format("0x%X 0x%x", "0xFFFFFC08 0xbeef"));
    EXPECT_TRUE(matches_format("p=0x%016llX", "p=0x00007F0000000010"));
    EXPECT_TRUE(matches_format("%s - GC_ERR_INVALID_HANDLE", "IFClose - GC_ERR_INVALID_HANDLE"));
    EXPECT_TRUE(matches_format("%s", ""));
    EXPECT_TRUE(matches_format("%zu of 100%%", "3 of 100%"));
    EXPECT_TRUE(matches_format("%lld usec", "-12 usec"));
    EXPECT_TRUE(matches_format("private=0x%X ", "private=0x0 "));
}

TEST(LogLineFormat, RejectsEverythingElse)
{
    EXPECT_FALSE(matches_format("plain", "plain "));
    EXPECT_FALSE(matches_format("plain", "plai"));
    EXPECT_FALSE(matches_format("a=%d", "a="));
    EXPECT_FALSE(matches_format("a=%d", "a=x"));
    EXPECT_FALSE(matches_format("a=%u", "a=-1"));
    EXPECT_FALSE(matches_format("0x%X", "0xbeef"));
    EXPECT_FALSE(matches_format("0x%x", "0xBEEF"));
    EXPECT_FALSE(matches_format("0x%016llX", "0x10"));
    EXPECT_FALSE(matches_format("%s - CLOSED", "IFClose - OPEN"));
    EXPECT_FALSE(matches_format("100%%", "100"));
}
