#include "support/Script.h"

#include <utility>

#include "support/AllocationFaults.h"

namespace zvtest {

namespace {

std::vector<Script::Hook> hooks_of(const std::multimap<std::string, Script::Hook>& hooks,
                                   const std::string& function)
{
    std::vector<Script::Hook> found;
    const auto range = hooks.equal_range(function);
    for (auto hook = range.first; hook != range.second; ++hook)
        found.push_back(hook->second);
    return found;
}

} // namespace

Rule& Rule::when(std::function<bool(const Call&)> predicate)
{
    const std::lock_guard<std::mutex> guard(*m_lock);
    m_predicate = std::move(predicate);
    return *this;
}

void Rule::set(Answer::Kind kind, uint64_t value)
{
    const std::lock_guard<std::mutex> guard(*m_lock);
    m_answer = Answer{kind, value};
}

Rule& Script::add(const std::string& function, long countdown, bool lasting)
{
    const PausedAllocationFaults pause;
    const std::lock_guard<std::mutex> guard(m_lock);
    m_rules.push_back(std::make_unique<Rule>());
    Rule& rule = *m_rules.back();
    rule.m_lock = &m_lock;
    rule.m_function = function;
    rule.m_countdown = countdown;
    rule.m_lasting = lasting;
    return rule;
}

void Script::before(const std::string& function, Hook hook)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_before.emplace(function, std::move(hook));
}

void Script::after(const std::string& function, Hook hook)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_after.emplace(function, std::move(hook));
}

std::optional<Answer> Script::answer_for(const Call& call)
{
    const std::lock_guard<std::mutex> guard(m_lock);
    Rule* counted = nullptr;
    Rule* next = nullptr;
    Rule* lasting = nullptr;
    for (const auto& rule : m_rules) {
        const bool speaks = rule->m_function == call.function && rule->m_answer && !rule->m_used &&
                            (!rule->m_predicate || rule->m_predicate(call));
        if (!speaks)
            continue;
        if (rule->m_lasting) {
            lasting = rule.get();
        } else if (rule->m_countdown > 0) {
            if (--rule->m_countdown == 0)
                counted = rule.get();
        } else if (next == nullptr) {
            next = rule.get();
        }
    }
    Rule* const chosen = counted != nullptr ? counted : next != nullptr ? next : lasting;
    if (chosen == nullptr)
        return std::nullopt;
    chosen->m_used = !chosen->m_lasting;
    return chosen->m_answer;
}

std::vector<Script::Hook> Script::hooks_before(const std::string& function) const
{
    const std::lock_guard<std::mutex> guard(m_lock);
    return hooks_of(m_before, function);
}

std::vector<Script::Hook> Script::hooks_after(const std::string& function) const
{
    const std::lock_guard<std::mutex> guard(m_lock);
    return hooks_of(m_after, function);
}

std::vector<std::string> Script::unused() const
{
    const std::lock_guard<std::mutex> guard(m_lock);
    std::vector<std::string> texts;
    for (const auto& rule : m_rules) {
        if (!rule->m_lasting && !rule->m_used)
            texts.push_back(rule->m_function);
    }
    return texts;
}

void Script::clear()
{
    const std::lock_guard<std::mutex> guard(m_lock);
    m_rules.clear();
    m_before.clear();
    m_after.clear();
}

} // namespace zvtest
