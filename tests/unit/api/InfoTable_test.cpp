#include <gtest/gtest.h>

#include "api/InfoTable.h"

namespace zvgentl {

namespace {

struct Row {
    int32_t command;
};

TEST(InfoTable, FindsRowsAtTheirOwnPlaceAndElsewhere)
{
    constexpr Row table[] = {{0}, {7}, {1}, {-1}};
    for (const Row& row : table)
        EXPECT_EQ(&row, find_row(table, row.command)) << row.command;
    for (const int32_t unknown : {2, 3, 4, 8, -2})
        EXPECT_EQ(nullptr, find_row(table, unknown)) << unknown;
}

} // namespace

} // namespace zvgentl
