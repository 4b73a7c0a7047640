#include "platform/ffmpeg/ContainerTape.h"

#include "platform/ffmpeg/DVFrameFacts.h"
#include "platform/ffmpeg/Libav.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <mutex>
#include <utility>
#include <variant>

namespace merro::platform::ffmpeg {

namespace {

struct OpenedContainer {
    InputOwner demuxer;
    int stream = -1;
};

/// Opens the file with the few formats that DV lies in, and no protocol but that of files: a container may
/// not send the reader anywhere else.
int openContainer(const std::string& path, OpenedContainer& opened) {
    silenceLibav();
    AVDictionary* options = nullptr;
    av_dict_set(&options, "format_whitelist", "avi,mov,matroska", 0);
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    AVFormatContext* context = nullptr;
    int result = avformat_open_input(&context, ("file:" + path).c_str(), nullptr, &options);
    av_dict_free(&options);
    if (result < 0)
        return result;
    opened.demuxer.reset(context);
    opened.stream = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (opened.stream < 0) {
        // An AVI of type 1 shows its picture only when it is read.
        result = avformat_find_stream_info(context, nullptr);
        opened.stream = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    }
    for (unsigned stream = 0; stream < context->nb_streams; ++stream)
        if (static_cast<int>(stream) != opened.stream)
            context->streams[stream]->discard = AVDISCARD_ALL;
    return result < 0 ? result : 0;
}

class ContainerTape final : public deck::Tape {
public:
    ContainerTape(std::string path, OpenedContainer opened)
        : m_path(std::move(path)), m_opened(std::move(opened)) {
        const AVStream& stream = *m_opened.demuxer->streams[m_opened.stream];
        const AVRational frame = av_inv_q(stream.avg_frame_rate);
        if (stream.duration > 0 && frame.num > 0 && frame.den > 0)
            m_estimate = av_rescale_q(stream.duration, stream.time_base, frame);
        else // AVI of type 1 does not say
            m_estimate = avio_size(m_opened.demuxer->pb) / static_cast<std::int64_t>(kFrameBytes625_50);
        m_estimate = std::max(m_estimate, stream.nb_frames);
    }

    std::optional<deck::TapeFrame> frameAt(std::int64_t index) override {
        if (index < 0 || (m_isEndKnown && index >= framesKnown()))
            return std::nullopt;
        if (index < m_next)
            goBackTo(index);
        while (auto packet = nextFrame()) {
            if (m_next++ == index)
                return frameOf(std::move(packet));
        }
        return std::nullopt;
    }

    std::int64_t frameCount() const override {
        return m_isEndKnown ? framesKnown() : std::max(m_estimate, framesKnown());
    }

    bool isFrameCountExact() const override { return m_isEndKnown; }

    std::vector<deck::TapeFinding> findings() const override {
        const std::lock_guard lock(m_findingsMutex);
        return m_findings;
    }

private:
    std::int64_t framesKnown() const { return static_cast<std::int64_t>(m_times.size()); }

    static deck::TapeFrame frameOf(PacketOwner packet) {
        const std::shared_ptr<const AVPacket> owner(
            packet.release(), [](const AVPacket* held) { LibavDeleter()(const_cast<AVPacket*>(held)); });
        return {FrameBytes(owner, {owner->data, static_cast<std::size_t>(owner->size)}), owner->pos};
    }

    /// The stored frame with number m_next; null at the end.
    PacketOwner nextFrame() {
        PacketOwner packet = m_pending ? std::move(m_pending) : readFrame();
        if (!packet)
            m_isEndKnown = true;
        else if (m_next == framesKnown())
            m_times.push_back(packet->dts);
        return packet;
    }

    PacketOwner readFrame() {
        PacketOwner packet(notNull(av_packet_alloc()));
        while (m_opened.demuxer && av_read_frame(m_opened.demuxer.get(), packet.get()) >= 0) {
            if (packet->stream_index == m_opened.stream) {
                if (isFrameSize(static_cast<std::size_t>(packet->size)))
                    return packet;
                report(*packet);
            }
            av_packet_unref(packet.get());
        }
        return nullptr;
    }

    /// Makes an earlier frame, `index` or one before it, the next one.
    void goBackTo(std::int64_t index) {
        m_pending.reset();
        const std::int64_t time = m_times[static_cast<std::size_t>(index)];
        if (av_seek_frame(m_opened.demuxer.get(), m_opened.stream, time, AVSEEK_FLAG_BACKWARD) >= 0) {
            m_pending = readFrame();
            const auto found =
                std::lower_bound(m_times.begin(), m_times.begin() + index + 1,
                                 m_pending ? m_pending->dts : std::numeric_limits<std::int64_t>::max());
            if (found != m_times.begin() + index + 1 && *found == m_pending->dts) {
                m_next = found - m_times.begin();
                return;
            }
        }
        // Not every file has an index that can be trusted: from the start, then.
        m_pending.reset();
        m_opened = {};
        m_next = 0;
        (void)openContainer(m_path, m_opened); // a file that is gone has no more frames
    }

