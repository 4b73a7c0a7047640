#include "ffmpeg/MovieReader.h"

extern "C" {
#include <libavcodec/dv_profile.h>
#include <libavformat/avformat.h>
}

#include <array>
#include <cstring>
#include <fstream>

namespace merro::test {

namespace {

std::string text(AVRational value, char separator) {
    return std::to_string(value.num) + separator + std::to_string(value.den);
}

std::string tag(const AVDictionary* tags, const char* key) {
    const AVDictionaryEntry* entry = av_dict_get(tags, key, nullptr, 0);
    return entry == nullptr ? "" : entry->value;
}

void describe(const AVStream& stream, ReadMovie& movie, std::vector<int>& soundOfStream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    soundOfStream.push_back(-1);
    if (parameters.codec_type == AVMEDIA_TYPE_VIDEO) {
        std::array<char, 4> fourcc{};
        std::memcpy(fourcc.data(), &parameters.codec_tag, fourcc.size());
        movie.fourcc.assign(fourcc.begin(), fourcc.end());
        movie.sampleAspect = text(stream.sample_aspect_ratio, ':');
        movie.frameRate = text(stream.avg_frame_rate, '/');
        movie.isBottomFieldFirst = parameters.field_order == AV_FIELD_BB;
        movie.timecode = tag(stream.metadata, "timecode");
    } else if (parameters.codec_type == AVMEDIA_TYPE_AUDIO) {
        soundOfStream.back() = static_cast<int>(movie.sounds.size());
        movie.sounds.push_back({avcodec_get_name(parameters.codec_id),
                                parameters.sample_rate,
                                parameters.ch_layout.nb_channels,
                                -1,
                                {}});
    }
}

void take(const AVPacket& packet, const AVFormatContext& context, ReadMovie& movie,
          const std::vector<int>& soundOfStream) {
    const AVStream& stream = *context.streams[packet.stream_index];
    if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO) {
        movie.video.insert(movie.video.end(), packet.data, packet.data + packet.size);
        ++movie.frames;
    }
    const int number = static_cast<std::size_t>(packet.stream_index) < soundOfStream.size()
                           ? soundOfStream[static_cast<std::size_t>(packet.stream_index)]
                           : -1;
    if (number < 0)
        return;
    ReadSound& sound = movie.sounds[static_cast<std::size_t>(number)];
    if (sound.startInSeconds < 0)
        sound.startInSeconds = static_cast<double>(packet.pts) * av_q2d(stream.time_base);
    const std::size_t before = sound.samples.size();
    sound.samples.resize(before + static_cast<std::size_t>(packet.size) / 2);
    std::memcpy(sound.samples.data() + before, packet.data, static_cast<std::size_t>(packet.size));
}

void put(std::ofstream& file, const char* fourcc, std::initializer_list<std::uint32_t> words) {
    file.write(fourcc, 4);
    for (const std::uint32_t word : words)
        file.write(reinterpret_cast<const char*>(&word), 4); // the files of this format are little-endian
}

} // namespace

ReadMovie readMovie(const std::string& path, const std::string& format) {
    ReadMovie movie;
    AVFormatContext* context = nullptr;
    const AVInputFormat* input = format.empty() ? nullptr : av_find_input_format(format.c_str());
    if (avformat_open_input(&context, path.c_str(), input, nullptr) < 0)
        return movie;
    if (avformat_find_stream_info(context, nullptr) >= 0) {
        movie.isReadable = true;
        movie.creationTime = tag(context->metadata, "creation_time");
        std::vector<int> soundOfStream;
        for (unsigned stream = 0; stream < context->nb_streams; ++stream)
            describe(*context->streams[stream], movie, soundOfStream);
        AVPacket* packet = av_packet_alloc();
        while (av_read_frame(context, packet) >= 0) {
            take(*packet, *context, movie, soundOfStream);
            av_packet_unref(packet);
        }
        av_packet_free(&packet);
    }
    avformat_close_input(&context);
    return movie;
}

void writeContainer(const std::string& path, const std::string& format,
                    const std::vector<std::vector<std::uint8_t>>& frames, bool is525_60) {
    AVFormatContext* context = nullptr;
    avformat_alloc_output_context2(&context, nullptr, format.c_str(), path.c_str());
    AVStream* stream = avformat_new_stream(context, nullptr);
    const AVPixelFormat pixels = is525_60 ? AV_PIX_FMT_YUV411P : AV_PIX_FMT_YUV420P;
    const AVDVProfile* profile = av_dv_codec_profile(720, is525_60 ? 480 : 576, pixels);
    stream->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
    stream->codecpar->codec_id = AV_CODEC_ID_DVVIDEO;
    stream->codecpar->width = 720;
    stream->codecpar->height = profile->height;
    stream->codecpar->format = pixels;
    stream->time_base = profile->time_base;
    stream->avg_frame_rate = av_inv_q(profile->time_base);
    avio_open(&context->pb, path.c_str(), AVIO_FLAG_WRITE);
    if (avformat_write_header(context, nullptr) >= 0) {
        AVPacket* packet = av_packet_alloc();
        for (std::size_t index = 0; index < frames.size(); ++index) {
            av_new_packet(packet, static_cast<int>(frames[index].size()));
            std::memcpy(packet->data, frames[index].data(), frames[index].size());
            packet->flags = AV_PKT_FLAG_KEY;
            packet->pts = packet->dts =
                av_rescale_q(static_cast<std::int64_t>(index), profile->time_base, stream->time_base);
            packet->duration = av_rescale_q(1, profile->time_base, stream->time_base);
            av_write_frame(context, packet);
            av_packet_unref(packet);
        }
        av_packet_free(&packet);
        av_write_trailer(context);
    }
    avio_closep(&context->pb);
    avformat_free_context(context);
}

void writeAviType1(const std::string& path, const std::vector<std::vector<std::uint8_t>>& frames) {
    const auto count = static_cast<std::uint32_t>(frames.size());
    const auto size = static_cast<std::uint32_t>(frames.front().size());
    const std::uint32_t movie = 4 + count * (8 + size);
    constexpr std::uint32_t kStream = 4 + (8 + 56) + (8 + 32);
    constexpr std::uint32_t kHeaders = 4 + (8 + 56) + (8 + kStream);
    std::ofstream file(path, std::ios::binary);
    put(file, "RIFF", {4 + (8 + kHeaders) + (8 + movie) + 8 + count * 16});
    put(file, "AVI ", {});
    put(file, "LIST", {kHeaders});
    put(file, "hdrl", {});
    put(file, "avih", {56, 40000, 3600000, 0, 0x10, count, 0, 1, size, 720, 576, 0, 0, 0, 0});
    put(file, "LIST", {kStream});
    put(file, "strl", {});
    put(file, "strh", {56});
    put(file, "iavs", {});
    put(file, "dvsd", {0, 0, 0, 1, 25, 0, count, size, 0xFFFFFFFF, 0, 0, 0});
    put(file, "strf", {32, 0, 0, 0, 0, 0, 0, 0, 0});
    put(file, "LIST", {movie});
    put(file, "movi", {});
    for (const auto& frame : frames) {
        put(file, "00__", {size});
        file.write(reinterpret_cast<const char*>(frame.data()), static_cast<std::streamsize>(frame.size()));
    }
    put(file, "idx1", {count * 16});
    for (std::uint32_t index = 0; index < count; ++index)
        put(file, "00__", {0x10, 4 + index * (8 + size), size});
}

} // namespace merro::test
