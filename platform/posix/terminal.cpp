#include "platform/terminal.h"

#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <tuple>

#include <fcntl.h>
#include <unistd.h>

namespace platform {

bool is_terminal(std::FILE* stream) noexcept { return isatty(fileno(stream)) != 0; }

void keep_bytes(std::FILE* /*stream*/) noexcept {}

void prepare_standard_streams() noexcept
{
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(number, F_GETFD) == -1) // the lowest free number, and so the next one that is opened
            std::ignore = open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    std::signal(SIGPIPE, SIG_IGN);
}

bool is_broken_pipe(std::FILE* /*stream*/, int error) noexcept { return error == EPIPE; }

} // namespace platform
