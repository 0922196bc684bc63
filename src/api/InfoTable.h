#pragma once

#include <cstddef>
#include <cstdint>

#include "api/InfoValue.h"

namespace zvgentl {

/// One row of an info query: a command and how its value is read from the module that was asked.
template <class... Source>
struct InfoRow {
    int32_t command;
    InfoValue (*value)(const Source&...);
};

/// The row of a command, or null. In a table in the order of its commands most rows stand at their command's
/// number and are found at once.
template <class Row, size_t size>
constexpr const Row* find_row(const Row (&table)[size], int32_t command) noexcept
{
    const auto own_place = static_cast<size_t>(command);
    if (own_place < size && table[own_place].command == command)
        return &table[own_place];
    for (const Row& row : table) {
        if (row.command == command)
            return &row;
    }
    return nullptr;
}

} // namespace zvgentl
