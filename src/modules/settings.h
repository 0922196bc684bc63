#pragma once

#include <cstdint>
#include <optional>

namespace zvgentl {

/// A setting that the store creates with its default at the first read.
struct PlainSetting {
    const char* key;
    uint32_t default_value;
    const char* description; // may be null
};

/// A setting that exists only when a person wrote it.
struct OverrideSetting {
    const char* key; // ends in "-Overwrite"
};

/// The stored value, or the default when none is stored.
uint32_t read(const PlainSetting& setting);

/// The stored value; nothing when none, or 0xFFFFFFFF, is stored.
std::optional<uint32_t> read(const OverrideSetting& setting);

/// Every setting of the producer. None is cached: each is read when the object that it shapes is made.
namespace settings {

constexpr PlainSetting expose_demo_grabber{"GenTL.Interface.ExposeDemoGrabber", 0, nullptr};
constexpr PlainSetting stream_payload_size_type{"GenTL.Stream.StreamPayloadSizeType", 2,
                                                "1-Old stream size at creation time,2-dynamic stream size"};
constexpr PlainSetting buffer_alloc_min{"GenTL.Stream.BufferAllocMin", 4, nullptr};
constexpr PlainSetting signaled_event_mode{"GenTL.Stream.SignaledEventMode", 1, nullptr};
constexpr PlainSetting serialize_buffer_type{"GenTL.Buffer.SerializeBufferType", 1, nullptr};
constexpr PlainSetting pixel_format_conversion{"GenTL.Buffer.PixelFormatNameSpace", 1, nullptr};
constexpr PlainSetting serialize_stream_event{"GenTL.Event.SerializeStreamEvent", 1, nullptr};

constexpr OverrideSetting queued_buffer_mode{"GenTL.Stream.QueuedBufferMode-Overwrite"};
constexpr OverrideSetting pixel_format_namespace{"GenTL.Buffer.PixelFormatNameSpace-Overwrite"};
constexpr OverrideSetting delivered_image_height{"GenTL.Buffer.DeliveredImageHeight-Overwrite"};

} // namespace settings

} // namespace zvgentl
