#include <algorithm>

#include "api/info_rows.h"

// What all info queries have in common, for every row of every query.

namespace zvtest {

namespace {

enum class Cases { rows, texts, numbers, queries };

bool is_among(const InfoRow& row, Cases cases)
{
    return cases == Cases::rows || cases == (row.is_text() ? Cases::texts : Cases::numbers);
}

std::vector<InfoCase> every(Cases cases)
{
    std::vector<InfoCase> all;
    for (const InfoQuery& query : info_queries()) {
        for (const Mode mode : query.habits.modes) {
            if (cases == Cases::queries)
                all.push_back({mode, &query});
            for (const InfoRow& row : query.rows) {
                if (is_among(row, cases))
                    all.push_back({mode, &query, &row});
            }
        }
    }
    return all;
}

class InfoQueries : public EverythingDescribed {
protected:
    Info<uint64_t> ask(int32_t command, size_t room)
    {
        forget();
        return query<uint64_t>(room, [&](auto... out) { return info().ask(asked, command, out...); });
    }

    ExpectedLine traffic(const std::string& text, int32_t command, size_t size = 0) const
    {
        return {info().habits.traffic, with_handles(text, asked, command, size), info().function,
                "ZVGRLibGenTL"};
    }
    ExpectedLine error(const std::string& message) const
    {
        return {Priority::error, message, info().function, "ZVGRLibGenTL"};
    }
    ExpectedLine exit_with(const std::string& name, GC_ERROR code) const
    {
        return error("Exit, Returning error " + name + " (0x" + low_hex(static_cast<uint32_t>(code)) + ")");
    }
    std::vector<ExpectedLine> entered(int32_t command, size_t size) const
    {
        return {traffic(info().enter, command, size)};
    }
    /// The query goes on to look at the command.
    std::vector<ExpectedLine> accepted(int32_t command, size_t size) const
    {
        std::vector<ExpectedLine> lines = entered(command, size);
        if (info().accepted != nullptr)
            lines.push_back(traffic(info().accepted, command));
        return lines;
    }

    /// Whether all bytes from the `first` one on are as they were before the call.
    static bool is_untouched_from(size_t first, const Info<uint64_t>& answer)
    {
        return std::all_of(answer.bytes.begin() + static_cast<std::ptrdiff_t>(first), answer.bytes.end(),
                           [](uint8_t byte) { return byte == 0xA5; });
    }
};

/// The answer of a row into rooms of several sizes.
class InfoRows : public InfoQueries {
protected:
    void SetUp() override
    {
        InfoQueries::SetUp();
        expected = row().bytes(asked);
    }

    Info<uint64_t> ask(size_t room) { return InfoQueries::ask(row().command, room); }

    std::vector<ExpectedLine> found(size_t size) const
    {
        std::vector<ExpectedLine> lines = accepted(row().command, size);
        if (row().line != nullptr)
            lines.push_back(traffic(row().line, row().command));
        return lines;
    }
    /// The line about a number that was written.
    ExpectedLine written() const
    {
        uint64_t number = 0;
        for (size_t i = expected.size(); i-- > 0;)
            number = number << 8 | expected[i];
        const char* const type = row().type == INFO_DATATYPE_INT32    ? "INT32"
                                 : row().type == INFO_DATATYPE_BOOL8  ? "BOOL8"
                                 : row().type == INFO_DATATYPE_UINT64 ? "UINT64"
                                                                      : "SIZET";
        return traffic("Type INFO_DATATYPE_" + std::string(type) + ": value=" + std::to_string(number), 0);
    }
    void expect_answer(const Info<uint64_t>& answer) const
    {
        EXPECT_EQ(GC_ERR_SUCCESS, answer.code);
        EXPECT_EQ(row().type, answer.type);
        EXPECT_EQ(expected.size(), answer.size);
        EXPECT_EQ(expected, Bytes(answer.bytes.begin(),
                                  answer.bytes.begin() + static_cast<std::ptrdiff_t>(expected.size())));
        EXPECT_TRUE(is_untouched_from(expected.size(), answer)) << "written beyond the value";
    }

