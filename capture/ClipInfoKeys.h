// The keys of the dictionaries that describe a clip: the host's answer when one opens, and its report when
// one ends.
#pragma once

#include <string_view>

namespace merro {

/// In the host's answer and echoed in the report: whatever the host knows the clip by.
inline constexpr std::string_view kBXMCClipId = "clipId";
/// In the host's answer, text: where the clip's movie is to be written.
inline constexpr std::string_view kBXMCMoviePath = "moviePath";
/// In the host's answer, text: where the clip's thumbnails file is to be written.
inline constexpr std::string_view kBXMCThumbnailsPath = "thumbnailPath";
/// In the answer and the reports of the recapture controller, text.
inline constexpr std::string_view kBXMCRecapturePath = "recapturePath";

/// In the report when known: the date of the clip's first dated frame.
inline constexpr std::string_view kBXMCClipRecordingDate = "clipRecordingDate";
/// In the report when known: timecodes of the first and of the last frame, and the second minus the first.
inline constexpr std::string_view kBXMCClipStartTimecode = "clipStartTimecode";
inline constexpr std::string_view kBXMCClipEndTimecode = "clipEndTimecode";
inline constexpr std::string_view kBXMCClipDuration = "clipDuration";
/// In every report, integer: the aspect-ratio code (dv/DVConstants.h).
inline constexpr std::string_view kBXMCClipAspectRatio = "clipAspectRatio";

} // namespace merro
