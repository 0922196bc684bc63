#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "GenTL/GenTL.h"

#include "gentl/Functions.h"
#include "gentl/Registers.h"
#include "system/consumers/features.h"

// What the replayed consumers have in common: a producer that is loaded by hand, and answers that must be
// right. In which order they call it, and with which arguments, is their own.

namespace zvclient {

using zvgentl::tool::Functions;

/// Ends the client with the call's name and its code unless it succeeded.
void need(GenTL::GC_ERROR code, const char* call);
/// Ends the client unless the call answered this code.
void need_code(GenTL::GC_ERROR wanted, GenTL::GC_ERROR code, const char* call);
/// Ends the client with the text unless the condition holds.
void need_true(bool condition, const std::string& otherwise);

/// A register port as consumers use it that accept no short answer: each access is one call that must move
/// every byte.
class ExactPort final : public zvgentl::tool::Registers {
public:
    ExactPort(const Functions& gentl, GenTL::PORT_HANDLE handle) : m_gentl{gentl}, m_handle{handle} {}

    GenTL::PORT_HANDLE handle() const { return m_handle; }
    void read(std::uint64_t address, void* data, std::size_t size) const override;
    void write(std::uint64_t address, const void* data, std::size_t size) const override;

private:
    const Functions& m_gentl;
    GenTL::PORT_HANDLE m_handle;
};

/// The description of a port, by its URL "Local:NAME;ADDRESS;LENGTH": read in one call, unpacked.
std::string description_of(const ExactPort& port, const std::string& url);

/// The frames of an acquisition: each intact, each newer than the one before.
class FrameCheck {
public:
    void expect_newer(const void* frame, std::size_t size);
    int frames() const { return m_frames; }

private:
    int m_frames{0};
    std::uint64_t m_last{0};
};

/// The modules that a client opens, and the steps that several of them take in the same way.
class Client {
public:
    explicit Client(const Functions& functions) : gentl{functions} {}

protected:
    /// Reads every feature of the four modules of the producer and of the camera. `describe` gives the
    /// description of a port.
    template <class Describe>
    void read_features(const Describe& describe)
    {
        for (const GenTL::PORT_HANDLE handle : {m_system, m_interface, m_device, m_stream}) {
            const ExactPort port{gentl, handle};
            Features{describe(port), port}.read_every();
        }
        m_port = std::make_unique<ExactPort>(gentl, m_remote);
        m_features = std::make_unique<Features>(describe(*m_port), *m_port);
        m_features->read_every();
    }

    /// Announces memory of the client's own.
    GenTL::BUFFER_HANDLE announce(std::vector<unsigned char>& memory, void* user) const;
    void queue(GenTL::BUFFER_HANDLE buffer) const;
    GenTL::EVENT_HANDLE register_event() const;
    void start() const;
    void stop() const;

    /// Waits for one buffer after the other and queues it again, until there were so many. A time-out means
    /// that the wait was ended for a frame that had been taken already, or a slow machine.
    template <class Look>
    void receive(int buffers, GenTL::EVENT_HANDLE event, std::uint64_t timeout_ms, const Look& look) const
    {
        for (int received = 0; received < buffers;) {
            GenTL::EVENT_NEW_BUFFER_DATA data{};
            std::size_t size = sizeof data;
            const GenTL::GC_ERROR code = gentl.EventGetData(event, &data, &size, timeout_ms);
            if (code == GenTL::GC_ERR_TIMEOUT)
                continue;
            need(code, "EventGetData");
            look(data);
            queue(data.BufferHandle);
            ++received;
        }
    }

    void unregister_event() const;
    void flush(GenTL::ACQ_QUEUE_TYPE operation) const;
    /// Revokes the first buffer as long as there is one; their number.
    int revoke_the_first_until_none_is_left() const;
    /// Closes stream, device, interface and system, in this order.
    void close() const;

    const Functions& gentl;
    GenTL::TL_HANDLE m_system{nullptr};
    GenTL::IF_HANDLE m_interface{nullptr};
    GenTL::DEV_HANDLE m_device{nullptr};
    GenTL::PORT_HANDLE m_remote{nullptr};
    GenTL::DS_HANDLE m_stream{nullptr};
    std::unique_ptr<ExactPort> m_port;
    std::unique_ptr<Features> m_features;
    std::size_t m_payload{0};
};

void run_client_a(const Functions& gentl);
void run_client_b(const Functions& gentl);
void run_client_c(const Functions& gentl);
void run_client_d(const Functions& gentl);
void run_client_e(const Functions& gentl);

} // namespace zvclient
