#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "GenTL/GenTL.h"

namespace zvgentl {

/// The answer to an info query: a text, or a number of a fixed width in bytes. Numbers allocate nothing.
class InfoValue {
public:
    static InfoValue string(std::string text) { return InfoValue(std::move(text)); }
    static InfoValue int32(int32_t value)
    {
        return {GenTL::INFO_DATATYPE_INT32, 4, static_cast<uint32_t>(value)};
    }
    static InfoValue uint32(uint32_t value) { return {GenTL::INFO_DATATYPE_UINT32, 4, value}; }
    static InfoValue uint64(uint64_t value) { return {GenTL::INFO_DATATYPE_UINT64, 8, value}; }
    static InfoValue sizet(uint64_t value) { return {GenTL::INFO_DATATYPE_SIZET, 8, value}; }
    static InfoValue bool8(bool value) { return {GenTL::INFO_DATATYPE_BOOL8, 1, value ? 1U : 0U}; }
    static InfoValue ptr(const void* value)
    {
        return {GenTL::INFO_DATATYPE_PTR, 8, reinterpret_cast<uintptr_t>(value)};
    }

    GenTL::INFO_DATATYPE type() const noexcept { return m_type; }
    bool is_string() const noexcept { return m_type == GenTL::INFO_DATATYPE_STRING; }
    const std::string& text() const noexcept { return m_text; }
    size_t width() const noexcept { return m_width; }
    uint64_t number() const noexcept { return m_number; }

private:
    explicit InfoValue(std::string text) : m_type(GenTL::INFO_DATATYPE_STRING), m_text(std::move(text)) {}
    InfoValue(GenTL::INFO_DATATYPE type, size_t width, uint64_t number)
        : m_type(type), m_width(width), m_number(number)
    {
    }

    GenTL::INFO_DATATYPE m_type;
    size_t m_width{0};
    uint64_t m_number{0};
    std::string m_text;
};

} // namespace zvgentl
