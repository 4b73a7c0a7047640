// A library of movies of an earlier version, of which nothing but the version can be read.
#include "platform/ffmpeg/MovieLibrary.h"

namespace merro::platform::ffmpeg {

extern "C" const MovieLibrary* merroMovieLibrary();

const MovieLibrary* merroMovieLibrary() {
    static constexpr MovieLibrary library{"0.0.1", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    return &library;
}

} // namespace merro::platform::ffmpeg
