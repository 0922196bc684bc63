#include <map>
#include <string>

#include <gtest/gtest.h>

#include "log/unit_loggers.h"
#include "support/FakeLoggerLibrary.h"

using zvtest::FakeLoggerLibrary;

TEST(UnitLoggers, AreAskedForOncePerUnitWithTheConfiguredLevel)
{
    std::map<std::string, int> times;
    for (const zvtest::InitLoggerCall& call : FakeLoggerLibrary::instance().init_calls()) {
        if (call.name == "Early.cpp") // asked for by a test of the fake itself
            continue;
        EXPECT_FALSE(call.text.has_value());
        EXPECT_EQ(0xFFFFFFFFU, call.priority);
        ++times[call.name.value_or("(null)")];
    }
    const std::map<std::string, int> expected = {
        {"BufferModule.cpp", 1}, {"CameraModule.cpp", 1}, {"EventModule.cpp", 1},
        {"StreamModule.cpp", 1}, {"SystemModule.cpp", 1}, {"ZVGRLibGenTL.cpp", 1},
    };
    EXPECT_EQ(expected, times);
}

TEST(UnitLoggers, BelongToTheirUnits)
{
    EXPECT_EQ("ZVGRLibGenTL.cpp", zvgentl::api_logger->name());
    EXPECT_EQ("SystemModule.cpp", zvgentl::system_module_logger->name());
    EXPECT_EQ("BufferModule.cpp", zvgentl::buffer_module_logger->name());
    EXPECT_EQ("CameraModule.cpp", zvgentl::camera_module_logger->name());
    EXPECT_EQ("EventModule.cpp", zvgentl::event_module_logger->name());
    EXPECT_EQ("StreamModule.cpp", zvgentl::stream_module_logger->name());
}
