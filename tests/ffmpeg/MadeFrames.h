// Frames of made takes, and places for the files of a test.
#pragma once

#include "platform/ffmpeg/TapeMaker.h"
#include "platform/FrameBytes.h"
#include "platform/QTSampleBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace merro::test {

using platform::ffmpeg::Take;
using platform::ffmpeg::TapeScenario;
using platform::ffmpeg::TapeSystem;

using Bytes = std::vector<std::uint8_t>;

/// The pieces that the scenario's tape is made of: whole frames, and junk.
inline std::vector<Bytes> piecesOf(TapeScenario scenario) {
    std::vector<Bytes> pieces;
    platform::ffmpeg::TapeMaker maker(std::move(scenario));
    const auto error = maker.deliver([&](std::span<const std::uint8_t> bytes) {
        pieces.emplace_back(bytes.begin(), bytes.end());
        return true;
    });
    EXPECT_FALSE(error) << error->text();
    return pieces;
}

inline Take takeOf(std::int64_t frames) {
    Take take;
    take.frames = frames;
    take.sound.kind = platform::ffmpeg::TakeSoundKind::Tone;
    take.recordingDate = platform::CalendarFields{2005, 3, 17, 14, 3, 22};
    take.timecode = {1, 2, 3, 4};
    return take;
}

inline std::vector<Bytes> framesOf(const Take& take, TapeSystem system = TapeSystem::System625_50) {
    TapeScenario scenario;
    scenario.system = system;
    scenario.takes = {take};
    return piecesOf(scenario);
}

inline Bytes joined(const std::vector<Bytes>& pieces) {
    Bytes all;
    for (const auto& piece : pieces)
        all.insert(all.end(), piece.begin(), piece.end());
    return all;
}

inline platform::QTSampleBuffer sampleOf(const Bytes& frame, TimecodeValue timecode = {}) {
    platform::QTSampleBuffer sample;
    sample.bytesForAllSamples = platform::FrameBytes::taking(frame);
    sample.timecode = timecode;
    return sample;
}

inline TimecodeValue timecodeOf(int hours, int minutes, int seconds, int frames) {
    SMPTETime time;
    time.mHours = static_cast<std::int16_t>(hours);
    time.mMinutes = static_cast<std::int16_t>(minutes);
    time.mSeconds = static_cast<std::int16_t>(seconds);
    time.mFrames = static_cast<std::int16_t>(frames);
    return TimecodeValue::valueWithSMPTETime(time);
}

inline Bytes contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeContents(const std::string& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

/// A folder of one test's own, removed with what is in it.
class OwnFolder {
public:
    OwnFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "merro-ffmpeg-XXXXXX").string();
        if (::mkdtemp(name.data()) != nullptr)
            m_path = name;
    }
    ~OwnFolder() { std::filesystem::remove_all(m_path); }
    OwnFolder(const OwnFolder&) = delete;
    OwnFolder& operator=(const OwnFolder&) = delete;

    [[nodiscard]] std::string path(const std::string& name) const { return (m_path / name).string(); }

    /// Names of everything in it, hidden files included, in order.
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path m_path;
};

} // namespace merro::test
