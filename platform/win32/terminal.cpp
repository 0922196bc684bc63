#include "platform/terminal.h"

#include <windows.h> // before the headers that need it

#include <cerrno>

#include <fcntl.h>
#include <io.h>

namespace platform {

bool is_terminal(std::FILE* stream) noexcept
{
    // The run-time library takes the null device for a terminal as well, and consoles follow control
    // sequences only when they are asked to.
    auto* const console = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) != 0 &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void keep_bytes(std::FILE* stream) noexcept { _setmode(_fileno(stream), _O_BINARY); }

void prepare_standard_streams() noexcept {} // neither happens on this system

bool is_broken_pipe(std::FILE* stream, int error) noexcept
{
    if (error == EPIPE)
        return true;
    // The run-time library has no number of its own for a pipe whose reader is gone.
    auto* const handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    return error == EINVAL && GetFileType(handle) == FILE_TYPE_PIPE;
}

} // namespace platform