    void report(const AVPacket& packet) {
        if (packet.pos <= m_lastFinding)
            return; // read before
        m_lastFinding = packet.pos;
        const std::lock_guard lock(m_findingsMutex);
        m_findings.push_back(
            {packet.pos, packet.size,
             "a stored frame of " + std::to_string(packet.size) + " bytes, which is no DV frame"});
    }

    std::string m_path;
    OpenedContainer m_opened;
    std::int64_t m_estimate = 0;
    std::int64_t m_next = 0;           ///< the number of the frame that is read next
    PacketOwner m_pending;             ///< frame m_next, where it has been read already
    std::vector<std::int64_t> m_times; ///< the time of every frame seen so far, in the stream's own units
    bool m_isEndKnown = false;
    std::int64_t m_lastFinding = -1;
    mutable std::mutex m_findingsMutex;
    std::vector<deck::TapeFinding> m_findings;
};

std::unique_ptr<deck::TapeError> problemOfFile(const std::string& path) {
    const auto problem = [&](deck::TapeProblem kind, Error error) {
        return std::make_unique<deck::TapeError>(deck::TapeError{kind, std::move(error)});
    };
    std::error_code code;
    const auto status = std::filesystem::status(path, code);
    if (status.type() == std::filesystem::file_type::not_found)
        return problem(deck::TapeProblem::NoSuchFile, fileError("open", path, ENOENT));
    if (std::filesystem::is_directory(status))
        return problem(deck::TapeProblem::Folder, fileError("open", path, EISDIR));
    if (std::filesystem::is_regular_file(status) && std::filesystem::file_size(path, code) == 0)
        return problem(deck::TapeProblem::Empty, {"'" + path + "' is empty", {}, 0});
    return nullptr;
}

deck::TapeError problemOfOpening(const std::string& path, int result) {
    const int code = AVUNERROR(result);
    if (code > 0 && code < 200 && result != AVERROR(EINVAL))
        return {deck::TapeProblem::Unreadable, fileError("read", path, code)};
    return {
        deck::TapeProblem::NotDV,
        {"'" + path + "' cannot be read as AVI, QuickTime or Matroska (" + libavText(result) + ")", {}, 0}};
}

/// Why the video of the file is none that a DV camera records; null where it is.
std::unique_ptr<deck::TapeError> problemOfVideo(const std::string& path, const OpenedContainer& opened) {
    const auto problem = [&](deck::TapeProblem kind, const std::string& what) {
        return std::make_unique<deck::TapeError>(
            deck::TapeError{kind, {"'" + path + "' holds " + what, {}, 0}});
    };
    if (opened.stream < 0)
        return problem(deck::TapeProblem::NotDV, "no video");
    const AVCodecParameters& video = *opened.demuxer->streams[opened.stream]->codecpar;
    if (video.codec_id == AV_CODEC_ID_MPEG2VIDEO && video.width >= 1280)
        return problem(deck::TapeProblem::HDV, "HDV, not DV");
    if (video.codec_id != AV_CODEC_ID_DVVIDEO)
        return problem(deck::TapeProblem::NotDV,
                       std::string("video of the kind ") + avcodec_get_name(video.codec_id) + ", not DV");
    return nullptr;
}

} // namespace

deck::TapeOrError openContainerTape(const std::string& path) {
    if (const auto problem = problemOfFile(path))
        return *problem;
    OpenedContainer opened;
    const int result = openContainer(path, opened);
    if (result < 0)
        return problemOfOpening(path, result);
    if (const auto problem = problemOfVideo(path, opened))
        return *problem;
    auto tape = std::make_unique<ContainerTape>(path, std::move(opened));
    if (!tape->frameAt(0)) {
        const auto findings = tape->findings();
        const std::int64_t size = findings.empty() ? 0 : findings.front().lengthBytes;
        const bool isFifty = size == 240000 || size == 288000 || size == 480000 || size == 576000;
        return deck::TapeError{isFifty ? deck::TapeProblem::FiftyMbs : deck::TapeProblem::NotDV,
                               {"'" + path + "' holds " +
                                    (isFifty ? "DV of 50 or 100 Mb/s" : "no whole DV frame") +
                                    ", not DV of 25 Mb/s",
                                {},
                                0}};
    }
    return std::unique_ptr<deck::Tape>(std::move(tape));
}

} // namespace merro::platform::ffmpeg
