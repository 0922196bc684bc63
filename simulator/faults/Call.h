#pragma once

#include <array>
#include <cstdint>

#include "simulator/faults/Function.h"

namespace zvsim {

/// What a call is about.
struct Target {
    enum class Type : uint8_t { none, index, handle, buffer };
    Type type{Type::none};
    uint64_t value{0};
};

inline Target grabber_index(uint32_t index) { return {Target::Type::index, index}; }
/// A grabber, camera or stream.
inline Target handle_target(uint32_t handle) { return {Target::Type::handle, handle}; }
inline Target buffer_target(uint64_t buffer) { return {Target::Type::buffer, buffer}; }

/// One more argument, for the log: a number, a text, or whether there is a pointer.
struct Argument {
    enum class Type : uint8_t { none, number, text, pointer, handle, buffer };

    Argument() = default;
    Argument(const char* its_name, uint64_t its_value) : name{its_name}, type{Type::number}, value{its_value}
    {
    }
    Argument(const char* its_name, const char* its_text)
        : name{its_name}, type{its_text != nullptr ? Type::text : Type::pointer}, text{its_text}
    {
    }
    Argument(const char* its_name, Target its_target)
        : name{its_name}, type{its_target.type == Target::Type::buffer ? Type::buffer : Type::handle},
          value{its_target.value}
    {
    }
    static Argument pointer(const char* its_name, const volatile void* its_value)
    {
        Argument argument{its_name, its_value != nullptr ? uint64_t{1} : uint64_t{0}};
        argument.type = Type::pointer;
        return argument;
    }

    const char* name{nullptr};
    Type type{Type::none};
    uint64_t value{0};
    const char* text{nullptr};
};

/// A call. `data` and `size` are where it writes its results to, null for functions that write none: of
/// register access and URLs buffer and size word, of everything else the one output.
struct Call {
    Function function;
    Target target;
    std::array<Argument, 3> arguments;
    void* data{nullptr};
    void* size{nullptr};
};

} // namespace zvsim
