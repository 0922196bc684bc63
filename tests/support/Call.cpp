#include "support/Call.h"

#include <ostream>

namespace zvtest {

Argument::Argument(const char* text) : m_kind(text == nullptr ? Kind::pointer : Kind::text)
{
    if (text != nullptr)
        m_text = text;
}

Argument Argument::anything()
{
    Argument argument{nullptr};
    argument.m_kind = Kind::anything;
    return argument;
}

bool Argument::operator==(const Argument& other) const
{
    if (m_kind == Kind::anything || other.m_kind == Kind::anything)
        return true;
    if ((m_kind == Kind::text) != (other.m_kind == Kind::text))
        return false;
    return m_value == other.m_value && m_text == other.m_text;
}

std::ostream& operator<<(std::ostream& out, const Argument& argument)
{
    switch (argument.m_kind) {
    case Argument::Kind::number:
        return out << static_cast<int64_t>(argument.m_value);
    case Argument::Kind::pointer:
        return out << "0x" << std::hex << argument.m_value << std::dec;
    case Argument::Kind::text:
        return out << '"' << argument.m_text << '"';
    case Argument::Kind::anything:
        return out << '_';
    }
    return out;
}

std::ostream& operator<<(std::ostream& out, const Call& call)
{
    out << call.function << '(';
    const char* separator = "";
    for (const Argument& argument : call.arguments) {
        out << separator << argument;
        separator = ", ";
    }
    return out << ')';
}

} // namespace zvtest
