// What happens to each frame: the tape is cut into clips where the camera's recording date jumps.
//
// detectAndCaptureThumbnail runs on the delivery thread. Everything up to "is recording on?" is done for
// every frame; what changes the clip is done in the recording turn. A frame that finds the turn taken comes
// while recording is being switched on or off, and belongs to no clip. Nothing is allocated that grows with
// the frame.
#pragma once

#include "capture/CurrentClip.h"
#include "capture/EndOfTapeTimer.h"
#include "capture/RecordingState.h"
#include "capture/RecordingTurn.h"
#include "capture/StreamAlert.h"
#include "platform/QTSampleBuffer.h"
#include "platform/UserDefaults.h"

#include <functional>

namespace merro {

class SceneDetector {
public:
    /// `stopRecording` switches recording off; called with nothing locked and no turn held.
    SceneDetector(RecordingState& state, RecordingTurn& turn, CurrentClip& clip,
                  EndOfTapeTimer& endOfTapeTimer, StreamAlert& streamAlert,
                  const platform::UserDefaults& defaults, std::function<void()> stopRecording);

    /// The turn, still held, when the frame was recorded in it: what else is done with the frame is done
    /// before somebody else ends the clip that it is in. False when it was not recorded.
    [[nodiscard]] RecordingTurn::Hold detectAndCaptureThumbnail(const platform::QTSampleBuffer& frame);

private:
    void record(const platform::QTSampleBuffer& frame);
    [[nodiscard]] bool reachesStart(const SMPTETime& timecode);
    [[nodiscard]] bool isNewTake(const platform::DateRef& date) const;
    void startNewTake(const SMPTETime& timecode);

    RecordingState& m_state;
    RecordingTurn& m_turn;
    CurrentClip& m_clip;
    EndOfTapeTimer& m_endOfTapeTimer;
    StreamAlert& m_streamAlert;
    const platform::UserDefaults& m_defaults;
    std::function<void()> m_stopRecording;
};

} // namespace merro
