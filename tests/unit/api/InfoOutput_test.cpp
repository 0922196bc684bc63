#include <cstring>

#include "api/InfoOutput.h"
#include "api/InfoTable.h"
#include "support/fixtures.h"

namespace zvtest {

namespace {

using namespace zvgentl;

constexpr int32_t command = 8;

class InfoOutputTest : public OpenLibrary {
protected:
    const ApiCall call{"TLGetInfo"};
    INFO_DATATYPE type{untouched<INFO_DATATYPE>()};
    std::array<uint8_t, 16> room{};
    size_t size{16};

    void SetUp() override
    {
        OpenLibrary::SetUp();
        room.fill(0xA5);
    }
    /// Hands the value over into `bytes` of the room.
    GC_ERROR write(const InfoValue& value, size_t bytes, NumberLog log_what = NumberLog::silent)
    {
        forget();
        room.fill(0xA5);
        type = untouched<INFO_DATATYPE>();
        size = bytes;
        return InfoOutput(&type, room.data(), &size).write(value, call, command, log_what);
    }
    /// The bytes after those that were written are as they were.
    void expect_written(const void* bytes, size_t count)
    {
        EXPECT_EQ(0, std::memcmp(bytes, room.data(), count));
        for (size_t i = count; i < room.size(); ++i)
            EXPECT_EQ(0xA5, room[i]) << i;
    }
};

class StringRule : public InfoOutputTest {
protected:
    const InfoValue mixed{InfoValue::string("Mixed")};
};

TEST_F(StringRule, CopiesATextThatFits)
{
    for (size_t bytes : {size_t{6}, size_t{7}, size_t{16}}) {
        EXPECT_EQ(GC_ERR_SUCCESS, write(mixed, bytes));
        EXPECT_EQ(INFO_DATATYPE_STRING, type);
        EXPECT_EQ(6U, size);
        expect_written("Mixed", 6);
        EXPECT_LOG_LINES();
    }
}

TEST_F(StringRule, ReportsTheBytesCopied)
{
    for (size_t bytes : {size_t{1}, size_t{2}, size_t{3}, size_t{4}}) {
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, write(mixed, bytes));
        EXPECT_EQ(INFO_DATATYPE_STRING, type);
        EXPECT_EQ(bytes, size);
        expect_written("Mixed", bytes);
        const std::string text =
            "TLGetInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (" +
            std::to_string(bytes) + "/6)";
        EXPECT_LOG_LINES({Priority::error, text, "TLGetInfo"},
                         {Priority::error, "Exit, Returning error ret (0xFFFFFC08)"});
        EXPECT_EQ(text, last_error());
    }
}

TEST_F(StringRule, HasACodeForTheMissingTerminatorAndForNoRoom)
{
    struct Row {
        const char* text;
        size_t room;
        const char* sizes;
    };
    for (const Row& row : {Row{"Mixed", 5, "(5/6)"}, {"Mixed", 0, "(0/6)"}, {"", 0, "(0/1)"}}) {
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, write(InfoValue::string(row.text), row.room));
        EXPECT_EQ(INFO_DATATYPE_STRING, type);
        EXPECT_EQ(row.room, size);
        expect_written(row.text, row.room);
        const std::string text =
            std::string("TLGetInfo - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL "
                        "termination ") +
            row.sizes;
        EXPECT_LOG_LINES({Priority::error, text, "TLGetInfo"},
                         {Priority::error, "Exit, Returning error ret (0xFFFFFC0F)"});
        EXPECT_EQ(text, last_error());
    }
}

TEST_F(StringRule, HandsOverAnEmptyText)
{
    EXPECT_EQ(GC_ERR_SUCCESS, write(InfoValue::string(""), 1));
    EXPECT_EQ(1U, size);
    expect_written("", 1);
}

struct Number {
    InfoValue value;
    INFO_DATATYPE type;
    size_t width;
    uint64_t bits;
};

