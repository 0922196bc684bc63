#include "log/KeptMessages.h"

#include <Poco/Timestamp.h>

#include "platform/process.h"

namespace zvgentl {

KeptMessage::KeptMessage(uint32_t of_thread) : thread_id(of_thread), thread(Poco::Thread::current()) {}

KeptMessages::~KeptMessages()
{
    for (Place& place : m_places)
        const std::unique_ptr<KeptMessage> last{place.exchange(nullptr)};
}

std::unique_ptr<KeptMessage> KeptMessages::take()
{
    const uint32_t thread_id = platform::thread_id();
    std::unique_ptr<KeptMessage> kept{place_of(thread_id).exchange(nullptr)};
    // A new process after a fork has another thread, too.
    if (kept == nullptr || kept->thread_id != thread_id || kept->thread != Poco::Thread::current())
        return std::make_unique<KeptMessage>(thread_id);
    kept->message.setTime(Poco::Timestamp());
    if (kept->thread != nullptr) { // which may have a new name, or be a new one
        kept->message.setTid(kept->thread->id());
        kept->message.setThread(kept->thread->name());
    }
    return kept;
}

void KeptMessages::give_back(std::unique_ptr<KeptMessage> message) noexcept
{
    Place& place = place_of(message->thread_id);
    const std::unique_ptr<KeptMessage> displaced{place.exchange(message.release())};
}

} // namespace zvgentl
