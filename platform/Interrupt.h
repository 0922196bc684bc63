#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

namespace platform {

/// Turns the user's wish to stop (Ctrl-C, a termination request, a closed terminal) into an orderly end: the
/// first one sets a flag and runs the registered action, a second one gives up at once. One object per
/// process; the actions run on a thread of its own, never inside a signal handler.
class Interrupt {
public:
    /// give_up runs before the process ends on the second request: what must not stay behind is removed
    /// there.
    explicit Interrupt(std::function<void()> give_up);
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// Whether a stop was asked for.
    bool requested() const noexcept { return m_requested; }

    /// What the first request does, for as long as this object lives; at once if the request came before.
    class Action {
    public:
        Action(Interrupt& interrupt, std::function<void()> action);
        ~Action();
        Action(const Action&) = delete;
        Action& operator=(const Action&) = delete;

    private:
        Interrupt& m_interrupt;
    };

private:
    void watch();
    void on_request();

    std::function<void()> m_give_up;
    std::atomic<bool> m_requested{false};
    std::mutex m_mutex; // guards m_action: once an Action is gone, its function no longer runs
    std::function<void()> m_action;
    std::thread m_watcher;
};

/// The exit code of a program that the user interrupted.
constexpr int exit_interrupted = 130;

} // namespace platform
