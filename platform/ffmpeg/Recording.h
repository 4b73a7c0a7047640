// One movie being recorded: a queue of frames and what the writing thread does with them.
//
// append, finish and the readings: any thread, append and finish one at a time. run: the writing thread,
// once. Events are told on either without a lock being held; an event must not wait for a thread that is in
// append or finish.
#pragma once

#include "platform/ffmpeg/DVMovieWriter.h"
#include "platform/ffmpeg/MovieFile.h"
#include "platform/ffmpeg/MovieRecorder.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace merro::platform::ffmpeg {

class Recording {
public:
    Recording(const std::string& path, const CompressionOptionsRef& options, session::WhenFull whenFull,
              session::RecorderEvents events, const MovieRecorderSettings& settings);

    void append(const QTSampleBuffer& sampleBuffer);
    void finish();

    /// Blocks until the file is open, or cannot be.
    void waitUntilStarted();

    [[nodiscard]] bool isFinished() const;
    [[nodiscard]] session::RecordingResult result() const;

    /// The writing thread's whole work.
    void run();

private:
    enum class Stage { Starting, Writing, Finished, Told };

    std::optional<Error> start();
    void writeQueue(DVMovieWriter& writer);
    std::optional<QTSampleBuffer> next();
    bool writeFrame(DVMovieWriter& writer, const QTSampleBuffer& sampleBuffer);
    void closeMovie(DVMovieWriter& writer);
    void drain();
    void stopBecause(const Error& error);
    void loseFrames(std::int64_t frames);
    void setStage(Stage stage);
    void tellProblemOnce(const std::string& kind, const Error& error);

    const session::WhenFull m_whenFull;
    const session::RecorderEvents m_events;
    const std::size_t m_queueLength;
    const bool m_flushToDisk;
    const CompressionOptionsRef m_options;
    MovieFile m_file;

    mutable std::mutex m_mutex;
    std::condition_variable m_hasWork;
    std::condition_variable m_hasRoom;
    std::condition_variable m_stageChanged;
    std::deque<QTSampleBuffer> m_queue;
    std::set<std::string> m_problemsTold;
    session::RecordingResult m_result;
    Stage m_stage = Stage::Starting;
    bool m_isComplete = false; ///< finish was called
    bool m_isStopped = false;  ///< no frame is written any more
};

} // namespace merro::platform::ffmpeg
