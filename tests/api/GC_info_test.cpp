#include <filesystem>

#include "api/lines.h"

// GCGetInfo and TLGetInfo, which share most of their answers.

namespace zvtest {

namespace {

struct ProducerText {
    TL_INFO_CMD command;
    const char* text;
};

constexpr ProducerText producer_texts[] = {
    {TL_INFO_ID, "GenTL_1.5"},
    {TL_INFO_VENDOR, "ZEVA Electronics Ltd."},
    {TL_INFO_MODEL, "GenTL Producer"},
    {TL_INFO_VERSION, "6.3.3"},
    {TL_INFO_TLTYPE, "Mixed"},
    {TL_INFO_NAME, "ZVGRLibGenTL.cti"},
    {TL_INFO_DISPLAYNAME, "ZEVA Electronics GenTL Producer"},
};

/// A text, a number and a command that nobody knows.
constexpr TL_INFO_CMD every_sort[] = {TL_INFO_ID, TL_INFO_CHAR_ENCODING, 11};

constexpr TL_INFO_CMD unknown_commands[] = {11, 12, 1000, -1, INT32_MIN, INT32_MAX};

class GCGetInfo : public OpenLibrary {
protected:
    template <class T>
    Info<T> ask(TL_INFO_CMD command, size_t room = default_room)
    {
        forget();
        return query<T>(room, [&](auto... out) { return GenTL::GCGetInfo(command, out...); });
    }
    static ExpectedLine enter(TL_INFO_CMD command)
    {
        return info_line("Enter GCGetInfo, info= " + std::to_string(command));
    }
    static ExpectedLine exit(TL_INFO_CMD command)
    {
        return info_line("Exit GCGetInfo, info= " + std::to_string(command));
    }
};

TEST_F(GCGetInfo, AnswersItsTexts)
{
    for (const ProducerText& row : producer_texts) {
        SCOPED_TRACE(row.text);
        const auto answer = ask<std::string>(row.command);
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(row.text, answer.value);
        EXPECT_EQ(answer.value.size() + 1, answer.size);
        if (row.command != TL_INFO_TLTYPE) {
            EXPECT_LOG_LINES(enter(row.command), exit(row.command));
        }
    }
}

TEST_F(GCGetInfo, LogsTheTransportType)
{
    ask<std::string>(TL_INFO_TLTYPE);
    EXPECT_LOG_LINES(enter(4), info_line("GCGetInfo - TL Type=Mixed"), exit(4));
}

TEST_F(GCGetInfo, AnswersTheSizesOfItsTexts)
{
    for (const ProducerText& row : producer_texts) {
        const auto answer = size_query([&](auto... out) { return GenTL::GCGetInfo(row.command, out...); });
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(std::string(row.text).size() + 1, answer.size);
    }
}

TEST_F(GCGetInfo, NamesTheFileThatItWasLoadedFrom)
{
    const std::filesystem::path path = ask<std::string>(TL_INFO_PATHNAME).value;
    EXPECT_TRUE(path.is_absolute());
    EXPECT_TRUE(std::filesystem::is_regular_file(path)) << path;
    EXPECT_EQ(ZV_PROGRAM_NAME, path.stem()); // these tests have the producer linked in
}

TEST_F(GCGetInfo, AnswersItsNumbers)
{
    const auto encoding = ask<int32_t>(TL_INFO_CHAR_ENCODING);
    EXPECT_EQ(GC_ERR_SUCCESS, encoding.code);
    EXPECT_EQ(INFO_DATATYPE_INT32, encoding.type);
    EXPECT_EQ(TL_CHAR_ENCODING_ASCII, encoding.value);
    EXPECT_EQ(4U, encoding.size);
    EXPECT_LOG_LINES(enter(8), exit(8));

    const auto major = ask<uint32_t>(TL_INFO_GENTL_VER_MAJOR);
    EXPECT_EQ(INFO_DATATYPE_UINT32, major.type);
    EXPECT_EQ(1U, major.value);
    const auto minor = ask<uint32_t>(TL_INFO_GENTL_VER_MINOR);
    EXPECT_EQ(INFO_DATATYPE_UINT32, minor.type);
    EXPECT_EQ(5U, minor.value);
}

TEST_F(GCGetInfo, WritesNumbersIntoTheFirstBytes)
{
    const auto minor = ask<uint32_t>(TL_INFO_GENTL_VER_MINOR, 8);
    EXPECT_EQ(GC_ERR_SUCCESS, minor.code);
    EXPECT_EQ(5U, minor.value);
    EXPECT_EQ(4U, minor.size);
    EXPECT_EQ(0xA5, minor.bytes[4]);
}

TEST_F(GCGetInfo, LogsAndAnswersTheSizeThatANumberNeeds)
{
    const auto minor = ask<uint32_t>(TL_INFO_GENTL_VER_MINOR, 2);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, minor.code);
    EXPECT_EQ(INFO_DATATYPE_UINT32, minor.type);
    EXPECT_EQ(4U, minor.size);
    EXPECT_EQ(0xA5, minor.bytes[0]);
    EXPECT_LOG_LINES(enter(10), error_line("info= 10, size=2(expected=4)"),
                     FAILED_WITH(GC_ERR_BUFFER_TOO_SMALL));
}

TEST_F(GCGetInfo, DoesNotRecordANumberThatDoesNotFit)
{
    ask<std::string>(TL_INFO_ID, 1);
    const std::string before = last_error();
    ask<uint32_t>(TL_INFO_GENTL_VER_MINOR, 2);
    EXPECT_EQ(before, last_error());
}

TEST_F(GCGetInfo, CopiesATextWithoutItsTerminator)
{
    const auto id = ask<std::string>(TL_INFO_ID, 9);
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, id.code);
    EXPECT_EQ(INFO_DATATYPE_STRING, id.type);
    EXPECT_EQ(9U, id.size);
    EXPECT_EQ(0, std::memcmp("GenTL_1.5", id.bytes.data(), 9));
    const std::string text =
        "GCGetInfo - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL termination (9/10)";
    EXPECT_LOG_LINES(enter(0), error_line(text), text_failed_with(GC_ERR_INVALID_PARAMETER));
    EXPECT_EQ(text, last_error());
}

