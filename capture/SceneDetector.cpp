#include "capture/SceneDetector.h"

#include "capture/CaptureDefaults.h"
#include "dv/DVConstants.h"
#include "dv/FrameDate.h"
#include "timecode/BXMCTimecodeUtils.h"

namespace merro {

namespace {

/// A jump of more than this many seconds is a new take: the camera's clock moves on by a second within one.
constexpr double kLongestStepWithinTake = 1.0;

bool isDVFrame(const platform::QTSampleBuffer& frame) {
    const std::size_t length = frame.lengthForAllSamples();
    return length == FRAME_SIZE_525_60 || length == FRAME_SIZE_625_50;
}

} // namespace

SceneDetector::SceneDetector(RecordingState& state, RecordingTurn& turn, CurrentClip& clip,
                             EndOfTapeTimer& endOfTapeTimer, StreamAlert& streamAlert,
                             const platform::UserDefaults& defaults, std::function<void()> stopRecording)
    : m_state(state), m_turn(turn), m_clip(clip), m_endOfTapeTimer(endOfTapeTimer),
      m_streamAlert(streamAlert), m_defaults(defaults), m_stopRecording(std::move(stopRecording)) {}

RecordingTurn::Hold SceneDetector::detectAndCaptureThumbnail(const platform::QTSampleBuffer& frame) {
    if (m_state.isRecording() && m_defaults.boolForKey(BXMCDetectEndTape))
        m_endOfTapeTimer.requestLaunch();

    if (!isDVFrame(frame)) {
        m_streamAlert.runModal();
        m_stopRecording();
        return {};
    }
    if (frame.timecode)
        m_state.setCurrentTimecodeValue(frame.timecode);
    if (!m_state.isRecording())
        return {};
    auto turn = m_turn.tryEnter();
    // Recording may have been switched on this very moment, and the host not have heard of it yet.
    if (!turn || !m_state.isRecording() || !m_state.isBegun)
        return {};
    record(frame);
    return turn;
}

void SceneDetector::record(const platform::QTSampleBuffer& frame) {
    const SMPTETime timecode = frame.timecode.SMPTETimeValue();
    bool isTaken = false;
    if (m_state.isPrerolling()) {
        if (!reachesStart(timecode))
            return;
        m_state.setIsPrerolling(false);
        m_clip.openWithFrame(frame);
        isTaken = true;
    }

    const FrameDate found = findFrameDate(frame.bytesForAllSamples);
    if (isNewTake(found.date)) {
        startNewTake(timecode);
        isTaken = false;
    }

    if (found.date)
        m_state.setCurrentDate(found.date);
    if (m_clip.isOpen()) {
        m_clip.describe(m_state.currentDate(), found.aspectRatio);
        if (!isTaken)
            m_clip.takeFrame(frame);
    }
    m_state.lastTimecodeValue.set(frame.timecode);
}

bool SceneDetector::reachesStart(const SMPTETime& timecode) {
    // A skip also ends when its frames have passed: where timecodes are missing or begin anew, the one to be
    // reached may never come, and the rest of the tape would be lost.
    if (m_state.framesToSkip > 0 && --m_state.framesToSkip == 0)
        return true;
    return BXMCTimecodeUtils::timecodeCompareWith(m_state.startTimecode.get(), timecode) <= 0;
}

bool SceneDetector::isNewTake(const platform::DateRef& date) const {
    const platform::DateRef before = m_state.currentDate();
    // The first dated frame of a recording has nothing to be measured against and is no new take.
    if (!date || !before || !m_defaults.boolForKey(BXMCDetectScene))
        return false;
    const double seconds = date->timeIntervalSinceDate(*before);
    return seconds > kLongestStepWithinTake || seconds < 0;
}

void SceneDetector::startNewTake(const SMPTETime& timecode) {
    m_clip.closeFiles();
    m_clip.report(m_state.lastTimecodeValue.get());
    if (m_state.isBeingSwitched())
        return; // the host has ended the recording at the end of this clip
    const auto framesToSkip = static_cast<int>(m_defaults.integerForKey(BXMCNbDropFrame));
    if (framesToSkip == 0) {
        m_clip.open();
        return;
    }
    m_clip.endMovieWithoutMark();
    m_state.startTimecode.set(BXMCTimecodeUtils::addNbFrameToTimecode(framesToSkip, timecode));
    m_state.framesToSkip = framesToSkip;
    m_state.setIsPrerolling(true);
}

} // namespace merro
