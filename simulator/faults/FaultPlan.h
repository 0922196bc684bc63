/// \file FaultPlan.h
/// What is to go wrong, as it was configured. Plain values.
#pragma once

#include "simulator/Status.h"
#include "simulator/faults/FaultKind.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace zvsim {

/// Where something goes wrong. Indices are those of the configuration, whatever is plugged in.
struct Place {
    static constexpr uint32_t none = std::numeric_limits<uint32_t>::max();
    uint32_t grabber = none;
    uint32_t camera = none;
};

/// When a fault happens: at those of its opportunities for which all the given conditions hold.
struct Trigger {
    uint64_t first = 0; ///< The first opportunity (frame) that it happens at, counted from 0.
    uint64_t last = std::numeric_limits<uint64_t>::max();
    uint64_t every = 1;       ///< From the first one on.
    bool is_by_frame = false; ///< `first` and `last` are numbers of frames, not of opportunities.
    enum class Since : uint8_t { scan, start };
    std::optional<std::chrono::nanoseconds> after;
    Since since = Since::scan;
    double probability = 1;
};

/// How long something that is lost stays away; nothing of both: for good.
struct Absence {
    std::optional<uint32_t> scans; ///< It is missing in that many lists.
    std::optional<std::chrono::nanoseconds> time;
};

struct FaultRule {
    FaultKind kind = FaultKind::call_fails;
    Place place;                     ///< none: every grabber, every camera.
    FunctionSet functions = 0;       ///< Of calls: those that it happens to.
    std::string name;                ///< Of values: the one that it happens to; empty: all.
    std::optional<uint32_t> command; ///< Of stream and buffer information: the same.
    Trigger when;
    uint64_t times = std::numeric_limits<uint64_t>::max(); ///< How often it happens at most.
    uint32_t status = status_failed;                       ///< What a failing call answers.
    int64_t amount = 0;
    std::chrono::microseconds time{0};
    Absence absence;
};

/// A cable that is pulled, or plugged in again.
struct PlugEvent {
    std::optional<std::chrono::nanoseconds> at; ///< Since the first scan.
    uint64_t scan = 0;                          ///< Without a time: before this scan, the first one being 1.
    bool is_plugged = false;
    Place place;
};

struct FaultPlan {
    bool is_enabled = true; ///< Else there are neither faults nor events.
    uint64_t seed = 0;
    std::vector<FaultRule> faults;
    std::vector<PlugEvent> events;
    std::filesystem::path call_log; ///< Absolute path; empty: none.
};

} // namespace zvsim
