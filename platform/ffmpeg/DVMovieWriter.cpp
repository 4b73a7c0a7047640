#include "platform/ffmpeg/DVMovieWriter.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>

namespace merro::platform::ffmpeg {

namespace {

constexpr int kIOBufferBytes = 1 << 16;
constexpr int kUsualSoundRate = 48000;

const AVDVProfile* profileOf(const DVFrameFacts& facts) {
    if (facts.is525_60)
        return av_dv_codec_profile(720, 480, AV_PIX_FMT_YUV411P);
    return av_dv_codec_profile(720, 576, facts.is411 ? AV_PIX_FMT_YUV411P : AV_PIX_FMT_YUV420P);
}

/// "HH:MM:SS:FF" as libavformat reads it, a semicolon standing for drop-frame; none for what no clock can
/// show.
std::optional<std::string> timecodeText(const TimecodeValue& timecode, const DVFrameFacts& facts) {
    const SMPTETime time = timecode.SMPTETimeValue();
    const int framesPerSecond = facts.is525_60 ? 30 : 25;
    const bool isReal = time.mHours >= 0 && time.mHours < 24 && time.mMinutes >= 0 && time.mMinutes < 60 &&
                        time.mSeconds >= 0 && time.mSeconds < 60 && time.mFrames >= 0 &&
                        time.mFrames < framesPerSecond;
    if (!timecode || !isReal)
        return std::nullopt;
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%02d:%02d:%02d%c%02d", time.mHours, time.mMinutes,
                        time.mSeconds, facts.isDropFrame ? ';' : ':', time.mFrames);
    return text.data();
}

/// ISO 8601, in universal time.
std::string creationTime(const CalendarFields& recordingDate) {
    const auto instant = std::chrono::floor<std::chrono::seconds>(dateFromCalendar(recordingDate)->instant());
    const auto day = std::chrono::floor<std::chrono::days>(instant);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(instant - day);
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                        static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                        static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                        static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return text.data();
}

} // namespace

DVMovieWriter::DVMovieWriter(MovieFile& file) : m_file(file), m_packet(notNull(av_packet_alloc())) {
    silenceLibav();
    auto* buffer = static_cast<std::uint8_t*>(notNull(av_malloc(kIOBufferBytes)));
    m_io.reset(notNull(avio_alloc_context(buffer, kIOBufferBytes, 1, this, nullptr,
                                          &DVMovieWriter::writeCallback, &DVMovieWriter::seekCallback)));
    m_io->direct = AVIO_FLAG_DIRECT; // frames go from the tape's memory to the file without a copy
    AVFormatContext* context = nullptr;
    avformat_alloc_output_context2(&context, nullptr, "mov", nullptr);
    m_muxer.reset(notNull(context));
    m_muxer->pb = m_io.get();
    m_muxer->flags |= AVFMT_FLAG_CUSTOM_IO;
}

DVMovieWriter::~DVMovieWriter() = default;

bool DVMovieWriter::begin(std::span<const std::uint8_t> frame, const TimecodeValue& timecode, int soundRate) {
    const DVFrameFacts facts = factsOfFrame(frame);
    AVStream* picture = notNull(avformat_new_stream(m_muxer.get(), nullptr));
    describePicture(*picture, facts, frame);
    if (const auto text = timecodeText(timecode, facts))
        av_dict_set(&picture->metadata, "timecode", text->c_str(), 0);
    if (facts.recordingDate)
        av_dict_set(&m_muxer->metadata, "creation_time", creationTime(*facts.recordingDate).c_str(), 0);
    addSoundTracks(soundRate == 0 ? kUsualSoundRate : soundRate, facts.is525_60);
    // Whole frames in the movie's own units, so that no player cuts a part of one off.
    av_opt_set_int(m_muxer->priv_data, "movie_timescale", facts.is525_60 ? 30000 : 25000, 0);
    m_frameBytes = frame.size();
    m_isBegun = avformat_write_header(m_muxer.get(), nullptr) >= 0;
    return m_isBegun;
}

