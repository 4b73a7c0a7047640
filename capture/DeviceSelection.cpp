#include "capture/DeviceSelection.h"

#include "capture/DeviceTransport.h"
#include "platform/Alerts.h"
#include "platform/Localization.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace merro {

using platform::fourCharCode;
using platform::QTCaptureDevice;

namespace {

/// The format types that are DV in one of its flavours (IEC 61834, SMPTE 314M).
constexpr std::array<std::uint32_t, 6> kDVFormats{fourCharCode("dv  "), fourCharCode("dvc "),
                                                  fourCharCode("dvcp"), fourCharCode("dvpp"),
                                                  fourCharCode("dv5n"), fourCharCode("dv5p")};

constexpr std::string_view kNotDV = "The original stream is not DV.";
constexpr std::string_view kNotDVInformation = "This version of the application cannot handle video stream "
                                               "that is not encoded in DV. If your camcorder is "
                                               "a HD camcorder, please activate the DV down-conversion "
                                               "option at playback (most HDV camcorders offer this "
                                               "option) to capture video.";

constexpr const char* kTransportProperties[] = {"devicePlaying", "deviceFastForwarding", "deviceRewinding"};

} // namespace

DeviceSelection::DeviceSelection(const platform::Surroundings& surroundings,
                                 std::shared_ptr<platform::QTCaptureSession> session,
                                 platform::KeyValueObserving& announcements, std::function<void()> selected)
    : m_surroundings(surroundings), m_session(std::move(session)), m_announcements(announcements),
      m_selected(std::move(selected)) {}

void DeviceSelection::setSelectedVideoDevice(const std::shared_ptr<QTCaptureDevice>& device) {
    m_announcements.willChangeValueForKey("selectedVideoDevice");
    releaseInput();
    if (device)
        warnUnlessDV(*device);
    if (!device || takeInput(device))
        m_selected();
    m_announcements.didChangeValueForKey("selectedVideoDevice");
}

void DeviceSelection::releaseInput() {
    const auto input = m_videoDeviceInput.get();
    if (!input)
        return;
    m_session->removeInput(input);
    input->device()->close();
    m_videoDeviceInput.set(nullptr);
}

void DeviceSelection::warnUnlessDV(const QTCaptureDevice& device) {
    const platform::Localization& localization = m_surroundings.localization;
    for (const platform::FormatDescription& format : device.formatDescriptions()) {
        if (std::ranges::count(kDVFormats, format.formatType) > 0)
            continue;
        (void)m_surroundings.alerts.runModal(
            {localization.text(kNotDV), localization.text(kNotDVInformation)});
    }
}

bool DeviceSelection::takeInput(const std::shared_ptr<QTCaptureDevice>& device) {
    if (const auto error = device->open()) {
        m_surroundings.alerts.runForError(*error);
        return false;
    }
    auto input = m_surroundings.capture.makeDeviceInput(device);
    if (const auto error = m_session->addInput(input)) {
        m_surroundings.alerts.runForError(*error);
        input.reset();
        device->close();
        return false;
    }
    m_videoDeviceInput.set(std::move(input));
    return true;
}

std::shared_ptr<QTCaptureDevice> DeviceSelection::selectedVideoDevice() const {
    const auto input = m_videoDeviceInput.get();
    return input ? input->device() : nullptr;
}

std::shared_ptr<platform::QTCaptureDeviceInput> DeviceSelection::videoDeviceInput() const {
    return m_videoDeviceInput.get();
}

bool DeviceSelection::hasRecordingDevice() const {
    return m_videoDeviceInput.get() != nullptr;
}

std::shared_ptr<QTCaptureDevice> DeviceSelection::controllableDevice() const {
    auto device = selectedVideoDevice();
    return hasWritableTransport(device) ? device : nullptr;
}

void DeviceSelection::startObservingTransport() {
    const auto observe = [this](std::string_view name, std::function<void(const char* property)> announce) {
        m_observations.push_back(m_surroundings.notifications.addObserver(
            std::string(name), nullptr,
            [this, announce = std::move(announce)](const platform::Notification& notification) {
                if (!isAboutTransport(notification))
                    return;
                for (const char* property : kTransportProperties)
                    announce(property);
            }));
    };
    observe(platform::QTCaptureDeviceAttributeWillChangeNotification,
            [this](const char* property) { m_announcements.willChangeValueForKey(property); });
    observe(platform::QTCaptureDeviceAttributeDidChangeNotification,
            [this](const char* property) { m_announcements.didChangeValueForKey(property); });
}

bool DeviceSelection::isAboutTransport(const platform::Notification& notification) const {
    const auto device = controllableDevice();
    if (!device || notification.object != device.get())
        return false;
    const platform::Value* key = find(notification.information, platform::QTCaptureDeviceChangedAttributeKey);
    return key && key->stringValue() == platform::QTCaptureDeviceAVCTransportControlsAttribute;
}

} // namespace merro
