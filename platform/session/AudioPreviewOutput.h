// The sound of the running session, for whoever plays it: keeps the volume.
#pragma once

#include "platform/QTCaptureSession.h"

#include <algorithm>
#include <atomic>

namespace merro::platform::session {

/// Any thread. Volumes outside 0.0 to 1.0 are taken as the nearer end.
class AudioPreviewOutput final : public QTCaptureAudioPreviewOutput {
public:
    [[nodiscard]] float volume() const override { return m_volume; }
    void setVolume(float volume) override { m_volume = std::clamp(volume, 0.0F, 1.0F); }

private:
    std::atomic<float> m_volume{1.0F};
};

} // namespace merro::platform::session
