#include "simulator/QueuedStream.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "simulator/Library.h"
#include "simulator/faults/Function.h"

namespace zvsim {

namespace {

constexpr std::align_val_t buffer_alignment{4096};
constexpr uint64_t largest_buffer = uint64_t{1} << 40U; // far beyond what any machine can give

} // namespace

void QueuedStream::FreeMemory::operator()(unsigned char* memory) const
{
    operator delete(memory, buffer_alignment);
}

QueuedStream::Memory QueuedStream::allocate(uint64_t size)
{
    if (size > largest_buffer)
        return nullptr;
    return Memory{
        static_cast<unsigned char*>(operator new(static_cast<size_t>(size), buffer_alignment, std::nothrow))};
}

void QueuedStream::set_callback(ZvStreamBufferCallback callback, void* context)
{
    m_callback = callback;
    m_context = context;
    m_receiver = platform::LoadedModule{reinterpret_cast<const void*>(callback)};
}

uint64_t QueuedStream::announce(void* memory, uint64_t size)
{
    return add(static_cast<unsigned char*>(memory), size, nullptr);
}

uint64_t QueuedStream::allocate_and_announce(uint64_t size)
{
    Memory memory = allocate(size);
    unsigned char* const address = memory.get();
    return address != nullptr ? add(address, size, std::move(memory)) : 0;
}

uint64_t QueuedStream::add(unsigned char* memory, uint64_t size, Memory own_memory)
{
    if (m_announced == UINT32_MAX)
        return 0;
    const uint64_t buffer = uint64_t{handle()} << 32U | (m_announced + 1);
    Queue added;
    added.push_back({buffer, memory, size, std::move(own_memory), &m_unqueued, 0, 0});
    m_buffers.emplace(buffer, added.begin());
    m_unqueued.splice(m_unqueued.end(), added);
    ++m_announced;
    return buffer;
}

uint32_t QueuedStream::revoke(Lock& lock, uint64_t buffer)
{
    const auto found = m_buffers.find(buffer);
    if (found == m_buffers.end())
        return status_bad_handle;
    Queue revoked; // keeps the memory until nobody writes into it
    revoked.splice(revoked.end(), *found->second->queue, found->second);
    m_buffers.erase(found);
    wait_until_drawn(lock, buffer);
    return status_ok;
}

uint32_t QueuedStream::move_to(Lock& lock, uint64_t buffer, uint32_t queue)
{
    const auto found = m_buffers.find(buffer);
    if (found == m_buffers.end())
        return status_bad_handle;
    if (queue == zv_queue_input) {
        move(found->second, m_input, m_input.end());
        wake();
        return status_ok;
    }
    if (queue != zv_queue_output)
        return status_bad_argument;
    move(found->second, m_output, m_output.end());
    wait_until_drawn(lock, buffer);
    return status_ok;
}

uint32_t QueuedStream::info(uint64_t buffer, uint32_t command, uint64_t& value) const
{
    const auto found = m_buffers.find(buffer);
    if (found == m_buffers.end())
        return status_bad_handle;
    switch (command) {
    case zv_buffer_address:
        value = reinterpret_cast<uintptr_t>(found->second->memory);
        return status_ok;
    case zv_buffer_timestamp:
        value = found->second->timestamp;
        return status_ok;
    case zv_buffer_image_id: // where the grabber has any
    case zv_buffer_frame_id:
        value = found->second->frame_id;
        return status_ok;
    default:
        return status_unsupported;
    }
}

void QueuedStream::move(Queue::iterator buffer, Queue& queue, Queue::const_iterator place)
{
    Queue& from = *std::exchange(buffer->queue, &queue);
    queue.splice(place, from, buffer);
}

void QueuedStream::wait_until_drawn(Lock& lock, uint64_t buffer)
{
    // The stream may be deleted meanwhile, so each look begins at its handle.
    Library& all = library();
    all.changed().wait(lock, [&all, buffer] {
        const auto* const stream = static_cast<QueuedStream*>(all.find_any_stream(stream_of(buffer)));
        return stream == nullptr || stream->m_drawn_into != buffer;
    });
}

bool QueuedStream::deliver(Lock& lock, Acquisition& acquisition, const Frame& frame, const FrameFate& fate)
{
    if (m_input.empty())
        return false;
    const auto buffer = m_input.begin();
    move(buffer, m_drawing, m_drawing.end());
    m_drawn_into = buffer->handle;
    unsigned char* const memory = buffer->memory;
    const uint64_t size = buffer->size;
    const Exposure exposure = exposure_of(frame);
    lock.unlock();
    acquisition.source->draw(exposure, memory, fate.drawn(size));
    fate.damage(memory, std::min(size, payload()));
    lock.lock();
    const uint64_t drawn = std::exchange(m_drawn_into, 0);
    library().changed().notify_all();
    hold_up(lock, acquisition, fate.stall);
    if (m_drawing.empty()) // moved or revoked meanwhile
        return false;
    if (!is_current(acquisition)) {
        move(buffer, m_input, m_input.begin());
        return false;
    }
    buffer->timestamp = fate.timestamp;
    buffer->frame_id = fate.id;
    move(buffer, m_output, m_output.end());
    log_delivery(fate);
    if (!fate.is_unreported)
        call_back(lock, drawn);
    return true;
}

void QueuedStream::report_end(Lock& lock) { call_back(lock, 0); }

void QueuedStream::call_back(Lock& lock, uint64_t buffer)
{
    if (m_callback == nullptr)
        return;
    const auto callback = m_callback;
    void* const context = m_context;
    lock.unlock();
    callback(buffer, context);
    lock.lock();
}

} // namespace zvsim
