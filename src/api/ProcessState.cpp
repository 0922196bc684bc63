#include "api/ProcessState.h"

#include <cstdint>
#include <mutex>
#include <tuple>
#include <utility>

#include "modules/SystemModule.h"
#include "platform/process.h"

namespace zvgentl {

std::atomic<bool> library_is_initialised{false};
std::atomic<SystemModule*> system_module{nullptr};

namespace {

std::atomic<uint32_t> process_of_system{0};
const SystemModule* forgotten_system = nullptr; // so that it does not count as lost memory

std::mutex last_error_mutex; // a leaf, never held over a call
std::string last_error_text = "No Error";

} // namespace

bool set_initialised() noexcept { return !library_is_initialised.exchange(true); }

void set_uninitialised() noexcept { library_is_initialised.store(false); }

bool set_system(std::unique_ptr<SystemModule> system) noexcept
{
    SystemModule* none = nullptr;
    if (!system_module.compare_exchange_strong(none, system.get()))
        return false;
    std::ignore = system.release(); // the pointer above holds it now
    process_of_system = platform::process_id();
    return true;
}

std::unique_ptr<SystemModule> take_system(const void* handle) noexcept
{
    SystemModule* current = system_module.load();
    if (current == nullptr || current != handle || !system_module.compare_exchange_strong(current, nullptr))
        return nullptr;
    return std::unique_ptr<SystemModule>(current);
}

void end_system(std::unique_ptr<SystemModule> system) noexcept
{
    if (process_of_system != platform::process_id())
        forgotten_system = system.release();
}

std::string last_error()
{
    const std::lock_guard lock(last_error_mutex);
    return last_error_text;
}

void set_last_error(std::string text)
{
    const std::lock_guard lock(last_error_mutex);
    last_error_text = std::move(text);
}

} // namespace zvgentl
