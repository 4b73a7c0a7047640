// What a program has of this folder without being linked with FFmpeg's libraries: they take longer to load
// than a short run takes, so the module merro_movies brings them when a movie, a poster or a made tape is
// wanted.
//
// The functions may be called from any thread; results belong to the caller. The module stays loaded for as
// long as anything that came from it lives.
#pragma once

#include "platform/deck/TapeFile.h"
#include "platform/Error.h"
#include "platform/ffmpeg/TapeMaker.h"
#include "platform/ffmpeg/TapeScenario.h"
#include "platform/session/MovieRecorder.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace merro::platform::ffmpeg {

/// PosterMaker::writePoster. One thread at a time; making the first poster is dear, another is cheap.
using PosterWriter =
    std::function<std::optional<Error>(std::span<const std::uint8_t> frame, const std::string& path)>;

struct MovieLibrary {
    /// Of the project the module was built from. Stays in front: the rest may be read only when it is the
    /// reader's own.
    const char* version;

    std::unique_ptr<session::MovieRecorderFactory> (*makeRecorders)();
    deck::TapeOrError (*openContainerTape)(const std::string& path);
    PosterWriter (*makePosterWriter)();

    /// TapeMaker's operations on a tape after this scenario.
    std::int64_t (*tapeFrameCount)(const TapeScenario& scenario);
    std::optional<Error> (*checkTape)(const TapeScenario& scenario);
    std::optional<Error> (*writeTape)(const TapeScenario& scenario, const std::string& path,
                                      ExistingFile existing, const TapeMaker::Progress& progress);
};

/// The one function that the module exports for its loader, by this name.
inline constexpr const char* kMovieLibraryFunction = "merroMovieLibrary";
using MovieLibraryFunction = const MovieLibrary*();

} // namespace merro::platform::ffmpeg
