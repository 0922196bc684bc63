#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "genapi/values.h"
#include "support.h"
#include "zvgentl/RegisterText.h"

namespace zvgentl::test {

using namespace tool;

namespace {

struct NumberRow {
    const char* text;
    RegisterForm form;
    ByteOrder order;
    const char* bytes;
};

constexpr NumberRow numbers[] = {
    {"640", RegisterForm::unsigned_number, ByteOrder::little, "80 02 00 00"},
    {"640", RegisterForm::unsigned_number, ByteOrder::big, "00 00 02 80"},
    {"255", RegisterForm::unsigned_number, ByteOrder::big, "FF"},
    {"18446744073709551615", RegisterForm::unsigned_number, ByteOrder::big, "FF FF FF FF FF FF FF FF"},
    {"-2", RegisterForm::signed_number, ByteOrder::big, "FF FE"},
    {"-2", RegisterForm::signed_number, ByteOrder::little, "FE FF FF FF FF FF FF FF"},
    {"127", RegisterForm::signed_number, ByteOrder::little, "7F"},
    {"1.5", RegisterForm::floating_number, ByteOrder::big, "3F C0 00 00"},
    {"1.5", RegisterForm::floating_number, ByteOrder::little, "00 00 00 00 00 00 F8 3F"},
    {"ab", RegisterForm::text, ByteOrder::big, "61 62 00 00"},
};

} // namespace

TEST(RegisterText, TurnsBytesIntoValuesAndBack)
{
    for (const NumberRow& row : numbers) {
        const auto bytes = *parse_bytes(row.bytes);
        EXPECT_EQ(row.text, text_of_bytes(bytes, row.form, row.order)) << row.bytes;
        EXPECT_EQ(row.bytes, bytes_text(bytes_of_text(row.text, row.form, row.order, bytes.size())));
    }
}

TEST(RegisterText, RefusesWhatDoesNotFit)
{
    const auto refusal = [](const char* text, RegisterForm form, std::size_t length) {
        return error_of([&] { bytes_of_text(text, form, ByteOrder::big, length); });
    };
    EXPECT_EQ("\"256\" is not a whole number of 1 bytes without a sign",
              refusal("256", RegisterForm::unsigned_number, 1));
    EXPECT_THAT(refusal("-1", RegisterForm::unsigned_number, 4), HasSubstr("without a sign"));
    EXPECT_THAT(refusal("128", RegisterForm::signed_number, 1),
                HasSubstr("is not a whole number of 1 bytes"));
    EXPECT_THAT(refusal("1", RegisterForm::unsigned_number, 9), HasSubstr("1 to 8 bytes"));
    EXPECT_THAT(refusal("1.5", RegisterForm::floating_number, 3), HasSubstr("4 or 8 bytes"));
    EXPECT_THAT(refusal("x", RegisterForm::floating_number, 4), HasSubstr("is not a number"));
    EXPECT_THAT(refusal("12 3", RegisterForm::bytes, 0), HasSubstr("two hexadecimal digits"));
    EXPECT_THAT(refusal("", RegisterForm::bytes, 0), HasSubstr("two hexadecimal digits"));
    EXPECT_EQ("2 bytes do not fit: --length says 4", refusal("1234", RegisterForm::bytes, 4));
    EXPECT_EQ("5 bytes do not fit: --length says 4", refusal("abcde", RegisterForm::text, 4));
}

TEST(RegisterText, TakesBytesOfAnyNumberWithoutALength)
{
    EXPECT_EQ((std::vector<unsigned char>{0x12, 0x34, 0x56}),
              bytes_of_text("1234 56", RegisterForm::bytes, ByteOrder::big, 0));
}

TEST(RegisterText, ShowsSixteenBytesOnALine)
{
    std::vector<unsigned char> bytes(18, 0x41);
    bytes[1] = 0x1B;
    EXPECT_EQ("00001000  41 1B 41 41 41 41 41 41 41 41 41 41 41 41 41 41  |A.AAAAAAAAAAAAAA|\n"
              "00001010  41 41                                            |AA|\n",
              hex_dump(0x1000, bytes));
}

TEST(RegisterText, ReadsAddresses)
{
    EXPECT_EQ(4096U, parse_address("0x1000"));
    EXPECT_EQ(4096U, parse_address("4096"));
    for (const char* const text : {"", "0x", "-1", "12h", "0x10000000000000000"})
        EXPECT_EQ(std::nullopt, parse_address(text)) << text;
}

} // namespace zvgentl::test
