#pragma once

#include <array>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "api/lines.h"
#include "support/fixtures.h"

// The exported functions as one table, for the rules that hold for many of them: how each is called, what it
// takes, how it refuses and what it logs.

namespace zvtest {

/// One handle of every kind.
struct Handles {
    TL_HANDLE tl{nullptr};
    IF_HANDLE iface{nullptr};
    DEV_HANDLE dev{nullptr};
    PORT_HANDLE port{nullptr};
    DS_HANDLE ds{nullptr};
    BUFFER_HANDLE buffer{nullptr};
    EVENT_HANDLE event{nullptr};
};

/// What a function's handle names. A port is a module of any kind; a source of events too, but only a stream
/// has events.
enum class Kind { none, system, iface, device, stream, event, port, source };

/// Arguments that a function requires. All are pointers except the last two, which must not be 0.
enum class Needed { code, id, memory, text, size, type, number, handle, entries, room, frames };

/// When a function looks at the arguments that it requires.
enum class Order {
    first, // even before GCInitLib, without an enter line
    before_handle,
    behind_null_handle, // a null handle is refused earlier, every other one later
    behind_handle
};

/// How a function may find its handle.
enum class HandleState { open, null, unknown, closed, without_system };

/// How a call is refused.
struct Refusal {
    GC_ERROR code{GC_ERR_INVALID_HANDLE};
    std::vector<ExpectedLine> lines;                // after the enter line, without the timer's
    std::optional<std::string> recorded;            // as the last error
    uint32_t written_number{untouched<uint32_t>()}; // what the number output holds afterwards
};

struct Arguments;

/// A function. The row calls it with arguments that would do; what it does not say is as for most functions.
struct Function {
    const char* name;
    Kind kind;
    /// The enter line, with arguments in braces: `{size}`, `{handle16}` in 16 digits, `{handle32}` in those
    /// of its low 32 bits.
    const char* enter;
    GC_ERROR (*call)(Arguments& a);

    /// The priority of enter and exit lines.
    Function at(Priority priority) const { return with(&Function::traffic, priority); }
    /// A missing argument is refused with an exit line, or silently, or with another refusal.
    Function needs(const std::vector<Needed>& arguments, Order order_of_check) const
    {
        return with(&Function::needed, arguments).with(&Function::order, order_of_check);
    }
    Function needs_silently(const std::vector<Needed>& arguments, Order order_of_check) const
    {
        return needs(arguments, order_of_check).answers_missing({GC_ERR_INVALID_PARAMETER, {}, std::nullopt});
    }
    Function answers_missing(const Refusal& refusal) const { return with(&Function::missing, refusal); }
    /// How a handle is refused, where its kind does not say it.
    Function answers_handle(HandleState state, const Refusal& refusal) const
    {
        Function changed = *this;
        changed.refusals[state] = refusal;
        return changed;
    }
    /// How a buffer handle that the stream does not know is refused.
    Function answers_buffer(const Refusal& refusal) const { return with(&Function::bad_buffer, refusal); }
    /// What has to happen before the call, so that it gets as far as it can.
    Function after(void (*action)(const Handles&, Arguments&)) const
    {
        return with(&Function::prepare, action);
    }
    Function with_command(int32_t number) const { return with(&Function::command, number); }
    Function with_room(size_t bytes) const { return with(&Function::room, bytes); }
    Function timed() const { return with(&Function::is_timed, true); }
    /// The enter line comes after the check of the handle.
    Function entering_late() const { return with(&Function::enters_late, true); }

    Refusal refusal(HandleState state) const;
    /// The lines of a call that ended with `refusal`.
    std::vector<ExpectedLine> lines(const Arguments& a, const Refusal& refusal, bool is_entered) const;

    Priority traffic{Priority::information};
    bool is_timed{false};
    bool enters_late{false};
    int32_t command{0};
    size_t room{256};
    std::vector<Needed> needed{};
    Order order{Order::before_handle};
    Refusal missing{};
    std::map<HandleState, Refusal> refusals{}; // where the kind of handle does not say it
    std::optional<Refusal> bad_buffer{};
    void (*prepare)(const Handles& handles, Arguments& a){nullptr};

private:
    /// The same row with one member changed.
    template <class Member, class Value>
    Function with(Member Function::*member, const Value& value) const
    {
        Function changed = *this;
        changed.*member = value;
        return changed;
    }
};

std::ostream& operator<<(std::ostream& out, const Function& function);

/// All of them.
extern const std::vector<Function> functions;
const Function& function_named(const std::string& name);

/// Everything that a function could write. What was written shows against the pattern.
struct Outputs {
    explicit Outputs(size_t room) : size(room) { text.fill('\xA5'); }

    void* handle{untouched<void*>()};
    void* user{untouched<void*>()};
    uint32_t number{untouched<uint32_t>()};
    bool8_t changed{untouched<bool8_t>()};
    INFO_DATATYPE type{untouched<INFO_DATATYPE>()}; // or an error code
    std::array<char, 256> text;
    size_t size;
};

/// The arguments of one call. A test replaces what it wants to.
struct Arguments {
    Arguments(const Function& function, const Handles& handles);
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    /// Leaves out an argument: a pointer becomes `missing`, a number 0.
    void leave_out(Needed argument, void* missing);
    /// Whether nothing was written, but perhaps the number.
    bool are_untouched(uint32_t number = untouched<uint32_t>()) const;

    Outputs out;
    void* handle;
    BUFFER_HANDLE buffer;
    int32_t command;
    const char* id;
    uint64_t frames{17};
    PORT_REGISTER_STACK_ENTRY entry;
    void* memory;

    void** handle_out{&out.handle};
    void** user_out{&out.user};
    uint32_t* number{&out.number};
    bool8_t* changed{&out.changed};
    INFO_DATATYPE* type{&out.type};
    char* text{out.text.data()};
    size_t* size{&out.size};
    PORT_REGISTER_STACK_ENTRY* entries{&entry};

private:
    size_t m_size_given;
};

void* handle_of(Kind kind, const Handles& handles);

/// A test's name for a function: its own.
template <class Info>
std::string name_of_function(const Info& info)
{
    return info.param.name;
}

} // namespace zvtest
