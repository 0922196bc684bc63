#include <gtest/gtest.h>

#include "modules/settings.h"
#include "support/fixtures.h"

namespace zvtest {

namespace {

using namespace zvgentl;

struct PlainRow {
    const PlainSetting* setting;
    const char* key;
    uint32_t default_value;
    std::optional<std::string> description;
};

const PlainRow plain_rows[] = {
    {&settings::expose_demo_grabber, "GenTL.Interface.ExposeDemoGrabber", 0, std::nullopt},
    {&settings::stream_payload_size_type, "GenTL.Stream.StreamPayloadSizeType", 2,
     "1-Old stream size at creation time,2-dynamic stream size"},
    {&settings::buffer_alloc_min, "GenTL.Stream.BufferAllocMin", 4, std::nullopt},
    {&settings::signaled_event_mode, "GenTL.Stream.SignaledEventMode", 1, std::nullopt},
    {&settings::serialize_buffer_type, "GenTL.Buffer.SerializeBufferType", 1, std::nullopt},
    {&settings::pixel_format_conversion, "GenTL.Buffer.PixelFormatNameSpace", 1, std::nullopt},
    {&settings::serialize_stream_event, "GenTL.Event.SerializeStreamEvent", 1, std::nullopt},
};

struct OverrideRow {
    const OverrideSetting* setting;
    const char* key;
};

const OverrideRow override_rows[] = {
    {&settings::queued_buffer_mode, "GenTL.Stream.QueuedBufferMode"},
    {&settings::pixel_format_namespace, "GenTL.Buffer.PixelFormatNameSpace"},
    {&settings::delivered_image_height, "GenTL.Buffer.DeliveredImageHeight"},
};

class PlainSettings : public Doubles {};

TEST_F(PlainSettings, AreCreatedWithTheirDefaults)
{
    for (const PlainRow& row : plain_rows) {
        SCOPED_TRACE(row.key);
        settings.clear_reads();
        EXPECT_EQ(row.default_value, read(*row.setting));
        EXPECT_EQ((std::vector<SettingsRead>{plain_read(row.key, row.default_value, row.description)}),
                  settings.reads());
        EXPECT_EQ(row.default_value, settings.stored(row.key));
        EXPECT_EQ(row.description, settings.description(row.key));
    }
    EXPECT_EQ(std::size(plain_rows), settings.stored_count());
}

TEST_F(PlainSettings, AreReadEveryTime)
{
    for (const PlainRow& row : plain_rows) {
        for (uint32_t value : {0U, 1U, 77U, 0xFFFFFFFFU}) {
            settings.set(row.key, value);
            EXPECT_EQ(value, read(*row.setting)) << row.key;
        }
    }
}

class OverrideSettings : public Doubles {};

TEST_F(OverrideSettings, AreNotCreated)
{
    for (const OverrideRow& row : override_rows) {
        SCOPED_TRACE(row.key);
        settings.clear_reads();
        EXPECT_EQ(std::nullopt, read(*row.setting));
        EXPECT_EQ((std::vector<SettingsRead>{override_read(row.key)}), settings.reads());
    }
    EXPECT_EQ(0U, settings.stored_count());
}

TEST_F(OverrideSettings, AreReadEveryTime)
{
    for (const OverrideRow& row : override_rows) {
        for (uint32_t value : {0U, 1U, 77U, 0xFFFFFFFEU}) {
            settings.set_override(row.key, value);
            EXPECT_EQ(value, read(*row.setting)) << row.key;
        }
        settings.set_override(row.key, 0xFFFFFFFF);
        EXPECT_EQ(std::nullopt, read(*row.setting)) << row.key << " with all bits set";
    }
}

TEST_F(OverrideSettings, AreUnsetWithThePlainKeyAndWhenTheStoreWritesNothing)
{
    for (const OverrideRow& row : override_rows) {
        settings.set(row.key, 3);
        EXPECT_EQ(std::nullopt, read(*row.setting)) << row.key;
    }
    settings.get_writes_nothing();
    for (const OverrideRow& row : override_rows)
        EXPECT_EQ(std::nullopt, read(*row.setting)) << row.key;
}

} // namespace

} // namespace zvtest
