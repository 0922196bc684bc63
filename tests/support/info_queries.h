#pragma once

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "GenTL/GenTL.h"

#include "support/pointers.h"

// The typed information queries, which all hand over a type, bytes and a size the same way.

namespace zvtest {

constexpr size_t default_room = static_cast<size_t>(-1);

/// What a query answered. Outputs that it did not write hold the untouched() pattern.
template <class T>
struct Info {
    GenTL::GC_ERROR code{0};
    GenTL::INFO_DATATYPE type{0};
    size_t size{0};
    T value{T()};
    std::vector<uint8_t> bytes; // the whole room, also when the query failed
};

/// Makes a query with `room` bytes: `query<uint64_t>(8, [&](auto... out) { return DSGetInfo(ds, 1, out...);
/// })`. By default a text has room for 1024 bytes and anything else for its size. `T` is std::string for
/// texts.
template <class T, class Function>
Info<T> query(size_t room, Function function)
{
    constexpr bool is_text = std::is_same_v<T, std::string>;
    Info<T> info;
    info.size = room != default_room ? room : is_text ? 1024 : sizeof(T);
    info.type = untouched<GenTL::INFO_DATATYPE>();
    const size_t bytes = info.size > sizeof(T) ? info.size : sizeof(T);
    info.bytes.assign(bytes, 0xA5);
    info.code = function(&info.type, static_cast<void*>(info.bytes.data()), &info.size);
    if constexpr (is_text) {
        const auto* const text = reinterpret_cast<const char*>(info.bytes.data());
        if (info.code == 0 && info.size > 0)
            info.value.assign(text, info.size <= bytes ? info.size - 1 : bytes); // the size counts the zero
    } else {
        std::memcpy(&info.value, info.bytes.data(), sizeof(T));
    }
    return info;
}

/// The same without a buffer: type and needed size only.
template <class Function>
Info<int> size_query(Function function)
{
    Info<int> info;
    info.size = untouched<size_t>();
    info.type = untouched<GenTL::INFO_DATATYPE>();
    info.code = function(&info.type, static_cast<void*>(nullptr), &info.size);
    return info;
}

} // namespace zvtest
