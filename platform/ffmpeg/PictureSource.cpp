#include "platform/ffmpeg/PictureSource.h"

extern "C" {
#include <libavfilter/buffersink.h>
}

#include <array>
#include <cctype>
#include <utility>

namespace merro::platform::ffmpeg {

namespace {

struct NamedPicture {
    const char* name;
    const char* description; ///< {size} and {rate} stand for a whole picture and for fields a second
};

constexpr std::array kPictures{
    NamedPicture{"bars", "pal75bars=size={size}:rate={rate}"},
    NamedPicture{"smpte", "smptebars=size={size}:rate={rate}"},
    NamedPicture{"testcard", "testsrc2=size={size}:rate={rate}"},
    NamedPicture{"clock", "testsrc=size={size}:rate={rate}"},
    NamedPicture{"fractal", "mandelbrot=size={size}:rate={rate}"},
    NamedPicture{"gradients", "gradients=size={size}:rate={rate}:seed=7:speed=0.02:nb_colors=4:c0=#D04020:c1="
                              "#2060C0:c2=#40A040:c3=#F0D060"},
    NamedPicture{"life",
                 "life=size=90x72:rate=12:seed=3:ratio=0.3:mold=12:life_color=#F0C040:death_color=#204060:"
                 "mold_color=#102030"},
    NamedPicture{"triangles", "sierpinski=size={size}:rate={rate}:seed=5"},
    NamedPicture{"plasma", "nullsrc=size=180x144:rate={rate},format=yuv444p,"
                           "geq=lum='128+50*sin(X/14+T*2)+50*sin(Y/11+T*3)':"
                           "cb='128+90*sin((X+Y)/40+T)':cr='128+90*cos((X-Y)/36+T)'"},
};

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    for (auto place = text.find(what); place != std::string::npos; place = text.find(what, place + by.size()))
        text.replace(place, what.size(), by);
    return text;
}

std::string sourceOf(const std::string& picture) {
    for (const auto& named : kPictures)
        if (picture == named.name)
            return named.description;
    return picture;
}

std::string escaped(const std::string& text, const std::string& characters) {
    std::string result;
    for (const char character : text) {
        if (characters.find(character) != std::string::npos)
            result += '\\';
        result += character;
    }
    return result;
}

/// Once for the filter's options, once for the graph.
std::string drawText(const std::string& label) {
    return ",drawtext=expansion=none:fontsize=44:fontcolor=white:box=1:boxcolor=black@0.6:boxborderw=12:"
           "x=(w-text_w)/2:y=h-120:text=" +
           escaped(escaped(label, "\\':"), "\\'[],;");
}

} // namespace

std::optional<Error> PictureSource::open(const std::string& picture, const std::string& label,
                                         TapeSystem system) {
    silenceLibav();
    const bool is525 = system == TapeSystem::System525_60;
    const std::string size = is525 ? "720x480" : "720x576";
    const std::string rate = is525 ? "60000/1001" : "50";
    // Fields are made one by one and woven together, so that what moves is combed as it is on tapes.
    const std::string before = ",fps=" + rate + ",scale=" + replaced(size, "x", ":") +
                               ":out_color_matrix=bt601:out_range=tv,setsar=1,format=yuv444p";
    const std::string after =
        std::string(",format=") + (is525 ? "yuv411p" : "yuv420p") + ",tinterlace=mode=interleave_bottom";
    const std::string source = replaced(replaced(sourceOf(picture), "{size}", size), "{rate}", rate);
    int result = label.empty() ? AVERROR(EINVAL) : build(source + before + drawText(label) + after);
    if (result < 0)
        result = build(source + before + after);
    if (result < 0)
        return Error{"'" + picture + "' is no picture (" + libavText(result) + ")",
                     "use one of the named pictures, or the description of a video source as FFmpeg has them",
                     0};
    m_frame.reset(notNull(av_frame_alloc()));
    return std::nullopt;
}

int PictureSource::build(const std::string& description) {
    m_graph.reset(notNull(avfilter_graph_alloc()));
    m_graph->nb_threads = 1;
    m_sink = nullptr;
    int result = avfilter_graph_create_filter(&m_sink, avfilter_get_by_name("buffersink"), "out", nullptr,
                                              nullptr, m_graph.get());
    if (result < 0)
        return result;
    AVFilterInOut* inputs = nullptr;
    AVFilterInOut* outputs = nullptr;
    result = avfilter_graph_parse2(m_graph.get(), description.c_str(), &inputs, &outputs);
    if (result >= 0 && (inputs != nullptr || outputs == nullptr || outputs->next != nullptr))
        result = AVERROR(EINVAL); // no source, or more than one picture
    if (result >= 0)
        result = avfilter_link(outputs->filter_ctx, static_cast<unsigned>(outputs->pad_idx), m_sink, 0);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    return result < 0 ? result : avfilter_graph_config(m_graph.get(), nullptr);
}

const AVFrame* PictureSource::next() {
    av_frame_unref(m_frame.get());
    return av_buffersink_get_frame(m_sink, m_frame.get()) < 0 ? nullptr : m_frame.get();
}

std::vector<std::string> PictureSource::names() {
    std::vector<std::string> names;
    names.reserve(kPictures.size());
    for (const auto& picture : kPictures)
        names.emplace_back(picture.name);
    return names;
}

} // namespace merro::platform::ffmpeg
