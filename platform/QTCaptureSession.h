// The capture session: one input, several outputs, and the delivery thread between them.
//
// Objects are held by std::shared_ptr. Operations may be called from any thread unless said otherwise.
#pragma once

#include "platform/Error.h"
#include "platform/QTCaptureDevice.h"
#include "platform/QTCompressionOptions.h"
#include "platform/QTSampleBuffer.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace merro::platform {

/// A device made ready for a session.
class QTCaptureDeviceInput {
public:
    virtual ~QTCaptureDeviceInput() = default;
    [[nodiscard]] virtual std::shared_ptr<QTCaptureDevice> device() const = 0;
};

/// The road of one medium from the session's input to an output.
class QTCaptureConnection {
public:
    virtual ~QTCaptureConnection() = default;
    [[nodiscard]] virtual MediaType mediaType() const = 0;
};

class QTCaptureOutput {
public:
    virtual ~QTCaptureOutput() = default;
};

/// The picture of the running session on the screen.
class QTCaptureVideoPreviewOutput : public QTCaptureOutput {};

/// The sound of the running session on the loudspeaker.
class QTCaptureAudioPreviewOutput : public QTCaptureOutput {
public:
    [[nodiscard]] virtual float volume() const = 0; ///< 0.0 silent to 1.0
    virtual void setVolume(float volume) = 0;
};

class QTCaptureMovieFileOutput;

/// What a movie-file output tells. An empty member is a message that is not answered. All on the delivery
/// thread.
struct QTCaptureFileOutputDelegate {
    /// Every sample that the output receives, before it is written, whether or not a file is being recorded.
    std::function<void(QTCaptureMovieFileOutput& output, const QTSampleBuffer& sampleBuffer,
                       const QTCaptureConnection& connection)>
        didOutputSampleBuffer;

    /// The output cannot go on writing to the file at `path` (no space left, for instance) and wants another
    /// one.
    std::function<void(QTCaptureMovieFileOutput& output, const std::string& path,
                       const std::optional<Error>& error)>
        mustChangeOutputFile;

    /// The file at `path` is whole and under its final name, or `error` says why it is not.
    std::function<void(QTCaptureMovieFileOutput& output, const std::string& path,
                       const std::optional<Error>& error)>
        didFinishRecording;
};

/// Writes movies and shows every sample to its delegate.
class QTCaptureMovieFileOutput : public QTCaptureOutput {
public:
    /// Once this returns, the delegate set before is not being called and never will be again, unless the
    /// caller is itself inside one of its callbacks.
    virtual void setDelegate(QTCaptureFileOutputDelegate delegate) = 0;

    /// Records into a new movie at `path`, or into none; a file being recorded is ended. Called from within
    /// didOutputSampleBuffer, the sample at hand is the first of the new file and not in the old one. Files
    /// are written on threads of the output's own and appear under `path` only when whole; an existing file
    /// is never overwritten.
    virtual void recordToOutputFileURL(const std::optional<std::string>& path) = 0;

    /// Ends the file being recorded: while a sample is being shown to the delegate, after that sample, which
    /// is still in the file; at once otherwise.
    virtual void endRecordingAfterSample() = 0;

    [[nodiscard]] virtual std::vector<std::shared_ptr<QTCaptureConnection>> connections() const = 0;

    /// Null options write the device's own DV. Takes effect with the next file; the session must not be
    /// running.
    virtual void
    setCompressionOptionsForConnection(CompressionOptionsRef options,
                                       const std::shared_ptr<QTCaptureConnection>& connection) = 0;
};

class QTCaptureSession {
public:
    virtual ~QTCaptureSession() = default;

    /// Fails when the session has an input already or the device is not open.
    [[nodiscard]] virtual std::optional<Error>
    addInput(const std::shared_ptr<QTCaptureDeviceInput>& input) = 0;
    /// Stops delivery from the input. Once it returns no delegate is being called with its samples, unless
    /// the caller is itself inside such a call.
    virtual void removeInput(const std::shared_ptr<QTCaptureDeviceInput>& input) = 0;
    [[nodiscard]] virtual std::vector<std::shared_ptr<QTCaptureDeviceInput>> inputs() const = 0;

    /// Samples go to the outputs in the order in which these were added.
    virtual void addOutput(const std::shared_ptr<QTCaptureOutput>& output) = 0;
    virtual void removeOutput(const std::shared_ptr<QTCaptureOutput>& output) = 0;

    virtual void startRunning() = 0;
    /// Once this returns no delegate is being called, unless the caller is itself inside a callback.
    virtual void stopRunning() = 0;
    [[nodiscard]] virtual bool isRunning() const = 0;
};

/// Makes all of the above, and knows the devices.
class QTCaptureFramework {
public:
    virtual ~QTCaptureFramework() = default;

    /// The devices connected now, in a stable order.
    [[nodiscard]] virtual std::vector<std::shared_ptr<QTCaptureDevice>>
    inputDevicesWithMediaType(MediaType type) = 0;

    [[nodiscard]] virtual std::shared_ptr<QTCaptureSession> makeSession() = 0;
    [[nodiscard]] virtual std::shared_ptr<QTCaptureDeviceInput>
    makeDeviceInput(const std::shared_ptr<QTCaptureDevice>& device) = 0;
    [[nodiscard]] virtual std::shared_ptr<QTCaptureVideoPreviewOutput> makeVideoPreviewOutput() = 0;
    [[nodiscard]] virtual std::shared_ptr<QTCaptureAudioPreviewOutput> makeAudioPreviewOutput() = 0;
    [[nodiscard]] virtual std::shared_ptr<QTCaptureMovieFileOutput> makeMovieFileOutput() = 0;

    /// The platform's named compression choices for a medium, in its own order.
    [[nodiscard]] virtual std::vector<std::string>
    compressionOptionsIdentifiersForMediaType(MediaType type) = 0;
    /// Null for an unknown identifier.
    [[nodiscard]] virtual CompressionOptionsRef
    compressionOptionsWithIdentifier(const std::string& identifier) = 0;
};

} // namespace merro::platform
