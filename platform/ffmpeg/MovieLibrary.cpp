#include "platform/ffmpeg/MovieLibrary.h"

#include "platform/ffmpeg/ContainerTape.h"
#include "platform/ffmpeg/MovieRecorder.h"
#include "platform/ffmpeg/PosterMaker.h"

namespace merro::platform::ffmpeg {

namespace {

std::unique_ptr<session::MovieRecorderFactory> makeRecorders() {
    return std::make_unique<MovieRecorderFactory>();
}

PosterWriter makePosterWriter() {
    return [maker = std::shared_ptr<PosterMaker>()](std::span<const std::uint8_t> frame,
                                                    const std::string& path) mutable {
        if (!maker)
            maker = std::make_shared<PosterMaker>();
        return maker->writePoster(frame, path);
    };
}

std::int64_t tapeFrameCount(const TapeScenario& scenario) {
    return TapeMaker(scenario).frameCount();
}

std::optional<Error> checkTape(const TapeScenario& scenario) {
    return TapeMaker(scenario).check();
}

std::optional<Error> writeTape(const TapeScenario& scenario, const std::string& path, ExistingFile existing,
                               const TapeMaker::Progress& progress) {
    return TapeMaker(scenario).write(path, existing, progress);
}

constexpr MovieLibrary kLibrary{MERRO_VERSION,  makeRecorders, openContainerTape, makePosterWriter,
                                tapeFrameCount, checkTape,     writeTape};

} // namespace

extern "C" const MovieLibrary* merroMovieLibrary();

const MovieLibrary* merroMovieLibrary() {
    return &kLibrary;
}

} // namespace merro::platform::ffmpeg
