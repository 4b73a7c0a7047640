#include "platform/ffmpeg/SoundExtractor.h"

#include "platform/ffmpeg/DVFrameFacts.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace merro::platform::ffmpeg {

namespace {

constexpr int kIOBufferBytes = 4096;
constexpr std::size_t kBlockBytes = 80;
constexpr std::size_t kSequenceBytes = 150 * kBlockBytes;
constexpr std::size_t kSystemBlocks = 6;    // header, subcode, VAUX
constexpr std::size_t kSoundBlocks = 9;     // in a sequence
constexpr std::size_t kSoundBlockStep = 16; // one sound block, then fifteen of video

} // namespace

SoundExtractor::SoundExtractor() : m_packet(notNull(av_packet_alloc())) {
    for (auto& packet : m_packets)
        packet.reset(notNull(av_packet_alloc()));
    auto* buffer = static_cast<std::uint8_t*>(notNull(av_mallocz(kIOBufferBytes)));
    m_io.reset(notNull(avio_alloc_context(buffer, kIOBufferBytes, 0, this, &SoundExtractor::readCallback,
                                          nullptr, &SoundExtractor::seekCallback)));
}

SoundExtractor::~SoundExtractor() = default;

bool SoundExtractor::open() {
    AVFormatContext* context = notNull(avformat_alloc_context());
    context->pb = m_io.get();
    context->flags |= AVFMT_FLAG_NOPARSE | AVFMT_FLAG_NOFILLIN;
    if (avformat_open_input(&context, nullptr, av_find_input_format("dv"), nullptr) < 0)
        return false;
    m_demuxer.reset(context);
    return true;
}

FrameSound SoundExtractor::extract(std::span<const std::uint8_t> frame) {
    m_frameStart += static_cast<std::int64_t>(m_frame.size());
    m_frame = frame;
    FrameSound sound;
    for (auto& packet : m_packets)
        av_packet_unref(packet.get());
    // Where an earlier frame was refused, the demuxer may stand in the middle of it.
    if (m_position != m_frameStart || m_io->eof_reached != 0 || m_io->error != 0) {
        m_io->buf_ptr = m_io->buf_end = m_io->buffer;
        m_io->eof_reached = 0;
        m_io->error = 0;
        m_io->pos = m_position = m_frameStart;
    }
    if (!m_demuxer && !open())
        return sound;

    // First comes the picture, then the frame's sound, then the refusal to hand out more than this frame.
    while (av_read_frame(m_demuxer.get(), m_packet.get()) >= 0) {
        const auto pair = static_cast<std::size_t>(m_packet->stream_index) - 1;
        const AVCodecParameters* parameters = m_demuxer->streams[m_packet->stream_index]->codecpar;
        if (parameters->codec_type == AVMEDIA_TYPE_AUDIO && pair < kSoundPairs) {
            av_packet_unref(m_packets[pair].get());
            av_packet_move_ref(m_packets[pair].get(), m_packet.get());
            const AVPacket& packet = *m_packets[pair];
            sound.rateInHertz = parameters->sample_rate;
            sound.pairs[pair] = {reinterpret_cast<const std::int16_t*>(packet.data),
                                 static_cast<std::size_t>(packet.size) / sizeof(std::int16_t)};
        }
        av_packet_unref(m_packet.get());
    }
    return sound;
}

void SoundExtractor::copySoundBlocks(std::uint8_t* destination, std::size_t from, std::size_t to) const {
    const auto copy = [&](std::size_t start, std::size_t bytes) {
        const std::size_t first = std::max(start, from);
        const std::size_t last = std::min(start + bytes, to);
        if (first < last)
            std::memcpy(destination + (first - from), m_frame.data() + first, last - first);
    };
    for (std::size_t sequence = from / kSequenceBytes * kSequenceBytes; sequence < to;
         sequence += kSequenceBytes) {
        copy(sequence, kSystemBlocks * kBlockBytes);
        for (std::size_t block = 0; block < kSoundBlocks; ++block)
            copy(sequence + (kSystemBlocks + block * kSoundBlockStep) * kBlockBytes, kBlockBytes);
    }
}

void SoundExtractor::repairHeader(std::uint8_t* destination, std::size_t from, std::size_t to) const {
    const auto put = [&](std::size_t place, std::uint8_t byte) {
        if (place >= from && place < to)
            destination[place - from] = byte;
    };
    const bool is625 = m_frame.size() == kFrameBytes625_50;
    put(0, 0x1F);
    put(1, 0x07);
    put(2, 0x00);
    put(3, is625 ? 0xBF : 0x3F);
    put(5 * kBlockBytes + 51,
        0xFF); // the signal type of the VAUX source pack: left open, which means 25 Mb/s
}

int SoundExtractor::readCallback(void* self, std::uint8_t* destination, int size) {
    auto& extractor = *static_cast<SoundExtractor*>(self);
    const auto from = static_cast<std::size_t>(extractor.m_position - extractor.m_frameStart);
    const std::size_t bytes = std::min(static_cast<std::size_t>(size), extractor.m_frame.size() - from);
    if (bytes == 0)
        return AVERROR_EOF;
    // Nine tenths of a frame are pictures, which nobody looks at here: they are left out.
    extractor.copySoundBlocks(destination, from, from + bytes);
    extractor.repairHeader(destination, from, from + bytes);
    extractor.m_position += static_cast<std::int64_t>(bytes);
    return static_cast<int>(bytes);
}

std::int64_t SoundExtractor::seekCallback(void* self, std::int64_t offset, int whence) {
    auto& extractor = *static_cast<SoundExtractor*>(self);
    const std::int64_t end = extractor.m_frameStart + static_cast<std::int64_t>(extractor.m_frame.size());
    if (whence != SEEK_SET || offset < extractor.m_frameStart || offset > end)
        return AVERROR(EINVAL);
    extractor.m_position = offset;
    return offset;
}

} // namespace merro::platform::ffmpeg
