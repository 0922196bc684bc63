#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "GenTL/GenTL.h"

#include "gentl/Functions.h"
#include "gentl/Registers.h"

// What the replayed consumers have in common: a producer that is loaded by hand, and answers that must be
// right. Each has its own order of calls, and its own arguments.

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

/// The features of a port as its description names them: read by a parser of such descriptions where there is
/// one, elsewhere register by register. All functions throw std::exception when the port refuses, or when its
/// answer cannot be right.
class Features {
public:
    virtual ~Features() = default;

    /// Whether the port has none.
    virtual bool is_empty() const = 0;

    /// Reads all of them and returns their number. Each must be readable unless it is a command or
    /// write-only.
    virtual int read_every() const = 0;

    /// Executes commands. A parser also writes each feature that is writable, with the value that it has.
    /// Returns the number of both.
    virtual int write_every() const = 0;

    virtual std::int64_t integer(const std::string& name) const = 0;
    virtual void set(const std::string& name, const std::string& text) const = 0;
    /// Executes a command and waits until the device says that it is done.
    virtual void execute(const std::string& name, std::chrono::milliseconds timeout) const = 0;
};

/// Of the port with this description; the port must live as long as the object.
std::unique_ptr<Features> features_of(const std::string& description, const ExactPort& port);

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
    virtual ~Client() = default;
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

protected:
    /// How the client asks for texts: here in one call, with plenty of room.
    using TextQuery = std::function<GenTL::GC_ERROR(char*, std::size_t*)>;
    virtual std::string text(const char* call, const TextQuery& query) const;
    /// The other way: first asks for the size, without room and with whatever the size variable holds.
    static std::string text_after_its_size(const char* call, const TextQuery& query, std::size_t held);

    template <class Query, class... Which>
    std::string id(const char* call, const Query& query, Which... which) const
    {
        return text(call, [&](char* room, std::size_t* size) { return query(which..., room, size); });
    }
    template <class Count, class Query>
    std::vector<std::string> ids(const char* call, const Count& count, const Query& query, void* module) const
    {
        std::uint32_t number = 0;
        need(count(module, &number), call);
        std::vector<std::string> found;
        for (std::uint32_t index = 0; index < number; ++index)
            found.push_back(id(call, query, module, index));
        return found;
    }
    template <class Query, class... Which>
    std::string info(const char* call, const Query& query, Which... which) const
    {
        GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
        const std::string answer =
            text(call, [&](char* room, std::size_t* size) { return query(which..., &type, room, size); });
        need_true(type == GenTL::INFO_DATATYPE_STRING, std::string(call) + " did not give a string");
        return answer;
    }
    std::vector<std::string> interface_ids() const
    {
        return ids("TLGetInterfaceID", gentl.TLGetNumInterfaces, gentl.TLGetInterfaceID, m_system);
    }
    std::vector<std::string> device_ids() const
    {
        return ids("IFGetDeviceID", gentl.IFGetNumDevices, gentl.IFGetDeviceID, m_interface);
    }
    std::string stream_id() const { return id("DevGetDataStreamID", gentl.DevGetDataStreamID, m_device, 0U); }
    /// How the client finds the description of a port.
    virtual std::string describe(const ExactPort& port) const;

    /// Opens the system and looks for interfaces.
    void open_system(std::uint64_t timeout_ms);
    /// Opens an interface and looks for devices.
    void open_interface(const std::string& id, std::uint64_t timeout_ms);
    /// Opens a device and asks for its port.
    void open_device(const std::string& id, GenTL::DEVICE_ACCESS_FLAGS access);
    void open_stream(const std::string& id)
    {
        need(gentl.DevOpenDataStream(m_device, id.c_str(), &m_stream), "DevOpenDataStream");
    }

    /// Reads every feature of the four modules of the producer and of the camera.
    void read_features();
    /// Takes the payload size that the camera says, which must be this one.
    void take_payload(std::size_t expected);

    /// Memory of the client's own for so many frames.
    std::vector<std::vector<unsigned char>>& make_memory(std::size_t frames);
    GenTL::BUFFER_HANDLE announce(std::vector<unsigned char>& memory, void* user) const
    {
        GenTL::BUFFER_HANDLE buffer = nullptr;
        need(gentl.DSAnnounceBuffer(m_stream, memory.data(), memory.size(), user, &buffer),
             "DSAnnounceBuffer");
        return buffer;
    }
    void queue(GenTL::BUFFER_HANDLE buffer) const
    {
        need(gentl.DSQueueBuffer(m_stream, buffer), "DSQueueBuffer");
    }
    GenTL::EVENT_HANDLE register_event() const
    {
        GenTL::EVENT_HANDLE event = nullptr;
        need(gentl.GCRegisterEvent(m_stream, GenTL::EVENT_NEW_BUFFER, &event), "GCRegisterEvent");
        return event;
    }
    void start() const
    {
        need(gentl.DSStartAcquisition(m_stream, GenTL::ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE),
             "DSStartAcquisition");
    }
    void stop() const
    {
        need(gentl.DSStopAcquisition(m_stream, GenTL::ACQ_STOP_FLAGS_DEFAULT), "DSStopAcquisition");
    }

    /// Waits for one buffer after the other and queues it again, until there were so many. A time-out means
    /// that the wait ended for a frame that had been taken already, or a slow machine.
    using Look = std::function<void(const GenTL::EVENT_NEW_BUFFER_DATA&)>;
    void receive(int buffers, GenTL::EVENT_HANDLE event, std::uint64_t timeout_ms, const Look& look) const;

    void unregister_event() const
    {
        need(gentl.GCUnregisterEvent(m_stream, GenTL::EVENT_NEW_BUFFER), "GCUnregisterEvent");
    }
    void flush(GenTL::ACQ_QUEUE_TYPE operation) const
    {
        need(gentl.DSFlushQueue(m_stream, operation), "DSFlushQueue");
    }
    void revoke(GenTL::BUFFER_HANDLE buffer) const
    {
        need(gentl.DSRevokeBuffer(m_stream, buffer, nullptr, nullptr), "DSRevokeBuffer");
    }
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

private:
    std::vector<std::vector<unsigned char>> m_memory;
};

void run_client_a(const Functions& gentl);
void run_client_b(const Functions& gentl);
void run_client_c(const Functions& gentl);
void run_client_d(const Functions& gentl);
void run_client_e(const Functions& gentl);

} // namespace zvclient
