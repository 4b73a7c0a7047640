#include "platform/ffmpeg/Recording.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <utility>

namespace merro::platform::ffmpeg {

Recording::Recording(const std::string& path, const CompressionOptionsRef& options,
                     session::WhenFull whenFull, session::RecorderEvents events,
                     const MovieRecorderSettings& settings)
    : m_whenFull(whenFull), m_events(std::move(events)),
      m_queueLength(std::max<std::size_t>(settings.queueLengthInFrame, 1)),
      m_flushToDisk(settings.flushToDisk), m_options(options),
      m_file(settings.files ? settings.files : makeOutputFiles(), path) {
    m_result.path = path;
}

void Recording::append(const QTSampleBuffer& sampleBuffer) {
    bool isTooSlow = false;
    {
        std::unique_lock lock(m_mutex);
        if (m_isComplete)
            return;
        if (m_whenFull == session::WhenFull::Wait)
            m_hasRoom.wait(lock, [&] { return m_isStopped || m_queue.size() < m_queueLength; });
        if (!m_isStopped && m_queue.size() < m_queueLength) {
            m_queue.push_back(sampleBuffer);
            m_hasWork.notify_one();
            return;
        }
        isTooSlow = !m_isStopped;
    }
    if (isTooSlow)
        tellProblemOnce("slow", {"the disk is too slow for '" + m_result.path + "', frames are lost",
                                 "close other programs, or record to a faster disk"});
    loseFrames(1);
}

void Recording::finish() {
    std::unique_lock lock(m_mutex);
    m_isComplete = true;
    m_hasWork.notify_one();
    if (m_whenFull == session::WhenFull::Wait)
        m_stageChanged.wait(lock, [&] { return m_stage == Stage::Told; });
}

void Recording::waitUntilStarted() {
    std::unique_lock lock(m_mutex);
    m_stageChanged.wait(lock, [&] { return m_stage == Stage::Writing || m_stage == Stage::Told; });
}

bool Recording::isFinished() const {
    const std::lock_guard lock(m_mutex);
    return m_stage >= Stage::Finished;
}

session::RecordingResult Recording::result() const {
    const std::lock_guard lock(m_mutex);
    return m_result;
}

void Recording::run() {
    if (const auto error = start()) {
        stopBecause(*error);
    } else {
        setStage(Stage::Writing);
        try {
            DVMovieWriter writer(m_file);
            writeQueue(writer);
            closeMovie(writer);
        } catch (const std::exception& exception) { // out of memory
            stopBecause({"cannot write the movie '" + m_result.path + "' (" + exception.what() + ")", {}, 0});
        }
        drain();
    }
    setStage(Stage::Finished);
    if (m_events.finished)
        m_events.finished(result());
    setStage(Stage::Told);
}

std::optional<Error> Recording::start() {
    if (m_options)
        return Error{"cannot compress '" + m_result.path + "' as \"" + m_options->localizedDisplayName() +
                         "\"",
                     "choose no compression", 0};
    return m_file.open();
}

void Recording::writeQueue(DVMovieWriter& writer) {
    while (const auto sampleBuffer = next()) {
        if (!writeFrame(writer, *sampleBuffer))
            loseFrames(1);
        const std::lock_guard lock(m_mutex);
        m_result.framesWritten = writer.frameCount();
        if (m_isStopped)
            return;
    }
}

std::optional<QTSampleBuffer> Recording::next() {
    std::unique_lock lock(m_mutex);
    m_hasWork.wait(lock, [&] { return m_isComplete || !m_queue.empty(); });
    if (m_queue.empty())
        return std::nullopt;
    auto sampleBuffer = std::move(m_queue.front());
    m_queue.pop_front();
    if (m_queue.size() <=
        m_queueLength / 2) // not for every frame: waking a thread is dearer than queueing a frame
        m_hasRoom.notify_one();
    return sampleBuffer;
}

bool Recording::writeFrame(DVMovieWriter& writer, const QTSampleBuffer& sampleBuffer) {
    const auto frame = sampleBuffer.bytesForAllSamples.bytes();
    if (!isFrameSize(frame.size())) {
        tellProblemOnce("size", {"a frame of " + std::to_string(frame.size()) +
                                     " bytes is no DV frame and is not in '" + m_result.path + "'",
                                 {},
                                 0});
        return false;
    }
    if (writer.frameBytes() != 0 && writer.frameBytes() != frame.size()) {
        stopBecause({"the television system changed, the movie '" + m_result.path + "' ends there",
                     "log the tape with scene detection, so that a new movie begins", 0});
        return false;
    }
    m_file.prepareFor(writer.frameCount() + 1, frame.size() + kSoundPairs * 8192);
    const bool isWritten = !m_file.failure() && writer.write(frame, sampleBuffer.timecode);
    if (m_file.failure())
        stopBecause(*m_file.failure());
    else if (!isWritten)
        stopBecause({"cannot write the movie '" + m_result.path + "' (the frame is refused)", {}, 0});
    return isWritten;
}

void Recording::closeMovie(DVMovieWriter& writer) {
    std::optional<Error> error;
    const bool hasFrames = writer.frameCount() > 0;
    if (!hasFrames) {
        m_file.discard();
        error = Error{"no movie '" + m_result.path + "', for it had no frames", {}, 0};
    } else if (!writer.finish()) {
        error = m_file.failure().value_or(Error{"cannot complete the movie '" + m_result.path + "'", {}, 0});
        error->remedy = "what was written is in '" + m_file.partPath() + "'";
    } else {
        error = m_file.complete(m_flushToDisk);
    }
    if (error && hasFrames)
        tellProblemOnce("close", *error);
    const std::lock_guard lock(m_mutex);
    m_result.isPlayable = !error;
    if (error && (!m_result.error || hasFrames))
        m_result.error = error;
}

void Recording::drain() {
    while (next())
        loseFrames(1);
}

void Recording::stopBecause(const Error& error) {
    tellProblemOnce("stopped", error);
    const std::lock_guard lock(m_mutex);
    if (!m_result.error)
        m_result.error = error;
    m_isStopped = true;
    m_hasRoom.notify_all();
}

void Recording::loseFrames(std::int64_t frames) {
    {
        const std::lock_guard lock(m_mutex);
        m_result.framesLost += frames;
    }
    if (m_events.framesLost)
        m_events.framesLost(frames);
}

void Recording::setStage(Stage stage) {
    const std::lock_guard lock(m_mutex);
    m_stage = stage;
    m_stageChanged.notify_all();
}

void Recording::tellProblemOnce(const std::string& kind, const Error& error) {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_problemsTold.insert(kind).second)
            return;
    }
    if (m_events.problem)
        m_events.problem(error);
}

} // namespace merro::platform::ffmpeg
