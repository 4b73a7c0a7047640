// Switches recording on and off, with the preroll that backs the tape up, and changes files when the platform
// must.
//
// setRecording and changeFiles: any thread; neither waits for anybody who has the recording turn.
#pragma once

#include "capture/CurrentClip.h"
#include "capture/DeviceTransport.h"
#include "capture/EndOfTapeTimer.h"
#include "capture/RecordingState.h"
#include "capture/RecordingTurn.h"
#include "capture/StreamAlert.h"
#include "platform/Cell.h"
#include "platform/Clock.h"
#include "platform/KeyValueObserving.h"
#include "platform/QTCaptureSession.h"
#include "platform/UserDefaults.h"

#include <memory>
#include <mutex>
#include <string>

namespace merro {

class RecordingSwitch {
public:
    /// What it works on; all outlive it.
    struct Parts {
        RecordingState& state;
        RecordingTurn& turn;
        CurrentClip& clip;
        MovieSwitch& movie;
        ClipReports& reports;
        EndOfTapeTimer& endOfTapeTimer;
        StreamAlert& streamAlert;
        DeviceTransport& transport;
        const platform::UserDefaults& defaults;
        platform::Clock& clock;
        platform::KeyValueObserving& announcements;
    };
    RecordingSwitch(const Parts& parts, std::shared_ptr<platform::QTCaptureSession> session,
                    DeviceTransport::ControllableDevice controllableDevice);

    /// isRecording is `recording` when this returns, but while a preroll runs the tape back. The messages
    /// have then been sent, unless somebody has the turn: he sends them as soon as he is done.
    void setRecording(bool recording);

    /// The platform cannot go on with the movie file: ends the clip and opens the next one. Nothing while
    /// scene detection is on, whose cuts change files anyway.
    void changeFiles();

    /// Plays, or pauses, and starts the session.
    void setDevicePlaying(bool playing);

    /// Stops tape and session. Does not wait for an alert of the delivery thread.
    void stopDevice();

    [[nodiscard]] std::string processNote() const { return m_processNote.get(); }
    void setProcessNote(const std::string& note);

private:
    [[nodiscard]] bool switchTo(bool recording);
    void clearMarks();
    void start();
    void preroll(const SMPTETime& startTimecode);
    void stop();
    void applyActionAfterRecord();

    Parts m_parts;
    RecordingState& m_state;
    std::shared_ptr<platform::QTCaptureSession> m_session;
    DeviceTransport::ControllableDevice m_controllableDevice;
    platform::Cell<std::string> m_processNote;
    /// Around isRecording together with the place of its work in the queue of the turn, so that the last work
    /// done is always that of the last switch made.
    std::mutex m_switching;
};

} // namespace merro
