// The capture settings: the names under which presets and the user's defaults keep them, and their first
// values.
//
// A preset is a dictionary that the host stores, under the BXMCConf... keys; the component itself reads its
// settings from the user's defaults, under the BXMC... keys. Several spellings differ between the two, and
// the presets that hosts have stored rely on each of them. Constants and free functions, usable on any
// thread.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace merro::platform {
class KeyValueObserving;
class UserDefaults;
} // namespace merro::platform

namespace merro {

/// Preset keys.
inline constexpr std::string_view BXMCConfName = "optionsName"; ///< text, given by the host
inline constexpr std::string_view BXMCConfDetectScene = "detectScenes";
inline constexpr std::string_view BXMCConfNbDropFrame = "nbDropFrame";
inline constexpr std::string_view BXMCConfDetectEndTape = "detectEndTape";
inline constexpr std::string_view BXMCConfDetectEndTapeSecond = "detectEndTapeSecond";
inline constexpr std::string_view BXMCConfActionAfterRecord = "actionAfterRecord";
inline constexpr std::string_view BXMCConfFrameSampling = "grabSamples";
inline constexpr std::string_view BXMCConfSampleInterval = "samplingIntervalInSecs"; ///< seconds
inline constexpr std::string_view BXMCConfCaptureMovie = "grabMovie";
inline constexpr std::string_view BXMCConfCompression = "captureMovieCompression";
inline constexpr std::string_view BXMCConfCompressionData = "captureMovieCompressionData";
inline constexpr std::string_view BXMCConfCompressionSize = "fitSizeTag";
inline constexpr std::string_view BXMCConfMovieVolume = "movieVolume";

/// Keys of the user's defaults.
inline constexpr std::string_view BXMCDetectScene = "detectScene"; ///< boolean: cut at each new take
inline constexpr std::string_view BXMCNbDropFrame = "nbDropFrame"; ///< integer: frames skipped after a cut
inline constexpr std::string_view BXMCDetectEndTape = "detectEndTape"; ///< boolean: stop when frames cease
inline constexpr std::string_view BXMCDetectEndTapeSecond = "detectEndTapeSecond"; ///< integer: seconds
inline constexpr std::string_view BXMCActionAfterRecord =
    "actionAfterRecord";                                                 ///< integer: 2 pause, 1 stop, 0 none
inline constexpr std::string_view BXMCFrameSampling = "frameSampling";   ///< boolean: write sampled frames
inline constexpr std::string_view BXMCSampleInterval = "sampleInterval"; ///< integer: index, not seconds
inline constexpr std::string_view BXMCCaptureMovie = "captureMovie"; ///< boolean: write a movie for each clip
inline constexpr std::string_view BXMCCaptureCompression =
    "captureMovieCompression"; ///< integer: pop-up index
inline constexpr std::string_view BXMCCaptureCompressionData = "captureMovieCompressionData"; ///< data
inline constexpr std::string_view BXMCCaptureCompressionSize =
    "fitSizeTag";                                                         ///< integer: tag of the size pop-up
inline constexpr std::string_view BXMCCaptureMovieVolume = "movieVolume"; ///< float: 0.0 to 1.0
inline constexpr std::string_view BXMCCaptureOldCompression = "captureFormat"; ///< only met in old presets

/// The sampling intervals in seconds that BXMCSampleInterval is an index into.
inline constexpr std::array<std::int32_t, 5> sampleIntervalValue{1, 2, 5, 10, 20};

/// The stored sampling interval in seconds. A stored index outside the table is a mistake of whoever stored
/// it and reads as the nearest entry.
[[nodiscard]] std::int32_t storedSampleInterval(const platform::UserDefaults& defaults);

/// Stores the first value of each setting that the defaults hold no object for, one by one in a fixed order.
/// They are written to the store and not just assumed, so that other programs find them there.
void storeMissingCaptureDefaults(platform::UserDefaults& defaults);

/// Declares which properties of a controller change together with another one.
void declareCaptureDependentKeys(platform::KeyValueObserving& announcements);

} // namespace merro
