// Takes the sound out of DV frames, one frame after the other, with libavformat's DV demuxer.
//
// One thread at a time. Results point into the extractor and hold until the next frame.
#pragma once

#include "platform/ffmpeg/Libav.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace merro::platform::ffmpeg {

/// Stereo pairs that a frame of 25 Mb/s DV can hold.
inline constexpr std::size_t kSoundPairs = 2;

struct FrameSound {
    int rateInHertz = 0; ///< 0 when the frame has no sound that can be understood
    /// Left and right in turn, 16 bits each; empty where the frame has no such pair.
    std::array<std::span<const std::int16_t>, kSoundPairs> pairs;
};

class SoundExtractor {
public:
    SoundExtractor();
    ~SoundExtractor();
    SoundExtractor(const SoundExtractor&) = delete;
    SoundExtractor& operator=(const SoundExtractor&) = delete;

    /// The sound of a frame of 120000 or 144000 bytes. All frames of an extractor have the same size.
    [[nodiscard]] FrameSound extract(std::span<const std::uint8_t> frame);

private:
    static int readCallback(void* self, std::uint8_t* destination, int size);
    static std::int64_t seekCallback(void* self, std::int64_t offset, int whence);
    bool open();
    void copySoundBlocks(std::uint8_t* destination, std::size_t from, std::size_t to) const;

    /// Makes the demuxer see the system that the frame's size says: it would go by a header that may be
    /// damaged.
    void repairHeader(std::uint8_t* destination, std::size_t from, std::size_t to) const;

    std::span<const std::uint8_t> m_frame;
    std::int64_t m_frameStart =
        0; ///< where m_frame lies in the endless file that the demuxer believes to read
    std::int64_t m_position = 0;
    IOOwner m_io;
    InputOwner m_demuxer;
    std::array<PacketOwner, kSoundPairs> m_packets;
    PacketOwner m_packet;
};

} // namespace merro::platform::ffmpeg
