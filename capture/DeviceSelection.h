// Which device a session takes its input from.
//
// Devices are chosen on the main thread; the questions may be asked on any thread. Owned by a controller.
#pragma once

#include "platform/Cell.h"
#include "platform/KeyValueObserving.h"
#include "platform/NotificationCenter.h"
#include "platform/QTCaptureSession.h"
#include "platform/Surroundings.h"

#include <functional>
#include <memory>
#include <vector>

namespace merro {

class DeviceSelection {
public:
    /// `selected` is what the controller does once a device (or none) has been selected; it is not called
    /// when the device could not be had. Changes are announced through `announcements`, which outlives this
    /// object.
    DeviceSelection(const platform::Surroundings& surroundings,
                    std::shared_ptr<platform::QTCaptureSession> session,
                    platform::KeyValueObserving& announcements, std::function<void()> selected);

    /// Lets go of the device selected before, then opens `device` and gives the session its input. A device
    /// that does not deliver DV is warned about (once for each such format) and used all the same. A device
    /// that cannot be opened or added is told to the user and leaves none selected. Null selects none.
    /// Announces "selectedVideoDevice". Main thread.
    void setSelectedVideoDevice(const std::shared_ptr<platform::QTCaptureDevice>& device);

    /// Null when none is selected.
    [[nodiscard]] std::shared_ptr<platform::QTCaptureDevice> selectedVideoDevice() const;
    /// The session input of the selected device, or null.
    [[nodiscard]] std::shared_ptr<platform::QTCaptureDeviceInput> videoDeviceInput() const;
    [[nodiscard]] bool hasRecordingDevice() const;
    /// The selected device when its transport can be driven, or null.
    [[nodiscard]] std::shared_ptr<platform::QTCaptureDevice> controllableDevice() const;

    /// From now on a change of the controllable device's transport is announced as one of "devicePlaying",
    /// "deviceFastForwarding" and "deviceRewinding". Main thread.
    void startObservingTransport();

private:
    void releaseInput();
    void warnUnlessDV(const platform::QTCaptureDevice& device);
    [[nodiscard]] bool takeInput(const std::shared_ptr<platform::QTCaptureDevice>& device);
    [[nodiscard]] bool isAboutTransport(const platform::Notification& notification) const;

    platform::Surroundings m_surroundings;
    std::shared_ptr<platform::QTCaptureSession> m_session;
    platform::KeyValueObserving& m_announcements;
    std::function<void()> m_selected;
    platform::Cell<std::shared_ptr<platform::QTCaptureDeviceInput>> m_videoDeviceInput;
    std::vector<platform::Observation> m_observations;
};

} // namespace merro
