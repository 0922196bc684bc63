#include "api/Function.h"

#include <algorithm>
#include <ostream>
#include <utility>

namespace zvtest {

namespace {

bool is_missing(const void* pointer) { return pointer == nullptr || pointer == all_ones<const void*>(); }

/// `text` with the call's arguments in place of their names in braces.
std::string with_arguments(std::string text, const Arguments& a)
{
    const std::pair<const char*, std::string> replacements[] = {
        {"{handle16}", hex16(a.handle)},
        {"{handle32}", low_hex(a.handle)},
        {"{buffer16}", hex16(a.buffer)},
        {"{buffer32}", low_hex(a.buffer)},
        {"{memory32}", low_hex(a.memory)},
        {"{id}", is_missing(a.id) ? "" : a.id},
        {"{frames}", std::to_string(a.frames)},
        {"{size}", is_missing(a.size) ? "0" : std::to_string(*a.size)},
    };
    for (const auto& [name, value] : replacements) {
        const size_t at = text.find(name);
        if (at != std::string::npos)
            text.replace(at, std::string(name).size(), value);
    }
    return text;
}

Refusal invalid_handle(ExpectedLine line) { return {GC_ERR_INVALID_HANDLE, {std::move(line)}, std::nullopt}; }

Refusal refusal_of_device(const std::string& name, HandleState state)
{
    const bool is_nothing = state == HandleState::null || state == HandleState::without_system;
    const char* const reason = is_nothing                     ? ": NULL parameters value"
                               : state == HandleState::closed ? ": device is closed"
                                                              : "";
    return invalid_handle(info_line(name + " [GC_ERR_INVALID_HANDLE]" + reason));
}

/// The ID of what is open in every fixture.
const char* id_for(Kind kind)
{
    return kind == Kind::system ? "FG0" : kind == Kind::iface ? "Device00" : "Stream000";
}

uint8_t pixels[64];

} // namespace

Refusal Function::refusal(HandleState state) const
{
    for (const HandleState said : {state, HandleState::unknown}) {
        const auto found = refusals.find(said);
        if (found != refusals.end())
            return found->second;
    }
    const std::string text = std::string(name) + " - GC_ERR_INVALID_HANDLE";
    const bool is_closed = state == HandleState::closed;
    switch (kind) {
    case Kind::iface:
        return invalid_handle(info_line(is_closed ? text + ", grabber is closed" : text));
    case Kind::device:
        return refusal_of_device(name, state);
    case Kind::stream:
        return invalid_handle(info_line(is_closed ? text + ", stream is closed" : text));
    case Kind::event:
        return invalid_handle(error_line(text));
    default: // the system, silently
        return {GC_ERR_INVALID_HANDLE, {}, std::nullopt};
    }
}

std::vector<ExpectedLine> Function::lines(const Arguments& a, const Refusal& refusal, bool is_entered) const
{
    std::vector<ExpectedLine> all;
    if (is_entered)
        all.push_back({traffic, with_arguments(enter, a)});
    for (const ExpectedLine& line : refusal.lines)
        all.push_back({line.priority, with_arguments(line.message, a)});
    if (is_timed)
        all.push_back(duration_line());
    for (ExpectedLine& line : all) {
        line.function = name;
        line.logger = "ZVGRLibGenTL";
    }
    return all;
}

Arguments::Arguments(const Function& function, const Handles& handles)
    : out(function.room), handle(handle_of(function.kind, handles)), buffer(handles.buffer),
      command(function.command), id(id_for(function.kind)), entry{0xABCDEF, out.text.data(), 4},
      memory(pixels), m_size_given(function.room)
{
}

void Arguments::leave_out(Needed argument, void* missing)
{
    switch (argument) {
    case Needed::code:
    case Needed::type:
        type = static_cast<INFO_DATATYPE*>(missing);
        break;
    case Needed::id:
        id = static_cast<const char*>(missing);
        break;
    case Needed::memory:
        memory = missing;
        break;
    case Needed::text:
        text = static_cast<char*>(missing);
        break;
    case Needed::size:
        size = static_cast<size_t*>(missing);
        break;
    case Needed::number:
        number = static_cast<uint32_t*>(missing);
        break;
    case Needed::handle:
        handle_out = static_cast<void**>(missing);
        break;
    case Needed::entries:
        entries = static_cast<PORT_REGISTER_STACK_ENTRY*>(missing);
        break;
    case Needed::room:
        out.size = m_size_given = 0;
        break;
    case Needed::frames:
        frames = 0;
        break;
    }
}

bool Arguments::are_untouched(uint32_t expected_number) const
{
    const Outputs fresh(m_size_given);
    return out.handle == fresh.handle && out.user == fresh.user && out.number == expected_number &&
           out.changed == fresh.changed && out.type == fresh.type && out.text == fresh.text &&
           out.size == fresh.size;
}

void* handle_of(Kind kind, const Handles& handles)
{
    switch (kind) {
    case Kind::system:
        return handles.tl;
    case Kind::iface:
        return handles.iface;
    case Kind::device:
        return handles.dev;
    case Kind::event:
        return handles.event;
    case Kind::port:
        return handles.port;
    default:
        return handles.ds;
    }
}

} // namespace zvtest
