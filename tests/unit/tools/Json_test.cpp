#include <limits>
#include <regex>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "examples.h"
#include "support.h"
#include "zvgentl/GrabResult.h"
#include "zvgentl/Json.h"

namespace zvgentl::test {

using namespace tool;

namespace {

/// Without the ends of lines and what indents the next one.
std::string on_one_line(const std::string& text) { return std::regex_replace(text, std::regex("\n *"), ""); }

} // namespace

TEST(ProducerJson, NestsInterfacesAndDevices)
{
    DeviceEntry first = device_of("Device00");
    first.timestamp_frequency = 25000000;
    first.streams = {"Stream000"};
    DeviceEntry second = device_of("Device01");
    second.problem = "gone";
    const ProducerEntry producer{
        "/opt/some.cti",
        "Some producer",
        "Maker",
        "P",
        "1.2.3",
        "1.5",
        "Mixed",
        {{"FG0", "Grabber", "CXP", {first, second}, ""}, {"FG1", "Grabber", "CLHS", {}, "in use"}},
        ""};
    ProducerEntry other;
    other.problem = "not loaded";
    EXPECT_EQ(R"({"producers": [{"file": "/opt/some.cti","display_name": "Some producer","vendor": "Maker",)"
              R"("model": "P","version": "1.2.3","gentl_version": "1.5","transport": "Mixed",)"
              R"("interfaces": [{"id": "FG0","display_name": "Grabber","transport": "CXP",)"
              R"("devices": [{"id": "Device00","vendor": "Maker","model": "A","display_name": "The A",)"
              R"("user_defined_name": "left","serial_number": "123","version": "1.0","transport": "CXP",)"
              R"("access": "read/write","timestamp_frequency": 25000000,"streams": ["Stream000"]},)"
              R"({"id": "Device01","vendor": "Maker","model": "A","display_name": "The A",)"
              R"("user_defined_name": "left","serial_number": "123","version": "1.0","transport": "CXP",)"
              R"("access": "read/write","timestamp_frequency": null,"problem": "gone"}]},{"id": "FG1",)"
              R"("display_name": "Grabber","transport": "CLHS","devices": [],"problem": "in use"}]},)"
              R"({"file": "","display_name": "","vendor": "","model": "","version": "","gentl_version": "",)"
              R"("transport": "","interfaces": [],"problem": "not loaded"}]})",
              on_one_line(json_text({producer, other})));
}

TEST(FeatureJson, HasTypedValues)
{
    FeatureTable table = example_features();
    table.lines[1].feature.notation = Notation::hexadecimal;
    const std::string plain = R"("display_name": "","description": "","visibility": "","access": )";
    EXPECT_EQ(R"j({"port": "Device00 (remote)","category": "Root","features": [)j"
              R"({"name": "Image","level": 0,"type": "Category",)" +
                  plain +
                  R"("RW","value": null},)"
                  R"({"name": "Width","level": 1,"type": "Integer","display_name": "The width",)"
                  R"("description": "Of the picture","visibility": "Beginner","access": "RW","value": 640,)"
                  R"("text": "0x280","minimum": 16,"maximum": 1024,"increment": 16,"unit": "px"},)"
                  R"({"name": "PixelFormat","level": 1,"type": "Enumeration",)" +
                  plain +
                  R"("RW","value": "Mono8","entries": ["Mono8","Mono12"],"selects": ["PixelSize"]},)"
                  R"({"name": "Model","level": 1,"type": "String",)" +
                  plain +
                  R"("RO","value": "A \"B\"","longest": 16},)"
                  R"({"name": "Start","level": 1,"type": "Command",)" +
                  plain +
                  R"("WO","value": null},)"
                  R"({"name": "Gain","level": 1,"type": "Float",)" +
                  plain +
                  R"("RW","value": null,"text": "","minimum": null,"maximum": null,"increment": null,)"
                  R"("unit": "","problem": "the cable\nis out"},)"
                  R"({"name": "Image","level": 0,"type": "Category",)" +
                  plain + R"("RW","value": null,"repeated": true}]})",
              on_one_line(json_text(table)));
}

