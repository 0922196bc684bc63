#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "simulator/faults/FaultKind.h"

// What is to go wrong, as it was configured. Plain values.

namespace zvsim {

/// Where something goes wrong. Indices are those of the configuration, whatever is plugged in.
struct Place {
    static constexpr uint32_t none = std::numeric_limits<uint32_t>::max();
    uint32_t grabber{none};
    uint32_t camera{none};
};

/// When a fault happens: at those of its opportunities for which all the given conditions hold.
struct Trigger {
    /// The first opportunity (frame) that it happens at, counted from 0.
    uint64_t first{0};
    uint64_t last{std::numeric_limits<uint64_t>::max()};
    /// From the first one on.
    uint64_t every{1};
    /// `first` and `last` are numbers of frames, not of opportunities.
    bool is_by_frame{false};
    enum class Since : uint8_t { scan, start };
    std::optional<std::chrono::nanoseconds> after;
    Since since{Since::scan};
    double probability{1};
};

/// How long something that is lost stays away; nothing of both: for good.
struct Absence {
    /// It is missing in that many lists.
    std::optional<uint32_t> scans;
    std::optional<std::chrono::nanoseconds> time;
};

struct FaultRule {
    FaultKind kind{FaultKind::call_fails};
    /// None: every grabber, every camera.
    Place place;
    /// Of calls: those that it happens to.
    FunctionSet functions{0};
    /// Of values: the one that it happens to; empty: all.
    std::string name;
    /// Of stream and buffer information: the same.
    std::optional<uint32_t> command;
    Trigger when;
    /// How often it happens at most.
    uint64_t times{std::numeric_limits<uint64_t>::max()};
    /// What a failing call answers.
    uint32_t status{status_failed};
    int64_t amount{0};
    std::chrono::microseconds time{0};
    Absence absence;
};

/// A cable that is pulled, or plugged in again.
struct PlugEvent {
    /// Since the first scan.
    std::optional<std::chrono::nanoseconds> at;
    /// Without a time: before this scan, the first one being 1.
    uint64_t scan{0};
    bool is_plugged{false};
    Place place;
};

struct FaultPlan {
    /// Else there are neither faults nor events.
    bool is_enabled{true};
    uint64_t seed{0};
    std::vector<FaultRule> faults;
    std::vector<PlugEvent> events;
    /// Absolute path; empty: none.
    std::filesystem::path call_log;
};

} // namespace zvsim
