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

/// The row of a command, or null.
template <class Row, size_t size>
constexpr const Row* find_row(const Row (&table)[size], int32_t command) noexcept
{
    for (const Row& row : table) {
        if (row.command == command)
            return &row;
    }
    return nullptr;
}

} // namespace zvgentl