TEST_F(GCGetInfo, CopiesTheBeginningOfAText)
{
    const auto id = ask<std::string>(TL_INFO_ID, 4);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, id.code);
    EXPECT_EQ(4U, id.size);
    EXPECT_EQ(0, std::memcmp("GenT\xA5", id.bytes.data(), 4));
    const std::string text =
        "GCGetInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (4/10)";
    EXPECT_LOG_LINES(enter(0), error_line(text), text_failed_with(GC_ERR_BUFFER_TOO_SMALL));
    EXPECT_EQ(text, last_error());
}

TEST_F(GCGetInfo, RefusesUnknownCommands)
{
    for (const TL_INFO_CMD command : unknown_commands) {
        const auto answer = ask<uint32_t>(command);
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, answer.code);
        EXPECT_TRUE(is_untouched(answer.type));
        EXPECT_EQ(0U, answer.size);
        EXPECT_TRUE(is_untouched(answer.value));
        EXPECT_LOG_LINES(enter(command), error_line("info=" + std::to_string(command)),
                         FAILED_WITH(GC_ERR_NOT_IMPLEMENTED));
    }
}

TEST_F(GCGetInfo, RefusesABufferOfNoSizeBeforeItLooksAtTheCommand)
{
    for (const TL_INFO_CMD command : every_sort) {
        const auto answer = ask<uint32_t>(command, 0);
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, answer.code);
        EXPECT_TRUE(is_untouched(answer.type));
        EXPECT_EQ(0U, answer.size);
        EXPECT_LOG_LINES(enter(command), FAILED_WITH(GC_ERR_INVALID_PARAMETER));
    }
}

TEST_F(GCGetInfo, RefusesMissingPointers)
{
    char byte = 0;
    INFO_DATATYPE type = untouched<INFO_DATATYPE>();
    size_t size = 1;
    for (INFO_DATATYPE* no_type : {static_cast<INFO_DATATYPE*>(nullptr), all_ones<INFO_DATATYPE*>()}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GenTL::GCGetInfo(TL_INFO_ID, no_type, &byte, &size));
        EXPECT_EQ(1U, size);
        EXPECT_LOG_LINES(enter(0), FAILED_WITH(GC_ERR_INVALID_PARAMETER));
    }
    for (size_t* no_size : {static_cast<size_t*>(nullptr), all_ones<size_t*>()}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GenTL::GCGetInfo(TL_INFO_ID, &type, &byte, no_size));
        EXPECT_TRUE(is_untouched(type));
        EXPECT_LOG_LINES(enter(0), FAILED_WITH(GC_ERR_INVALID_PARAMETER));
    }
}

TEST_F(GCGetInfo, TakesABufferWithAllBitsSetAsASizeQuery)
{
    INFO_DATATYPE type = 0;
    size_t size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::GCGetInfo(TL_INFO_ID, &type, all_ones<void*>(), &size));
    EXPECT_EQ(10U, size);
}

class TLGetInfo : public OpenSystem {
protected:
    template <class T>
    Info<T> ask(TL_INFO_CMD command, size_t room = default_room)
    {
        forget();
        return query<T>(room, [&](auto... out) { return GenTL::TLGetInfo(tl, command, out...); });
    }
    ExpectedLine enter(TL_INFO_CMD command)
    {
        return info_line("Enter TLGetInfo, handle=0x" + hex16(tl) + ", info=" + std::to_string(command));
    }
};

