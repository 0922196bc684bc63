#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <ostream>
#include <vector>

#include "unit/simulator/faults.h"

// One good call of every exported function.

namespace zvsim_test {

/// Everything that a call may be about, open and idle.
struct Situation {
    uint32_t grabber{ZV_NO_HANDLE};
    uint32_t camera{ZV_NO_HANDLE};
    uint32_t stream{ZV_NO_HANDLE};
    /// A cyclic-mode stream of the same camera, with one frame filled.
    uint32_t ring{ZV_NO_HANDLE};
    uint64_t buffer{0};
};

/// Where a call writes its results to: filled with 0xEE, but for what it must find there.
struct Outputs {
    Outputs() { bytes.fill(0xEE); }
    bool are_untouched(uint32_t expected_size = 4) const
    {
        std::array<unsigned char, 512> expected{};
        expected.fill(0xEE);
        return bytes == expected && size == expected_size;
    }
    std::array<unsigned char, 512> bytes;
    /// What a size word says after the call.
    uint32_t size{4};
};

/// What is special about a call.
enum Trait : unsigned {
    /// It has output parameters.
    writes = 1,
    /// It cannot be repeated once it has been carried out.
    ends = 2,
    /// It sets its size word to 0 when a handle is bad.
    clears_size = 4,
    /// One of its parameters is a buffer handle.
    takes_buffer = 8
};

/// Handles that one parameter accepts; the first is the one that the call uses.
using Handles = std::vector<uint32_t Situation::*>;

struct InterfaceCall {
    using Body = std::function<uint64_t(const Situation& situation, Outputs& outputs)>;
    static constexpr uint64_t any_status = 0x3ABC;

    const char* function;
    /// Of the fault that makes it fail; null where only "call-fails" does.
    const char* kind;
    unsigned traits;
    std::vector<Handles> handles;
    Body call;
    /// How often the making of a situation has called it.
    uint32_t calls_before{0};
    /// How often it has called any function of the kind.
    uint32_t calls_of_kind{0};
    /// What it answers when it fails; of a function that answers a status, one that a fault can be given.
    uint64_t failure{any_status};

    bool has(Trait trait) const { return (traits & trait) != 0; }
    bool answers_status() const { return failure == any_status; }
    bool is_failure(uint64_t result) const
    {
        return answers_status() ? result != success : result == failure;
    }
};

/// All of the interface.
const std::vector<InterfaceCall>& interface_calls();

inline std::ostream& operator<<(std::ostream& out, const InterfaceCall& call) { return out << call.function; }

inline std::string name_of_call(const testing::TestParamInfo<InterfaceCall>& row)
{
    return row.param.function;
}

class CallSituation : public Faulty {
protected:
    Situation situation()
    {
        Situation made;
        scan();
        made.grabber = open_grabber();
        made.camera = cameras_of(made.grabber).at(0);
        EXPECT_EQ(success, ZVGR_CameraOpen2(made.camera, nullptr));
        made.stream = create_stream(made.camera);
        EXPECT_EQ(success, ZVGR_BufferAllocAndAnnounce(made.stream, 100, nullptr, &made.buffer));
        made.ring = create_stream(made.camera, Mode::cyclic, &m_receiver);
        EXPECT_EQ(success, ZVGR_CameraStartAcquire_GenTL(made.camera, made.ring, 1));
        EXPECT_TRUE(m_receiver.wait_for(1));
        EXPECT_EQ(success, ZVGR_CameraStopAcquire_GenTL(made.camera));
        return made;
    }

private:
    Receiver m_receiver;
};

} // namespace zvsim_test
