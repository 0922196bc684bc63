#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "GenTL/GenTL.h"

namespace zvgentl {

/// A number of a fixed width in bytes, as an answer to an info query. It costs no more than the number.
struct InfoNumber {
    uint64_t number;
    GenTL::INFO_DATATYPE type;
    uint32_t width;

    static InfoNumber int32(int32_t value)
    {
        return {static_cast<uint32_t>(value), GenTL::INFO_DATATYPE_INT32, 4};
    }
    static InfoNumber uint32(uint32_t value) { return {value, GenTL::INFO_DATATYPE_UINT32, 4}; }
    static InfoNumber uint64(uint64_t value) { return {value, GenTL::INFO_DATATYPE_UINT64, 8}; }
    static InfoNumber sizet(uint64_t value) { return {value, GenTL::INFO_DATATYPE_SIZET, 8}; }
    static InfoNumber bool8(bool value) { return {value ? 1U : 0U, GenTL::INFO_DATATYPE_BOOL8, 1}; }
    static InfoNumber ptr(const void* value)
    {
        return {reinterpret_cast<uintptr_t>(value), GenTL::INFO_DATATYPE_PTR, 8};
    }
};

/// The answer to an info query: a text, or a number. Numbers allocate nothing.
class InfoValue {
public:
    InfoValue(InfoNumber number) : m_number(number) {} // implicit: a number is an answer
    static InfoValue string(std::string text) { return InfoValue(std::move(text)); }
    static InfoValue int32(int32_t value) { return InfoNumber::int32(value); }
    static InfoValue uint32(uint32_t value) { return InfoNumber::uint32(value); }
    static InfoValue uint64(uint64_t value) { return InfoNumber::uint64(value); }
    static InfoValue sizet(uint64_t value) { return InfoNumber::sizet(value); }
    static InfoValue bool8(bool value) { return InfoNumber::bool8(value); }
    static InfoValue ptr(const void* value) { return InfoNumber::ptr(value); }

    bool is_string() const noexcept { return m_number.type == GenTL::INFO_DATATYPE_STRING; }
    /// Empty for a number.
    const std::string& text() const noexcept { return m_text; }
    const InfoNumber& number() const noexcept { return m_number; }

private:
    explicit InfoValue(std::string text)
        : m_number{0, GenTL::INFO_DATATYPE_STRING, 0}, m_text(std::move(text))
    {
    }

    InfoNumber m_number;
    std::string m_text;
};

} // namespace zvgentl
