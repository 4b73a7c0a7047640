// Starts and ends the movie of a clip at the frames that belong to it.
//
// Detection may run on another output than the one that writes movies, so it does not switch the movie itself
// but sets marks: the first timecode of the clip that has opened, the last of the clip that has ended. The
// first frame of the movie-file output that passes a mark switches the file. movieDetection and
// recordToNoFile belong to whoever has the recording turn, the marks to any thread.
#pragma once

#include "capture/ClipRecord.h"
#include "platform/Cell.h"
#include "platform/Log.h"
#include "platform/QTCaptureSession.h"
#include "platform/SMPTETime.h"

#include <atomic>
#include <memory>

namespace merro {

class MovieSwitch {
public:
    /// The movie is written where `clip` says.
    MovieSwitch(std::shared_ptr<platform::QTCaptureMovieFileOutput> output, const ClipRecord& clip,
                platform::Log& log)
        : m_output(std::move(output)), m_clip(clip), m_log(log) {}

    /// One frame of the movie-file output, from within its delegate message.
    void movieDetection(const platform::QTSampleBuffer& sampleBuffer);

    void recordToNoFile();

    /// Ends the movie before the frame at hand when one may still be recorded: while recording is being
    /// switched off, frames pass that are in no clip. Also after recordToNoFile, which the output, when it is
    /// called on another thread, carries out after the frame. Delivery thread, from within the output's
    /// delegate message; no turn needed.
    void leaveFrameOut();

    platform::Cell<TimecodeValue> timecodeStartValue;
    platform::Cell<TimecodeValue> timecodeEndValue;

private:
    void logMark(const char* what, const SMPTETime& timecode);

    std::shared_ptr<platform::QTCaptureMovieFileOutput> m_output;
    const ClipRecord& m_clip;
    platform::Log& m_log;
    std::atomic<bool> m_isMovieRunning = false; ///< or was, and no frame has been left out since
};

} // namespace merro
