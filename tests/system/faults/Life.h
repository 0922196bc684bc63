#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "GenTL/GenTL.h"

#include "system/consumer/Functions.h"
#include "system/consumer/Surroundings.h"

namespace zvsystem {

/// The whole life of a consumer, from the scan to the end, or as far as it gets. What the producer answers at
/// each step becomes a line such as
///     IFOpenDevice: -1005 "IFOpenDevice - ..."
///     IFGetNumDevices: 0, 2
/// with the code, the last-error text if the step failed, and the value. The lines are the same in every run:
/// nothing in them depends on time.
class Life {
public:
    enum class Frames { come, never_come };

    /// `frames` says whether the acquisition will end, so that the consumer can wait for that.
    Life(const Functions& gentl, Mode mode, Frames frames) : m_gentl{gentl}, m_mode{mode}, m_frames{frames} {}
    Life(const Life&) = delete;
    Life& operator=(const Life&) = delete;

    /// Fails the running test if memory beyond a buffer is touched.
    std::vector<std::string> live();

private:
    bool note(const std::string& step, GenTL::GC_ERROR code, const std::string& value = {});
    std::string last_error() const;

    /// A typed query: it is called with the three output arguments.
    using Query = std::function<GenTL::GC_ERROR(GenTL::INFO_DATATYPE*, void*, size_t*)>;
    void note_text(const std::string& step, const Query& query);
    uint64_t note_number(const std::string& step, const Query& query);

    void list_interfaces();
    void use_interface();
    void list_devices();
    void use_device();
    void use_port();
    void read_description(const std::string& url);
    void use_stream();
    void announce();
    void acquire();
    std::string frames_in_queued_mode();
    std::string frames_in_cyclic_mode();
    std::string mark_of(GenTL::BUFFER_HANDLE buffer);
    uint64_t number(GenTL::BUFFER_HANDLE buffer, GenTL::BUFFER_INFO_CMD command) const;
    bool is_grabbing() const;

    const Functions& m_gentl;
    const Mode m_mode;
    const Frames m_frames;
    GenTL::TL_HANDLE m_system{nullptr};
    GenTL::IF_HANDLE m_interface{nullptr};
    GenTL::DEV_HANDLE m_device{nullptr};
    GenTL::PORT_HANDLE m_port{nullptr};
    GenTL::DS_HANDLE m_stream{nullptr};
    GenTL::EVENT_HANDLE m_event{nullptr};
    std::vector<GenTL::BUFFER_HANDLE> m_buffers;
    /// A buffer of the consumer's own, and the memory behind it.
    std::vector<unsigned char> m_memory;
    uint64_t m_last_timestamp{0};
    std::string m_last_error;
    std::vector<std::string> m_lines;
};

} // namespace zvsystem
