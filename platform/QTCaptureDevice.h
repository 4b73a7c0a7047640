// A capture device: a camcorder or deck with its tape transport.
#pragma once

#include "platform/Error.h"
#include "platform/QTSampleBuffer.h"
#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace merro::platform {

/// The transport attribute: a dictionary of the speed (signed) and the playback mode (unsigned) below.
inline constexpr std::string_view QTCaptureDeviceAVCTransportControlsAttribute =
    "QTCaptureDeviceAVCTransportControlsAttribute";
/// Integer: 0 stopped or paused, 10000 normal play, in steps of 3000 from -19000 to 19000.
inline constexpr std::string_view QTCaptureDeviceAVCTransportControlsSpeedKey =
    "QTCaptureDeviceAVCTransportControlsSpeedKey";
/// Integer: 0 not playing, 1 playing.
inline constexpr std::string_view QTCaptureDeviceAVCTransportControlsPlaybackModeKey =
    "QTCaptureDeviceAVCTransportControlsPlaybackModeKey";

/// Posted on the main thread; the object is the device. The information holds the key of the attribute.
inline constexpr std::string_view QTCaptureDeviceAttributeWillChangeNotification =
    "QTCaptureDeviceAttributeWillChangeNotification";
inline constexpr std::string_view QTCaptureDeviceAttributeDidChangeNotification =
    "QTCaptureDeviceAttributeDidChangeNotification";
inline constexpr std::string_view QTCaptureDeviceChangedAttributeKey = "QTCaptureDeviceChangedAttributeKey";

/// Posted on the main thread; the object is the device.
inline constexpr std::string_view QTCaptureDeviceWasConnectedNotification =
    "QTCaptureDeviceWasConnectedNotification";
inline constexpr std::string_view QTCaptureDeviceWasDisconnectedNotification =
    "QTCaptureDeviceWasDisconnectedNotification";

constexpr std::uint32_t fourCharCode(const char (&code)[5]) {
    return (std::uint32_t{static_cast<unsigned char>(code[0])} << 24) |
           (std::uint32_t{static_cast<unsigned char>(code[1])} << 16) |
           (std::uint32_t{static_cast<unsigned char>(code[2])} << 8) |
           std::uint32_t{static_cast<unsigned char>(code[3])};
}

struct FormatDescription {
    MediaType mediaType = MediaType::Muxed;
    std::uint32_t formatType = 0; ///< four-character code, "dvc " for instance
};

/// Every operation from any thread. Devices are held by std::shared_ptr; the same device is the same pointer.
class QTCaptureDevice {
public:
    virtual ~QTCaptureDevice() = default;

    [[nodiscard]] virtual std::string uniqueID() const = 0;
    [[nodiscard]] virtual std::string localizedDisplayName() const = 0;
    [[nodiscard]] virtual std::vector<FormatDescription> formatDescriptions() const = 0;

    /// Takes the device for this process. Opening an open device does nothing.
    [[nodiscard]] virtual std::optional<Error> open() = 0;
    /// Gives the device back; its tape is left as it moves. Closing a closed device does nothing.
    virtual void close() = 0;

    /// The attribute as the device reports it now; none when it has no such attribute or is gone.
    [[nodiscard]] virtual std::optional<Value> attributeForKey(std::string_view key) const = 0;
    [[nodiscard]] virtual bool attributeIsReadOnly(std::string_view key) const = 0;

    /// Commands the device and returns without waiting for the mechanism; attributeForKey tells what it made
    /// of it, and the attribute notifications when. A read-only or unknown attribute is left as it is.
    virtual void setAttributeForKey(const Value& value, std::string_view key) = 0;
};

} // namespace merro::platform
