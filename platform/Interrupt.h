#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

namespace platform {

/// Turns the user's wish to stop (Ctrl-C, a termination request, a closed terminal) into an orderly end: the
/// first one sets a flag and runs the registered action, a second one ends the process at once. One object
/// per process; the actions run on a thread of its own, never inside a signal handler.
class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// Whether a stop was asked for.
    bool requested() const noexcept { return m_exit_code != 0; }
    /// The exit code of a program that ends because of the first request: 128 and the number of the signal; 0
    /// when there was none.
    int exit_code() const noexcept { return m_exit_code; }

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
    void on_request(int exit_code);

    std::atomic<int> m_exit_code{0};
    std::mutex m_mutex; // guards m_action: once an Action is gone, its function no longer runs
    std::function<void()> m_action;
    std::thread m_watcher;
};

/// The exit codes of a program that was interrupted by Ctrl-C, by the end of its terminal, and by a request
/// to end: 128 and the number of the signal, on all systems.
constexpr int exit_interrupted = 130;
constexpr int exit_hung_up = 129;
constexpr int exit_terminated = 143;

} // namespace platform
