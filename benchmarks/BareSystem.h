#pragma once

#include <chrono>
#include <deque>
#include <string>
#include <vector>

#include "GenTL/GenTL.h"
#include "zvgr/ZVGRLib.h"

#include "benchmarks/bare/bare_chain.h"
#include "benchmarks/bare/bare_grabber.h"
#include "benchmarks/bare/bare_signal.h"
#include "system/consumer/Functions.h"
#include "system/consumer/Library.h"
#include "system/consumer/Surroundings.h"

namespace zvbench {

/// The bare grabber library and the bare chain, loaded before the producer, which then uses the same grabber
/// library.
class BareLibraries {
    // The loader takes a library that is loaded already for every later need of a library of that name.
    zvsystem::LoadedFile m_grabber{ZV_BARE_GRABBER_FILE};
    zvsystem::LoadedFile m_chain{ZV_BARE_CHAIN_FILE};

public:
    decltype(&::bare_set_up) set_up{m_grabber.find("bare_set_up")};
    decltype(&::bare_last_stream) last_stream{m_grabber.find("bare_last_stream")};
    decltype(&::bare_last_buffer) last_buffer{m_grabber.find("bare_last_buffer")};
    decltype(&::bare_deliver) deliver{m_grabber.find("bare_deliver")};
    decltype(&::bare_is_queued) is_queued{m_grabber.find("bare_is_queued")};
    decltype(&::bare_deliver_ring) deliver_ring{m_grabber.find("bare_deliver_ring")};
    decltype(&::ZVGR_StreamGetPtr) ring_frame{m_grabber.find("ZVGR_StreamGetPtr")};
    decltype(&::chain_open) chain_open{m_chain.find("chain_open")};
    decltype(&::chain_close) chain_close{m_chain.find("chain_close")};
    decltype(&::chain_library_handle) chain_library_handle{m_chain.find("chain_library_handle")};
    decltype(&::chain_get) chain_get{m_chain.find("chain_get")};
    decltype(&::chain_wait) chain_wait{m_chain.find("chain_wait")};
    decltype(&::chain_kill) chain_kill{m_chain.find("chain_kill")};
    decltype(&::chain_info) chain_info{m_chain.find("chain_info")};
    decltype(&::chain_queue) chain_queue{m_chain.find("chain_queue")};
    decltype(&::condition_signal) condition_signal{m_chain.find("condition_signal")};
    decltype(&::condition_wait) condition_wait{m_chain.find("condition_wait")};
    decltype(&::futex_signal) futex_signal{m_chain.find("futex_signal")};
    decltype(&::futex_wait) futex_wait{m_chain.find("futex_wait")};
    decltype(&::spin_signal) spin_signal{m_chain.find("spin_signal")};
    decltype(&::spin_wait) spin_wait{m_chain.find("spin_wait")};
};

constexpr uint32_t ring_frames = 4; // what the producer asks for, and so the bare chain

/// What is opened of the bare grabbers.
struct Setup {
    size_t cameras{1};
    size_t buffers{64}; // of each camera; without any, nothing is started
    uint64_t payload{4096};
    zvsystem::Mode mode{zvsystem::Mode::queued};
    bool is_polling{false}; // EventGetData does not sleep
};

/// The camera's side of a stream: makes the bare grabber library report the next frame.
class Source {
public:
    /// Of a queued stream, whose buffers are filled in turn.
    Source(const BareLibraries& bare, std::vector<uint64_t> buffers)
        : m_bare{bare}, m_buffers{std::move(buffers)}
    {
    }
    /// Of a cyclic stream.
    Source(const BareLibraries& bare, uint32_t stream) : m_bare{bare}, m_stream{stream} {}

    /// Whether there is a buffer for the next frame. Only a queued stream knows.
    bool is_ready() const { return m_buffers.empty() || m_bare.is_queued(m_buffers[m_next]); }

    void deliver()
    {
        if (m_buffers.empty()) {
            m_bare.deliver_ring(m_stream);
            return;
        }
        const uint64_t buffer = m_buffers[m_next];
        m_next = m_next + 1 == m_buffers.size() ? 0 : m_next + 1;
        m_bare.deliver(buffer);
    }

    uint32_t stream() const { return m_stream; }

private:
    const BareLibraries& m_bare;
    std::vector<uint64_t> m_buffers;
    uint32_t m_stream{0};
    size_t m_next{0};
};

/// What a consumer has of an open stream.
struct OpenStream {
    GenTL::DS_HANDLE stream;
    GenTL::EVENT_HANDLE event;
    std::vector<GenTL::BUFFER_HANDLE> buffers; // queued
    Source source;
};

/// The producer over the bare grabbers with every camera open and acquiring, 16 cameras on a grabber. A
/// further grabber, which the producer hides, is left for chains.
class BareSystem {
public:
    BareSystem(const BareLibraries& libraries, const Setup& setup);
    ~BareSystem();
    BareSystem(const BareSystem&) = delete;
    BareSystem& operator=(const BareSystem&) = delete;

    const Setup& setup() const { return m_setup; }
    /// The grabber whose cameras chains open.
    uint32_t spare_grabber() const { return m_grabbers; }
    /// What opening took, from TLOpen to the start of the last camera.
    std::chrono::duration<double, std::nano> opened_in() const { return m_opened_in; }

private:
    zvsystem::Surroundings m_surroundings;
    zvsystem::Producer m_producer{ZV_PRODUCER_FILE};

public:
    const zvsystem::Functions& gentl{m_producer.functions()};
    std::deque<OpenStream> streams;

private:
    void open_cameras();
    OpenStream open(GenTL::IF_HANDLE iface, const std::string& device);

    const BareLibraries& m_libraries;
    Setup m_setup;
    uint32_t m_grabbers;
    GenTL::TL_HANDLE m_system{nullptr};
    std::chrono::duration<double, std::nano> m_opened_in{0};
};

} // namespace zvbench