    Bytes expected;
};

TEST_P(InfoRows, FillExactlyTheirRoom) { expect_answer(ask(expected.size())); }

TEST_P(InfoRows, LeaveTheRestOfALargerRoomAlone) { expect_answer(ask(expected.size() + 40)); }

TEST_P(InfoRows, AreLogged)
{
    ask(expected.size());
    std::vector<ExpectedLine> lines = found(expected.size());
    if (!row().is_text() && info().logs_written())
        lines.push_back(written());
    lines.push_back(traffic(info().exit, row().command));
    EXPECT_TRUE(logged_exactly(lines));
}

TEST_P(InfoRows, AskTheLibraryOnlyForWhatNothingElseKnows)
{
    ask(expected.size());
    EXPECT_EQ(row().calls == nullptr ? Calls{} : row().calls(asked), fake.calls());
}

TEST_P(InfoRows, GiveTypeAndSizeWithoutABuffer)
{
    for (void* const missing : {static_cast<void*>(nullptr), all_ones<void*>()}) {
        forget();
        auto type = untouched<INFO_DATATYPE>();
        size_t size = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, info().ask(asked, row().command, &type, missing, &size));
        EXPECT_EQ(row().type, type);
        EXPECT_EQ(expected.size(), size);
        std::vector<ExpectedLine> lines = found(0);
        lines.push_back(traffic(info().exit, row().command));
        EXPECT_TRUE(logged_exactly(lines)) << "no number is logged that was not written";
    }
}

INSTANTIATE_TEST_SUITE_P(, InfoRows, testing::ValuesIn(every(Cases::rows)),
                         testing::PrintToStringParamName());

class InfoTexts : public InfoRows {
protected:
    /// What fits is copied, and its size reported.
    void expect_cut(size_t room, const std::string& name, GC_ERROR code, const std::string& problem)
    {
        const auto answer = ask(room);
        EXPECT_EQ(code, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(room, answer.size);
        EXPECT_TRUE(std::equal(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(room),
                               answer.bytes.begin()));
        EXPECT_TRUE(is_untouched_from(room, answer));
        const std::string text = std::string(info().function) + " - " + name + ": " + problem + " (" +
                                 std::to_string(room) + "/" + std::to_string(expected.size()) + ")";
        std::vector<ExpectedLine> lines = found(room);
        lines.push_back(error(text));
        lines.push_back(exit_with("ret", code));
        EXPECT_TRUE(logged_exactly(lines));
        EXPECT_EQ(text, last_error());
    }
};

TEST_P(InfoTexts, AreCutWhenTheyDoNotFit)
{
    expect_cut(1, "GC_ERR_BUFFER_TOO_SMALL", GC_ERR_BUFFER_TOO_SMALL,
               "buffer length is too small to hold data");
    expect_cut(expected.size() - 2, "GC_ERR_BUFFER_TOO_SMALL", GC_ERR_BUFFER_TOO_SMALL,
               "buffer length is too small to hold data");
}

TEST_P(InfoTexts, AreRefusedWithoutTheirZero)
{
    expect_cut(expected.size() - 1, "GC_ERR_INVALID_PARAMETER", GC_ERR_INVALID_PARAMETER,
               "buffer size too small to contain NULL termination");
}

INSTANTIATE_TEST_SUITE_P(, InfoTexts, testing::ValuesIn(every(Cases::texts)),
                         testing::PrintToStringParamName());

class InfoNumbers : public InfoRows {};

// The rows of one byte have no smaller room than none at all.
TEST_P(InfoNumbers, AreNotWrittenWhenTheyDoNotFit)
{
    const std::string before = last_error();
    for (size_t room = info().habits.no_room == NoRoom::malformed ? 1 : 0; room < expected.size(); ++room) {
        const auto answer = ask(room);
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, answer.code);
        EXPECT_EQ(row().type, answer.type);
        EXPECT_EQ(expected.size(), answer.size);
        EXPECT_TRUE(is_untouched_from(0, answer));
        std::vector<ExpectedLine> lines = found(room);
        if (info().logs_too_small()) {
            lines.push_back(error("info= " + std::to_string(row().command) +
                                  ", size=" + std::to_string(room) +
                                  "(expected=" + std::to_string(expected.size()) + ")"));
            lines.push_back(exit_with("GC_ERR_BUFFER_TOO_SMALL", GC_ERR_BUFFER_TOO_SMALL));
        }
        EXPECT_TRUE(logged_exactly(lines));
        EXPECT_EQ(before, last_error());
    }
}

INSTANTIATE_TEST_SUITE_P(, InfoNumbers, testing::ValuesIn(every(Cases::numbers)),
                         testing::PrintToStringParamName());

TEST_P(InfoQueries, RefuseUnknownCommands)
{
    const std::string before = last_error();
    for (const int32_t command : info().unknown_commands) {
        SCOPED_TRACE(command);
        const auto answer = ask(command, 8);
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, answer.code);
        EXPECT_EQ(info().clears_size_for_unknown_commands ? 0U : 8U, answer.size);
        EXPECT_TRUE(is_untouched(answer.type));
        EXPECT_TRUE(is_untouched_from(0, answer));
        std::vector<ExpectedLine> lines = accepted(command, 8);
        lines.push_back(error(info().unknown_line + std::to_string(command)));
        lines.push_back(exit_with("GC_ERR_NOT_IMPLEMENTED", GC_ERR_NOT_IMPLEMENTED));
        EXPECT_TRUE(logged_exactly(lines));
        EXPECT_EQ(Calls{}, fake.calls());
        EXPECT_EQ(before, last_error());
    }
}

