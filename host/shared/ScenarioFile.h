// Scenarios of demonstration tapes as JSON files: what `merro tape make` reads.
//
//   {
//     "system": "625/50",                 or "525/60"; 625/50 when left out
//     "tailBytes": 0,                     the beginning of one more frame, cut short to so many bytes
//     "takes": [                          at least one, in tape order
//       {
//         "seconds": 4.0,                 or "frames": 100; one of the two
//         "picture": "bars",              a named picture or the description of a libavfilter source
//         "label": "Garden",              written into the picture
//         "sound": "beep",                silence, tone, beep; or {"kind": "tone", "frequency": 440}
//         "aspect": "4:3",                or "16:9"
//         "recordingDate": "2005-03-17T14:03:22",   or "none"; left out: runs on from the take before
//         "dateStandsStill": false,       the same date on every frame
//         "timecode": "01:02:03:04",      or "none"; left out: runs on from the take before
//         "dropFrame": false,             525/60 only
//         "repeatPicturesAfter": 0,       frames to encode before pictures are repeated; 0 encodes all
//         "faults": [
//           {"kind": "noTimecode",        damagedSequences, concealedBlocks, noTimecode, noDate, wrongDate,
//                                         lostSound, noSound
//            "frames": [10, 20],          first and last, counted from 0, both included
//            "sequences": [0, 1],         DIF sequences; all when left out
//            "date": "2005-03-17T14:03:22"}   wrongDate only
//         ],
//         "junkBytesAfter": 0,            bytes that are no frame, behind the take
//         "system": "525/60"              where the take's system is another than the tape's
//       }
//     ]
//   }
#pragma once

#include "platform/ffmpeg/TapeScenario.h"

#include <string>

namespace merro::host {

/// Throws Failure with one line that names the file and the place in it ("takes[2].sound.kind") when it
/// cannot be read, is no JSON, has an unknown key or a value of the wrong kind.
[[nodiscard]] platform::ffmpeg::TapeScenario readScenarioFile(const std::string& path);

/// "2005-03-17T14:03:22" as calendar fields, the numbers taken as they are; false when it has another form.
[[nodiscard]] bool parseWallClock(const std::string& text, platform::CalendarFields& fields);

/// "01:02:03:04" (or "01:02:03;04") as a place in timecode; false when it has another form.
[[nodiscard]] bool parseTimecode(const std::string& text, platform::ffmpeg::TakeTimecode& timecode);

} // namespace merro::host
