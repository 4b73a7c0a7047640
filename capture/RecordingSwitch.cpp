#include "capture/RecordingSwitch.h"

#include "capture/CaptureDefaults.h"

namespace merro {

namespace {

/// How long the tape runs back before a recording that starts from pause.
constexpr platform::Duration kPrerollTime = std::chrono::seconds(2);

/// Values of "actionAfterRecord"; any other leaves the tape alone.
constexpr std::int64_t kStopAfterRecord = 1;
constexpr std::int64_t kPauseAfterRecord = 2;

} // namespace

RecordingSwitch::RecordingSwitch(const Parts& parts, std::shared_ptr<platform::QTCaptureSession> session,
                                 DeviceTransport::ControllableDevice controllableDevice)
    : m_parts(parts), m_state(parts.state), m_session(std::move(session)),
      m_controllableDevice(std::move(controllableDevice)) {}

void RecordingSwitch::setRecording(bool recording) {
    m_parts.endOfTapeTimer.cancel();
    m_state.timecodeView().setHidden(!recording);
    if (m_state.isRecording() == recording) {
        m_state.setCurrentDate({});
        m_parts.turn.runBetweenTurns([this] { clearMarks(); }); // a frame that is at work still needs them
        return;
    }
    m_parts.announcements.willChangeValueForKey("recording");
    const bool isSwitched = switchTo(recording);
    m_parts.announcements.didChangeValueForKey("recording");
    if (isSwitched)
        m_parts.turn.runDeferred();
}

bool RecordingSwitch::switchTo(bool recording) {
    const std::lock_guard lock(m_switching);
    if (m_state.isRecording() == recording)
        return false;
    m_state.setIsRecording(recording);
    m_state.switchAskedFor();
    m_parts.turn.defer([this, recording] {
        m_state.switchBegun();
        m_state.setCurrentDate({});
        clearMarks();
        recording ? start() : stop();
    });
    return true;
}

void RecordingSwitch::clearMarks() {
    m_parts.movie.timecodeStartValue.set({});
    m_parts.movie.timecodeEndValue.set({});
}

void RecordingSwitch::start() {
    if (m_state.isBegun)
        return; // switched on during a preroll, which is a recording already
    m_state.isBegun = true;
    m_parts.reports.beginRecord();
    if (m_state.isBeingSwitched())
        return;

    const TimecodeValue current = m_state.currentTimecodeValue();
    if (current && m_controllableDevice() && m_parts.transport.isDevicePause()) {
        preroll(current.SMPTETimeValue());
    } else {
        setDevicePlaying(true);
        m_parts.clip.open();
    }
    setProcessNote("Recording started");
}

void RecordingSwitch::preroll(const SMPTETime& startTimecode) {
    {
        const std::lock_guard lock(m_switching);
        if (m_state.isBeingSwitched())
            return; // what was asked for meanwhile comes next
        m_state.setIsRecording(false);
    }
    m_state.setIsPrerolling(true);
    m_state.startTimecode.set({});
    m_parts.transport.playAtSpeed(kTransportSpeedReversePlay);
    m_parts.clock.sleepFor(kPrerollTime);
    m_state.startTimecode.set(startTimecode);
    {
        const std::lock_guard lock(m_switching);
        if (!m_state.isBeingSwitched())
            m_state.setIsRecording(true);
    }
    setDevicePlaying(true);
}

void RecordingSwitch::stop() {
    if (!m_state.isBegun)
        return;
    m_state.isBegun = false;
    m_state.setIsPrerolling(false);
    m_state.framesToSkip = 0;
    m_parts.movie.endMovie();
    m_parts.clip.closeFiles();
    m_parts.clip.report(m_parts.clip.newestTimecode());
    applyActionAfterRecord();
    m_parts.reports.endRecord();
    setProcessNote("Recording stopped");
}

void RecordingSwitch::applyActionAfterRecord() {
    const std::int64_t action = m_parts.defaults.integerForKey(BXMCActionAfterRecord);
    if (action == kPauseAfterRecord)
        setDevicePlaying(false);
    else if (action == kStopAfterRecord)
        stopDevice();
}

void RecordingSwitch::setDevicePlaying(bool playing) {
    m_parts.streamAlert.keepSession();
    m_parts.transport.setDevicePlaying(playing);
}

void RecordingSwitch::stopDevice() {
    m_parts.transport.stopPlaying();
    m_parts.streamAlert.stopSession([this] {
        if (m_session->isRunning())
            m_session->stopRunning();
    });
}

void RecordingSwitch::changeFiles() {
    m_parts.turn.enterOrDefer([this] {
        if (m_parts.defaults.boolForKey(BXMCDetectScene) || !m_parts.clip.isOpen())
            return;
        m_parts.clip.closeFiles();
        m_parts.clip.report(m_state.lastTimecodeValue.get());
        if (!m_state.isBeingSwitched())
            m_parts.clip.open();
    });
}

void RecordingSwitch::setProcessNote(const std::string& note) {
    if (m_processNote.get() == note)
        return;
    m_parts.announcements.willChangeValueForKey("processNote");
    m_processNote.set(note);
    m_parts.announcements.didChangeValueForKey("processNote");
}

} // namespace merro
