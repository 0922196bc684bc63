#pragma once

#include <array>
#include <memory>

#include <gtest/gtest.h>

#include "modules/BufferModule.h"
#include "modules/EventModule.h"
#include "modules/StreamModule.h"
#include "support/FakeGrabberLibrary.h"
#include "support/FakeLoggerLibrary.h"
#include "support/FakeSettings.h"

// A closed stream of no camera, for tests of events apart from any tree.

namespace zvtest {

/// Its buffers have private pointers, all different.
class LooseStream : public testing::Test {
protected:
    FakeGrabberLibrary& fake{FakeGrabberLibrary::instance()};
    FakeLoggerLibrary& log{FakeLoggerLibrary::instance()};
    FakeSettings& settings{FakeSettings::instance()};

    void SetUp() override
    {
        forget_everything();
        fake.allow_handle(ZV_NO_HANDLE); // a buffer asks for its geometry with its stream's handle
        stream = std::make_unique<zvgentl::StreamModule>(nullptr, "Stream000");
        log.clear_lines();
        settings.clear_reads();
    }
    void TearDown() override
    {
        stream.reset();
        forget_everything();
    }

    zvgentl::BufferModule* add_buffer(void* private_pointer)
    {
        return stream->buffers().add(std::make_unique<zvgentl::BufferModule>(
            *stream, m_memory.data(), m_memory.size(), uint64_t{0}, private_pointer));
    }

    std::unique_ptr<zvgentl::StreamModule> stream;

private:
    void forget_everything()
    {
        fake.reset();
        log.reset();
        settings.reset();
    }

    std::array<uint8_t, 64> m_memory{};
};

} // namespace zvtest
