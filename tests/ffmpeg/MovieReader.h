// Reads movies back with libavformat, as a player does.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace merro::test {

struct ReadSound {
    std::string codec;
    int rateInHertz = 0;
    int channels = 0;
    double startInSeconds = 0;
    std::vector<std::int16_t> samples; ///< left and right in turn
};

struct ReadMovie {
    bool isReadable = false;
    std::string fourcc;
    std::string sampleAspect; ///< "16:15"
    std::string frameRate;    ///< "30000/1001"
    bool isBottomFieldFirst = false;
    std::string timecode; ///< empty where there is no timecode track
    std::string creationTime;
    std::vector<std::uint8_t> video; ///< all frames, one after the other
    std::int64_t frames = 0;
    std::vector<ReadSound> sounds;
};

/// `format` is libavformat's name for the container, or empty to let it look.
ReadMovie readMovie(const std::string& path, const std::string& format = {});

/// Puts DV frames into a container as other programs do ("avi", "mov", "matroska"), without sound.
void writeContainer(const std::string& path, const std::string& format,
                    const std::vector<std::vector<std::uint8_t>>& frames, bool is525_60 = false);

/// A type 1 AVI: one "iavs" stream with whole DV frames, sound inside.
void writeAviType1(const std::string& path, const std::vector<std::vector<std::uint8_t>>& frames);

} // namespace merro::test
