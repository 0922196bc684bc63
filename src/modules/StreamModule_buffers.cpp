#include "modules/StreamModule.h"

#include <memory>
#include <new>
#include <string>
#include <tuple>

#include "log/Log.h"
#include "modules/grabber_info.h"

// The stream's buffers: announcing, queueing, revoking and moving them between the queues.

namespace zvgentl {

using namespace GenTL;

namespace {

struct OperationName {
    int32_t operation;
    const char* name;
};

constexpr OperationName operation_names[] = {
    {ACQ_QUEUE_INPUT_TO_OUTPUT, "ACQ_QUEUE_INPUT_TO_OUTPUT"},
    {ACQ_QUEUE_OUTPUT_DISCARD, "ACQ_QUEUE_OUTPUT_DISCARD"},
    {ACQ_QUEUE_ALL_TO_INPUT, "ACQ_QUEUE_ALL_TO_INPUT"},
    {ACQ_QUEUE_UNQUEUED_TO_INPUT, "ACQ_QUEUE_UNQUEUED_TO_INPUT"},
    {ACQ_QUEUE_ALL_DISCARD, "ACQ_QUEUE_ALL_DISCARD"},
    {flush_all_events, "FLUSH ALL EVENTS"},
};

} // namespace

std::string queue_operation_name(int32_t operation)
{
    for (const OperationName& row : operation_names) {
        if (row.operation == operation)
            return row.name;
    }
    return "UNSUPPORTED BUFFER QUEUE OPERATION " + std::to_string(operation);
}

BufferModule* StreamModule::new_buffer(void* memory, uint64_t size, void* private_pointer)
{
    if (const PinnedBuffer known = memory != nullptr ? m_pool.find_memory(memory, size) : PinnedBuffer()) {
        log_debug(stream_module_logger, "StreamModule::new_buffer", At{210},
                  "Found buffer 0x%016llX with handle=0x%llx, ptr=0x%016llX in buffer pool",
                  address(known.get()), static_cast<unsigned long long>(known->get_GrabberHandle()),
                  address(memory));
        known->set_Private(private_pointer);
        return known.get();
    }
    try {
        return is_Queued() ? announce_queued(memory, size, private_pointer)
                           : announce_cyclic(memory, size, private_pointer);
    } catch (const std::bad_alloc&) {
        // What the library announced before is released when the stream is deleted.
        return nullptr;
    }
}

/// How much of a ring frame and what follows it may be copied into a buffer of this size. The library is
/// asked only for a buffer that is large enough for the answer to matter.
uint64_t StreamModule::readable_of(uint64_t size) const
{
    constexpr uint64_t readable_beyond_frame = uint64_t{64} << 20U;
    if (size <= readable_beyond_frame)
        return size;
    uint64_t frame = 0;
    std::ignore = ZVGR_StreamGetInfo(get_Handle(), zv_stream_payload_at_creation, &frame); // a failure: 0
    return size - readable_beyond_frame <= frame ? size : frame + readable_beyond_frame;
}

BufferModule* StreamModule::announce_cyclic(void* memory, uint64_t size, void* private_pointer)
{
    constexpr uint64_t no_library_buffer = 0;
    auto buffer = std::make_unique<BufferModule>(*this, memory, size, no_library_buffer, private_pointer);
    buffer->limit_copy(readable_of(size));
    return m_pool.add(std::move(buffer));
}

BufferModule* StreamModule::announce_queued(void* memory, uint64_t size, void* private_pointer)
{
    uint64_t handle = 0;
    if (memory != nullptr) {
        if (!succeeded(ZVGR_BufferAnnounce(get_Handle(), memory, size, private_pointer, &handle)))
            return nullptr;
    } else {
        uint64_t allocated = 0;
        if (!succeeded(ZVGR_BufferAllocAndAnnounce(get_Handle(), size, private_pointer, &handle)) ||
            !succeeded(ZVGR_BufferGetInfo(handle, zv_buffer_address, &allocated)) || allocated == 0)
            return nullptr;
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the library gives addresses as numbers
        memory = reinterpret_cast<void*>(allocated);
    }
    return m_pool.add_mapped(std::make_unique<BufferModule>(*this, memory, size, handle, private_pointer));
}

bool StreamModule::queue_buffer(const void* handle, BufferFacts& facts)
{
    // The tag first: the library may fill the buffer before the call returns.
    const auto grabber_handle = m_pool.queue(handle, facts);
    if (!grabber_handle)
        return false;
    // Contract: in both modes; a cyclic buffer's handle 0 fails and nothing more.
    // Pinned by DSQueueBuffer.CallsTheLibraryInCyclicModeToo.
    std::ignore = ZVGR_BufferToQueue(*grabber_handle, zv_queue_input);
    return true;
}

RevokeOutcome StreamModule::revoke(const void* buffer, uint64_t grabber_handle)
{
    if (!m_pool.holds(buffer))
        return RevokeOutcome::not_in_pool;
    // Contract: in both modes, and the status is ignored: the buffer is removed in any case.
    std::ignore = ZVGR_BufferRevoke(get_Handle(), grabber_handle);
    return m_pool.remove(buffer) ? RevokeOutcome::revoked : RevokeOutcome::not_in_pool;
}

void StreamModule::move_to_input(BufferModule& buffer)
{
    m_pool.set_queue(
        buffer,
        BUFFER_QUEUE_TYPE::INPUT); // before the call, whose status is ignored, as in queue_buffer
    if (is_Queued())
        std::ignore = ZVGR_BufferToQueue(buffer.get_GrabberHandle(), zv_queue_input);
}

void StreamModule::move_to_output(BufferModule& buffer)
{
    if (is_Queued())
        std::ignore = ZVGR_BufferToQueue(buffer.get_GrabberHandle(), zv_queue_output); // as in queue_buffer
    m_pool.set_queue(buffer, BUFFER_QUEUE_TYPE::OUTPUT);
}

bool StreamModule::buffer_operation(int32_t operation)
{
    const EventRef event = m_events.find(EVENT_NEW_BUFFER);
    const bool is_flush_of_events = operation == ACQ_QUEUE_OUTPUT_DISCARD ||
                                    operation == ACQ_QUEUE_ALL_TO_INPUT || operation == ACQ_QUEUE_ALL_DISCARD;
    if (is_flush_of_events && event)
        event->flush();

    // Contract: an unsupported operation fails at the first buffer, so an empty pool accepts every number.
    // Pinned by DSFlushQueue.AcceptsAnyOperationOnAnEmptyPool.
    for (size_t i = 0; const PinnedBuffer buffer = m_pool.at(i); ++i) {
        const BUFFER_QUEUE_TYPE queue = buffer->get_Queue();
        if (is_logged(stream_module_logger, Priority::debug)) // else the name need not be formed
            log_debug(stream_module_logger, "StreamModule::buffer_operation", At{284},
                      "Request operation '%s' for buffer 0x%016llX with handle=0x%llx, currently in queue=%s",
                      queue_operation_name(operation).c_str(), address(buffer.get()),
                      static_cast<unsigned long long>(buffer->get_GrabberHandle()), name_of(queue));
        if (!apply_operation(operation, *buffer, queue, event.get())) {
            log_error(stream_module_logger, "StreamModule::buffer_operation", At{290},
                      "Unsupported buffer queue operation %d", operation);
            log_error(stream_module_logger, "StreamModule::buffer_operation", At{292},
                      "Exit, Returning error false (0x%X)", 0U);
            return false;
        }
    }
    return true;
}

bool StreamModule::apply_operation(int32_t operation, BufferModule& buffer, BUFFER_QUEUE_TYPE queue,
                                   EventModule* event)
{
    switch (operation) {
    case ACQ_QUEUE_INPUT_TO_OUTPUT:
        if (queue != BUFFER_QUEUE_TYPE::INPUT)
            return true;
        move_to_output(buffer);
        // Contract: without a signal. Pinned by DSFlushQueue.DoesNotSignalMovedBuffers.
        if (event != nullptr)
            event->append(&buffer);
        return true;
    case ACQ_QUEUE_OUTPUT_DISCARD:
        if (queue == BUFFER_QUEUE_TYPE::OUTPUT)
            m_pool.set_queue(buffer, BUFFER_QUEUE_TYPE::GENERAL);
        return true;
    case ACQ_QUEUE_ALL_TO_INPUT:
        if (queue != BUFFER_QUEUE_TYPE::INPUT)
            move_to_input(buffer);
        return true;
    case ACQ_QUEUE_UNQUEUED_TO_INPUT:
        if (buffer.get_Queue() == BUFFER_QUEUE_TYPE::GENERAL) // as it is now, not as it was logged
            move_to_input(buffer);
        return true;
    case ACQ_QUEUE_ALL_DISCARD:
        m_pool.set_queue(buffer, BUFFER_QUEUE_TYPE::GENERAL);
        return true;
    case flush_all_events:
        if (event != nullptr)
            event->flush();
        return true;
    default:
        return false;
    }
}

} // namespace zvgentl
