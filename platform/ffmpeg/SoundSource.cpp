#include "platform/ffmpeg/SoundSource.h"

#include <cmath>
#include <numbers>

namespace merro::platform::ffmpeg {

std::span<const std::int16_t> SoundSource::next(std::int64_t samples) {
    constexpr double kAmplitude = 0.25 * 32767; // 12 dB below full scale
    m_samples.clear();
    for (std::int64_t end = m_position + samples; m_position < end; ++m_position) {
        const bool isSounding = m_sound.kind == TakeSoundKind::Tone ||
                                (m_sound.kind == TakeSoundKind::Beep && m_position % m_rate < m_rate / 10);
        const double turns = m_sound.frequencyInHertz * static_cast<double>(m_position) / m_rate;
        const double level = isSounding ? kAmplitude * std::sin(2 * std::numbers::pi * turns) : 0;
        const auto sample = static_cast<std::int16_t>(std::lround(level));
        m_samples.push_back(sample);
        m_samples.push_back(sample);
    }
    return m_samples;
}

} // namespace merro::platform::ffmpeg
