// The capture framework over devices of any kind: sessions, inputs, outputs, and the list of connected
// devices.
//
// Every operation from any thread. What the make operations return belongs to the caller and may outlive the
// framework, but not the surroundings (threads, run loop, notification center, recorder factory) it was made
// with.
#pragma once

#include "platform/QTCaptureSession.h"
#include "platform/session/Device.h"
#include "platform/session/MovieRecorder.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace merro::platform {
class NotificationCenter;
class RunLoop;
class Threads;
} // namespace merro::platform

namespace merro::platform::session {

/// What a host hears of the sessions beside the component's own messages. Empty members are not called. Told
/// on the delivery thread or on the thread of a recorder, never with a lock held.
struct CaptureEvents {
    /// Something the user must hear of at once: a full disk, movies that cannot be recorded here.
    std::function<void(const Error& problem)> problem;
    /// Frames lost just now, on their way from the device or in front of a slow disk.
    std::function<void(std::int64_t frames)> framesLost;
    /// A movie is whole and under its final name, or will never be.
    std::function<void(const RecordingResult& result)> recordingFinished;
};

struct CaptureContext;

class CaptureFramework final : public QTCaptureFramework {
public:
    /// `recorders` may be null: then recording a movie tells one problem and records nothing.
    CaptureFramework(Threads& threads, RunLoop& runLoop, NotificationCenter& notifications,
                     MovieRecorderFactory* recorders, WhenFull whenFull, CaptureEvents events = {});
    ~CaptureFramework() override;

    /// The device is connected: it joins the list, and QTCaptureDeviceWasConnectedNotification is posted on
    /// the main thread. A device that is in the list already changes nothing.
    void addDevice(const std::shared_ptr<Device>& device);
    /// The device is gone: it leaves the list, and QTCaptureDeviceWasDisconnectedNotification is posted on
    /// the main thread. Sessions keep it as their input, without frames.
    void removeDevice(const std::shared_ptr<QTCaptureDevice>& device);

    /// Adds a named compression choice, after those added before.
    void addCompressionOptions(MediaType type, std::string identifier, CompressionOptionsRef options);

    /// Frames lost so far in all sessions of this framework, on their way from the device and in front of a
    /// slow disk. Only grows: the losses of a clip are the difference between its end and its start.
    [[nodiscard]] std::int64_t framesLost() const;

    [[nodiscard]] std::vector<std::shared_ptr<QTCaptureDevice>>
    inputDevicesWithMediaType(MediaType type) override;
    [[nodiscard]] std::shared_ptr<QTCaptureSession> makeSession() override;
    /// Null when `device` is none of this framework's kind (session::Device).
    [[nodiscard]] std::shared_ptr<QTCaptureDeviceInput>
    makeDeviceInput(const std::shared_ptr<QTCaptureDevice>& device) override;
    [[nodiscard]] std::shared_ptr<QTCaptureVideoPreviewOutput> makeVideoPreviewOutput() override;
    [[nodiscard]] std::shared_ptr<QTCaptureAudioPreviewOutput> makeAudioPreviewOutput() override;
    [[nodiscard]] std::shared_ptr<QTCaptureMovieFileOutput> makeMovieFileOutput() override;
    [[nodiscard]] std::vector<std::string> compressionOptionsIdentifiersForMediaType(MediaType type) override;
    [[nodiscard]] CompressionOptionsRef
    compressionOptionsWithIdentifier(const std::string& identifier) override;

private:
    struct Lists;
    void post(std::string_view notification, const std::shared_ptr<QTCaptureDevice>& device);

    RunLoop& m_runLoop;
    NotificationCenter& m_notifications;
    std::shared_ptr<CaptureContext> m_context;
    std::unique_ptr<Lists> m_lists;
};

} // namespace merro::platform::session
