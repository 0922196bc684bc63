#pragma once

#include <cstdint>
#include <memory>

#include <gtest/gtest.h>

#include "modules/CameraModule.h"
#include "modules/CameraScan.h"
#include "modules/InterfaceModule.h"
#include "modules/StreamModule.h"
#include "modules/SystemModule.h"
#include "support/FakeGrabberLibrary.h"
#include "support/FakeLoggerLibrary.h"
#include "support/FakeSettings.h"
#include "support/log_expectations.h"
#include "support/pointers.h"

// A camera in a small tree of its own, for tests of streams and buffers apart from the exported functions.

namespace zvtest {

/// The camera is open in the library; `stream` is a stream of its own and still closed.
class CameraStream : public testing::Test {
protected:
    FakeGrabberLibrary& fake{FakeGrabberLibrary::instance()};
    FakeLoggerLibrary& log{FakeLoggerLibrary::instance()};
    FakeSettings& settings{FakeSettings::instance()};

    void SetUp() override
    {
        reset();
        m_system = std::make_unique<zvgentl::SystemModule>();
        m_system->init_Interfaces(1);
        zvgentl::InterfaceModule* const iface = m_system->get_Interface(0);
        ASSERT_TRUE(iface->open_Grabber());
        zvgentl::CameraScan scan;
        ASSERT_TRUE(scan.find_cameras(iface->get_GrabberHandle()));
        ASSERT_TRUE(scan.read_identities());
        ASSERT_EQ(1U, iface->init_Cameras(scan));
        camera = iface->get_Camera(0);
        ASSERT_EQ(uint32_t{zv_success}, camera->open_Camera());
        make_stream(camera);
        forget();
    }

    void TearDown() override
    {
        stream.reset();
        m_system.reset();
        fake.verify_finished();
        reset();
    }

    void make_stream(zvgentl::CameraModule* owner)
    {
        stream = std::make_unique<zvgentl::StreamModule>(owner, "Stream000");
    }

    void forget()
    {
        fake.clear_calls();
        log.clear_lines();
        settings.clear_reads();
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

private:
    void reset()
    {
        fake.reset();
        log.reset();
        settings.reset();
    }

    std::unique_ptr<zvgentl::SystemModule> m_system;
};

} // namespace zvtest
