#pragma once

#include <optional>
#include <utility>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "modules/EventModule.h"
#include "modules/StreamModule.h"
#include "modules/handles.h"
#include "port/Port.h"

namespace zvgentl {

class DeviceModule;
class InterfaceModule;

/// Whether a check also refuses modules that are closed.
enum class Open { irrelevant, required };

/// What a handle check found: an object, held by `Holder` (a pointer or something that keeps the object
/// alive), or the code to return.
template <class Holder>
class Checked {
public:
    // Implicit, so that a check returns what it found: an object or a code.
    Checked(Holder object) : m_object(std::move(object)), m_error(GenTL::GC_ERR_SUCCESS) {}
    Checked(GenTL::GC_ERROR error) : m_error(error) {}

    explicit operator bool() const noexcept { return m_error == GenTL::GC_ERR_SUCCESS; }
    GenTL::GC_ERROR error() const noexcept { return m_error; }
    auto& operator*() const noexcept { return *m_object; }
    auto* operator->() const noexcept { return &*m_object; }

private:
    Holder m_object{};
    GenTL::GC_ERROR m_error;
};

// No handle is cast to an object. Each check looks for the handle's value among the objects of the live tree,
// by comparing addresses, and hands out the tree's own pointer. On failure it logs, with the caller's name,
// and answers GC_ERR_INVALID_HANDLE; it records no last error. The tree is read without a lock: consumers
// must not close modules that other threads use.

/// Not null and the one system; never logs.
bool is_system(GenTL::TL_HANDLE handle) noexcept;

Checked<InterfaceModule*> check_interface_handle(GenTL::IF_HANDLE handle, const ApiCall& call, Open open);
Checked<DeviceModule*> check_device_handle(GenTL::DEV_HANDLE handle, const ApiCall& call, Open open);
Checked<StreamModule*> check_stream_handle(GenTL::DS_HANDLE handle, const ApiCall& call, Open open);
/// A buffer of any stream, open or not.
Checked<PinnedBuffer> check_buffer_handle(GenTL::BUFFER_HANDLE handle, const ApiCall& call);
/// What an event handle stands for: the type that was registered, and where. The event itself may be gone as
/// soon as the check is done.
struct EventPlace {
    StreamModule* stream;
    GenTL::EVENT_TYPE type;
};

/// Also GC_ERR_NOT_AVAILABLE: for an event of a closed stream, camera or interface.
Checked<std::optional<EventPlace>> check_event_place(GenTL::EVENT_HANDLE handle, const ApiCall& call,
                                                     Open open);
/// The same, with a reference to the event.
Checked<EventRef> check_event_handle(GenTL::EVENT_HANDLE handle, const ApiCall& call, Open open);

/// The module that a handle names as a port, of any kind; no port for a closed one. Never logs.
Port find_port(const void* handle);

/// What any handle names, for functions that accept several kinds.
ModuleKind get_handle_type(const void* handle);

/// The facts of a buffer of an open stream, by one look-up and without a lock, when both handles are good.
/// Null when there is anything to refuse; then the checks of the two in turn say what. Who finds the facts'
/// buffer unchanged after reading them has read those of the handle.
[[gnu::always_inline]] inline const BufferFacts* find_facts(GenTL::DS_HANDLE stream_handle,
                                                            GenTL::BUFFER_HANDLE handle) noexcept
{
    const BufferFacts* const facts = buffer_index.find(handle);
    if (facts == nullptr)
        return nullptr;
    const StreamModule* const stream = facts->stream.get();
    return stream == stream_handle && stream->is_Listed() && stream->is_Open() ? facts : nullptr;
}

/// A stream of the tree, open or not, or null.
StreamModule* find_stream(const void* handle);

} // namespace zvgentl
