#include "platform/Interrupt.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGHUP};
constexpr char end_of_watch = 0; // every other character is the number of a signal
constexpr int exit_by_signal = 128;

// The handler may do no more than write to a pipe; the watcher reads its other end.
std::array<int, 2> wake_pipe{-1, -1};
std::array<struct sigaction, signals.size()> previous{};

void send(char what) noexcept
{
    const int saved_errno = errno;
    while (write(wake_pipe[1], &what, 1) < 0 && errno == EINTR) {
    }
    errno = saved_errno;
}

extern "C" void zvgentl_on_signal(int number) { send(static_cast<char>(number)); }

void install_handlers()
{
    for (std::size_t i = 0; i < signals.size(); ++i) {
        sigaction(signals[i], nullptr, &previous[i]);
        if (previous[i].sa_handler == SIG_IGN) // as under nohup: whoever started us wants it ignored
            continue;
        struct sigaction ours {};
        ours.sa_handler = zvgentl_on_signal;
        ours.sa_flags = SA_RESTART;
        sigaction(signals[i], &ours, nullptr);
    }
}

void restore_handlers()
{
    for (std::size_t i = 0; i < signals.size(); ++i)
        sigaction(signals[i], &previous[i], nullptr);
}

} // namespace

Interrupt::Interrupt()
{
    if (pipe2(wake_pipe.data(), O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot create a pipe");
    m_watcher = std::thread([this] { watch(); });
    install_handlers();
}

Interrupt::~Interrupt()
{
    restore_handlers();
    send(end_of_watch);
    m_watcher.join();
    for (int& end : wake_pipe) {
        close(end);
        end = -1;
    }
}

void Interrupt::watch()
{
    for (;;) {
        char what = 0;
        const ssize_t count = read(wake_pipe[0], &what, 1);
        if (count < 0 && errno == EINTR)
            continue;
        if (count != 1 || what == end_of_watch)
            return;
        on_request(exit_by_signal + what);
    }
}

} // namespace platform
