#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>

// Pointers and patterns that tests pass to the exported functions, and how log lines print them.

namespace zvtest {

/// The pointer with all bits set, which counts as missing like null: `all_ones<uint32_t*>()`.
template <class Pointer>
Pointer all_ones()
{
    static_assert(std::is_pointer_v<Pointer>);
    return reinterpret_cast<Pointer>(UINTPTR_MAX);
}

/// A value that no function of the producer writes, to see whether an output was left alone.
template <class T>
T untouched()
{
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memset(&value, 0xA5, sizeof value);
    return value;
}

template <>
inline bool untouched<bool>() = delete;

/// Whether `value` still is what untouched() made.
template <class T>
bool is_untouched(const T& value)
{
    const T pattern = untouched<T>();
    return std::memcmp(&value, &pattern, sizeof value) == 0;
}

/// A pointer as log lines print it after "0x": 16 upper-case digits.
inline std::string hex16(const void* pointer)
{
    char text[17];
    std::snprintf(text, sizeof text, "%016llX",
                  static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(pointer)));
    return text;
}

/// The low 32 bits of a number in upper-case digits without leading zeros.
inline std::string low_hex(uint64_t number)
{
    char text[9];
    std::snprintf(text, sizeof text, "%X", static_cast<uint32_t>(number));
    return text;
}

/// A handle as log lines print it with "%X": its low 32 bits.
inline std::string low_hex(const void* handle) { return low_hex(reinterpret_cast<uintptr_t>(handle)); }

/// A number in lower-case digits without leading zeros, as "%llx" prints it.
inline std::string hex(uint64_t number)
{
    char text[17];
    std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(number));
    return text;
}

} // namespace zvtest
