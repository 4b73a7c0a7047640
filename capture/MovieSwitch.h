// Starts and ends the movie of a clip at the frames that belong to it.
//
// Detection may run on another output than the one that writes movies, so it does not switch the movie itself
// but sets marks: the first timecode of the clip that has opened, the last of the clip that has ended. The
// first frame of the movie-file output that passes a mark switches the file. movieDetection, recordToNoFile
// and endMovie belong to whoever has the recording turn, the marks to any thread.
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

    /// Ends the movie before the frame at hand.
    void recordToNoFile();

    /// Ends the movie for a stop. A frame that is just on its way through the output was in the clip, and
    /// still gets into the movie, unless leaveFrameOut is called for it.
    void endMovie();
    /// Whether the last thing done was endMovie.
    [[nodiscard]] bool isEnded() const { return m_isEnded; }

    /// Ends the movie before the frame at hand when one may still be recorded, also after endMovie: while
    /// recording is being switched off, frames pass that are in no clip. Delivery thread, from within the
    /// output's delegate message; no turn needed.
    void leaveFrameOut();

    platform::Cell<TimecodeValue> timecodeStartValue;
    platform::Cell<TimecodeValue> timecodeEndValue;

private:
    void logMark(const char* what, const SMPTETime& timecode);

    std::shared_ptr<platform::QTCaptureMovieFileOutput> m_output;
    const ClipRecord& m_clip;
    platform::Log& m_log;
    std::atomic<bool> m_isMovieRunning = false; ///< or was, and no frame has been left out since
    std::atomic<bool> m_isEnded = false;
};

} // namespace merro