void DVMovieWriter::describePicture(AVStream& stream, const DVFrameFacts& facts,
                                    std::span<const std::uint8_t> frame) const {
    const AVDVProfile* profile = profileOf(facts);
    AVCodecParameters& parameters = *stream.codecpar;
    parameters.codec_type = AVMEDIA_TYPE_VIDEO;
    parameters.codec_id = AV_CODEC_ID_DVVIDEO;
    parameters.width = profile->width;
    parameters.height = profile->height;
    parameters.format = profile->pix_fmt;
    parameters.field_order = AV_FIELD_BB;
    parameters.sample_aspect_ratio = stream.sample_aspect_ratio = profile->sar[facts.isWide ? 1 : 0];
    stream.time_base = profile->time_base;
    stream.avg_frame_rate = stream.r_frame_rate = av_inv_q(profile->time_base);
    parameters.bit_rate =
        av_rescale_q(static_cast<std::int64_t>(frame.size()) * 8, {1, 1}, profile->time_base);
}

void DVMovieWriter::addSoundTracks(int rateInHertz, bool is525_60) {
    // Whether the tape has sound, and how much, shows only later: a track that stays empty is left out of the
    // movie.
    for (std::size_t pair = 0; pair < kSoundPairs; ++pair) {
        AVStream* stream = notNull(avformat_new_stream(m_muxer.get(), nullptr));
        AVCodecParameters& parameters = *stream->codecpar;
        parameters.codec_type = AVMEDIA_TYPE_AUDIO;
        parameters.codec_id = AV_CODEC_ID_PCM_S16LE;
        parameters.format = AV_SAMPLE_FMT_S16;
        parameters.sample_rate = rateInHertz;
        parameters.ch_layout = AV_CHANNEL_LAYOUT_STEREO;
        parameters.bits_per_coded_sample = 16;
        parameters.block_align = SoundTrack::kChannels * 2;
        parameters.bit_rate = std::int64_t{rateInHertz} * SoundTrack::kChannels * 16;
        stream->time_base = {1, rateInHertz};
        m_soundTracks.emplace_back(rateInHertz, is525_60);
    }
}

bool DVMovieWriter::write(std::span<const std::uint8_t> frame, const TimecodeValue& timecode) {
    const FrameSound sound = m_sound.extract(frame);
    if (!m_isBegun && !begin(frame, timecode, sound.rateInHertz))
        return false;
    if (!writePacket(frame, 0, m_frames, 1))
        return false;
    for (std::size_t pair = 0; pair < m_soundTracks.size(); ++pair) {
        SoundTrack& track = m_soundTracks[pair];
        const auto samples = track.append(m_frames, sound.pairs[pair], sound.rateInHertz);
        const auto bytes = std::as_bytes(samples);
        if (!samples.empty() &&
            !writePacket({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()},
                         static_cast<int>(pair) + 1, track.positionInSamples(),
                         static_cast<std::int64_t>(samples.size()) / SoundTrack::kChannels))
            return false;
    }
    ++m_frames;
    return true;
}

bool DVMovieWriter::writePacket(std::span<const std::uint8_t> bytes, int stream, std::int64_t position,
                                std::int64_t duration) {
    AVPacket& packet = *m_packet;
    av_packet_unref(&packet);
    packet.data =
        const_cast<std::uint8_t*>(bytes.data()); // a packet without a buffer of its own is not written to
    packet.size = static_cast<int>(bytes.size());
    packet.stream_index = stream;
    packet.flags = AV_PKT_FLAG_KEY;
    const AVStream& track = *m_muxer->streams[stream];
    const AVRational unit =
        stream == 0 ? av_inv_q(track.avg_frame_rate) : AVRational{1, track.codecpar->sample_rate};
    packet.pts = packet.dts = av_rescale_q(position, unit, track.time_base);
    packet.duration = av_rescale_q(duration, unit, track.time_base);
    return av_write_frame(m_muxer.get(), &packet) >= 0 && m_io->error == 0;
}

bool DVMovieWriter::finish() {
    if (!m_isBegun)
        return false;
    m_io->error = 0;
    m_file.clearWriteError();
    const bool isWritten = av_write_trailer(m_muxer.get()) >= 0;
    avio_flush(m_io.get());
    return isWritten && m_io->error == 0;
}

int DVMovieWriter::writeCallback(void* self, std::uint8_t* bytes, int size) {
    MovieFile& file = static_cast<DVMovieWriter*>(self)->m_file;
    return file.write({bytes, static_cast<std::size_t>(size)}) ? size : AVERROR(EIO);
}

std::int64_t DVMovieWriter::seekCallback(void* self, std::int64_t offset, int whence) {
    if (whence != SEEK_SET)
        return AVERROR(ENOSYS);
    static_cast<DVMovieWriter*>(self)->m_file.seek(offset);
    return offset;
}

} // namespace merro::platform::ffmpeg
