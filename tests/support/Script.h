#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "support/Call.h"

namespace zvtest {

/// What a scripted call does instead of its default.
struct Answer {
    enum class Kind {
        returns,              // returns the value; nothing is written, nothing happens
        returns_after_effect, // does its default work, then returns the value anyway
        gives                 // succeeds and writes the value to its output; nothing else happens
    };
    Kind kind;
    uint64_t value;
};

/// One decision, written fluently: `fake.next("ZVGR_Open").answers(ZV_NO_HANDLE)`.
class Rule {
public:
    /// Only calls that satisfy the predicate count and are answered.
    Rule& when(std::function<bool(const Call&)> predicate);

    /// Returns `value`, writes no output and changes nothing.
    void answers(uint64_t value) { set(Answer::Kind::returns, value); }
    void answers_pointer(const void* pointer) { answers(reinterpret_cast<uintptr_t>(pointer)); }
    /// Does what it does by default, then returns `value`.
    void answers_after_effect(uint64_t value) { set(Answer::Kind::returns_after_effect, value); }
    /// Returns success and writes `value` to the function's output (handle, count, address); no other effect.
    void gives(uint64_t value) { set(Answer::Kind::gives, value); }

private:
    friend class Script;
    void set(Answer::Kind kind, uint64_t value);

    std::mutex* m_lock{nullptr};
    std::string m_function;
    std::function<bool(const Call&)> m_predicate;
    std::optional<Answer> m_answer;
    long m_countdown{0}; // for the n-th call: calls still to come, that one included; 0 for the other kinds
    bool m_lasting{false};
    bool m_used{false};
};

/// All decisions and hooks of one fake. Thread-safe; hooks are handed out to be run without a lock.
class Script {
public:
    using Hook = std::function<void(const Call&)>;

    /// The next call of the function without an answer.
    Rule& next(const std::string& function) { return add(function, 0, false); }
    /// The k-th call from now, 1 being the next.
    Rule& nth(const std::string& function, long k) { return add(function, k, false); }
    /// Every call without another rule; the last such rule wins.
    Rule& always(const std::string& function) { return add(function, 0, true); }

    void before(const std::string& function, Hook hook);
    void after(const std::string& function, Hook hook);

    std::optional<Answer> answer_for(const Call& call);
    std::vector<Hook> hooks_before(const std::string& function) const;
    std::vector<Hook> hooks_after(const std::string& function) const;

    /// Decisions for single calls that never came, as texts.
    std::vector<std::string> unused() const;
    void clear();

private:
    Rule& add(const std::string& function, long countdown, bool lasting);

    mutable std::mutex m_lock;
    std::vector<std::unique_ptr<Rule>> m_rules;
    std::multimap<std::string, Hook> m_before;
    std::multimap<std::string, Hook> m_after;
};

} // namespace zvtest
