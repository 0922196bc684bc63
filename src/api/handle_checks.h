#pragma once

#include <optional>
#include <utility>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "modules/CameraModule.h"
#include "modules/EventModule.h"
#include "modules/InterfaceModule.h"
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

/// Facts of a buffer that were found by its handle, if its stream is the one of the other handle and in the
/// tree. It is open then: a closed stream has no buffers.
inline BufferFacts* facts_of_stream(BufferFacts* facts, GenTL::DS_HANDLE handle) noexcept
{
    if (facts == nullptr)
        return nullptr;
    const StreamModule* const stream = facts->stream.get();
    return stream == handle && stream->is_Listed() ? facts : nullptr;
}

/// The facts of a buffer of an open stream, by one look-up and without a lock, when both handles are good.
/// Null when there is anything to refuse; then the checks of the two in turn say what. Who finds the facts'
/// buffer unchanged after reading them has read those of the handle.
inline BufferFacts* find_facts(GenTL::DS_HANDLE stream, GenTL::BUFFER_HANDLE handle) noexcept
{
    return facts_of_stream(buffer_index.find(handle), stream);
}

/// The same for a caller that tries again if it gets null, which may then also mean that a buffer is being
/// announced or revoked somewhere.
inline BufferFacts* glance_at_facts(GenTL::DS_HANDLE stream, GenTL::BUFFER_HANDLE handle) noexcept
{
    return facts_of_stream(buffer_index.glance(handle), stream);
}

/// A stream of the tree, open or not, or null.
StreamModule* find_stream(const void* handle);

/// Whether a stream, its camera and its interface are open.
inline bool has_open_owners(const StreamModule& stream) noexcept
{
    const CameraModule& camera = *stream.get_Camera();
    return stream.is_Open() && camera.is_Open() && camera.get_Parent()->is_Open();
}

} // namespace zvgentl
