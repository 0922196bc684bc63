#pragma once

#include <deque>
#include <string>
#include <vector>

#include "GenTL/GenTL.h"

#include "benchmarks/bare/bare_chain.h"
#include "benchmarks/bare/bare_grabber.h"
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
    decltype(&::bare_last_buffer) last_buffer{m_grabber.find("bare_last_buffer")};
    decltype(&::bare_deliver) deliver{m_grabber.find("bare_deliver")};
    decltype(&::bare_deliver_ring) deliver_ring{m_grabber.find("bare_deliver_ring")};
    decltype(&::chain_open) chain_open{m_chain.find("chain_open")};
    decltype(&::chain_close) chain_close{m_chain.find("chain_close")};
    decltype(&::chain_library_handle) chain_library_handle{m_chain.find("chain_library_handle")};
    decltype(&::chain_get) chain_get{m_chain.find("chain_get")};
    decltype(&::chain_info) chain_info{m_chain.find("chain_info")};
    decltype(&::chain_queue) chain_queue{m_chain.find("chain_queue")};
};

/// What a consumer has of an open stream.
struct OpenStream {
    GenTL::DS_HANDLE stream;
    GenTL::EVENT_HANDLE event;
    std::vector<GenTL::BUFFER_HANDLE> buffers; // queued
    std::vector<uint64_t> library_handles;     // of the same, for bare_deliver
};

/// The producer over the bare grabbers with every camera open and acquiring, 16 cameras on a grabber.
class BareSystem {
public:
    BareSystem(BareLibraries& libraries, size_t cameras, size_t buffers, uint64_t payload);
    ~BareSystem();
    BareSystem(const BareSystem&) = delete;
    BareSystem& operator=(const BareSystem&) = delete;

private:
    zvsystem::Surroundings m_surroundings;
    zvsystem::Producer m_producer{ZV_PRODUCER_FILE};

public:
    const zvsystem::Functions& gentl{m_producer.functions()};
    std::deque<OpenStream> streams;

private:
    OpenStream open(GenTL::IF_HANDLE iface, const std::string& device, size_t buffers, uint64_t payload);

    BareLibraries& m_libraries;
    GenTL::TL_HANDLE m_system{nullptr};
};

} // namespace zvbench
