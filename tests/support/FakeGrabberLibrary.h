#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "zvgr/ZVGRLib.h"

#include "support/AllocationFaults.h"
#include "support/Call.h"
#include "support/FakeWorld.h"
#include "support/Script.h"

namespace zvtest {

/// What one delivered frame carries. Numbers left at 0 are counted up by the fake.
struct Frame {
    uint64_t timestamp{0};
    uint64_t frame_id{0};
    uint64_t image_id{0};
    int fill{-1}; // a byte value to fill the buffer or ring frame with; -1 leaves the memory alone
};

/// One per process. A test takes it with `FakeGrabberLibrary::instance()` or from its fixture as `fake`. A
/// handle that the fake never gave out, or that is dead, fails the test unless the test declares it.
/// Thread-safe; hooks and callbacks run without the fake's lock.
class FakeGrabberLibrary {
public:
    static FakeGrabberLibrary& instance();

    /// Back to one grabber with one camera, empty script, nothing open. Handles are never used again.
    void reset();

    // What the hardware looks like. Grabbers are numbered by scan position.
    void has_grabbers(uint32_t count);
    GrabberSetup& grabber(uint32_t position);

    // Values: of one handle, or of every other handle.
    Value grabber_int(const std::string& name) { return grabber_int(any_handle, name); }
    Value grabber_enum(const std::string& name) { return grabber_enum(any_handle, name); }
    Value camera_int(const std::string& name) { return camera_int(any_handle, name); }
    Value camera_enum(const std::string& name) { return camera_enum(any_handle, name); }
    Value grabber_int(uint64_t handle, const std::string& name)
    {
        return {*this, "ZVGR_GetGrabberValueInt", handle, name};
    }
    Value grabber_enum(uint64_t handle, const std::string& name)
    {
        return {*this, "ZVGR_GetGrabberValueEnum", handle, name};
    }
    Value camera_int(uint64_t handle, const std::string& name)
    {
        return {*this, "ZVGR_GetCameraValueInt", handle, name};
    }
    Value camera_enum(uint64_t handle, const std::string& name)
    {
        return {*this, "ZVGR_GetCameraValueEnum", handle, name};
    }
    /// What ZVGR_StreamGetInfo answers: 307200 for payload sizes and 4096 for the alignment by default.
    void stream_info(uint32_t command, uint64_t value);
    /// What ZVGR_GetXmlUrl answers for a handle, or for every other handle.
    void set_xml_url(const std::string& url) { set_xml_url(any_handle, url); }
    void set_xml_url(uint64_t handle, const std::string& url);

    // The script. See Script.
    Rule& next(const std::string& function) { return m_script.next(function); }
    Rule& nth(const std::string& function, long k) { return m_script.nth(function, k); }
    Rule& always(const std::string& function) { return m_script.always(function); }
    /// Runs on the calling thread: `on` before the function does its work, `after` between work and return.
    void on(const std::string& function, Script::Hook hook) { m_script.before(function, std::move(hook)); }
    void after(const std::string& function, Script::Hook hook) { m_script.after(function, std::move(hook)); }

    // The record.
    Calls calls() const;
    Calls calls_of(const std::string& function) const;
    /// Calls of several functions, in order.
    Calls calls_of(const std::set<std::string>& functions) const;
    size_t count(const std::string& function) const;
    void clear_calls();

    // Handles that the test passes or provokes on purpose; the fake then answers with a failure, silently.
    void allow_handle(uint64_t handle);
    void allow_handle(const std::string& function, uint64_t handle);
    /// Allows handles that were given out and have died.
    void allow_stale_handles();

    // What is open. Handles are ZV_NO_HANDLE, buffers 0, when there is none.
    size_t open_grabbers() const;
    uint32_t grabber_handle(uint32_t position) const;
    uint32_t camera_handle(uint32_t grabber_position, uint32_t camera_position) const;
    /// The stream created last.
    uint32_t last_stream() const;
    /// The live streams in order of creation.
    std::vector<uint32_t> streams() const;
    /// The buffer announced last.
    uint64_t last_buffer() const;
    /// The live buffers of a stream in announce order.
    std::vector<uint64_t> buffers(uint32_t stream) const;
    const void* memory_of(uint64_t buffer) const;
    /// The queue that a buffer is in: zv_queue_input, zv_queue_output, or -1.
    int queue_of(uint64_t buffer) const;
    bool is_acquiring(uint32_t stream) const;
    bool has_callback(uint32_t stream) const;
    /// Memory of a ring frame, `ring_frame_bytes` long; frames follow each other, then 1 MiB of zeros.
    uint8_t* ring_frame(uint32_t stream, uint32_t index);

    // Frames, on the calling thread, whether the stream is started or not. A stream without a callback fails
    // the test.
    /// Makes `index` the frame last filled and calls the camera callback.
    void deliver_cyclic(uint32_t stream, uint32_t index, const Frame& frame = {});
    /// Moves the buffer to the output queue and calls its stream's callback. Also with the handle of a
    /// revoked buffer, for late callbacks.
    void deliver_queued(uint64_t buffer, const Frame& frame = {});
    /// Calls a stream's buffer callback with any handle: an unknown one, or 0 for the end of acquisition.
    void deliver_queued_to(uint32_t stream, uint64_t buffer);

    /// Fails the test for scripted answers that were never used and for grabbers left open.
    void verify_finished() const;

    // For the functions of the library. Not for tests.
    /// Records the call and runs `effect`, or what the script says instead: `output` then writes a scripted
    /// value, and `gave` is what the function returns for it.
    template <class Result, class Effect, class Output>
    Result perform(const Call& made, Result gave, Effect effect, Output output);
    FakeWorld& world() { return m_world; }
    void complain(const Call& made, uint64_t handle, bool stale) const;

private:
    friend class Value;
    FakeGrabberLibrary() = default;

    /// What `work` gives for the world, under the lock.
    template <class Work>
    auto locked(Work work) const
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        return work(m_world);
    }
    template <class Work>
    auto locked(Work work)
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        return work(m_world);
    }

    void set_value(const ValueKey& key, int64_t value);
    void record(const Call& made);
    static void run(const std::vector<Script::Hook>& hooks, const Call& made);
    void call_back(uint32_t stream, uint64_t buffer);

    mutable std::mutex m_lock; // guards everything but m_script, which has its own
    FakeWorld m_world;
    Calls m_calls;
    Script m_script;
    std::set<uint64_t> m_allowed;
    std::set<std::pair<std::string, uint64_t>> m_allowed_for;
    bool m_allow_stale{false};
};

template <class Result>
Result result_from(uint64_t word)
{
    if constexpr (std::is_pointer_v<Result>)
        return reinterpret_cast<Result>(static_cast<uintptr_t>(word));
    else
        return static_cast<Result>(word);
}

template <class Result, class Effect, class Output>
Result FakeGrabberLibrary::perform(const Call& made, Result gave, Effect effect, Output output)
{
    const PausedAllocationFaults pause;
    record(made);
    const std::optional<Answer> answer = m_script.answer_for(made);
    run(m_script.hooks_before(made.function), made);
    Result result = gave;
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        if (!answer || answer->kind == Answer::Kind::returns_after_effect)
            result = effect(m_world);
        if (answer && answer->kind == Answer::Kind::gives)
            output(answer->value);
        else if (answer)
            result = result_from<Result>(answer->value);
    }
    run(m_script.hooks_after(made.function), made);
    return result;
}

} // namespace zvtest
