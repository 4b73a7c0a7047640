// What shall be on a tape that TapeMaker makes. Plain values.
#pragma once

#include "platform/Date.h"
#include "platform/deck/DVFrameBuilder.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace merro::platform::ffmpeg {

using TapeSystem = deck::DVSystem;
enum class TapeAspect { Aspect4By3, Aspect16By9 };

enum class TakeSoundKind {
    Silence,
    Tone, ///< a sine of `frequency`
    Beep, ///< a tenth of a second of the sine at the start of every second
};

struct TakeSound {
    TakeSoundKind kind = TakeSoundKind::Beep;
    double frequencyInHertz = 1000;
};

/// A place in tape timecode. Not range-checked: a tape may say anything.
struct TakeTimecode {
    int hours = 0;
    int minutes = 0;
    int seconds = 0;
    int frames = 0;
};

enum class TimecodeCourse {
    RunsOn,   ///< from the frame before; from `timecode`, or 00:00:00:00, on the first take
    StartsAt, ///< with `timecode`
    None,
};

enum class DateCourse {
    Runs,        ///< starts with `recordingDate` and runs with the tape
    StandsStill, ///< `recordingDate` on every frame
    None,
};

enum class TakeFaultKind {
    DamagedSequences, ///< the sequences named have their subcode and VAUX overwritten with FF
    ConcealedBlocks,  ///< every video block of the sequences named says it was concealed
    NoTimecode,       ///< no timecode in the sequences named
    NoDate,           ///< no recording date in the sequences named
    WrongDate,        ///< `date` instead of the recording date
    LostSound,        ///< every audio block says its samples are lost
    NoSound,          ///< no audio source pack: the frame has no sound at all
};

/// Something wrong with frames `firstFrame` to `lastFrame` of a take (both included, counted from 0).
struct TakeFault {
    TakeFaultKind kind = TakeFaultKind::NoTimecode;
    std::int64_t firstFrame = 0;
    std::int64_t lastFrame = 0;
    std::vector<int> sequences; ///< counted from 0; all when empty
    CalendarFields date;        ///< for WrongDate
};

struct Take {
    /// Length: frames when not 0, else seconds.
    std::int64_t frames = 0;
    double seconds = 0;

    /// One of TapeMaker::pictureNames(), or a description of a libavfilter source ("testsrc2",
    /// "mandelbrot=…").
    std::string picture = "bars";
    std::string label; ///< written into the picture where the machine has fonts; may be empty
    TakeSound sound;

    TapeAspect aspect = TapeAspect::Aspect4By3;

    DateCourse dateCourse = DateCourse::Runs;
    std::optional<CalendarFields> recordingDate; ///< none continues the date of the take before

    TimecodeCourse timecodeCourse = TimecodeCourse::RunsOn;
    TakeTimecode timecode;
    bool dropFrame = false; ///< 525/60 only

    /// Encode this many frames and repeat them under running timecode and dates: long takes become cheap. 0
    /// encodes every frame. Rounded up so that the sound fits.
    std::int64_t repeatPicturesAfterInFrame = 0;

    std::vector<TakeFault> faults;

    /// Bytes that are no DV frame, put behind the take.
    std::int64_t junkBytesAfter = 0;

    /// The television system of this take, where it is another than the scenario's.
    std::optional<TapeSystem> system;
};

struct TapeScenario {
    TapeSystem system = TapeSystem::System625_50;
    std::vector<Take> takes;
    std::int64_t tailBytes = 0; ///< the beginning of one more frame, cut short to this many bytes; 0 for none
};

} // namespace merro::platform::ffmpeg