const void* const some_address = reinterpret_cast<const void*>(uintptr_t{0x0123456789ABCDEF});

const std::vector<Number> numbers = {
    {InfoValue::int32(-2), INFO_DATATYPE_INT32, 4, 0xFFFFFFFE},
    {InfoValue::uint32(0xFEDCBA98), INFO_DATATYPE_UINT32, 4, 0xFEDCBA98},
    {InfoValue::uint64(0xFEDCBA9876543210), INFO_DATATYPE_UINT64, 8, 0xFEDCBA9876543210},
    {InfoValue::sizet(0x0123456789ABCDEF), INFO_DATATYPE_SIZET, 8, 0x0123456789ABCDEF},
    {InfoValue::bool8(true), INFO_DATATYPE_BOOL8, 1, 1},
    {InfoValue::bool8(false), INFO_DATATYPE_BOOL8, 1, 0},
    {InfoValue::ptr(some_address), INFO_DATATYPE_PTR, 8, 0x0123456789ABCDEF},
};

class NumberRule : public InfoOutputTest {};

TEST_F(NumberRule, WritesTheWidthOfTheType)
{
    for (const Number& number : numbers) {
        for (size_t bytes : {number.width, number.width + 1, size_t{16}}) {
            EXPECT_EQ(GC_ERR_SUCCESS, write(number.value, bytes));
            EXPECT_EQ(number.type, type);
            EXPECT_EQ(number.width, size);
            expect_written(&number.bits, number.width);
            EXPECT_LOG_LINES();
        }
    }
}

TEST_F(InfoOutputTest, GivesTheSizeAlone)
{
    std::vector<Number> values = numbers;
    values.push_back({InfoValue::string("Mixed"), INFO_DATATYPE_STRING, 6, 0});
    for (const Number& asked : values) {
        for (void* nowhere : {static_cast<void*>(nullptr), all_ones<void*>()}) {
            size = 0;
            EXPECT_EQ(GC_ERR_SUCCESS,
                      InfoOutput(&type, nowhere, &size).write(asked.value, call, command, NumberLog::both));
            EXPECT_EQ(asked.type, type);
            EXPECT_EQ(asked.width, size);
            EXPECT_LOG_LINES();
        }
    }
}

TEST_F(NumberRule, WritesNothingIntoTooLittleRoom)
{
    const std::string before = last_error();
    for (const Number& number : numbers) {
        for (size_t bytes = 0; bytes < number.width; ++bytes) {
            for (const NumberLog quiet : {NumberLog::silent, NumberLog::written}) {
                EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, write(number.value, bytes, quiet));
                EXPECT_EQ(number.type, type);
                EXPECT_EQ(number.width, size);
                expect_written("", 0);
                EXPECT_LOG_LINES();
            }
        }
    }
    EXPECT_EQ(before, last_error());
}

TEST_F(NumberRule, LogsTooLittleRoomWhereTheQueryAsksForIt)
{
    for (const NumberLog loud : {NumberLog::too_small, NumberLog::both}) {
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, write(InfoValue::uint64(1), 7, loud));
        EXPECT_LOG_LINES({Priority::error, "info= 8, size=7(expected=8)", "TLGetInfo"},
                         {Priority::error, "Exit, Returning error GC_ERR_BUFFER_TOO_SMALL (0xFFFFFC08)"});
    }
}

