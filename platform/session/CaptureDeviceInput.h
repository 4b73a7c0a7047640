// A device made ready for a session. Immutable; any thread.
#pragma once

#include "platform/QTCaptureSession.h"
#include "platform/session/Device.h"

#include <memory>
#include <utility>

namespace merro::platform::session {

class CaptureDeviceInput final : public QTCaptureDeviceInput {
public:
    explicit CaptureDeviceInput(std::shared_ptr<Device> device) : m_device(std::move(device)) {}

    [[nodiscard]] std::shared_ptr<QTCaptureDevice> device() const override { return m_device; }
    [[nodiscard]] const std::shared_ptr<Device>& sessionDevice() const { return m_device; }

private:
    std::shared_ptr<Device> m_device;
};

} // namespace merro::platform::session
