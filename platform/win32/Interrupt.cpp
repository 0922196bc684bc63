#include "platform/Interrupt.h"

#include <mutex>
#include <shared_mutex>
#include <system_error>
#include <utility>

#include <windows.h>

namespace platform {

namespace {

// The system calls the handler on a thread that it starts for it, so there is no need for one of ours.
// Handlers share the mutex, so that a second request gets through while the first is at work; the end of the
// object waits for all of them.
std::shared_mutex handler_mutex;
std::function<void(int)> request_stop; // of the one object, while it lives

int exit_code_of(DWORD kind)
{
    if (kind == CTRL_CLOSE_EVENT)
        return exit_hung_up;
    return kind == CTRL_LOGOFF_EVENT || kind == CTRL_SHUTDOWN_EVENT ? exit_terminated : exit_interrupted;
}

bool pass_on(DWORD kind)
{
    const std::shared_lock lock(handler_mutex);
    if (!request_stop)
        return false;
    request_stop(exit_code_of(kind));
    return true;
}

BOOL WINAPI on_control(DWORD kind)
{
    if (!pass_on(kind))
        return FALSE;
    // In these cases the process ends as soon as this returns: the orderly end gets the time that the system
    // allows.
    if (kind == CTRL_CLOSE_EVENT || kind == CTRL_LOGOFF_EVENT || kind == CTRL_SHUTDOWN_EVENT)
        Sleep(INFINITE);
    return TRUE;
}

void set_request(std::function<void(int)> request)
{
    const std::unique_lock lock(handler_mutex);
    request_stop = std::move(request);
}

// Once, and never removed: the system holds a lock while a handler runs, so removing it while the console
// window is being closed would wait for the handler that does not return.
void install_handler()
{
    static std::once_flag installed;
    std::call_once(installed, [] {
        if (SetConsoleCtrlHandler(on_control, TRUE) == 0)
            throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                                    "cannot watch for Ctrl-C");
    });
}

} // namespace

Interrupt::Interrupt()
{
    install_handler();
    set_request([this](int exit_code) { on_request(exit_code); });
}

Interrupt::~Interrupt() { set_request(nullptr); }

} // namespace platform
