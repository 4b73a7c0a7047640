// Movies with FFmpeg's libraries: DV frames as they are, in QuickTime movies that players open.
//
// The factory may be used from any thread and must outlive nothing: recorders stand on their own. Each
// recorder writes on a thread of its own; its events come from there, or from the thread that appends.
//
// What is in a movie made without compression:
//   - a DV video track (fourcc 'dvc ' for 525/60, 'dvcp' or 'dvpp' for 625/50) holding every frame byte for
//   byte, with
//     pixel aspect, bottom field first, and a frame rate of exactly 25 or 30000/1001;
//   - the sound taken out of the frames as s16le PCM, a stereo track for each pair of channels the tape has,
//   none when
//     no frame has sound. The rate is that of the first frame with sound; a frame without sound, or with
//     damaged sound, gets silence of its own length, so that sound and picture stay together. Frames whose
//     sound has another rate are resampled. Where a camera's own sound clock has drifted by more than half a
//     frame, single samples are left out or repeated until it has not;
//   - a timecode track that starts with the first frame's timecode, when it has one;
//   - the first frame's recording date as creation time, when it has one.
// Everything that holds for a whole movie is taken from its first frame. When the television system changes,
// the movie ends there with an error, and what comes after is counted as lost.
//
// On disk a movie "NNNN.mov" is ".NNNN.mov.part" until it is whole; then it is renamed, never over an
// existing file. Beside it lies ".NNNN.mov.reserve", room for the index of the frames so far: when the disk
// is full the reserve is given up, so that what was written stays playable. Where a movie cannot be
// completed, the part file is kept and named in the error.
#pragma once

#include "platform/session/MovieRecorder.h"

#include <cstddef>
#include <memory>

namespace merro::platform::ffmpeg {

class OutputFiles;

struct MovieRecorderSettings {
    std::size_t queueLengthInFrame = 64; ///< frames that may wait for the disk; at least 1
    bool flushToDisk = false;            ///< whether a movie is on the platter before it gets its final name
    std::shared_ptr<OutputFiles> files;  ///< the file system when null
};

class MovieRecorderFactory final : public session::MovieRecorderFactory {
public:
    explicit MovieRecorderFactory(MovieRecorderSettings settings = {});
    ~MovieRecorderFactory() override;

    /// Only null options can be had: others end at once with an error, as a folder that cannot be written to
    /// does, or a file that stands at `path` already. With WhenFull::Wait the file is open, or the end told,
    /// when this returns. A movie that ends early for a problem tells `problem` at once and `finished` after
    /// finish(), so that the frames in between are counted. A frame at which a broken disk (not a full one)
    /// failed may lie in it in part.
    [[nodiscard]] std::shared_ptr<session::MovieRecorder>
    startRecording(const std::string& path, const CompressionOptionsRef& options, session::WhenFull whenFull,
                   session::RecorderEvents events) override;

private:
    MovieRecorderSettings m_settings;
};

} // namespace merro::platform::ffmpeg
