// The picture of the running session, for whoever draws it: the newest frame wins.
#pragma once

#include "platform/Cell.h"
#include "platform/QTCaptureSession.h"
#include "platform/session/SampleSink.h"

#include <optional>

namespace merro::platform::session {

/// Any thread.
class VideoPreviewOutput final : public QTCaptureVideoPreviewOutput, public SampleSink {
public:
    /// The newest frame that has not been taken yet; none when there was no new one.
    [[nodiscard]] std::optional<QTSampleBuffer> takeNewestFrame() { return m_newest.exchange(std::nullopt); }

    void receive(const QTSampleBuffer& sampleBuffer) override { m_newest.set(sampleBuffer); }

private:
    Cell<std::optional<QTSampleBuffer>> m_newest;
};

} // namespace merro::platform::session
