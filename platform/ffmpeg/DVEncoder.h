// Makes DV frames of 25 Mb/s from pictures and sound, with libavcodec's encoder and libavformat's DV muxer,
// which puts the sound into the frames.
//
// One thread at a time. The muxer's own timecode and dates are to be stamped over.
#pragma once

#include "platform/ffmpeg/Libav.h"
#include "platform/ffmpeg/TapeScenario.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace merro::platform::ffmpeg {

class DVEncoder {
public:
    static constexpr int kSoundRate = 48000;

    DVEncoder() = default;
    ~DVEncoder();
    DVEncoder(const DVEncoder&) = delete;
    DVEncoder& operator=(const DVEncoder&) = delete;

    [[nodiscard]] std::optional<Error> open(TapeSystem system);

    /// Samples that the sound of frame `index` has, counted from the opening: the five-frame cycle of 525/60.
    [[nodiscard]] std::int64_t samplesOfFrame(std::int64_t index) const;

    /// Encodes the next frame; `samples` are left and right in turn, samplesOfFrame of them. Valid until the
    /// next call; empty when it failed.
    [[nodiscard]] std::span<const std::uint8_t> encode(const AVFrame& picture,
                                                       std::span<const std::int16_t> samples);

private:
    static int writeCallback(void* self, std::uint8_t* bytes, int size);
    bool send(std::span<const std::uint8_t> bytes, int stream, std::int64_t time);

    const AVDVProfile* m_profile = nullptr;
    CodecOwner m_encoder;
    IOOwner m_io;
    OutputOwner m_muxer;
    PacketOwner m_packet;
    FrameOwner m_picture;
    std::int64_t m_frames = 0;
    std::int64_t m_samples = 0;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace merro::platform::ffmpeg
