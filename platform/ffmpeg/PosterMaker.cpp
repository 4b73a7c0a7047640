#include "platform/ffmpeg/PosterMaker.h"

#include "platform/ffmpeg/DVFrameFacts.h"
#include "platform/ffmpeg/Libav.h"
#include "platform/ffmpeg/OutputFiles.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace merro::platform::ffmpeg {

namespace {

CodecOwner openDecoder() {
    CodecOwner decoder(notNull(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_DVVIDEO))));
    decoder->thread_count = 1;
    if (avcodec_open2(decoder.get(), nullptr, nullptr) < 0)
        decoder.reset();
    return decoder;
}

CodecOwner openEncoder(const Poster& poster) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_PNG);
    CodecOwner encoder(notNull(avcodec_alloc_context3(codec)));
    encoder->width = poster.width;
    encoder->height = poster.height;
    encoder->pix_fmt = AV_PIX_FMT_RGB24;
    encoder->time_base = {1, 25};
    encoder->sample_aspect_ratio = {1, 1};
    encoder->thread_count = 1;
    if (avcodec_open2(encoder.get(), codec, nullptr) < 0)
        encoder.reset();
    return encoder;
}

/// The field that comes first in time, which in DV is made of every second line from line 1 on.
struct Field {
    std::array<const std::uint8_t*, 4> planes{};
    std::array<int, 4> strides{};
    int height = 0;

    explicit Field(const AVFrame& frame) : height(frame.height / 2) {
        for (std::size_t plane = 0; plane < 3; ++plane) {
            planes[plane] = frame.data[plane] + frame.linesize[plane];
            strides[plane] = 2 * frame.linesize[plane];
        }
    }
};

} // namespace

struct PosterMaker::Decoding {
    CodecOwner decoder = openDecoder();
    FrameOwner picture{notNull(av_frame_alloc())};
    FrameOwner poster{notNull(av_frame_alloc())};
    PacketOwner packet{notNull(av_packet_alloc())};
    ScalerOwner scaler;

    /// Into `picture`; a libav error or 0.
    int decode(std::span<const std::uint8_t> frame);
    bool scale(Poster& result);
    /// The PNG file's bytes in `packet`.
    bool encode(const Poster& result);
};

int PosterMaker::Decoding::decode(std::span<const std::uint8_t> frame) {
    if (!decoder)
        return AVERROR_DECODER_NOT_FOUND;
    av_packet_unref(packet.get());
    if (const int result = av_new_packet(packet.get(), static_cast<int>(frame.size())); result < 0)
        return result;
    std::copy(frame.begin(), frame.end(), packet->data);
    if (const int result = avcodec_send_packet(decoder.get(), packet.get()); result < 0)
        return result;
    return avcodec_receive_frame(decoder.get(), picture.get());
}

bool PosterMaker::Decoding::scale(Poster& result) {
    const Field field(*picture);
    scaler.reset(sws_getCachedContext(
        scaler.release(), picture->width, field.height, static_cast<AVPixelFormat>(picture->format),
        result.width, result.height, AV_PIX_FMT_RGB24, SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT,
        nullptr, nullptr, nullptr));
    if (!scaler)
        return false;
    // DV is BT.601 with levels from 16 to 235.
    const int* bt601 = sws_getCoefficients(SWS_CS_ITU601);
    sws_setColorspaceDetails(scaler.get(), bt601, 0, bt601, 1, 0, 1 << 16, 1 << 16);
    const int stride = 3 * result.width;
    result.rgb.resize(static_cast<std::size_t>(stride) * static_cast<std::size_t>(result.height));
    std::array<std::uint8_t*, 4> planes{result.rgb.data()};
    const std::array<int, 4> strides{stride};
    return sws_scale(scaler.get(), field.planes.data(), field.strides.data(), 0, field.height, planes.data(),
                     strides.data()) == result.height;
}

bool PosterMaker::Decoding::encode(const Poster& result) {
    const CodecOwner encoder = openEncoder(result);
    if (!encoder)
        return false;
    av_frame_unref(poster.get());
    poster->width = result.width;
    poster->height = result.height;
    poster->format = AV_PIX_FMT_RGB24;
    poster->sample_aspect_ratio = {1, 1};
    if (av_frame_get_buffer(poster.get(), 0) < 0)
        return false;
    const std::array<const std::uint8_t*, 4> planes{result.rgb.data()};
    const std::array<int, 4> strides{3 * result.width};
    av_image_copy(poster->data, poster->linesize, const_cast<const std::uint8_t**>(planes.data()),
                  strides.data(), AV_PIX_FMT_RGB24, result.width, result.height);
    av_packet_unref(packet.get());
    return avcodec_send_frame(encoder.get(), poster.get()) >= 0 &&
           avcodec_send_frame(encoder.get(), nullptr) >= 0 &&
           avcodec_receive_packet(encoder.get(), packet.get()) >= 0;
}

PosterMaker::PosterMaker() {
    silenceLibav();
    m_decoding = std::make_unique<Decoding>();
}

PosterMaker::~PosterMaker() = default;

std::optional<Error> PosterMaker::makePoster(std::span<const std::uint8_t> frame, Poster& poster) {
    if (!isFrameSize(frame.size()))
        return Error{
            "cannot make a poster: " + std::to_string(frame.size()) + " bytes are no DV frame", {}, 0};
    const int result = m_decoding->decode(frame);
    if (result < 0) {
        m_decoding->decoder = openDecoder(); // what it thinks of the damaged frame must not stay
        return Error{"cannot make a poster: the frame cannot be decoded (" + libavText(result) + ")", {}, 0};
    }
    poster.width = kWidth;
    poster.height = factsOfFrame(frame).isWide ? kHeight16By9 : kHeight4By3;
    if (!m_decoding->scale(poster))
        return Error{"cannot make a poster: the picture cannot be scaled", {}, 0};
    return std::nullopt;
}

std::optional<Error> PosterMaker::writePoster(std::span<const std::uint8_t> frame, const std::string& path) {
    Poster poster;
    if (auto error = makePoster(frame, poster))
        return error;
    if (!m_decoding->encode(poster))
        return Error{"cannot write '" + path + "' (the picture cannot be encoded)", {}, 0};

    const auto files = makeOutputFiles();
    std::string partPath;
    int code = files->exists(path) ? EEXIST : 0;
    auto file = code == 0 ? createBeside(*files, path, "part", partPath, code) : nullptr;
    if (!file)
        return fileError("write", path, code);
    const AVPacket& packet = *m_decoding->packet;
    file->write({packet.data, static_cast<std::size_t>(packet.size)}, 0, code);
    file.reset();
    if (code == 0)
        code = files->renameWithoutReplacing(partPath, path);
    if (code == 0)
        return std::nullopt;
    files->remove(partPath);
    return fileError("write", path, code);
}

} // namespace merro::platform::ffmpeg
