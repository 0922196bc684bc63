#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "modules/BufferModule.h"
#include "modules/CameraModule.h"
#include "modules/CameraScan.h"
#include "modules/DeviceModule.h"
#include "modules/EventModule.h"
#include "modules/InterfaceModule.h"
#include "modules/StreamModule.h"
#include "modules/SystemModule.h"
#include "support/FailingAllocations.h"
#include "support/fixtures.h"
#include "support/on_threads.h"

// Modules apart from the exported functions: no process state, objects made and destroyed by the test.

namespace zvtest {

/// A module that serves a register description and nothing else; `name` is that of class and logger.
template <class Module>
void expect_description(const Module& module, const std::string& name, const std::string& start,
                        size_t length)
{
    FakeLoggerLibrary::instance().clear_lines();
    std::string memory(length + 100, '\x55');
    size_t size = memory.size();
    EXPECT_EQ(GC_ERR_SUCCESS, module.ReadPort(0x88888888, memory.data(), &size));
    EXPECT_EQ(length, size);
    EXPECT_EQ(start, memory.substr(0, start.size()));
    EXPECT_EQ(std::string(100, '\x55'), memory.substr(length));
    EXPECT_LOG_LINES();
    for (const uint64_t address : {uint64_t{0x88888887}, 0x88888888 + length}) {
        FakeLoggerLibrary::instance().clear_lines();
        char byte = 'a';
        size = 1;
        EXPECT_EQ(GC_ERR_INVALID_ADDRESS, module.ReadPort(address, &byte, &size));
        EXPECT_EQ(1U, size);
        EXPECT_EQ('a', byte);
        EXPECT_LOG_LINES({Priority::error,
                          "Unsupported port read for address 0x" + hex(address) + " with size 1",
                          name + "::ReadPort", name},
                         {Priority::error, "Exit, Returning error GC_ERR_INVALID_ADDRESS (0xFFFFFC09)",
                          name + "::ReadPort", name});
    }
}

/// A system without interfaces.
class EmptySystem : public Doubles {
protected:
    zvgentl::SystemModule system;

    void TearDown() override
    {
        system.init_Interfaces(0);
        Doubles::TearDown();
    }
};

/// A system whose one interface is open.
class OneGrabber : public EmptySystem {
protected:
    void SetUp() override
    {
        EmptySystem::SetUp();
        system.init_Interfaces(1);
        ASSERT_TRUE(iface().open_Grabber());
        forget();
    }

    zvgentl::InterfaceModule& iface() { return *system.get_Interface(0); }
    uint32_t grabber() { return iface().get_GrabberHandle(); }

    /// A scan that works.
    zvgentl::CameraScan scan()
    {
        zvgentl::CameraScan found;
        EXPECT_TRUE(found.find_cameras(grabber()));
        EXPECT_TRUE(found.read_identities());
        return found;
    }
    /// Lists this many cameras.
    void list_cameras(uint32_t count)
    {
        fake.grabber(0).has_cameras(count);
        EXPECT_EQ(count, iface().init_Cameras(scan()));
        forget();
    }
};

/// The camera is open in the library; `stream` is another stream of it and still closed.
class CameraStream : public OneGrabber {
protected:
    void SetUp() override
    {
        OneGrabber::SetUp();
        list_cameras(1);
        camera = iface().get_Camera(0);
        ASSERT_EQ(uint32_t{zv_success}, camera->open_Camera());
        make_stream(camera);
        forget();
    }
    void TearDown() override
    {
        stream.reset();
        OneGrabber::TearDown();
    }

    void make_stream(zvgentl::CameraModule* owner)
    {
        stream = std::make_unique<zvgentl::StreamModule>(owner, "Stream000");
    }
    uint32_t library_stream(zvgentl::StreamMode mode)
    {
        uint32_t handle = ZV_NO_HANDLE;
        const uint32_t status = mode == zvgentl::StreamMode::queued
                                    ? ZVGR_StreamCreate(camera->get_CameraHandle(), &handle, 0)
                                    : ZVGR_StreamCreateAndAlloc(camera->get_CameraHandle(), &handle, 4, 0);
        EXPECT_EQ(uint32_t{zv_success}, status);
        return handle;
    }
    /// Makes a library stream and connects it.
    uint32_t connect(zvgentl::StreamMode mode)
    {
        const uint32_t handle = library_stream(mode);
        forget();
        stream->connect(handle, mode);
        return handle;
    }

    zvgentl::CameraModule* camera{nullptr};
    std::unique_ptr<zvgentl::StreamModule> stream;
};

/// A closed stream of no camera, with a pool whose buffers have private pointers, all different.
class LooseStream : public Doubles {
protected:
    void SetUp() override
    {
        Doubles::SetUp();
        fake.allow_handle(ZV_NO_HANDLE); // a buffer asks for its geometry with its stream's handle
        stream = std::make_unique<zvgentl::StreamModule>(nullptr, "Stream000");
        forget();
    }
    void TearDown() override
    {
        stream.reset();
        Doubles::TearDown();
    }

    zvgentl::BufferModule* add_buffer(void* private_pointer)
    {
        return stream->get_Buffers().add(std::make_unique<zvgentl::BufferModule>(
            *stream, m_memory.data(), m_memory.size(), uint64_t{0}, private_pointer));
    }

    void append_and_signal(zvgentl::EventModule& event, zvgentl::BufferModule* buffer)
    {
        auto released = [&] {
            const zvgentl::ShortLock::Held held{stream->get_Lock()};
            return event.append_and_signal(held,
                                           {buffer, buffer != nullptr ? &buffer->get_Facts() : nullptr});
        }();
        released.release();
    }

    std::unique_ptr<zvgentl::StreamModule> stream;

private:
    std::array<uint8_t, 64> m_memory{};
};

} // namespace zvtest
