#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "modules/CameraModule.h"
#include "modules/CameraScan.h"
#include "modules/DeviceModule.h"
#include "modules/InterfaceModule.h"
#include "modules/StreamModule.h"
#include "modules/SystemModule.h"
#include "support/FakeGrabberLibrary.h"
#include "support/FakeLoggerLibrary.h"
#include "support/FakeSettings.h"
#include "support/log_expectations.h"

// Modules apart from the exported functions: no process state, objects made and destroyed by the test.

namespace zvtest {

/// The fakes are as at the start. Afterwards nothing may be open.
class Modules : public testing::Test {
protected:
    FakeGrabberLibrary& fake{FakeGrabberLibrary::instance()};
    FakeLoggerLibrary& log{FakeLoggerLibrary::instance()};
    FakeSettings& settings{FakeSettings::instance()};

    void SetUp() override { reset(); }
    void TearDown() override
    {
        fake.verify_finished();
        reset();
    }

    void forget()
    {
        fake.clear_calls();
        log.clear_lines();
        settings.clear_reads();
    }

private:
    void reset()
    {
        fake.reset();
        log.reset();
        settings.reset();
    }
};

/// A system whose one interface is open.
class OneGrabber : public Modules {
protected:
    void SetUp() override
    {
        Modules::SetUp();
        system.init_Interfaces(1);
        ASSERT_TRUE(iface().open_Grabber());
        forget();
    }
    void TearDown() override
    {
        system.init_Interfaces(0);
        Modules::TearDown();
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

    zvgentl::SystemModule system;
};

} // namespace zvtest
