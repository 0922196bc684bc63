#pragma once

#include <cstring>

#include "support/FakeGrabberLibrary.h"

// What the functions of the fake grabber library share. Not for tests.

namespace zvtest {

constexpr uint32_t succeeded = zv_success;
constexpr uint32_t* no_memory = nullptr;

inline FakeGrabberLibrary& fake() { return FakeGrabberLibrary::instance(); }

inline void no_output(uint64_t) {}

template <class Function>
const void* code_address(Function function)
{
    return reinterpret_cast<const void*>(function);
}

/// A call at its entry. While it lives, allocations neither fail nor count.
struct Entered : private PausedAllocationFaults {
    Call made;

    template <class... Arguments>
    explicit Entered(const char* function, Arguments... arguments) : made(call(function, arguments...))
    {
    }
    operator const Call&() const { return made; }
};

/// A function that returns a status; a scripted value goes to `output`.
template <class Number, class Effect>
uint32_t perform_status(const Call& made, Number* output, Effect effect)
{
    return fake().perform<uint32_t>(made, succeeded, effect, [output](uint64_t value) {
        if (output != nullptr)
            *output = static_cast<Number>(value);
    });
}

/// Whether `handle` is alive in one of the tables; complains if the test should not have passed it.
template <class Table>
bool is_live(const Call& made, const Table& table, uint32_t handle)
{
    if (table.count(handle) > 0)
        return true;
    fake().complain(made, handle, fake().world().dead.count(handle) > 0);
    return false;
}

inline bool is_live_anywhere(const Call& made, const FakeWorld& world, uint32_t handle)
{
    if (world.is_alive(handle))
        return true;
    fake().complain(made, handle, world.dead.count(handle) > 0);
    return false;
}

inline bool is_live_buffer(const Call& made, const FakeWorld& world, uint64_t buffer)
{
    if (world.buffers.count(buffer) > 0)
        return true;
    fake().complain(made, buffer, world.dead_buffers.count(buffer) > 0);
    return false;
}

/// The same for a function whose handle must be alive in `table`: `effect` gets the world and its object.
template <class Table, class Number, class Effect>
uint32_t perform_on(const Call& made, Table FakeWorld::*table, uint32_t handle, Number* output, Effect effect)
{
    return perform_status(made, output, [&](FakeWorld& world) {
        return is_live(made, world.*table, handle) ? effect(world, (world.*table).at(handle)) : any_failure;
    });
}

inline CameraSetup& setup_of(FakeWorld& world, uint32_t camera)
{
    const LiveCamera& live = world.cameras.at(camera);
    return world.setup(live.grabber_position).camera(live.position);
}

inline uint32_t read_registers(const Registers& registers, uint64_t address, void* buffer, uint32_t size)
{
    auto* const bytes = static_cast<uint8_t*>(buffer);
    for (uint32_t i = 0; i < size; ++i) {
        const auto found = registers.find(address + i);
        bytes[i] = found == registers.end() ? uint8_t{0} : found->second;
    }
    return succeeded;
}

inline uint32_t write_registers(Registers& registers, uint64_t address, const std::vector<uint8_t>& bytes)
{
    for (size_t i = 0; i < bytes.size(); ++i)
        registers[address + i] = bytes[i];
    return succeeded;
}

inline void add_data(Call& made, const void* buffer, uint32_t size)
{
    const auto* const bytes = static_cast<const uint8_t*>(buffer);
    made.data.assign(bytes, bytes + size);
}

inline int64_t named_value(const char* function, uint32_t handle, const char* name)
{
    const Entered made(function, handle, name);
    return fake().perform<int64_t>(
        made, ZV_NOT_AVAILABLE,
        [&](FakeWorld& world) {
            return is_live_anywhere(made, world, handle) ? world.value(function, handle, name)
                                                         : ZV_NOT_AVAILABLE;
        },
        no_output);
}

} // namespace zvtest
