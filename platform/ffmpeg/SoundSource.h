// The sound of a made take: the same on both channels.
//
// One thread at a time.
#pragma once

#include "platform/ffmpeg/TapeScenario.h"

#include <cstdint>
#include <span>
#include <vector>

namespace merro::platform::ffmpeg {

class SoundSource {
public:
    SoundSource(const TakeSound& sound, int rateInHertz) : m_sound(sound), m_rate(rateInHertz) {}

    /// The next `samples` samples, left and right in turn. Valid until the next call.
    [[nodiscard]] std::span<const std::int16_t> next(std::int64_t samples);

private:
    TakeSound m_sound;
    int m_rate;
    std::int64_t m_position = 0;
    std::vector<std::int16_t> m_samples;
};

} // namespace merro::platform::ffmpeg
