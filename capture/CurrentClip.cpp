#include "capture/CurrentClip.h"

#include "capture/CaptureDefaults.h"

#include <utility>

namespace merro {

namespace {

/// A path in the host's answer; none when it is left out or empty.
std::optional<std::string> pathIn(const platform::Dictionary& answer, std::string_view key) {
    const platform::Value* path = platform::find(answer, key);
    if (path == nullptr || path->stringValue().empty())
        return std::nullopt;
    return path->stringValue();
}

} // namespace

void CurrentClip::open() {
    m_isOpen = true;
    m_hasFrames = false;
    m_record.setClipRecordingDate({});
    m_record.setClipStartTimecode({});
    m_record.setClipEndTimecode({});
    const std::optional<platform::Dictionary> answer = m_reports.willRecord();
    if (!answer)
        return; // the identifier and paths that a host has set by hand stay
    const platform::Value* clipId = platform::find(*answer, kBXMCClipId);
    m_record.setClipId(clipId != nullptr ? std::optional(*clipId) : std::nullopt);
    if (m_defaults.boolForKey(BXMCCaptureMovie))
        m_record.setMoviePath(pathIn(*answer, kBXMCMoviePath));
    setThumbnailsPath(pathIn(*answer, kBXMCThumbnailsPath));
}

void CurrentClip::openWithFrame(const platform::QTSampleBuffer& frame) {
    open();
    takeFrame(frame);
    m_state.lastTimecodeValue.set(frame.timecode);
}

void CurrentClip::describe(const platform::DateRef& currentDate, std::int32_t aspectRatio) {
    if (m_record.clipRecordingDate())
        return;
    m_record.setClipRecordingDate(currentDate);
    m_record.setClipAspectRatio(aspectRatio);
}

void CurrentClip::takeFrame(const platform::QTSampleBuffer& frame) {
    m_newestTimecode = m_state.currentTimecodeValue();
    if (!m_record.clipStartTimecode())
        m_record.setClipStartTimecode(m_newestTimecode);
    const SMPTETime timecode = frame.timecode.SMPTETimeValue();
    const bool isFirst = !std::exchange(m_hasFrames, true);
    // The frame's own timecode, zero when it has none: the movie of a tape without timecodes starts as well.
    if (isFirst)
        m_movie.timecodeStartValue.set(TimecodeValue::valueWithSMPTETime(timecode));
    if (isFirst || isSample(timecode)) {
        m_thumbnails.addFrameOnThumbnailsWithTimecode(frame.bytesForAllSamples, timecode);
        m_thumbnails.setLastFrameData({});
    } else {
        m_thumbnails.setLastFrameData(frame.bytesForAllSamples);
    }
}

bool CurrentClip::isSample(const SMPTETime& timecode) const {
    return m_defaults.boolForKey(BXMCFrameSampling) && m_thumbnails.samplingPointReached(timecode);
}

void CurrentClip::closeFiles() {
    m_record.setMoviePath(std::nullopt);
    setThumbnailsPath(std::nullopt);
}

void CurrentClip::report(const TimecodeValue& endTimecode) {
    if (!m_isOpen)
        return;
    m_isOpen = false;
    if (!m_reports.answersDidRecord())
        return;
    m_record.setClipEndTimecode(endTimecode);
    m_movie.timecodeEndValue.set(endTimecode);
    m_reports.didRecord(clipDictionary(m_record));
}

void CurrentClip::endMovieWithoutMark() {
    if (!m_movie.timecodeEndValue.get())
        m_movie.recordToNoFile();
}

TimecodeValue CurrentClip::newestTimecode() const {
    return m_hasFrames ? m_newestTimecode : m_state.currentTimecodeValue();
}

void CurrentClip::setThumbnailsPath(const std::optional<std::string>& path) {
    m_thumbnails.closeThumbnailsFile(m_state.lastTimecodeValue.get().SMPTETimeValue());
    m_record.setThumbnailsPath(path);
    if (path)
        m_thumbnails.createThumbnailsFile(*path);
}

} // namespace merro
