#include "platform/session/MovieFileOutput.h"

#include "platform/session/CaptureContext.h"

#include <algorithm>
#include <utility>

namespace merro::platform::session {

namespace {

constexpr int penFree = 0;
constexpr int penTaken = 1;

class Connection final : public QTCaptureConnection {
public:
    explicit Connection(MediaType type) : m_type(type) {}
    [[nodiscard]] MediaType mediaType() const override { return m_type; }

private:
    MediaType m_type;
};

} // namespace

MovieFileOutput::MovieFileOutput(std::shared_ptr<CaptureContext> context)
    : m_context(std::move(context)), m_video(std::make_shared<Connection>(MediaType::Video)),
      m_sound(std::make_shared<Connection>(MediaType::Sound)), m_gate(m_context->threads),
      m_pen(m_context->threads.makeConditionLock(penFree)) {}

MovieFileOutput::~MovieFileOutput() {
    if (m_recording)
        m_recording->recorder->finish();
}

void MovieFileOutput::setDelegate(QTCaptureFileOutputDelegate delegate) {
    auto next = std::make_shared<const QTCaptureFileOutputDelegate>(std::move(delegate));
    {
        const std::lock_guard lock(m_delegateMutex);
        m_delegate.swap(next);
    }
    m_gate.wait();
}

void MovieFileOutput::recordToOutputFileURL(const std::optional<std::string>& path) {
    m_pen->lock();
    if (m_pen->condition() == penTaken) {
        const bool fromDelegate = m_penHolder == std::this_thread::get_id();
        if (fromDelegate) {
            m_requestOfDelegate = Request{path};
            m_requestForLater.reset(); // it is older, and would end the file that begins here
        } else {
            m_requestForLater = Request{path};
        }
        m_pen->unlock();
        return;
    }
    m_penHolder = std::this_thread::get_id();
    m_pen->unlockWithCondition(penTaken);
    switchTo(path);
    givePenBack();
}

void MovieFileOutput::endRecordingAfterSample() {
    m_pen->lock();
    if (m_pen->condition() == penTaken) {
        m_requestForLater = Request{};
        m_pen->unlock();
        return;
    }
    m_pen->unlock();
    recordToOutputFileURL(std::nullopt);
}

std::vector<std::shared_ptr<QTCaptureConnection>> MovieFileOutput::connections() const {
    return {m_video, m_sound};
}

void MovieFileOutput::setCompressionOptionsForConnection(
    CompressionOptionsRef options, const std::shared_ptr<QTCaptureConnection>& connection) {
    const std::lock_guard lock(m_optionsMutex);
    m_options[connection].swap(options);
}

CompressionOptionsRef MovieFileOutput::compressionOptionsForConnection(
    const std::shared_ptr<QTCaptureConnection>& connection) const {
    const std::lock_guard lock(m_optionsMutex);
    const auto found = m_options.find(connection);
    return found == m_options.end() ? nullptr : found->second;
}

void MovieFileOutput::receive(const QTSampleBuffer& sampleBuffer) {
    takePen();
    tellOfFinishedRecordings();
    askForAnotherFileWhenBroken();
    callDelegate([&](const QTCaptureFileOutputDelegate& delegate) {
        if (delegate.didOutputSampleBuffer)
            delegate.didOutputSampleBuffer(*this, sampleBuffer, *m_video);
    });
    carryOutRequestsOfDelegate();
    if (m_recording)
        m_recording->recorder->append(sampleBuffer);
    givePenBack();
}

void MovieFileOutput::deliveryStopped() {
    takePen();
    tellOfFinishedRecordings();
    carryOutRequestsOfDelegate();
    givePenBack();
}

void MovieFileOutput::takePen() {
    m_pen->lockWhenCondition(penFree);
    m_penHolder = std::this_thread::get_id();
    m_pen->unlockWithCondition(penTaken);
}

void MovieFileOutput::givePenBack() {
    for (;;) {
        m_pen->lock();
        std::optional<Request> request = std::exchange(m_requestForLater, std::nullopt);
        if (!request) {
            m_penHolder = {};
            m_pen->unlockWithCondition(penFree);
            return;
        }
        m_pen->unlock();
        switchTo(request->path);
    }
}

void MovieFileOutput::carryOutRequestsOfDelegate() {
    while (std::optional<Request> request = nextRequest(m_requestOfDelegate)) {
        switchTo(request->path);
        tellOfFinishedRecordings();
    }
}

std::optional<MovieFileOutput::Request> MovieFileOutput::nextRequest(std::optional<Request>& slot) {
    m_pen->lock();
    std::optional<Request> request = std::exchange(slot, std::nullopt);
    m_pen->unlock();
    return request;
}

void MovieFileOutput::switchTo(const std::optional<std::string>& path) {
    if (m_recording) {
        m_recording->recorder->finish();
        m_ended.push_back(*std::exchange(m_recording, std::nullopt));
    }
    if (!path)
        return;
    if (std::shared_ptr<MovieRecorder> recorder = startRecorder(*path))
        m_recording = Recording{*path, std::move(recorder)};
}

std::shared_ptr<MovieRecorder> MovieFileOutput::startRecorder(const std::string& path) {
    if (m_context->recorders == nullptr) {
        if (!m_context->hasToldOfMissingRecorders.exchange(true))
            m_context->tell(
                {"\"" + path + "\" cannot be recorded because this program was built without movies",
                 "log without movies, or use a program with them"});
        return nullptr;
    }
    RecorderEvents events;
    events.problem = [context = m_context](const Error& problem) { context->tell(problem); };
    events.framesLost = [context = m_context](std::int64_t frames) { context->addFramesLost(frames); };
    events.finished = [context = m_context](const RecordingResult& result) {
        if (context->events.recordingFinished)
            context->events.recordingFinished(result);
    };
    return m_context->recorders->startRecording(path, compressionOptionsForConnection(m_video),
                                                m_context->whenFull, std::move(events));
}

// A recorder that has ended by itself stays in its place unless the delegate names another file: it goes on
// counting the frames that are lost. One that never wrote a frame asks for nothing: a host that answers each
// time with another path on the same full disk would open a clip for every frame.
void MovieFileOutput::askForAnotherFileWhenBroken() {
    if (!m_recording || m_recording->hasAskedForAnother || !m_recording->recorder->isFinished())
        return;
    m_recording->hasAskedForAnother = true;
    const RecordingResult result = m_recording->recorder->result();
    if (result.framesWritten == 0)
        return;
    callDelegate([&](const QTCaptureFileOutputDelegate& delegate) {
        if (delegate.mustChangeOutputFile)
            delegate.mustChangeOutputFile(*this, result.path, result.error);
    });
    carryOutRequestsOfDelegate();
}

void MovieFileOutput::tellOfFinishedRecordings() {
    if (m_ended.empty())
        return;
    const auto finished =
        std::stable_partition(m_ended.begin(), m_ended.end(),
                              [](const Recording& recording) { return !recording.recorder->isFinished(); });
    std::vector<Recording> toTell(finished, m_ended.end());
    m_ended.erase(finished, m_ended.end());
    for (const Recording& recording : toTell) {
        const RecordingResult result = recording.recorder->result();
        callDelegate([&](const QTCaptureFileOutputDelegate& delegate) {
            if (delegate.didFinishRecording)
                delegate.didFinishRecording(*this, recording.path, result.error);
        });
    }
}

template <typename Call>
void MovieFileOutput::callDelegate(const Call& call) {
    std::shared_ptr<const QTCaptureFileOutputDelegate> delegate;
    {
        const std::lock_guard lock(m_delegateMutex);
        if (m_delegate == nullptr)
            return;
        delegate = m_delegate;
        m_gate.enter();
    }
    call(*delegate);
    m_gate.leave();
}

} // namespace merro::platform::session
