#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include <Poco/Message.h>
#include <Poco/Thread.h>

namespace zvgentl {

/// A message whose texts keep their memory from line to line. It names the process and the thread that made
/// it.
struct KeptMessage {
    Poco::Message message;
    std::string text; // Poco takes texts as strings only
    const uint32_t thread_id;
    const Poco::Thread* const thread; // null if Poco has not made it

    explicit KeptMessage(uint32_t of_thread);
};

/// Keeps messages for later lines, so that a line needs no new memory. Any thread; a line may be written
/// while another one is.
class KeptMessages {
public:
    KeptMessages() = default;
    ~KeptMessages();
    KeptMessages(const KeptMessages&) = delete;
    KeptMessages& operator=(const KeptMessages&) = delete;

    /// A message of the calling thread, with the present time. Its other fields may be those of an earlier
    /// line.
    std::unique_ptr<KeptMessage> take();
    void give_back(std::unique_ptr<KeptMessage> message) noexcept;

private:
    using Place = std::atomic<KeptMessage*>;

    Place& place_of(uint32_t thread_id) noexcept { return m_places[thread_id % m_places.size()]; }

    // So that threads that write in turns rarely displace each other's. Nothing belongs to a
    // thread: what does keeps a library from being unloaded.
    std::array<Place, 16> m_places{};
};

} // namespace zvgentl
