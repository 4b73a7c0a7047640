// The fixed numbers of the DV frame (IEC 61834, SMPTE 314M) and the picture's aspect ratios.
//
// Constants and pure functions, usable on any thread. Sizes are in bytes.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace merro {

inline constexpr std::int32_t DIF_SEQ_COUNT_525_60 = 10; ///< DIF sequences in a frame
inline constexpr std::int32_t DIF_SEQ_COUNT_625_50 = 12;
inline constexpr std::int32_t DIF_SEQ_COUNT_MIN = 10;
inline constexpr std::int32_t DIF_SEQ_COUNT_MAX = 12;

inline constexpr std::int32_t BLOCKS_PER_SEQUENCE = 150;
inline constexpr std::int32_t DIF_BLOCK_COUNT_525_60 = 1500;
inline constexpr std::int32_t DIF_BLOCK_COUNT_625_50 = 1800;
inline constexpr std::int32_t BLOCKS_SIZE = 80;
inline constexpr std::int32_t SEQUENCE_SIZE = 12000;

inline constexpr std::int32_t ROW_COUNT_625_50 = 576; ///< lines of the picture
inline constexpr std::int32_t COLUMN_COUNT_625_50 = 720;
inline constexpr std::int32_t ROW_COUNT_525_60 = 480;
inline constexpr std::int32_t COLUMN_COUNT_525_60 = 720;

inline constexpr std::int32_t FRAME_SIZE_525_60 = 120000; ///< 25 Mb/s
inline constexpr std::int32_t FRAME_SIZE_625_50 = 144000;
inline constexpr std::int32_t FRAME_SIZE_525_60_50MBS = 240000;
inline constexpr std::int32_t FRAME_SIZE_625_50_50MBS = 288000;

inline constexpr std::int32_t TIMEBASE_525_60 = 30; ///< timecode frames a second
inline constexpr std::int32_t TIMEBASE_625_50 = 25;

inline constexpr double AVERAGE_FPS_525_60 = 29.97; ///< pictures a second
inline constexpr double AVERAGE_FPS_625_50 = 25.0;

inline constexpr double ASPECT_RATIO_4_3 = 4.0 / 3.0; ///< width / height
inline constexpr double ASPECT_RATIO_16_9 = 16.0 / 9.0;
inline constexpr double ASPECT_RATIO_525_60 = ASPECT_RATIO_4_3;
inline constexpr double ASPECT_RATIO_625_50 = ASPECT_RATIO_4_3;

inline constexpr std::string_view NTSC = "NTSC";
inline constexpr std::string_view PAL = "PAL";
inline constexpr std::string_view NOT_DECODED = "Not decoded";

/// Names and ratios by aspect-ratio code; row 0 is code -1, row 4 code 3. The codes: -1 unknown, 0 16/9, 1
/// 4/3, 2 not set, 3 fixed.
inline constexpr std::array<std::string_view, 5> DVAspectRatioName{"???", "16/9", "4/3", "Not Set", "Fixed"};
inline constexpr std::array<float, 5> DVAspectRatioValues{1.0F, 16.0F / 9.0F, 4.0F / 3.0F, 1.0F, -1.0F};

/// The name of an aspect-ratio code; a code that does not exist is named like -1.
[[nodiscard]] std::string_view DVAspectRatioNameForRatio(int code);

/// The ratio of an aspect-ratio code; a code that does not exist has that of -1.
[[nodiscard]] float DVAspectRatioValueForRatio(int code);

} // namespace merro
