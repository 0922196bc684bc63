#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "description/Description.h"
#include "description/references.h"
#include "formula/Formula.h"
#include "nodes/CallBacks.h"
#include "nodes/FormulaCache.h"
#include "nodes/RegisterCache.h"
#include "zvgenapi/Limits.h"
#include "zvgenapi/Port.h"

namespace zvgenapi {

using formula::Number;

/// What one question of a user may still take.
struct Query {
    explicit Query(const Limits& limits) : steps(limits.evaluation_steps), bytes_left(limits.query_bytes) {}

    formula::StepBudget steps;
    std::uint64_t bytes_left;
    std::size_t depth{0};
    UseCache use_cache{UseCache::yes};
    bool ignores_locks{false}; // pIsLocked counts as false
};

/// Values and access modes that were found out within a query. Nothing of it is used after a write.
struct Known {
    std::uint64_t value_query{0}; // the query that it was found out in; 0: never
    std::uint64_t access_query{0};
    Number value;
    AccessMode access{AccessMode::NI};
};

/// What is behind a NodeMap and its handles: the description, and everything that changes. The functions of
/// this folder work on it. Those that do more than read the description expect to be called within `run`.
class Core {
public:
    Core(Description read, const Limits& allowed);

    /// Does some work for a user: under the lock, with budgets of its own, and followed by the call-backs
    /// that it causes.
    template <class Work>
    auto run(UseCache use_cache, const Work& work)
    {
        std::vector<std::uint64_t> due;
        if constexpr (std::is_void_v<decltype(work())>) {
            {
                Visit visit(*this, use_cache);
                work();
                due = visit.finish();
            }
            call(due);
        } else {
            auto result = [&] {
                Visit visit(*this, use_cache);
                auto answer = work();
                due = visit.finish();
                return answer;
            }();
            call(due);
            return result;
        }
    }
    template <class Work>
    auto run(const Work& work)
    {
        return run(UseCache::yes, work);
    }

    const Description description;
    const Limits limits;
    const ReverseReferences invalidated; // by a node: those that name it as their pInvalidator
    const ReverseReferences selecting;   // a node: those that name it as pSelected

    Query query;
    RegisterCache cache;
    FormulaCache formulas;
    CallBacks call_backs;
    std::vector<Known> known;
    std::uint64_t query_number{1};
    std::vector<NodeIndex> changed;                           // since call-backs were last told
    std::unordered_map<NodeIndex, Port*> ports;               // null: disconnected
    std::unordered_map<const Element*, Number> local_numbers; // written over those of the description
    std::unordered_map<const Element*, std::string> local_texts;
    std::unordered_map<NodeIndex, Number> imposed_minimum;
    std::unordered_map<NodeIndex, Number> imposed_maximum;
    std::unordered_map<NodeIndex, std::int64_t>
        polled; // nodes with a polling time: milliseconds since the last

private:
    /// The lock. The outermost one of a thread begins a query.
    class Visit {
    public:
        Visit(Core& core, UseCache use_cache);
        ~Visit() { --m_core.m_visits; }
        Visit(const Visit&) = delete;
        Visit& operator=(const Visit&) = delete;
        /// The call-backs that are due when the outermost visit ends.
        std::vector<std::uint64_t> finish();

    private:
        Core& m_core;
        const std::lock_guard<std::recursive_mutex> m_lock;
    };

    void call(const std::vector<std::uint64_t>& due);

    std::recursive_mutex m_mutex;
    int m_visits{0};
};

} // namespace zvgenapi
