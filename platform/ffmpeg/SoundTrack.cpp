#include "platform/ffmpeg/SoundTrack.h"

#include <algorithm>

namespace merro::platform::ffmpeg {

SoundTrack::SoundTrack(int rateInHertz, bool is525_60)
    : m_rate(rateInHertz), m_framesPerSecondNumerator(is525_60 ? 30000 : 25),
      m_framesPerSecondDenominator(is525_60 ? 1001 : 1) {}

std::int64_t SoundTrack::samplesInFrames(std::int64_t frames) const {
    return frames * m_rate * m_framesPerSecondDenominator / m_framesPerSecondNumerator;
}

std::span<const std::int16_t> SoundTrack::append(std::int64_t frameIndex,
                                                 std::span<const std::int16_t> samples, int rateInHertz) {
    m_samples.clear();
    if (!m_hasBegun) {
        if (samples.empty())
            return {};
        m_hasBegun = true;
        m_next = samplesInFrames(frameIndex);
    }
    m_position = m_next;
    if (samples.empty())
        m_samples.assign(
            static_cast<std::size_t>(samplesInFrames(frameIndex + 1) - samplesInFrames(frameIndex)) *
                kChannels,
            0);
    else if (rateInHertz == m_rate)
        m_samples.assign(samples.begin(), samples.end());
    else
        resample(samples, rateInHertz);
    keepTogether(frameIndex);
    m_next = m_position + static_cast<std::int64_t>(m_samples.size()) / kChannels;
    return m_samples;
}

void SoundTrack::resample(std::span<const std::int16_t> samples, int rateInHertz) {
    if (m_resamplerRate != rateInHertz) {
        AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
        SwrContext* context = nullptr;
        const int allocated = swr_alloc_set_opts2(&context, &stereo, AV_SAMPLE_FMT_S16, m_rate, &stereo,
                                                  AV_SAMPLE_FMT_S16, rateInHertz, 0, nullptr);
        m_resampler.reset(allocated < 0 ? nullptr : context);
        swr_init(notNull(m_resampler.get()));
        m_resamplerRate = rateInHertz;
    }
    const auto count = static_cast<int>(samples.size()) / kChannels;
    const int room = swr_get_out_samples(m_resampler.get(), count);
    m_samples.resize(static_cast<std::size_t>(std::max(room, 0)) * kChannels);
    const auto* input = reinterpret_cast<const std::uint8_t*>(samples.data());
    auto* output = reinterpret_cast<std::uint8_t*>(m_samples.data());
    const int made = swr_convert(m_resampler.get(), &output, room, &input, count);
    m_samples.resize(static_cast<std::size_t>(std::max(made, 0)) * kChannels);
}

void SoundTrack::keepTogether(std::int64_t frameIndex) {
    const std::int64_t allowed = samplesInFrames(1) / 2;
    const std::int64_t end = m_position + static_cast<std::int64_t>(m_samples.size()) / kChannels;
    const std::int64_t drift = end - samplesInFrames(frameIndex + 1);
    if (drift > allowed) {
        const auto excess = static_cast<std::size_t>(drift - allowed) * kChannels;
        m_samples.resize(m_samples.size() - std::min(excess, m_samples.size()));
    } else if (drift < -allowed) {
        const std::int16_t left = m_samples.empty() ? std::int16_t{0} : m_samples[m_samples.size() - 2];
        const std::int16_t right = m_samples.empty() ? std::int16_t{0} : m_samples.back();
        for (std::int64_t missing = -drift - allowed; missing > 0; --missing) {
            m_samples.push_back(left);
            m_samples.push_back(right);
        }
    }
}

} // namespace merro::platform::ffmpeg
