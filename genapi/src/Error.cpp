#include "zvgenapi/Error.h"

#include <utility>

namespace zvgenapi {

namespace {

std::string whole_text(const std::string& message, const std::string& node, int line)
{
    std::string place = node;
    if (line > 0)
        place += (place.empty() ? "line " : " (line ") + std::to_string(line) + (node.empty() ? "" : ")");
    return place.empty() ? message : place + ": " + message;
}

} // namespace

const char* error_kind_name(ErrorKind kind) noexcept
{
    switch (kind) {
    case ErrorKind::description:
        return "description";
    case ErrorKind::limit:
        return "limit";
    case ErrorKind::unknown_node:
        return "unknown_node";
    case ErrorKind::wrong_type:
        return "wrong_type";
    case ErrorKind::access:
        return "access";
    case ErrorKind::range:
        return "range";
    case ErrorKind::value:
        return "value";
    case ErrorKind::formula:
        return "formula";
    case ErrorKind::cycle:
        return "cycle";
    case ErrorKind::port:
        return "port";
    case ErrorKind::time_out:
        return "time_out";
    }
    return "unknown";
}

Error::Error(ErrorKind kind, const std::string& message, std::string node, int line)
    : std::runtime_error(whole_text(message, node, line)), m_kind(kind), m_message(message),
      m_node(std::move(node)), m_line(line)
{
}

} // namespace zvgenapi