TEST(ValueJson, KeepsTypesAndOrderAndReplacesWhatIsNotUtf8)
{
    const NamedValues values{{"Width", std::int64_t{640}},
                             {"Gain", 1.5},
                             {"On", true},
                             {"Name", std::string("a\xFFz")},
                             {"Nothing", Value()},
                             {"Infinite", std::numeric_limits<double>::infinity()}};
    EXPECT_EQ(u8"{\n  \"Width\": 640,\n  \"Gain\": 1.5,\n  \"On\": true,\n  \"Name\": \"a\uFFFDz\",\n"
              "  \"Nothing\": null,\n  \"Infinite\": null\n}\n",
              json_text(values));
}

TEST(ValueJson, EscapesAllControlCharacters)
{
    EXPECT_EQ(u8"{\n  \"Name\": \"\\u001b\\n\\u007f\\u009b\\u0085\u00f6\"\n}\n",
              json_text(NamedValues{{"Name", std::string(u8"\x1B\n\x7F\u009B\u0085\u00F6")}}));
}

TEST(GrabJson, HasAllNumbers)
{
    GrabOptions options;
    options.output = "pictures";
    GrabResult result(options);
    result.producer = "/opt/some.cti";
    result.interface_id = "FG0";
    result.device_id = "Device00";
    result.vendor = "Maker";
    result.model = "A";
    result.serial_number = "123";
    result.buffer_size = 1000;
    result.picture = PictureKind{100, 10, 0x01080001};
    result.seconds = 2;
    result.device_seconds = 1;
    result.saved = 2;
    for (const std::uint64_t id : {0U, 3U}) { // of which the second is damaged
        std::vector<std::uint8_t> pixels = stamped_pixels(id);
        pixels.back() = static_cast<std::uint8_t>(pixels.back() ^ id);
        result.count.add(frame_with(id, pixels));
    }
    EXPECT_EQ(
        R"({"outcome": "complete","exit_code": 1,"problem": null,"producer": "/opt/some.cti","interface": "FG0",)"
        R"("device": "Device00","vendor": "Maker","model": "A","serial_number": "123",)"
        R"("mode": "queued","buffers": 8,"buffer_size": 1000,"picture": {"width": 100,"height": 10,)"
        R"("pixel_format": "Mono8","pixel_format_code": 17301505},"requested": 10,"skipped": 0,"delivered": 2,)"
        R"("lost": 2,"lost_from": "frame ids","out_of_order": 0,"repeated": 0,"seconds": 2.0,)"
        R"("frames_per_second": 0.5,"device_frames_per_second": 1.0,"checksums": {"checked": true,)"
        R"("found": 2,"damaged": 1},"incomplete_frames": 0,"saved": {"files": 2,"folder": "pictures","format": "png"}})",
        on_one_line(json_text(result)));
}

TEST(GrabJson, HasNullForWhatIsNotKnownAndNamesTheOutcome)
{
    GrabOptions options;
    options.mode = StreamMode::cyclic;
    GrabResult result(options);
    const std::string json = json_text(result);
    for (const char* const line :
         {"\"picture\": null", "\"lost\": null", "\"lost_from\": null", "\"frames_per_second\": null",
          "\"device_frames_per_second\": null", "\"saved\": null", "\"mode\": \"cyclic\""})
        EXPECT_THAT(json, HasSubstr(line));
    result.outcome = Outcome::interrupted;
    EXPECT_THAT(json_text(result), HasSubstr("\"outcome\": \"interrupted\""));
    result.outcome = Outcome::timed_out;
    EXPECT_THAT(json_text(result), HasSubstr("\"outcome\": \"timed out\""));
}

} // namespace zvgentl::test