TEST_F(TLGetInfo, AnswersItsTextsWithoutTheExtraLineOfTheTransportType)
{
    for (const ProducerText& row : producer_texts) {
        SCOPED_TRACE(row.text);
        const auto answer = ask<std::string>(row.command);
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(row.text, answer.value);
        EXPECT_EQ(answer.value.size() + 1, answer.size);
        EXPECT_LOG_LINES(enter(row.command), info_line("Exit TLGetInfo"));
    }
}

TEST_F(TLGetInfo, NeedsNoScan)
{
    ask<std::string>(TL_INFO_ID);
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(TLGetInfo, AnswersTheSizesOfItsTexts)
{
    for (const ProducerText& row : producer_texts) {
        const auto answer =
            size_query([&](auto... out) { return GenTL::TLGetInfo(tl, row.command, out...); });
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(std::string(row.text).size() + 1, answer.size);
    }
}

TEST_F(TLGetInfo, NamesTheSameFileAsGCGetInfo)
{
    const auto path =
        query<std::string>(1024, [](auto... out) { return GenTL::GCGetInfo(TL_INFO_PATHNAME, out...); });
    EXPECT_EQ(path.value, ask<std::string>(TL_INFO_PATHNAME).value);
    EXPECT_NE("", path.value);
}

TEST_F(TLGetInfo, AnswersAndLogsTheCharacterEncoding)
{
    const auto encoding = ask<int32_t>(TL_INFO_CHAR_ENCODING);
    EXPECT_EQ(GC_ERR_SUCCESS, encoding.code);
    EXPECT_EQ(INFO_DATATYPE_INT32, encoding.type);
    EXPECT_EQ(TL_CHAR_ENCODING_ASCII, encoding.value);
    EXPECT_EQ(4U, encoding.size);
    EXPECT_LOG_LINES(enter(8), info_line("Type INFO_DATATYPE_INT32: value=0"), info_line("Exit TLGetInfo"));
}

TEST_F(TLGetInfo, LogsNoNumberThatItDoesNotWrite)
{
    const auto encoding =
        size_query([&](auto... out) { return GenTL::TLGetInfo(tl, TL_INFO_CHAR_ENCODING, out...); });
    EXPECT_EQ(4U, encoding.size);
    EXPECT_LOG_LINES(enter(8), info_line("Exit TLGetInfo"));
}

TEST_F(TLGetInfo, IsSilentAboutANumberThatDoesNotFit)
{
    const auto encoding = ask<int32_t>(TL_INFO_CHAR_ENCODING, 2);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, encoding.code);
    EXPECT_EQ(INFO_DATATYPE_INT32, encoding.type);
    EXPECT_EQ(4U, encoding.size);
    EXPECT_EQ(0xA5, encoding.bytes[0]);
    EXPECT_LOG_LINES(enter(8));
}

TEST_F(TLGetInfo, RecordsATextThatDoesNotFit)
{
    const auto type = ask<std::string>(TL_INFO_TLTYPE, 3);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, type.code);
    EXPECT_EQ(3U, type.size);
    const std::string text =
        "TLGetInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (3/6)";
    EXPECT_LOG_LINES(enter(4), error_line(text), text_failed_with(GC_ERR_BUFFER_TOO_SMALL));
    EXPECT_EQ(text, last_error());
}

TEST_F(TLGetInfo, RefusesUnknownCommandsAndTheVersionNumbers)
{
    for (const TL_INFO_CMD command : {9, 10, 11, 1000, -1}) {
        const auto answer = ask<uint32_t>(command);
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, answer.code);
        EXPECT_TRUE(is_untouched(answer.type));
        EXPECT_EQ(0U, answer.size);
        EXPECT_LOG_LINES(enter(command), error_line("info= " + std::to_string(command)),
                         FAILED_WITH(GC_ERR_NOT_IMPLEMENTED));
    }
}

TEST_F(TLGetInfo, RefusesABufferOfNoSizeBeforeItLooksAtTheCommand)
{
    for (const TL_INFO_CMD command : every_sort) {
        const auto answer = ask<uint32_t>(command, 0);
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, answer.code);
        EXPECT_TRUE(is_untouched(answer.type));
        EXPECT_LOG_LINES(enter(command), FAILED_WITH(GC_ERR_INVALID_PARAMETER));
    }
}

TEST_F(TLGetInfo, TakesABufferWithAllBitsSetAsASizeQuery)
{
    INFO_DATATYPE type = 0;
    size_t size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLGetInfo(tl, TL_INFO_NAME, &type, all_ones<void*>(), &size));
    EXPECT_EQ(17U, size);
}

} // namespace

} // namespace zvtest
