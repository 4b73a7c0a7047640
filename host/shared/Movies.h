// Movies, posters, AVI and QuickTime tapes and tape making, loaded when the first of them is wanted: a run
// that wants none of them starts without FFmpeg's libraries.
//
// Any thread.
#pragma once

#include "platform/ffmpeg/MovieLibrary.h"
#include "platform/session/MovieRecorder.h"

#include <memory>
#include <mutex>
#include <string>

namespace merro::host {

/// The library that belongs to the running program, loaded by the first call and never let go. Throws Failure
/// with one line that names the file and the remedy when it is missing or of another version; the next call
/// tries again.
[[nodiscard]] const platform::ffmpeg::MovieLibrary& movieLibrary();

/// The same of the library in the file at `path`.
[[nodiscard]] const platform::ffmpeg::MovieLibrary& loadMovieLibrary(const std::string& path);

/// Recorders of movieLibrary(), loaded no later than for the first movie. Who may have movies calls
/// movieLibrary() before delivery begins: a Failure can be told there, but not where a movie starts.
class MovieRecorders final : public platform::session::MovieRecorderFactory {
public:
    [[nodiscard]] std::shared_ptr<platform::session::MovieRecorder>
    startRecording(const std::string& path, const platform::CompressionOptionsRef& options,
                   platform::session::WhenFull whenFull, platform::session::RecorderEvents events) override;

private:
    std::once_flag m_once;
    std::unique_ptr<platform::session::MovieRecorderFactory> m_recorders;
};

} // namespace merro::host
