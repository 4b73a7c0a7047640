#include "capture/DeviceTransport.h"

#include <algorithm>
#include <array>
#include <utility>

namespace merro {

using platform::Dictionary;
using platform::QTCaptureDevice;
using platform::QTCaptureDeviceAVCTransportControlsAttribute;
using platform::QTCaptureDeviceAVCTransportControlsPlaybackModeKey;
using platform::QTCaptureDeviceAVCTransportControlsSpeedKey;
using platform::Value;

namespace {

// A deck may report speeds that are on neither list; it is then neither rewinding nor winding forward.
constexpr std::array<std::int64_t, 7> kRewindingSpeeds{-19000, -16000, -13000, -10000, -7000, -4000, -1000};
constexpr std::array<std::int64_t, 6> kForwardingSpeeds{1000, 4000, 7000, 13000, 16000, 19000};

std::int64_t integerUnderKey(const Dictionary& dictionary, std::string_view key) {
    const Value* value = find(dictionary, key);
    return value ? value->integerValue() : 0;
}

} // namespace

bool hasWritableTransport(const std::shared_ptr<QTCaptureDevice>& device) {
    return device && device->attributeForKey(QTCaptureDeviceAVCTransportControlsAttribute) &&
           !device->attributeIsReadOnly(QTCaptureDeviceAVCTransportControlsAttribute);
}

DeviceTransport::DeviceTransport(std::shared_ptr<platform::QTCaptureSession> session,
                                 ControllableDevice controllableDevice)
    : m_session(std::move(session)), m_controllableDevice(std::move(controllableDevice)) {}

bool DeviceTransport::isDevicePlaying() const {
    const auto state = reportedState();
    return state && state->speed == kTransportSpeedPlay && state->mode == kTransportModePlaying;
}

bool DeviceTransport::isDevicePause() const {
    const auto state = reportedState();
    return state && state->speed == kTransportSpeedStill && state->mode == kTransportModePlaying;
}

bool DeviceTransport::isDeviceRewinding() const {
    const auto state = reportedState();
    return state && std::ranges::count(kRewindingSpeeds, state->speed) > 0;
}

bool DeviceTransport::isDeviceFastForwarding() const {
    const auto state = reportedState();
    return state && std::ranges::count(kForwardingSpeeds, state->speed) > 0;
}

void DeviceTransport::setDevicePlaying(bool playing) {
    command(playing ? kTransportSpeedPlay : kTransportSpeedStill, kTransportModePlaying);
    if (!m_session->isRunning())
        m_session->startRunning();
}

void DeviceTransport::setDeviceRewinding(bool rewinding) {
    command(rewinding ? kTransportSpeedRewind : kTransportSpeedStill, std::nullopt);
}

void DeviceTransport::setDeviceFastForwarding(bool forwarding) {
    command(forwarding ? kTransportSpeedFastForward : kTransportSpeedStill, std::nullopt);
}

void DeviceTransport::stopPlaying() {
    command(kTransportSpeedStill, kTransportModeNotPlaying);
}

void DeviceTransport::stopDevice() {
    stopPlaying();
    if (m_session->isRunning())
        m_session->stopRunning();
}

void DeviceTransport::playAtSpeed(std::int64_t speed) {
    command(speed, kTransportModePlaying);
}

std::optional<DeviceTransport::State> DeviceTransport::stateOfDevice(const QTCaptureDevice& device) {
    const auto attribute = device.attributeForKey(QTCaptureDeviceAVCTransportControlsAttribute);
    const auto* transport = attribute ? attribute->getIf<Dictionary>() : nullptr;
    if (!transport)
        return std::nullopt;
    return State{integerUnderKey(*transport, QTCaptureDeviceAVCTransportControlsSpeedKey),
                 integerUnderKey(*transport, QTCaptureDeviceAVCTransportControlsPlaybackModeKey)};
}

std::optional<DeviceTransport::State> DeviceTransport::reportedState() const {
    const auto device = m_controllableDevice();
    return device ? stateOfDevice(*device) : std::nullopt;
}

void DeviceTransport::command(std::int64_t speed, std::optional<std::int64_t> mode) {
    const auto device = m_controllableDevice();
    const auto state = device ? stateOfDevice(*device) : std::nullopt;
    if (!state)
        return;
    device->setAttributeForKey(
        Dictionary{
            {std::string(QTCaptureDeviceAVCTransportControlsSpeedKey), speed},
            {std::string(QTCaptureDeviceAVCTransportControlsPlaybackModeKey), mode.value_or(state->mode)},
        },
        QTCaptureDeviceAVCTransportControlsAttribute);
}

} // namespace merro
