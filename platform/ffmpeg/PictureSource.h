// Moving test pictures for made tapes, from libavfilter: interlaced, bottom field first, in the size and
// sampling of DV.
//
// One thread at a time.
#pragma once

#include "platform/ffmpeg/Libav.h"
#include "platform/ffmpeg/TapeScenario.h"

#include <optional>
#include <string>
#include <vector>

namespace merro::platform::ffmpeg {

class PictureSource {
public:
    PictureSource() = default;

    /// Opens a named picture, or what libavfilter makes of a description; `label` is left out where the
    /// machine has no fonts.
    [[nodiscard]] std::optional<Error> open(const std::string& picture, const std::string& label,
                                            TapeSystem system);

    /// The next frame; null when the source has no more. Belongs to the source until the next call.
    [[nodiscard]] const AVFrame* next();

    [[nodiscard]] static std::vector<std::string> names();

private:
    int build(const std::string& description);

    FilterGraphOwner m_graph;
    AVFilterContext* m_sink = nullptr;
    FrameOwner m_frame;
};

} // namespace merro::platform::ffmpeg
