// The sound of one pair of channels, kept as long as the picture.
//
// One thread at a time.
#pragma once

#include "platform/ffmpeg/Libav.h"

#include <cstdint>
#include <span>
#include <vector>

namespace merro::platform::ffmpeg {

class SoundTrack {
public:
    static constexpr int kChannels = 2;

    /// A track of `rateInHertz` for pictures of 25 or 30000/1001 frames a second.
    SoundTrack(int rateInHertz, bool is525_60);

    /// Takes the sound of picture frame `frameIndex`, left and right in turn; empty when the frame has none.
    /// What is to be written for the frame is returned, nothing before the first sound of the track. Valid
    /// until the next call.
    std::span<const std::int16_t> append(std::int64_t frameIndex, std::span<const std::int16_t> samples,
                                         int rateInHertz);

    /// Where the samples last returned begin, in samples from the start of the movie.
    [[nodiscard]] std::int64_t positionInSamples() const { return m_position; }
    [[nodiscard]] int rateInHertz() const { return m_rate; }

private:
    /// Samples that `frames` whole frames should have.
    [[nodiscard]] std::int64_t samplesInFrames(std::int64_t frames) const;
    void resample(std::span<const std::int16_t> samples, int rateInHertz);
    void keepTogether(std::int64_t frameIndex);

    int m_rate;
    std::int64_t m_framesPerSecondNumerator;
    std::int64_t m_framesPerSecondDenominator;
    bool m_hasBegun = false;
    std::int64_t m_position = 0;
    std::int64_t m_next = 0; ///< where the next frame's samples begin
    std::vector<std::int16_t> m_samples;
    ResamplerOwner m_resampler;
    int m_resamplerRate = 0;
};

} // namespace merro::platform::ffmpeg
