#include "platform/Interrupt.h"

#include <shared_mutex>
#include <system_error>
#include <utility>

#include <windows.h>

namespace zvgentl::tool {

namespace {

// The system calls the handler on a thread that it starts for it, so there is no need for one of ours.
// Handlers share the mutex, so that a second request gets through while the first is at work; the end of the
// object waits for all of them.
std::shared_mutex handler_mutex;
std::function<void()> request_stop; // of the one object, while it lives

bool pass_on()
{
    const std::shared_lock lock(handler_mutex);
    if (!request_stop)
        return false;
    request_stop();
    return true;
}

BOOL WINAPI on_control(DWORD kind)
{
    if (!pass_on())
        return FALSE;
    // In these cases the process ends as soon as this returns: the orderly end gets the time that the system
    // allows.
    if (kind == CTRL_CLOSE_EVENT || kind == CTRL_LOGOFF_EVENT || kind == CTRL_SHUTDOWN_EVENT)
        Sleep(INFINITE);
    return TRUE;
}

void set_request(std::function<void()> request)
{
    const std::unique_lock lock(handler_mutex);
    request_stop = std::move(request);
}

} // namespace

Interrupt::Interrupt(std::function<void()> give_up) : m_give_up(std::move(give_up))
{
    set_request([this] { on_request(); });
    if (SetConsoleCtrlHandler(on_control, TRUE) == 0) {
        const DWORD error = GetLastError();
        set_request(nullptr);
        throw std::system_error(static_cast<int>(error), std::system_category(), "cannot watch for Ctrl-C");
    }
}

Interrupt::~Interrupt()
{
    SetConsoleCtrlHandler(on_control, FALSE);
    set_request(nullptr);
}

} // namespace zvgentl::tool
