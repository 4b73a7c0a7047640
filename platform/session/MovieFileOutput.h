// The movie-file output: shows every sample to its delegate and hands the samples of a recording to a
// MovieRecorder.
//
// Operations from any thread. The delegate is called on the delivery thread; only when delivery stops, on the
// thread that stopped it.
#pragma once

#include "platform/QTCaptureSession.h"
#include "platform/session/CallGate.h"
#include "platform/session/MovieRecorder.h"
#include "platform/session/SampleSink.h"
#include "platform/Threads.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace merro::platform::session {

struct CaptureContext;

/// Whoever works on the recording (starts, feeds, ends it) holds the pen. It is a token, not a lock: while it
/// is held, delegates are called and files are waited for. A request that comes while the pen is taken is
/// left to its holder: one that comes from within the delegate is carried out when the delegate returns,
/// before the sample at hand is written; one from another thread, and endRecordingAfterSample, after that
/// sample, unless the delegate asks for something else later.
class MovieFileOutput final : public QTCaptureMovieFileOutput, public SampleSink {
public:
    explicit MovieFileOutput(std::shared_ptr<CaptureContext> context);
    /// Ends the recording and waits for its file.
    ~MovieFileOutput() override;
    MovieFileOutput(const MovieFileOutput&) = delete;
    MovieFileOutput& operator=(const MovieFileOutput&) = delete;

    void setDelegate(QTCaptureFileOutputDelegate delegate) override;

    /// With WhenFull::Wait the movie that ends is whole when its delegate is told: on the delivery thread
    /// before the next sample is written, or, when another thread ended it, with the next sample or when
    /// delivery stops. With WhenFull::LoseFrame the delegate is told with the first sample after the movie is
    /// whole, or when delivery stops.
    void recordToOutputFileURL(const std::optional<std::string>& path) override;

    void endRecordingAfterSample() override;

    /// One for video, one for sound.
    [[nodiscard]] std::vector<std::shared_ptr<QTCaptureConnection>> connections() const override;
    void setCompressionOptionsForConnection(CompressionOptionsRef options,
                                            const std::shared_ptr<QTCaptureConnection>& connection) override;
    /// What was set for the connection; null for the device's own DV.
    [[nodiscard]] CompressionOptionsRef
    compressionOptionsForConnection(const std::shared_ptr<QTCaptureConnection>& connection) const;

    void receive(const QTSampleBuffer& sampleBuffer) override;
    void deliveryStopped() override;

private:
    struct Recording {
        std::string path;
        std::shared_ptr<MovieRecorder> recorder;
        bool hasAskedForAnother = false;
    };
    struct Request {
        std::optional<std::string> path;
    };

    // For the holder of the pen.
    void takePen();
    void givePenBack();
    std::optional<Request> nextRequest(std::optional<Request>& slot);
    void carryOutRequestsOfDelegate();
    void switchTo(const std::optional<std::string>& path);
    [[nodiscard]] std::shared_ptr<MovieRecorder> startRecorder(const std::string& path);
    void askForAnotherFileWhenBroken();
    void tellOfFinishedRecordings();
    template <typename Call>
    void callDelegate(const Call& call);

    const std::shared_ptr<CaptureContext> m_context;
    const std::shared_ptr<QTCaptureConnection> m_video;
    const std::shared_ptr<QTCaptureConnection> m_sound;

    mutable std::mutex m_optionsMutex;
    std::map<std::shared_ptr<QTCaptureConnection>, CompressionOptionsRef> m_options;

    std::mutex m_delegateMutex;
    std::shared_ptr<const QTCaptureFileOutputDelegate> m_delegate;
    CallGate m_gate;

    /// Its condition says whether the pen is taken; locked only to look at the four fields below.
    const std::unique_ptr<ConditionLock> m_pen;
    std::thread::id m_penHolder;
    std::optional<Request> m_requestOfDelegate;
    std::optional<Request> m_requestForLater;

    // Only the holder of the pen touches these.
    std::optional<Recording> m_recording;
    std::vector<Recording> m_ended;
};

} // namespace merro::platform::session
