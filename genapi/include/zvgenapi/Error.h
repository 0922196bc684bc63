#pragma once

#include <stdexcept>
#include <string>

namespace zvgenapi {

/// What went wrong.
enum class ErrorKind {
    description,  ///< the description is malformed, or contradicts itself
    limit,        ///< one of the Limits was reached
    unknown_node, ///< there is no node of this name
    wrong_type,   ///< the node does not have the interface that was asked for
    access,       ///< the access mode of the node does not allow it at the moment
    range,        ///< the value is outside the limits, off the increment, or not one of the valid values
    value,        ///< a value or a text that cannot be used here, or that the device should not have sent
    formula,      ///< a formula is malformed, or has no result for these operands
    cycle,        ///< the node depends on itself
    port,         ///< no port is connected, or it is of the wrong name
    time_out      ///< the device has not finished a command in time
};

/// The name of a kind, such as "unknown_node".
const char* error_kind_name(ErrorKind kind) noexcept;

/// The only type that leaves this library, besides what a Port throws and std::bad_alloc. The text is a whole
/// sentence that names the node and, where there is one, the line of the description.
class Error : public std::runtime_error {
public:
    /// `line` is 0, and `node` is empty, where there is none. The text becomes "node (line 7): message".
    Error(ErrorKind kind, const std::string& message, std::string node = {}, int line = 0);

    ErrorKind kind() const noexcept { return m_kind; }
    /// The node that the error is about; empty when it is about the whole description.
    const std::string& node() const noexcept { return m_node; }
    /// The line of the description, from 1; 0 when there is none.
    int line() const noexcept { return m_line; }
    /// The text without node and line.
    const std::string& message() const noexcept { return m_message; }

private:
    ErrorKind m_kind;
    std::string m_message;
    std::string m_node;
    int m_line;
};

} // namespace zvgenapi
