// Makes tape files of real DV: pictures and sound encoded by FFmpeg's libraries, timecode and recording dates
// put where cameras put them (IEC 61834-2).
//
// One thread at a time. The same scenario gives the same bytes on the same machine.
#pragma once

#include "platform/Error.h"
#include "platform/ffmpeg/TapeScenario.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace merro::platform::ffmpeg {

enum class ExistingFile { Keep, Replace };

class TapeMaker {
public:
    /// Called now and then with frames done and frames in all; false stops the making.
    using Progress = std::function<bool(std::int64_t framesDone, std::int64_t framesInAll)>;

    /// Takes what is to be on the tape, in order: whole frames of 120000 or 144000 bytes, and junk. False
    /// stops. The bytes are valid during the call.
    using Receiver = std::function<bool(std::span<const std::uint8_t> bytes)>;

    explicit TapeMaker(TapeScenario scenario);

    /// What a scenario may ask for by a plain name.
    [[nodiscard]] static std::vector<std::string> pictureNames();

    /// Frames of the whole tape.
    [[nodiscard]] std::int64_t frameCount() const;

    /// What is wrong with the scenario (no takes, a take without length, a picture that libavfilter does not
    /// know…), found before anything is made. The take is named, counted from 1.
    [[nodiscard]] std::optional<Error> check() const;

    /// Makes the tape as a file that appears at `path` when it is whole. The error says what went wrong; with
    /// an error nothing stands at `path` that did not stand there before.
    [[nodiscard]] std::optional<Error>
    write(const std::string& path, ExistingFile existing = ExistingFile::Keep, const Progress& progress = {});

    /// Makes the tape and hands it over piece by piece.
    [[nodiscard]] std::optional<Error> deliver(const Receiver& receiver, const Progress& progress = {});

private:
    TapeScenario m_scenario;
};

} // namespace merro::platform::ffmpeg
