#pragma once

#include "benchmarks/BareSystem.h"
#include "benchmarks/program.h"

// Two ways of a frame from the grabber library to a consumer, with the same steps: through the producer and
// through the bare chain. What runs frames is written once for both.

namespace zvbench {

/// What a consumer asks about every frame.
constexpr GenTL::BUFFER_INFO_CMD queries[] = {
    GenTL::BUFFER_INFO_BASE,    GenTL::BUFFER_INFO_SIZE_FILLED,  GenTL::BUFFER_INFO_WIDTH,
    GenTL::BUFFER_INFO_HEIGHT,  GenTL::BUFFER_INFO_PIXELFORMAT,  GenTL::BUFFER_INFO_TIMESTAMP,
    GenTL::BUFFER_INFO_FRAMEID, GenTL::BUFFER_INFO_IS_INCOMPLETE};

/// Calls `query` with each of them and with room for its value.
template <class Query>
void ask_all(const Query& query)
{
    for (const GenTL::BUFFER_INFO_CMD command : queries) {
        GenTL::INFO_DATATYPE type = GenTL::INFO_DATATYPE_UNKNOWN;
        uint64_t value = 0;
        size_t size = sizeof value;
        require(query(command, &type, &value, &size) == GenTL::GC_ERR_SUCCESS, "a query failed");
    }
}

/// Frames through the producer, of one of the open cameras.
class ProducerWay {
public:
    ProducerWay(BareSystem& system, OpenStream& open) : m_gentl{system.gentl}, m_open{open} {}

    bool is_ready() const { return m_open.source.is_ready(); }
    void deliver() { m_open.source.deliver(); }

    /// The next frame's buffer; null when there is none.
    GenTL::BUFFER_HANDLE take() const { return get(0); }
    /// The same, after a wait for it. Null after kill().
    GenTL::BUFFER_HANDLE wait() const { return get(GENTL_INFINITE); }
    void kill() const { m_gentl.EventKill(m_open.event); }

    void ask(GenTL::BUFFER_HANDLE buffer) const
    {
        ask_all([&](GenTL::BUFFER_INFO_CMD command, GenTL::INFO_DATATYPE* type, void* value, size_t* size) {
            return m_gentl.DSGetBufferInfo(m_open.stream, buffer, command, type, value, size);
        });
    }

    void queue(GenTL::BUFFER_HANDLE buffer) const
    {
        require(m_gentl.DSQueueBuffer(m_open.stream, buffer) == GenTL::GC_ERR_SUCCESS,
                "a buffer could not be queued");
    }

private:
    GenTL::BUFFER_HANDLE get(uint64_t timeout) const
    {
        GenTL::EVENT_NEW_BUFFER_DATA datum;
        size_t room = sizeof datum;
        const bool is_taken =
            m_gentl.EventGetData(m_open.event, &datum, &room, timeout) == GenTL::GC_ERR_SUCCESS;
        return is_taken ? datum.BufferHandle : nullptr;
    }

    const zvsystem::Functions& m_gentl;
    OpenStream& m_open;
};

/// Frames through a bare chain of its own.
class ChainWay {
public:
    /// Over a camera of the system's spare grabber.
    ChainWay(const BareLibraries& bare, const BareSystem& system, const Setup& setup, uint32_t camera = 0)
        : m_bare{bare}, m_is_queued{setup.mode == zvsystem::Mode::queued},
          m_chain{bare.chain_open(system.spare_grabber(), camera, static_cast<uint32_t>(setup.buffers),
                                  setup.payload, m_is_queued ? 0 : ring_frames)},
          m_source{m_is_queued ? Source{bare, library_handles(setup.buffers)}
                               : Source{bare, bare.last_stream()}}
    {
    }
    ~ChainWay() { m_bare.chain_close(m_chain); }
    ChainWay(const ChainWay&) = delete;
    ChainWay& operator=(const ChainWay&) = delete;

    bool is_ready() const { return m_source.is_ready(); }
    void deliver() { m_source.deliver(); }

    GenTL::BUFFER_HANDLE take() const
    {
        GenTL::EVENT_NEW_BUFFER_DATA datum;
        return m_bare.chain_get(m_chain, &datum) ? datum.BufferHandle : nullptr;
    }
    GenTL::BUFFER_HANDLE wait() const
    {
        GenTL::EVENT_NEW_BUFFER_DATA datum;
        return m_bare.chain_wait(m_chain, &datum) ? datum.BufferHandle : nullptr;
    }
    void kill() const { m_bare.chain_kill(m_chain); }

    void ask(GenTL::BUFFER_HANDLE buffer) const
    {
        ask_all([&](GenTL::BUFFER_INFO_CMD command, GenTL::INFO_DATATYPE* type, void* value, size_t* size) {
            return m_bare.chain_info(buffer, command, type, value, size);
        });
    }

    void queue(GenTL::BUFFER_HANDLE buffer) const { m_bare.chain_queue(buffer); }

private:
    std::vector<uint64_t> library_handles(size_t buffers) const
    {
        std::vector<uint64_t> handles;
        for (uint32_t i = 0; i < buffers; ++i)
            handles.push_back(m_bare.chain_library_handle(m_chain, i));
        return handles;
    }

    const BareLibraries& m_bare;
    bool m_is_queued;
    void* m_chain;
    Source m_source;
};

/// The whole way on one thread, without a wait.
template <class Way>
void run_frames(Way& way, size_t count)
{
    for (; count > 0; --count) {
        way.deliver();
        const GenTL::BUFFER_HANDLE buffer = way.take();
        require(buffer != nullptr, "a frame was lost");
        way.ask(buffer);
        way.queue(buffer);
    }
}

template <class Way>
Work frames_of(Way& way)
{
    return computing([&way](size_t count) { run_frames(way, count); });
}

} // namespace zvbench
