#include "capture/MovieSwitch.h"

#include "timecode/BXMCTimecodeUtils.h"

#include <array>
#include <cstdio>

namespace merro {

namespace {

bool isAfterBreak(const platform::QTSampleBuffer& sampleBuffer) {
    return sampleBuffer.sceneChange == platform::QTSampleBufferTimeStampDiscontinuitySceneChange ||
           sampleBuffer.sceneChange == platform::QTSampleBufferExplicitSceneChange;
}

} // namespace

void MovieSwitch::movieDetection(const platform::QTSampleBuffer& sampleBuffer) {
    const SMPTETime timecode = sampleBuffer.timecode.SMPTETimeValue();
    if (const TimecodeValue end = timecodeEndValue.get()) {
        const SMPTETime mark = end.SMPTETimeValue();
        if (BXMCTimecodeUtils::timecodeCompareWith(timecode, mark) == 1 || isAfterBreak(sampleBuffer)) {
            logMark("END", mark);
            recordToNoFile();
            timecodeEndValue.set({});
        }
    }
    if (const TimecodeValue start = timecodeStartValue.get()) {
        const SMPTETime mark = start.SMPTETimeValue();
        if (BXMCTimecodeUtils::timecodeCompareWith(timecode, mark) != -1) {
            logMark("START", mark);
            m_isMovieRunning = true;
            m_isEnded = false;
            m_output->recordToOutputFileURL(m_clip.moviePath());
            timecodeStartValue.set({});
            // An end that has not been passed by now is that of a clip whose timecodes lie later on: the new
            // movie has ended the old one, and must not be ended itself when it comes to that timecode.
            timecodeEndValue.set({});
        }
    }
}

void MovieSwitch::recordToNoFile() {
    m_output->recordToOutputFileURL(std::nullopt);
}

void MovieSwitch::endMovie() {
    m_isEnded = true;
    m_output->endRecordingAfterSample();
}

void MovieSwitch::leaveFrameOut() {
    if (m_isMovieRunning.exchange(false))
        m_output->recordToOutputFileURL(std::nullopt);
}

void MovieSwitch::logMark(const char* what, const SMPTETime& timecode) {
    std::array<char, 64> line{};
    (void)std::snprintf(line.data(), line.size(), "%s (%02d:%02d:%02d.%02d)", what, timecode.mHours,
                        timecode.mMinutes, timecode.mSeconds, timecode.mFrames);
    m_log.line(line.data());
}

} // namespace merro
