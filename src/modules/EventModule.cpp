#include "modules/EventModule.h"

#include <cstdio>
#include <cstring>
#include <mutex>
#include <tuple>
#include <utility>

#include "log/Log.h"
#include "modules/BufferModule.h"
#include "modules/StreamModule.h"
#include "modules/handles.h"
#include "modules/settings.h"

namespace zvgentl {

using namespace GenTL;
using platform::WaitResult;

namespace {

uint32_t milliseconds_to_wait(uint64_t timeout)
{
    return timeout < platform::wait_forever ? static_cast<uint32_t>(timeout) : platform::wait_forever;
}

} // namespace

EventModule::EventModule(StreamModule& source, EVENT_TYPE type)
    : m_source(source), m_lock(source.get_Lock()), m_type(type)
{
    // The queue has a lock in any case, because nothing else keeps it whole; the setting is there for those
    // who look.
    std::ignore = read(settings::serialize_stream_event);
    stream_index.add(this, &source);
}

EventModule::~EventModule() { stream_index.remove(this); }

std::string EventModule::getId() const
{
    char id[32];
    std::snprintf(id, sizeof id, "Event0x%llx", address(this));
    return id;
}

size_t EventModule::get_QueueLength() const
{
    const ShortLock::Held held{m_lock};
    return m_queue.size();
}

void EventModule::append(BufferModule* buffer)
{
    const ShortLock::Held held{m_lock};
    push({buffer, buffer != nullptr ? &buffer->get_Facts() : nullptr});
}

void EventModule::flush()
{
    const ShortLock::Held held{m_lock};
    m_queue.clear();
}

void EventModule::kill() noexcept
{
    auto released = [this] {
        const ShortLock::Held held{m_lock};
        m_abort.store(true);
        return m_signal.set();
    }();
    released.release();
}

void EventModule::close() noexcept
{
    auto released = [this] {
        const ShortLock::Held held{m_lock};
        m_closing.store(true);
        return m_signal.close();
    }();
    released.release();
}

bool EventModule::try_take(void* destination)
{
    const ShortLock::Held held{m_lock};
    return pop(held, destination);
}

/// The buffer may have been revoked since, and its facts be those of another; then it has no private pointer.
void* EventModule::private_of(const BufferQueue::Entry& entry) const noexcept
{
    const BufferFacts* const facts = entry.facts;
    const bool is_alive =
        facts != nullptr && facts->buffer.get() == entry.buffer && facts->stream.get() == &m_source;
    return is_alive ? facts->private_pointer.get() : nullptr;
}

bool EventModule::pop(const ShortLock::Held& /*held*/, void* destination)
{
    if (m_queue.empty())
        return false;
    const bool is_removed =
        destination == nullptr || m_type == EVENT_NEW_BUFFER || m_type == EVENT_REMOTE_DEVICE;
    if (!is_removed)
        return false;
    const BufferQueue::Entry entry = m_queue.front();
    m_queue.pop();
    if (destination != nullptr && m_type == EVENT_NEW_BUFFER) {
        const EVENT_NEW_BUFFER_DATA datum{entry.buffer, private_of(entry)};
        std::memcpy(destination, &datum, sizeof datum);
    }
    return true;
}

void EventModule::drop_front() noexcept
{
    if (!m_queue.empty())
        m_queue.pop();
}

GC_ERROR EventModule::get_event_data(void* destination, uint64_t timeout)
{
    {
        const ShortLock::Held held{m_lock};
        if (m_closing.load())
            return GC_ERR_ABORT;
        if (take_abort()) {
            // Contract: a kill also drops one entry. Pinned by EventKill.DropsOneEntryOfTheAbortedCall.
            drop_front();
            m_signal.reset();
            return GC_ERR_ABORT;
        }
        if (take_at_once(held, destination))
            return GC_ERR_SUCCESS;
    }
    return wait_for_entry(destination, timeout);
}

bool EventModule::take_at_once(const ShortLock::Held& held, void* destination)
{
    if (m_closing.load() || m_abort.load() || !pop(held, destination))
        return false;
    m_signal.reset();
    return true;
}

GC_ERROR EventModule::wait_for_entry(void* destination, uint64_t timeout)
{
    const WaitResult result = m_signal.wait(m_lock, milliseconds_to_wait(timeout));
    if (result != WaitResult::signalled) {
        static std::atomic<bool> is_reported{false};
        if (!is_reported.exchange(true))
            log_error(event_module_logger, "EventModule::get_event_data", At{120},
                      "Event wait timeout with error=0x%X for timeout=%u", static_cast<unsigned>(result),
                      static_cast<unsigned>(timeout));
        return GC_ERR_TIMEOUT;
    }

    const ShortLock::Held held{m_lock};
    if (take_abort()) {
        drop_front();
        return GC_ERR_ABORT;
    }
    if (m_closing.load())
        return GC_ERR_ABORT;
    // The signal of an entry that was flushed or that another consumer took also ends the wait.
    return pop(held, destination) ? GC_ERR_SUCCESS : GC_ERR_TIMEOUT;
}

EventRef::EventRef(EventModule* event) noexcept : m_event(event)
{
    if (m_event != nullptr)
        m_event->m_references.fetch_add(1, std::memory_order_relaxed);
}

EventRef& EventRef::operator=(EventRef other) noexcept
{
    std::swap(m_event, other.m_event);
    return *this;
}

EventRef::~EventRef()
{
    if (m_event != nullptr && m_event->m_references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete m_event;
}

} // namespace zvgentl
