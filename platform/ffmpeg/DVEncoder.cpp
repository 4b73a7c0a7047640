#include "platform/ffmpeg/DVEncoder.h"

#include <algorithm>

namespace merro::platform::ffmpeg {

namespace {

constexpr int kIOBufferBytes = 1 << 16;
constexpr int kChannels = 2;
constexpr std::size_t kBlockBytes = 80;
constexpr std::size_t kSequenceBytes = 150 * kBlockBytes;

/// The encoder says what the picture is in places where no camera does, and programs believe the wrong one.
void emptyVaux(std::vector<std::uint8_t>& frame) {
    for (std::size_t sequence = 0; sequence < frame.size(); sequence += kSequenceBytes)
        for (std::size_t block = 3; block <= 5; ++block)
            std::ranges::fill(std::span(frame).subspan(sequence + block * kBlockBytes + 3, kBlockBytes - 3),
                              0xFF);
}

} // namespace

DVEncoder::~DVEncoder() = default;

std::optional<Error> DVEncoder::open(TapeSystem system) {
    silenceLibav();
    const bool is525 = system == TapeSystem::System525_60;
    m_profile = av_dv_codec_profile(720, is525 ? 480 : 576, is525 ? AV_PIX_FMT_YUV411P : AV_PIX_FMT_YUV420P);
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_DVVIDEO);
    const AVOutputFormat* format = av_guess_format("dv", nullptr, nullptr);
    if (codec == nullptr || format == nullptr)
        return Error{"cannot make a tape: FFmpeg's libraries on this machine cannot write DV", {}, 0};
    m_packet.reset(notNull(av_packet_alloc()));
    m_picture.reset(notNull(av_frame_alloc()));

    m_encoder.reset(notNull(avcodec_alloc_context3(codec)));
    m_encoder->width = m_profile->width;
    m_encoder->height = m_profile->height;
    m_encoder->pix_fmt = m_profile->pix_fmt;
    m_encoder->time_base = m_profile->time_base;
    m_encoder->sample_aspect_ratio = m_profile->sar[0];
    m_encoder->flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_BITEXACT;
    m_encoder->thread_count = 1;
    int result = avcodec_open2(m_encoder.get(), codec, nullptr);

    AVFormatContext* muxer = nullptr;
    avformat_alloc_output_context2(&muxer, format, nullptr, nullptr);
    m_muxer.reset(notNull(muxer));
    auto* buffer = static_cast<std::uint8_t*>(notNull(av_malloc(kIOBufferBytes)));
    m_io.reset(notNull(
        avio_alloc_context(buffer, kIOBufferBytes, 1, this, nullptr, &DVEncoder::writeCallback, nullptr)));
    m_io->direct = AVIO_FLAG_DIRECT;
    m_muxer->pb = m_io.get();
    m_muxer->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
    AVStream* picture = notNull(avformat_new_stream(m_muxer.get(), nullptr));
    avcodec_parameters_from_context(picture->codecpar, m_encoder.get());
    picture->time_base = m_profile->time_base;
    picture->avg_frame_rate = av_inv_q(m_profile->time_base);
    AVStream* sound = notNull(avformat_new_stream(m_muxer.get(), nullptr));
    sound->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
    sound->codecpar->codec_id = AV_CODEC_ID_PCM_S16LE;
    sound->codecpar->sample_rate = kSoundRate;
    sound->codecpar->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    sound->time_base = {1, kSoundRate};
    if (result >= 0)
        result = avformat_write_header(m_muxer.get(), nullptr);
    if (result < 0)
        return Error{"cannot make a tape: the DV encoder does not start (" + libavText(result) + ")", {}, 0};
    return std::nullopt;
}

std::int64_t DVEncoder::samplesOfFrame(std::int64_t index) const {
    return m_profile->audio_samples_dist[index % 5];
}

std::span<const std::uint8_t> DVEncoder::encode(const AVFrame& picture,
                                                std::span<const std::int16_t> samples) {
    m_bytes.clear();
    av_frame_unref(m_picture.get());
    if (av_frame_ref(m_picture.get(), &picture) < 0)
        return {};
    m_picture->pts = m_frames;
    av_packet_unref(m_packet.get());
    if (avcodec_send_frame(m_encoder.get(), m_picture.get()) < 0 ||
        avcodec_receive_packet(m_encoder.get(), m_packet.get()) < 0)
        return {};
    const PacketOwner encoded(notNull(av_packet_clone(m_packet.get())));
    const auto bytes = std::as_bytes(samples);
    if (!send({encoded->data, static_cast<std::size_t>(encoded->size)}, 0, m_frames) ||
        !send({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, 1, m_samples))
        return {};
    avio_flush(m_io.get());
    emptyVaux(m_bytes);
    m_frames += 1;
    m_samples += static_cast<std::int64_t>(samples.size()) / kChannels;
    return m_bytes;
}

bool DVEncoder::send(std::span<const std::uint8_t> bytes, int stream, std::int64_t time) {
    av_packet_unref(m_packet.get());
    m_packet->data =
        const_cast<std::uint8_t*>(bytes.data()); // without a buffer of its own it is not written to
    m_packet->size = static_cast<int>(bytes.size());
    m_packet->stream_index = stream;
    m_packet->flags = AV_PKT_FLAG_KEY;
    const AVRational unit = stream == 0 ? m_profile->time_base : AVRational{1, kSoundRate};
    m_packet->pts = m_packet->dts = av_rescale_q(time, unit, m_muxer->streams[stream]->time_base);
    return av_write_frame(m_muxer.get(), m_packet.get()) >= 0;
}

int DVEncoder::writeCallback(void* self, std::uint8_t* bytes, int size) {
    auto& made = static_cast<DVEncoder*>(self)->m_bytes;
    made.insert(made.end(), bytes, bytes + size);
    return size;
}

} // namespace merro::platform::ffmpeg
