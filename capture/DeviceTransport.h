// The tape transport of a device: play, pause, wind, stop.
//
// Nothing about the transport is remembered here: every question is put to the device, so that the answers
// follow the buttons on the camcorder too. Commands return before the mechanism has obeyed. Without a
// controllable device, or when it reports no transport attribute, questions answer false and commands reach
// nobody. Any thread.
#pragma once

#include "platform/QTCaptureSession.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace merro {

/// Speeds of the transport attribute; the scale runs from -19000 to 19000 in steps of 3000, and 0.
inline constexpr std::int64_t kTransportSpeedStill = 0;
inline constexpr std::int64_t kTransportSpeedPlay = 10000;
inline constexpr std::int64_t kTransportSpeedReversePlay = -10000;
inline constexpr std::int64_t kTransportSpeedFastForward = 13000;
inline constexpr std::int64_t kTransportSpeedRewind = -13000;

/// Modes of the transport attribute.
inline constexpr std::int64_t kTransportModeNotPlaying = 0;
inline constexpr std::int64_t kTransportModePlaying = 1;

class DeviceTransport {
public:
    using ControllableDevice = std::function<std::shared_ptr<platform::QTCaptureDevice>()>;

    /// `controllableDevice` answers the device to be driven at the moment, or null; called on the thread of
    /// the question or command.
    DeviceTransport(std::shared_ptr<platform::QTCaptureSession> session,
                    ControllableDevice controllableDevice);

    /// Normal speed, playing. A plain question, without the side effect that the controller's property has.
    [[nodiscard]] bool isDevicePlaying() const;
    /// Standing still, with the picture.
    [[nodiscard]] bool isDevicePause() const;
    /// Backwards at any speed of the scale.
    [[nodiscard]] bool isDeviceRewinding() const;
    /// Forwards at any speed of the scale but that of normal play.
    [[nodiscard]] bool isDeviceFastForwarding() const;

    /// Play, or pause; then starts the session if it is not running, whether or not there is a device to
    /// drive.
    void setDevicePlaying(bool playing);
    /// Rewind, or stand still, in the mode that the device reports: a wind from stop, a picture search from
    /// play.
    void setDeviceRewinding(bool rewinding);
    /// Fast forward, or stand still, in the mode that the device reports.
    void setDeviceFastForwarding(bool forwarding);

    /// Still and not playing; the session is left alone.
    void stopPlaying();
    /// stopPlaying; then stops the session if it is running, whether or not there is a device to drive.
    void stopDevice();

    /// Moves the tape at `speed` with the picture.
    void playAtSpeed(std::int64_t speed);

private:
    struct State {
        std::int64_t speed = 0;
        std::int64_t mode = 0;
    };
    [[nodiscard]] static std::optional<State> stateOfDevice(const platform::QTCaptureDevice& device);
    [[nodiscard]] std::optional<State> reportedState() const;
    void command(std::int64_t speed, std::optional<std::int64_t> mode);

    std::shared_ptr<platform::QTCaptureSession> m_session;
    ControllableDevice m_controllableDevice;
};

/// Whether `device` has a transport attribute that may be written. False for null.
[[nodiscard]] bool hasWritableTransport(const std::shared_ptr<platform::QTCaptureDevice>& device);

} // namespace merro
