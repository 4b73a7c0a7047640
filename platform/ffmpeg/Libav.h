// Owners for the objects of FFmpeg's libraries, for this folder's sources only.
#pragma once

#include "platform/Error.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/dv_profile.h>
#include <libavfilter/avfilter.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <cstdint>
#include <memory>
#include <new>
#include <string>

namespace merro::platform::ffmpeg {

struct LibavDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
    void operator()(SwsContext* context) const { sws_freeContext(context); }
    void operator()(SwrContext* context) const { swr_free(&context); }
    void operator()(AVIOContext* context) const {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};

struct InputDeleter {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

struct OutputDeleter {
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};

using PacketOwner = std::unique_ptr<AVPacket, LibavDeleter>;
using FrameOwner = std::unique_ptr<AVFrame, LibavDeleter>;
using CodecOwner = std::unique_ptr<AVCodecContext, LibavDeleter>;
using FilterGraphOwner = std::unique_ptr<AVFilterGraph, LibavDeleter>;
using ScalerOwner = std::unique_ptr<SwsContext, LibavDeleter>;
using ResamplerOwner = std::unique_ptr<SwrContext, LibavDeleter>;
using IOOwner = std::unique_ptr<AVIOContext, LibavDeleter>;
using InputOwner = std::unique_ptr<AVFormatContext, InputDeleter>;
using OutputOwner = std::unique_ptr<AVFormatContext, OutputDeleter>;

/// What the libraries' allocating functions return; these never fail but for memory.
template <typename T>
[[nodiscard]] T* notNull(T* object) {
    if (object == nullptr)
        throw std::bad_alloc();
    return object;
}

/// The libraries' own words for one of their errors.
[[nodiscard]] std::string libavText(int code);

/// Keeps the libraries from writing to standard error; what matters is reported by this folder's own errors.
/// The first call works, for the whole process.
void silenceLibav();

/// The system's words for an errno.
[[nodiscard]] std::string systemText(int code);

/// "cannot WHAT 'PATH'", with what the system says and a remedy for a full disk or missing rights.
[[nodiscard]] Error fileError(const std::string& what, const std::string& path, int code);

} // namespace merro::platform::ffmpeg
