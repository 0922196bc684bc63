#include <cstring>

#include "api/InfoOutput.h"
#include "support/fixtures.h"

// Answers that no query gives. The exported functions are asked for all others.

namespace zvtest {

namespace {

using namespace zvgentl;

class InfoOutputTest : public OpenLibrary {
protected:
    INFO_DATATYPE type{untouched<INFO_DATATYPE>()};
    std::array<uint8_t, 16> room{};
    size_t size{16};

    /// Hands the value over into `bytes` of the room.
    GC_ERROR write(const InfoValue& value, size_t bytes)
    {
        forget();
        room.fill(0xA5);
        size = bytes;
        return InfoOutput(&type, room.data(), &size)
            .write(value, ApiCall{"TLGetInfo"}, TL_INFO_CHAR_ENCODING, NumberLog::written);
    }
    /// The bytes after those that were written are as they were.
    void expect_written(const void* bytes, size_t count)
    {
        EXPECT_EQ(0, std::memcmp(bytes, room.data(), count));
        for (size_t i = count; i < room.size(); ++i)
            EXPECT_EQ(0xA5, room[i]) << i;
    }
};

class StringRule : public InfoOutputTest {};

TEST_F(StringRule, ReportsTheBytesCopied)
{
    for (size_t bytes : {size_t{1}, size_t{2}, size_t{3}, size_t{4}}) {
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, write(InfoValue::string("Mixed"), bytes));
        EXPECT_EQ(INFO_DATATYPE_STRING, type);
        EXPECT_EQ(bytes, size);
        expect_written("Mixed", bytes);
    }
}

TEST_F(StringRule, TakesNoRoomForAMissingTerminator)
{
    for (const auto& [text, sizes] : {std::pair{"Mixed", "(0/6)"}, {"", "(0/1)"}}) {
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, write(InfoValue::string(text), 0));
        EXPECT_EQ(0U, size);
        expect_written("", 0);
        EXPECT_EQ(std::string("TLGetInfo - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL "
                              "termination ") +
                      sizes,
                  last_error());
    }
}

struct Number {
    InfoValue value;
    INFO_DATATYPE type;
    size_t width;
    uint64_t bits;
    const char* line; // about the value; null for a type that no query logs
};

TEST_F(InfoOutputTest, WritesNumbersInTheWidthOfTheirType)
{
    const void* const pointer = reinterpret_cast<const void*>(uintptr_t{0x0123456789ABCDEF});
    for (const Number& number : {
             Number{InfoValue::int32(-2), INFO_DATATYPE_INT32, 4, 0xFFFFFFFE,
                    "Type INFO_DATATYPE_INT32: value=-2"},
             Number{InfoValue::uint64(UINT64_MAX), INFO_DATATYPE_UINT64, 8, UINT64_MAX,
                    "Type INFO_DATATYPE_UINT64: value=18446744073709551615"},
             Number{InfoValue::sizet(0x0123456789ABCDEF), INFO_DATATYPE_SIZET, 8, 0x0123456789ABCDEF,
                    "Type INFO_DATATYPE_SIZET: value=81985529216486895"},
             Number{InfoValue::bool8(true), INFO_DATATYPE_BOOL8, 1, 1, "Type INFO_DATATYPE_BOOL8: value=1"},
             Number{InfoValue::uint32(0xFEDCBA98), INFO_DATATYPE_UINT32, 4, 0xFEDCBA98, nullptr},
             Number{InfoValue::ptr(pointer), INFO_DATATYPE_PTR, 8, 0x0123456789ABCDEF, nullptr},
         }) {
        EXPECT_EQ(GC_ERR_SUCCESS, write(number.value, 16));
        EXPECT_EQ(number.type, type);
        EXPECT_EQ(number.width, size);
        expect_written(&number.bits, number.width);
        if (number.line != nullptr) {
            EXPECT_LOG_LINES({Priority::information, number.line, "TLGetInfo"});
        }
    }
}

} // namespace

} // namespace zvtest
