#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <vector>

namespace zvtest {

/// One argument. Numbers and pointers compare by value, regardless of their width; texts by content.
class Argument {
public:
    template <class Number, class = std::enable_if_t<std::is_integral_v<Number> || std::is_enum_v<Number>>>
    Argument(Number number)
        : m_kind(Kind::number), m_value(static_cast<uint64_t>(static_cast<int64_t>(number)))
    {
    }
    Argument(std::nullptr_t) : m_kind(Kind::pointer) {}
    Argument(const void* pointer) : m_kind(Kind::pointer), m_value(reinterpret_cast<uintptr_t>(pointer)) {}
    /// A text; null is the null pointer.
    Argument(const char* text);
    Argument(const std::string& text) : m_kind(Kind::text), m_text(text) {}

    /// Equal to every argument.
    static Argument anything();

    bool operator==(const Argument& other) const;

    /// The number or address; 0 for a text.
    uint64_t number() const { return m_value; }
    /// The address that was passed, for looking at what it points to.
    void* pointer() const { return reinterpret_cast<void*>(static_cast<uintptr_t>(m_value)); }

    friend std::ostream& operator<<(std::ostream& out, const Argument& argument);

private:
    enum class Kind { number, pointer, text, anything };
    Kind m_kind;
    uint64_t m_value{0};
    std::string m_text;
};

/// Stands for any argument in an expected call.
inline Argument any() { return Argument::anything(); }

/// One call. Output parameters are not among the arguments, but for the buffers of registers and URLs; a size
/// that goes both ways is there with its value on entry.
struct Call {
    std::string function;
    std::vector<Argument> arguments;
    std::vector<uint8_t> data; // the bytes that a register write passed; not compared

    bool operator==(const Call& other) const
    {
        return function == other.function && arguments == other.arguments;
    }
    friend std::ostream& operator<<(std::ostream& out, const Call& call);
};

using Calls = std::vector<Call>;

/// A call as a test expects it: `call("ZVGR_BufferToQueue", buffer, 0)`.
template <class... Arguments>
Call call(const char* function, Arguments... arguments)
{
    return Call{function, {Argument(arguments)...}, {}};
}

} // namespace zvtest
