#pragma once

#include <algorithm>
#include <ostream>
#include <string>

#include "support/fixtures.h"

// How a number of an info table is handed over, the same for every row.

namespace zvtest {

struct NumberRow {
    const char* name;
    int32_t command;
    INFO_DATATYPE type;
    size_t width;
    uint64_t value;
};

inline std::ostream& operator<<(std::ostream& out, const NumberRow& row) { return out << row.name; }

inline uint64_t number_in(const std::vector<uint8_t>& bytes, size_t width)
{
    uint64_t number = 0;
    for (size_t i = 0; i < width; ++i)
        number |= uint64_t{bytes[i]} << (8 * i);
    return number;
}

/// Asks for the row's value in every size of buffer. `ask` takes the three outputs.
template <class Ask>
void expect_number(const NumberRow& row, Ask ask)
{
    SCOPED_TRACE(row.name);
    const auto size = size_query(ask);
    EXPECT_EQ(GC_ERR_SUCCESS, size.code);
    EXPECT_EQ(row.type, size.type);
    EXPECT_EQ(row.width, size.size);

    const auto exact = query<uint64_t>(row.width, ask);
    EXPECT_EQ(GC_ERR_SUCCESS, exact.code);
    EXPECT_EQ(row.type, exact.type);
    EXPECT_EQ(row.width, exact.size);
    EXPECT_EQ(row.value, number_in(exact.bytes, row.width));

    const auto roomy = query<uint64_t>(16, ask);
    EXPECT_EQ(GC_ERR_SUCCESS, roomy.code);
    EXPECT_EQ(row.width, roomy.size);
    EXPECT_EQ(row.value, number_in(roomy.bytes, row.width));
    EXPECT_TRUE(std::all_of(roomy.bytes.begin() + static_cast<std::ptrdiff_t>(row.width), roomy.bytes.end(),
                            [](uint8_t fill) { return fill == 0xA5; }))
        << "written beyond the value";
}

/// Asks with one byte too few. Rows of one byte have no such buffer.
template <class Ask>
void expect_too_small(const NumberRow& row, Ask ask)
{
    SCOPED_TRACE(row.name);
    const auto tight = query<uint64_t>(row.width - 1, ask);
    EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, tight.code);
    EXPECT_EQ(row.type, tight.type);
    EXPECT_EQ(row.width, tight.size);
    EXPECT_TRUE(
        std::all_of(tight.bytes.begin(), tight.bytes.end(), [](uint8_t fill) { return fill == 0xA5; }));
}

/// The line that says so.
inline std::string too_small_line(const NumberRow& row)
{
    return "info= " + std::to_string(row.command) + ", size=" + std::to_string(row.width - 1) +
           "(expected=" + std::to_string(row.width) + ")";
}

} // namespace zvtest
