#include "platform/session/CaptureFramework.h"

#include "platform/NotificationCenter.h"
#include "platform/RunLoop.h"
#include "platform/session/AudioPreviewOutput.h"
#include "platform/session/CaptureContext.h"
#include "platform/session/CaptureDeviceInput.h"
#include "platform/session/CaptureSession.h"
#include "platform/session/MovieFileOutput.h"
#include "platform/session/VideoPreviewOutput.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace merro::platform::session {

struct CaptureFramework::Lists {
    struct Choice {
        MediaType type;
        std::string identifier;
        CompressionOptionsRef options;
    };

    std::mutex mutex;
    std::vector<std::shared_ptr<Device>> devices;
    std::vector<Choice> choices;
};

CaptureFramework::CaptureFramework(Threads& threads, RunLoop& runLoop, NotificationCenter& notifications,
                                   MovieRecorderFactory* recorders, WhenFull whenFull, CaptureEvents events)
    : m_runLoop(runLoop), m_notifications(notifications),
      m_context(new CaptureContext{threads, recorders, whenFull, std::move(events)}),
      m_lists(std::make_unique<Lists>()) {}

CaptureFramework::~CaptureFramework() = default;

void CaptureFramework::addDevice(const std::shared_ptr<Device>& device) {
    {
        const std::lock_guard lock(m_lists->mutex);
        if (std::ranges::find(m_lists->devices, device) != m_lists->devices.end())
            return;
        m_lists->devices.push_back(device);
    }
    post(QTCaptureDeviceWasConnectedNotification, device);
}

void CaptureFramework::removeDevice(const std::shared_ptr<QTCaptureDevice>& device) {
    {
        const std::lock_guard lock(m_lists->mutex);
        if (std::erase(m_lists->devices, device) == 0)
            return;
    }
    post(QTCaptureDeviceWasDisconnectedNotification, device);
}

void CaptureFramework::addCompressionOptions(MediaType type, std::string identifier,
                                             CompressionOptionsRef options) {
    const std::lock_guard lock(m_lists->mutex);
    m_lists->choices.push_back({type, std::move(identifier), std::move(options)});
}

std::int64_t CaptureFramework::framesLost() const {
    return m_context->framesLost;
}

std::vector<std::shared_ptr<QTCaptureDevice>> CaptureFramework::inputDevicesWithMediaType(MediaType type) {
    std::vector<std::shared_ptr<Device>> devices;
    {
        const std::lock_guard lock(m_lists->mutex);
        devices = m_lists->devices;
    }
    std::vector<std::shared_ptr<QTCaptureDevice>> matching;
    for (const auto& device : devices) {
        const auto formats = device->formatDescriptions();
        if (std::ranges::find(formats, type, &FormatDescription::mediaType) != formats.end())
            matching.push_back(device);
    }
    return matching;
}

std::shared_ptr<QTCaptureSession> CaptureFramework::makeSession() {
    return std::make_shared<CaptureSession>(m_context);
}

std::shared_ptr<QTCaptureDeviceInput>
CaptureFramework::makeDeviceInput(const std::shared_ptr<QTCaptureDevice>& device) {
    auto sessionDevice = std::dynamic_pointer_cast<Device>(device);
    return sessionDevice ? std::make_shared<CaptureDeviceInput>(std::move(sessionDevice)) : nullptr;
}

std::shared_ptr<QTCaptureVideoPreviewOutput> CaptureFramework::makeVideoPreviewOutput() {
    return std::make_shared<VideoPreviewOutput>();
}

std::shared_ptr<QTCaptureAudioPreviewOutput> CaptureFramework::makeAudioPreviewOutput() {
    return std::make_shared<AudioPreviewOutput>();
}

std::shared_ptr<QTCaptureMovieFileOutput> CaptureFramework::makeMovieFileOutput() {
    return std::make_shared<MovieFileOutput>(m_context);
}

std::vector<std::string> CaptureFramework::compressionOptionsIdentifiersForMediaType(MediaType type) {
    const std::lock_guard lock(m_lists->mutex);
    std::vector<std::string> identifiers;
    for (const auto& choice : m_lists->choices) {
        if (choice.type == type)
            identifiers.push_back(choice.identifier);
    }
    return identifiers;
}

CompressionOptionsRef CaptureFramework::compressionOptionsWithIdentifier(const std::string& identifier) {
    const std::lock_guard lock(m_lists->mutex);
    const auto found = std::ranges::find(m_lists->choices, identifier, &Lists::Choice::identifier);
    return found == m_lists->choices.end() ? nullptr : found->options;
}

void CaptureFramework::post(std::string_view notification, const std::shared_ptr<QTCaptureDevice>& device) {
    m_runLoop.post([&center = m_notifications, name = std::string(notification), device] {
        center.post({name, device.get(), {}});
    });
}

} // namespace merro::platform::session
