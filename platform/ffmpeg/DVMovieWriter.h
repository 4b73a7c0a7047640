// Writes DV frames and their sound into a QuickTime movie with libavformat.
//
// One thread at a time. The file is the caller's and outlives the writer.
#pragma once

#include "platform/Error.h"
#include "platform/ffmpeg/DVFrameFacts.h"
#include "platform/ffmpeg/Libav.h"
#include "platform/ffmpeg/MovieFile.h"
#include "platform/ffmpeg/SoundExtractor.h"
#include "platform/ffmpeg/SoundTrack.h"
#include "platform/SMPTETime.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace merro::platform::ffmpeg {

class DVMovieWriter {
public:
    explicit DVMovieWriter(MovieFile& file);
    ~DVMovieWriter();
    DVMovieWriter(const DVMovieWriter&) = delete;
    DVMovieWriter& operator=(const DVMovieWriter&) = delete;

    /// Writes a frame of 120000 or 144000 bytes, of the same size as the first one. The movie's properties
    /// and its starting timecode come from the first. False when the frame is not in the movie; the file may
    /// know more.
    [[nodiscard]] bool write(std::span<const std::uint8_t> frame, const TimecodeValue& timecode);

    /// Frames in the movie.
    [[nodiscard]] std::int64_t frameCount() const { return m_frames; }
    /// The size of the first frame, 0 before there is one.
    [[nodiscard]] std::size_t frameBytes() const { return m_frameBytes; }

    /// Writes the index. False when the movie cannot be played.
    [[nodiscard]] bool finish();

private:
    static int writeCallback(void* self, std::uint8_t* bytes, int size);
    static std::int64_t seekCallback(void* self, std::int64_t offset, int whence);

    bool begin(std::span<const std::uint8_t> frame, const TimecodeValue& timecode, int soundRate);
    void describePicture(AVStream& stream, const DVFrameFacts& facts,
                         std::span<const std::uint8_t> frame) const;
    void addSoundTracks(int rateInHertz, bool is525_60);
    bool writePacket(std::span<const std::uint8_t> bytes, int stream, std::int64_t position,
                     std::int64_t duration);

    MovieFile& m_file;
    IOOwner m_io;
    OutputOwner m_muxer;
    PacketOwner m_packet;
    SoundExtractor m_sound;
    std::vector<SoundTrack> m_soundTracks;
    std::size_t m_frameBytes = 0;
    std::int64_t m_frames = 0;
    bool m_isBegun = false;
};

} // namespace merro::platform::ffmpeg
