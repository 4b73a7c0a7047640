#include "platform/ffmpeg/MovieRecorder.h"

#include "platform/ffmpeg/OutputFiles.h"
#include "platform/ffmpeg/Recording.h"

#include <thread>
#include <utility>

namespace merro::platform::ffmpeg {

namespace {

class ThreadedRecorder final : public session::MovieRecorder {
public:
    explicit ThreadedRecorder(std::shared_ptr<Recording> recording)
        : m_recording(std::move(recording)), m_thread([shared = m_recording] { shared->run(); }) {}

    ~ThreadedRecorder() override {
        if (m_thread.get_id() == std::this_thread::get_id()) {
            m_thread.detach(); // let go from within an event of its own, the last of which ends the thread
            return;
        }
        m_recording->finish();
        m_thread.join();
    }

    ThreadedRecorder(const ThreadedRecorder&) = delete;
    ThreadedRecorder& operator=(const ThreadedRecorder&) = delete;

    void append(const QTSampleBuffer& sampleBuffer) override { m_recording->append(sampleBuffer); }
    void finish() override { m_recording->finish(); }
    bool isFinished() const override { return m_recording->isFinished(); }
    session::RecordingResult result() const override { return m_recording->result(); }

private:
    std::shared_ptr<Recording> m_recording;
    std::thread m_thread;
};

} // namespace

MovieRecorderFactory::MovieRecorderFactory(MovieRecorderSettings settings)
    : m_settings(std::move(settings)) {}
MovieRecorderFactory::~MovieRecorderFactory() = default;

std::shared_ptr<session::MovieRecorder>
MovieRecorderFactory::startRecording(const std::string& path, const CompressionOptionsRef& options,
                                     session::WhenFull whenFull, session::RecorderEvents events) {
    auto recording = std::make_shared<Recording>(path, options, whenFull, std::move(events), m_settings);
    auto recorder = std::make_shared<ThreadedRecorder>(recording);
    if (whenFull == session::WhenFull::Wait)
        recording->waitUntilStarted();
    return recorder;
}

} // namespace merro::platform::ffmpeg
