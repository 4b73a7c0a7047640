// What a movie-file output writes its movies with.
#pragma once

#include "platform/Error.h"
#include "platform/QTCompressionOptions.h"
#include "platform/QTSampleBuffer.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace merro::platform::session {

/// What to do with a frame when the disk is slower than the tape and the queue to the writing thread is full.
/// A tape file can wait; a camcorder cannot.
enum class WhenFull { Wait, LoseFrame };

struct RecordingResult {
    std::string path;
    std::int64_t framesWritten = 0;
    std::int64_t framesLost = 0; ///< frames that were handed over and are not in the movie
    /// Why the movie is shorter than it should be, or is not there at all. A movie with an error may still
    /// have been finished: `isPlayable` says whether a whole file stands at `path`.
    std::optional<Error> error;
    bool isPlayable = false;
};

/// Writes one movie on a thread of its own. append and finish come from one thread at a time.
class MovieRecorder {
public:
    virtual ~MovieRecorder() = default; ///< finishes, and waits for the file

    /// Hands one DV frame over. Never works on the calling thread; with WhenFull::Wait it may block until the
    /// queue has room.
    virtual void append(const QTSampleBuffer& sampleBuffer) = 0;

    /// No more frames. The file is completed and renamed to its final name on the recorder's own thread; with
    /// WhenFull::Wait this returns only after that. The second call does nothing.
    virtual void finish() = 0;

    /// Whether the recorder has ended, well or not; `result` is final then. Any thread.
    [[nodiscard]] virtual bool isFinished() const = 0;
    [[nodiscard]] virtual RecordingResult result() const = 0;
};

/// Told on the recorder's own thread, or on the thread that appends. Empty members are not called.
struct RecorderEvents {
    /// Something the user must hear of at once: the disk is full, or too slow. Once for each kind of problem.
    std::function<void(const Error& problem)> problem;
    /// Frames given up just now, for the count of the clip.
    std::function<void(std::int64_t frames)> framesLost;
    /// The file is whole and under its final name, or will never be. The last event, but for the loss of
    /// frames that still come to a recorder which has ended by itself.
    std::function<void(const RecordingResult& result)> finished;
};

class MovieRecorderFactory {
public:
    virtual ~MovieRecorderFactory() = default;

    /// Starts a movie that will appear at `path`, which must not exist. Null options keep the device's own
    /// DV. Never null: a recorder that cannot be started ends at once with an error.
    [[nodiscard]] virtual std::shared_ptr<MovieRecorder> startRecording(const std::string& path,
                                                                        const CompressionOptionsRef& options,
                                                                        WhenFull whenFull,
                                                                        RecorderEvents events) = 0;
};

} // namespace merro::platform::session
