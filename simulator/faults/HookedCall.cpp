#include "simulator/faults/HookedCall.h"

#include <array>
#include <cstdio>
#include <thread>

#include "simulator/Library.h"

namespace zvsim {

namespace {

constexpr FunctionSet ending_streams =
    functions(Function::stop, Function::stream_delete, Function::camera_close, Function::close);

std::string hexadecimal(uint64_t number)
{
    std::array<char, 20> text{};
    std::snprintf(text.data(), text.size(), "0x%llX", static_cast<unsigned long long>(number));
    return text.data();
}

std::string text_of(CallLog& log, const Argument& argument)
{
    switch (argument.type) {
    case Argument::Type::number:
        return std::to_string(argument.value);
    case Argument::Type::text:
        return argument.text;
    case Argument::Type::pointer:
        return argument.value != 0 ? "given" : "null";
    case Argument::Type::handle:
        return log.name_of(Library::instance().kind_of(static_cast<uint32_t>(argument.value)),
                           argument.value);
    case Argument::Type::buffer:
        return argument.value != 0 ? log.name_of('b', argument.value) : "none";
    case Argument::Type::none:
        break;
    }
    return {};
}

std::string text_of(CallLog& log, const Target& target)
{
    switch (target.type) {
    case Target::Type::index:
        return " " + std::to_string(target.value);
    case Target::Type::handle:
    case Target::Type::buffer:
        return " " + text_of(log, Argument{"", target});
    case Target::Type::none:
        break;
    }
    return {};
}

/// What a function has made, by its name from now on.
std::string made_by(CallLog& log, const Call& call)
{
    switch (call.function) {
    case Function::stream_create:
    case Function::stream_create_and_alloc:
        return " " + log.name_of('s', *static_cast<const uint32_t*>(call.data));
    case Function::buffer_announce:
    case Function::buffer_alloc_and_announce:
        return " " + log.name_of('b', *static_cast<const uint64_t*>(call.data));
    default:
        return {};
    }
}

} // namespace

std::atomic<bool> HookedCall::s_is_needed{false};

HookedCall::HookedCall(const Call& call) : m_call{call}
{
    Library& library = Library::instance();
    {
        const Lock lock = library.lock();
        m_engine = library.faults();
        if (m_engine == nullptr)
            return;
        CallLog* const log = m_engine->call_log();
        if (log != nullptr) {
            m_own_stream = library.stream_of_this_thread();
            m_streams = library.streams_of(call.target);
        }
        if (log != nullptr && call.function == Function::start)
            release_streams(*log);
        m_verdict = m_engine->before(call, library.place_of(call.target));
    }
    if (m_verdict.delay.count() > 0)
        std::this_thread::sleep_for(m_verdict.delay);
}

void HookedCall::finish(uint64_t& result, bool is_good)
{
    if (m_engine == nullptr)
        return;
    const Lock lock = Library::instance().lock();
    const bool has_results = is_good && m_verdict.is_carried_out;
    if (has_results)
        m_engine->alter(m_call, m_verdict, result);
    if (CallLog* const log = m_engine->call_log())
        this->log(*log, result, is_good, has_results);
}

void HookedCall::log(CallLog& log, uint64_t result, bool is_good, bool has_results) const
{
    std::string line = row_of(m_call.function).name + text_of(log, m_call.target);
    for (const Argument& argument : m_call.arguments) {
        if (argument.type != Argument::Type::none)
            line += std::string{" "} + argument.name + '=' + text_of(log, argument);
    }
    line += " -> ";
    switch (row_of(m_call.function).result) {
    case ResultType::status:
        line += hexadecimal(result) + (has_results ? made_by(log, m_call) : "");
        break;
    case ResultType::handle:
        line += is_good ? log.name_of('g', result) : "none";
        break;
    default: // addresses and measured values differ from run to run
        line += is_good ? "something" : "nothing";
        break;
    }
    if (m_own_stream == 0 && has(ending_streams, m_call.function))
        release_streams(log);
    log.add(m_own_stream, m_own_stream == 0 ? line : log.name_of('s', m_own_stream) + ' ' + line);
    if (m_call.function == Function::close)
        log.flush();
}

void HookedCall::release_streams(CallLog& log) const
{
    for (const uint32_t stream : m_streams)
        log.release(stream);
}

} // namespace zvsim
