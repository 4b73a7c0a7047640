// One sample of a capture stream, as an output hands it to its delegate.
#pragma once

#include "platform/FrameBytes.h"
#include "platform/SMPTETime.h"

#include <cstdint>

namespace merro::platform {

enum class MediaType { Video, Sound, Muxed };

/// What the session noticed between the sample before and this one (QTSampleBufferSceneChangeTypeAttribute).
enum QTSampleBufferSceneChangeType : std::uint32_t {
    QTSampleBufferNoSceneChange = 0,
    QTSampleBufferExplicitSceneChange = 1U << 0,
    /// The tape's timecode does not run on from the sample before.
    QTSampleBufferTimeStampDiscontinuitySceneChange = 1U << 1,
};

/// Immutable once delivered; the bytes are shared, so keeping a buffer is cheap.
struct QTSampleBuffer {
    MediaType mediaType = MediaType::Video;

    /// The whole sample; for DV video one frame of 120000 (525/60) or 144000 (625/50) bytes.
    FrameBytes bytesForAllSamples;

    /// QTSampleBufferSMPTETimeAttribute: the frame's tape timecode, missing where the tape has none.
    TimecodeValue timecode;

    /// QTSampleBufferSceneChangeTypeAttribute.
    QTSampleBufferSceneChangeType sceneChange = QTSampleBufferNoSceneChange;

    [[nodiscard]] std::size_t lengthForAllSamples() const { return bytesForAllSamples.size(); }
};

} // namespace merro::platform