// Outputs that are refused with any other command as well.
TEST_P(InfoQueries, LookAtTheirOutputsBeforeTheCommand)
{
    const int32_t command = info().unknown_commands.front();
    auto type = untouched<INFO_DATATYPE>();
    auto value = untouched<uint64_t>();
    size_t size = 8;
    size_t none = 0;
    struct Outputs {
        INFO_DATATYPE* type;
        size_t* size;
        size_t printed_size;
    };
    std::vector<Outputs> outputs = {{nullptr, &size, 8},
                                    {all_ones<INFO_DATATYPE*>(), &size, 8},
                                    {&type, nullptr, 0},
                                    {&type, all_ones<size_t*>(), 0}};
    if (info().habits.no_room == NoRoom::malformed)
        outputs.push_back({&type, &none, 0});
    for (const Outputs& out : outputs) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, info().ask(asked, command, out.type, &value, out.size));
        std::vector<ExpectedLine> lines = entered(command, out.printed_size);
        lines.push_back(exit_with("GC_ERR_INVALID_PARAMETER", GC_ERR_INVALID_PARAMETER));
        EXPECT_TRUE(logged_exactly(lines));
    }
    EXPECT_TRUE(is_untouched(type));
    EXPECT_TRUE(is_untouched(value));
    EXPECT_EQ(8U, size);
}

TEST_P(InfoQueries, LookAtTheirHandlesBeforeTheCommand)
{
    if (std::string(info().function) == "GCGetInfo")
        return; // has no handle
    asked.tl = asked.iface = asked.dev = asked.ds = asked.buffer = asked.event = asked.port = nullptr;
    const auto answer = ask(info().unknown_commands.front(), 8);
    EXPECT_EQ(info().accepted == nullptr ? GC_ERR_INVALID_HANDLE : GC_ERR_NOT_IMPLEMENTED, answer.code);
    EXPECT_EQ(8U, answer.size);
    EXPECT_NOT_LOGGED(info().unknown_line + std::to_string(info().unknown_commands.front()));
}

INSTANTIATE_TEST_SUITE_P(, InfoQueries, testing::ValuesIn(every(Cases::queries)),
                         testing::PrintToStringParamName());

} // namespace

} // namespace zvtest
