// The clip that is being recorded: opened, given frames, ended and reported.
//
// Belongs to whoever has the recording turn. Calls the delegate with nothing locked.
#pragma once

#include "capture/ClipRecord.h"
#include "capture/ClipReports.h"
#include "capture/MovieSwitch.h"
#include "capture/RecordingState.h"
#include "capture/ThumbnailsFile.h"
#include "platform/QTSampleBuffer.h"
#include "platform/UserDefaults.h"

#include <optional>
#include <string>

namespace merro {

class CurrentClip {
public:
    CurrentClip(RecordingState& state, ClipRecord& record, ThumbnailsFile& thumbnails, MovieSwitch& movie,
                ClipReports& reports, const platform::UserDefaults& defaults)
        : m_state(state), m_record(record), m_thumbnails(thumbnails), m_movie(movie), m_reports(reports),
          m_defaults(defaults) {}

    [[nodiscard]] bool isOpen() const { return m_isOpen; }

    /// Asks the host where the clip goes and opens its thumbnails file. Its first frame is the next one
    /// taken.
    void open();

    /// The same for a clip whose first frame is at hand: the frame that ends a preroll or a skip.
    void openWithFrame(const platform::QTSampleBuffer& frame);

    /// Keeps date and aspect ratio of the clip's first dated frame; the aspect ratio of the newest one until
    /// then.
    void describe(const platform::DateRef& currentDate, std::int32_t aspectRatio);

    /// Takes one more frame into the clip, and into its thumbnails file when it is the first or a sample.
    void takeFrame(const platform::QTSampleBuffer& frame);

    /// Ends the clip's files; the movie goes on to the mark that report sets.
    void closeFiles();

    /// Ends the clip that is open, if any, and reports it. `endTimecode` is that of its last frame.
    void report(const TimecodeValue& endTimecode);

    /// Ends the movie of a reported clip at once when no mark will: its last frame had no timecode, or the
    /// host does not hear reports. For when the next frames are in no clip, and no new movie ends the old
    /// one.
    void endMovieWithoutMark();

    /// What a stop reports as the end: the timecode that was current at the clip's newest frame. Frames that
    /// arrive while recording is being switched off move the current timecode on, but are in no clip.
    [[nodiscard]] TimecodeValue newestTimecode() const;

    /// Closes the thumbnails file and opens the one at `path`, if any.
    void setThumbnailsPath(const std::optional<std::string>& path);

private:
    [[nodiscard]] bool isSample(const SMPTETime& timecode) const;

    RecordingState& m_state;
    ClipRecord& m_record;
    ThumbnailsFile& m_thumbnails;
    MovieSwitch& m_movie;
    ClipReports& m_reports;
    const platform::UserDefaults& m_defaults;
    bool m_isOpen = false;
    bool m_hasFrames = false;
    TimecodeValue m_newestTimecode;
};

} // namespace merro
