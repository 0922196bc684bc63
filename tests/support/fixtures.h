#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "GenTL/GenTL.h"

#include "support/FakeGrabberLibrary.h"
#include "support/FakeLoggerLibrary.h"
#include "support/FakeSettings.h"
#include "support/info_queries.h"
#include "support/log_expectations.h"
#include "support/pointers.h"

// Situations that tests of the exported functions start from, each built on the one before.

namespace zvtest {

using namespace GenTL;

/// The doubles as at the start. Afterwards nothing may be open and no script left over.
class Doubles : public testing::Test {
protected:
    FakeGrabberLibrary& fake{FakeGrabberLibrary::instance()};
    FakeLoggerLibrary& log{FakeLoggerLibrary::instance()};
    FakeSettings& settings{FakeSettings::instance()};

    void SetUp() override;
    void TearDown() override;

    /// Forgets calls, lines and settings reads.
    void forget();

private:
    void reset();
};

/// The library loaded, but not initialised; afterwards it is closed.
/// Recorded calls, lines and settings reads are those since the end of the fixture's set-up.
class Library : public Doubles {
protected:
    void TearDown() override;
};

/// GCInitLib was called.
class OpenLibrary : public Library {
protected:
    void SetUp() override;

    /// The recorded last-error text.
    std::string last_error();
};

/// TLOpen was called. No scan was made yet.
class OpenSystem : public OpenLibrary {
protected:
    TL_HANDLE tl{nullptr};

    void SetUp() override;

    uint32_t num_interfaces();
    std::string interface_id(uint32_t index);
    /// Opens the interface; fails the test if that does not work.
    IF_HANDLE open_interface(const std::string& id);
    template <class T>
    Info<T> system_info(TL_INFO_CMD command, size_t room = default_room)
    {
        return query<T>(room, [&](auto... out) { return TLGetInfo(tl, command, out...); });
    }
};

/// The interface FG0 of one grabber is open. No device list was asked for yet.
class OpenInterface : public OpenSystem {
protected:
    IF_HANDLE iface{nullptr};

    void SetUp() override;

    uint32_t num_devices(IF_HANDLE on);
    std::string device_id(IF_HANDLE on, uint32_t index);
    /// Opens a listed device; fails the test if that does not work.
    DEV_HANDLE open_device(IF_HANDLE on, const std::string& id);
    template <class T>
    Info<T> interface_info(INTERFACE_INFO_CMD command, size_t room = default_room)
    {
        return query<T>(room, [&](auto... out) { return IFGetInfo(iface, command, out...); });
    }
};

/// The device list is up to date and Device00 is open. `port` is its remote port.
class OpenDevice : public OpenInterface {
protected:
    DEV_HANDLE dev{nullptr};
    PORT_HANDLE port{nullptr};

    void SetUp() override;

    /// Opens a device's only stream in the mode that the fake's capability says.
    DS_HANDLE open_stream(DEV_HANDLE on, const std::string& id);
    uint32_t grabber() const { return fake.grabber_handle(0); }
    uint32_t camera() const { return fake.camera_handle(0, 0); }
    template <class T>
    Info<T> device_info(DEVICE_INFO_CMD command, size_t room = default_room)
    {
        return query<T>(room, [&](auto... out) { return DevGetInfo(dev, command, out...); });
    }
};

/// An announced buffer with what it is on every side.
struct Announced {
    BUFFER_HANDLE handle{nullptr}; // the producer's
    uint64_t library{0};           // the grabber library's; 0 in cyclic mode
    std::vector<uint8_t> memory;   // empty when the producer or the library allocated it
    void* user{nullptr};
};

/// The stream Stream000 is open; no buffer is announced. Take QueuedStream or CyclicStream.
class OpenStream : public OpenDevice {
protected:
    static constexpr size_t buffer_size = 4096;

    DS_HANDLE ds{nullptr};
    EVENT_HANDLE event{nullptr};

    void SetUp() override;
    virtual bool is_queued() const = 0;

    /// The grabber library's handle of the open stream.
    uint32_t stream() const { return fake.last_stream(); }
    /// Announces memory of the fixture. `user` is the private pointer. The reference stays valid.
    Announced& announce(size_t size = buffer_size, void* user = nullptr);
    Announced& alloc_and_announce(size_t size = buffer_size, void* user = nullptr);
    void queue(const Announced& buffer);
    /// Registers the new-buffer event, in `event`.
    void register_event();
    void start(uint64_t frames = GENTL_INFINITE);
    void stop();
    /// Delivers a frame on this thread as the stream's mode does it: into `buffer` in queued mode, as the
    /// ring frame that follows the last one in cyclic mode, where the producer chooses the buffer.
    void deliver(const Announced& buffer, const Frame& frame = {});

    /// EventGetData on `event`: the code, and the record when there was one.
    struct Taken {
        GC_ERROR code;
        alignas(void*) EVENT_NEW_BUFFER_DATA data; // packed: on its own it may lie anywhere
        size_t size;
    };
    Taken take(uint64_t timeout = 0);

    template <class T>
    Info<T> stream_info(STREAM_INFO_CMD command, size_t room = default_room)
    {
        return query<T>(room, [&](auto... out) { return DSGetInfo(ds, command, out...); });
    }
    template <class T>
    Info<T> buffer_info(BUFFER_HANDLE buffer, BUFFER_INFO_CMD command, size_t room = default_room)
    {
        return query<T>(room, [&](auto... out) { return DSGetBufferInfo(ds, buffer, command, out...); });
    }
    template <class T>
    Info<T> event_info(EVENT_INFO_CMD command, size_t room = default_room)
    {
        return query<T>(room, [&](auto... out) { return EventGetInfo(event, command, out...); });
    }

    std::vector<std::unique_ptr<Announced>> buffers;

private:
    Announced& added(Announced buffer);
    uint32_t m_next_frame{0};
};

class QueuedStream : public OpenStream {
protected:
    bool is_queued() const override { return true; }
};

/// The grabber library is asked to queue and revoke buffer 0 in this mode, which the fake accepts here.
class CyclicStream : public OpenStream {
protected:
    void SetUp() override;
    bool is_queued() const override { return false; }
};

/// Four buffers are announced and queued (`buffers`), the event is registered, acquisition runs.
template <class Stream>
class Running : public Stream {
protected:
    void SetUp() override
    {
        Stream::SetUp();
        for (int i = 0; i < 4 && !testing::Test::HasFailure(); ++i)
            this->queue(this->announce());
        if (testing::Test::HasFailure())
            return;
        this->register_event();
        this->start();
        this->forget();
    }
};

class RunningQueuedStream : public Running<QueuedStream> {};
class RunningCyclicStream : public Running<CyclicStream> {};

} // namespace zvtest
