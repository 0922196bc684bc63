#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "simulator/faults/Call.h"
#include "simulator/faults/FaultEngine.h"

namespace zvsim {

/// Asks the engine what happens to a call, waits when it is delayed, and notes down how it ended.
class HookedCall {
public:
    explicit HookedCall(const Call& call);

    /// One look at one variable: false as long as there is no engine.
    static bool is_needed() { return s_is_needed.load(std::memory_order_relaxed); }
    static void set_needed(bool is_needed) { s_is_needed.store(is_needed, std::memory_order_relaxed); }

    template <class Result, class Body>
    Result carry_out(Result failure, const Body& body)
    {
        const bool is_status = row_of(m_call.function).result == ResultType::status;
        Result result = is_status ? from_number<Result>(status_ok) : failure;
        if (m_verdict.is_carried_out)
            result = body();
        if (m_verdict.failure)
            result = is_status ? from_number<Result>(*m_verdict.failure) : failure;
        const bool is_good = is_status ? result == from_number<Result>(status_ok) : result != failure;
        uint64_t number = to_number(result);
        finish(number, is_good);
        return std::is_pointer_v<Result> ? result : from_number<Result>(number);
    }

private:
    template <class Result>
    static Result from_number(uint64_t number)
    {
        if constexpr (std::is_pointer_v<Result>)
            return nullptr;
        else
            return static_cast<Result>(number);
    }
    template <class Result>
    static uint64_t to_number(Result result)
    {
        if constexpr (std::is_pointer_v<Result>)
            return result != nullptr;
        else
            return static_cast<uint64_t>(result);
    }

    void finish(uint64_t& result, bool is_good);
    void log(CallLog& log, uint64_t result, bool is_good, bool has_results) const;
    void release_streams(CallLog& log) const;

    static std::atomic<bool> s_is_needed;

    const Call& m_call;
    std::shared_ptr<FaultEngine> m_engine;
    /// The stream whose thread this is.
    uint32_t m_own_stream{0};
    /// Those that belong to what the call is about; for the log.
    std::vector<uint32_t> m_streams;
    Verdict m_verdict;
};

} // namespace zvsim
