#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

#include "support/fixtures.h"

// The functions of the system, interface and device families as tables, for what all of them have in common,
// and the lines that they write.

namespace zvtest {

inline ExpectedLine info_line(const std::string& message) { return {Priority::information, message}; }
inline ExpectedLine error_line(const std::string& message) { return {Priority::error, message}; }
/// What the scope timer of three functions writes last.
inline ExpectedLine duration_line() { return info_line("duration: 12 usec"); }

/// A code as lines print it behind "0x".
inline std::string code_text(GC_ERROR code) { return low_hex(static_cast<uint32_t>(code)); }

inline ExpectedLine failed_with(const std::string& name, GC_ERROR code)
{
    return error_line("Exit, Returning error " + name + " (0x" + code_text(code) + ")");
}
/// `FAILED_WITH(GC_ERR_INVALID_ID)`: the exit line of the code.
#define FAILED_WITH(code) ::zvtest::failed_with(#code, code)

/// The exit line of a text that did not fit, which names no code.
inline ExpectedLine text_failed_with(GC_ERROR code)
{
    return error_line("Exit, Returning error ret (0x" + code_text(code) + ")");
}

/// Everything that a function of these families could write. What was written shows against the pattern.
struct ModuleOutputs {
    ModuleOutputs() { text.fill('\xA5'); }
    bool are_untouched() const;

    void* handle{untouched<void*>()};
    uint32_t number{untouched<uint32_t>()};
    bool8_t changed{untouched<bool8_t>()};
    INFO_DATATYPE type{untouched<INFO_DATATYPE>()};
    std::array<char, 64> text;
    size_t size{64};
};

/// One function that takes a module handle, called with arguments that would do, and the line that it enters
/// with.
struct ModuleFunction {
    const char* name;
    GC_ERROR (*call)(void* handle, ModuleOutputs& out);
    std::string (*enter)(void* handle);
    bool is_timed{false};

    /// The enter line, `reported`, and the timer's line.
    std::vector<ExpectedLine> lines(void* handle, const std::vector<ExpectedLine>& reported) const;
};

std::ostream& operator<<(std::ostream& out, const ModuleFunction& function);

extern const std::vector<ModuleFunction> system_functions;
extern const std::vector<ModuleFunction> interface_functions;
extern const std::vector<ModuleFunction> device_functions;

/// How a function answers a pointer argument that is null or has all bits set: GC_ERR_INVALID_PARAMETER, and
/// `reported` behind its enter line.
struct MissingPointer {
    enum class Order { before_handle, behind_handle };

    const char* function;
    const char* argument;
    GC_ERROR (*call)(void* handle, void* missing, ModuleOutputs& out);
    Order order;
    std::vector<ExpectedLine> reported; // the timer's line among them

    bool precedes_handle() const { return order == Order::before_handle; }
};

std::ostream& operator<<(std::ostream& out, const MissingPointer& row);

/// Calls `row` on `handle` and expects it to stop at the missing pointer.
void expect_missing(const MissingPointer& row, void* handle, void* missing);

/// A row's name for a test: the function's, and the argument's where there is one.
template <class Info>
std::string name_of_row(const Info& info)
{
    if constexpr (std::is_same_v<decltype(info.param), MissingPointer>)
        return std::string(info.param.function) + "_" + info.param.argument;
    else
        return info.param.name;
}

/// One handle of every kind below the system.
struct ModuleHandles {
    IF_HANDLE iface;
    DEV_HANDLE dev;
    PORT_HANDLE port;
    DS_HANDLE ds;
    BUFFER_HANDLE buffer;
    EVENT_HANDLE event;
};

/// Expects the handles to be refused as unknown ones, not as closed ones.
void expect_unknown(const ModuleHandles& handles);

} // namespace zvtest