TEST_F(NumberRule, LogsWhatItWroteWhereTheQueryAsksForIt)
{
    struct Row {
        InfoValue value;
        const char* line;
    };
    for (const Row& row :
         {Row{InfoValue::int32(-2), "Type INFO_DATATYPE_INT32: value=-2"},
          Row{InfoValue::bool8(true), "Type INFO_DATATYPE_BOOL8: value=1"},
          Row{InfoValue::uint64(UINT64_MAX), "Type INFO_DATATYPE_UINT64: value=18446744073709551615"},
          Row{InfoValue::sizet(5000000000), "Type INFO_DATATYPE_SIZET: value=5000000000"}}) {
        for (const NumberLog loud : {NumberLog::written, NumberLog::both}) {
            EXPECT_EQ(GC_ERR_SUCCESS, write(row.value, 16, loud));
            EXPECT_LOG_LINES({Priority::information, row.line, "TLGetInfo"});
        }
        for (const NumberLog quiet : {NumberLog::silent, NumberLog::too_small}) {
            EXPECT_EQ(GC_ERR_SUCCESS, write(row.value, 16, quiet));
            EXPECT_LOG_LINES();
        }
    }
}

TEST_F(NumberRule, LogsWithThePriorityOfTheCall)
{
    const ApiCall quiet_call{"DSGetInfo", zvgentl::Priority::debug};
    InfoOutput(&type, room.data(), &size).write(InfoValue::int32(1), quiet_call, command, NumberLog::written);
    EXPECT_LOG_LINES({Priority::debug, "Type INFO_DATATYPE_INT32: value=1", "DSGetInfo"});
}

class InfoOutputArguments : public InfoOutputTest {};

TEST_F(InfoOutputArguments, AreIncompleteWithoutTypeOrSize)
{
    for (INFO_DATATYPE* no_type : {static_cast<INFO_DATATYPE*>(nullptr), all_ones<INFO_DATATYPE*>()}) {
        EXPECT_TRUE(InfoOutput(no_type, room.data(), &size).is_incomplete());
        EXPECT_TRUE(InfoOutput(no_type, room.data(), &size).is_malformed());
    }
    for (size_t* no_size : {static_cast<size_t*>(nullptr), all_ones<size_t*>()}) {
        EXPECT_TRUE(InfoOutput(&type, room.data(), no_size).is_incomplete());
        EXPECT_TRUE(InfoOutput(&type, room.data(), no_size).is_malformed());
    }
    EXPECT_FALSE(InfoOutput(&type, room.data(), &size).is_incomplete());
    EXPECT_FALSE(InfoOutput(&type, nullptr, &size).is_incomplete());
}

TEST_F(InfoOutputArguments, AreMalformedWithABufferOfNoSize)
{
    size = 0;
    EXPECT_TRUE(InfoOutput(&type, room.data(), &size).is_malformed());
    EXPECT_FALSE(InfoOutput(&type, room.data(), &size).is_incomplete());
    EXPECT_FALSE(InfoOutput(&type, nullptr, &size).is_malformed());
    EXPECT_FALSE(InfoOutput(&type, all_ones<void*>(), &size).is_malformed());
    size = 1;
    EXPECT_FALSE(InfoOutput(&type, room.data(), &size).is_malformed());
}

TEST_F(InfoOutputArguments, LeaveTheTypeAloneForAnUnknownCommand)
{
    const InfoOutput output(&type, room.data(), &size);
    EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, output.refuse(call, At{1632}, At{1633}, -5));
    EXPECT_TRUE(is_untouched(type));
    EXPECT_EQ(0U, size);
    expect_written("", 0);
    EXPECT_LOG_LINES({Priority::error, "info= -5", "TLGetInfo"},
                     {Priority::error, "Exit, Returning error GC_ERR_NOT_IMPLEMENTED (0xFFFFFC15)"});
}

TEST(InfoTable, FindsTheRowOfACommand)
{
    constexpr InfoRow<int> table[] = {
        {3, [](const int& source) { return InfoValue::int32(source); }},
        {-1, [](const int& source) { return InfoValue::int32(source + 1); }},
    };
    ASSERT_NE(nullptr, find_row(table, -1));
    EXPECT_EQ(8U, find_row(table, -1)->value(7).number());
    EXPECT_EQ(7U, find_row(table, 3)->value(7).number());
    EXPECT_EQ(nullptr, find_row(table, 0));
}

} // namespace

} // namespace zvtest
