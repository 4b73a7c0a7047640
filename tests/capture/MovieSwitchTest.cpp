#include "capture/MovieSwitch.h"

#include "tests/capture/LoggingFixture.h"

namespace merro::test {
namespace {

class MovieSwitch : public ::testing::Test {
protected:
    MovieSwitch() { clip.setMoviePath("/clip.mov"); }

    void deliver(const std::string& at,
                 platform::QTSampleBufferSceneChangeType change = platform::QTSampleBufferNoSceneChange) {
        movieSwitch.movieDetection({platform::MediaType::Video, {}, timecode(at), change});
    }
    [[nodiscard]] Entries journal() const { return sharedJournal->entries(); }

    std::shared_ptr<Journal> sharedJournal = std::make_shared<Journal>();
    std::shared_ptr<FakeMovieFileOutput> output = std::make_shared<FakeMovieFileOutput>(1, sharedJournal);
    RecordingLog log;
    platform::KeyValueObserving announcements;
    ClipRecord clip{announcements};
    merro::MovieSwitch movieSwitch{output, clip, log};
};

TEST_F(MovieSwitch, nothingHappensWithoutMarks) {
    deliver("01:00:00:00", platform::QTSampleBufferExplicitSceneChange);
    EXPECT_TRUE(journal().empty());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(MovieSwitch, theMovieStartsAtTheFirstFrameThatIsNotBeforeTheStartMark) {
    movieSwitch.timecodeStartValue.set(timecode("01:02:03:04"));
    deliver("01:02:03:03");
    EXPECT_TRUE(journal().empty());
    deliver("01:02:03:04");
    EXPECT_EQ(journal(), (Entries{"1 record /clip.mov"}));
    EXPECT_EQ(log.lines(), (Entries{"START (01:02:03.04)"}));
    EXPECT_FALSE(movieSwitch.timecodeStartValue.get());
    deliver("01:02:03:05");
    EXPECT_EQ(journal().size(), 1U);
}

TEST_F(MovieSwitch, aFrameAfterTheStartMarkStartsTheMovieToo) {
    movieSwitch.timecodeStartValue.set(timecode("01:02:03:04"));
    deliver("01:02:03:05");
    EXPECT_EQ(log.lines(), (Entries{"START (01:02:03.04)"}));
}

TEST_F(MovieSwitch, aClipWithoutMoviePathRecordsToNoFile) {
    clip.setMoviePath(std::nullopt);
    movieSwitch.timecodeStartValue.set(timecode("01:02:03:04"));
    deliver("01:02:03:04");
    EXPECT_EQ(journal(), (Entries{"1 record nothing"}));
}

TEST_F(MovieSwitch, theMovieEndsAtTheFirstFrameAfterTheEndMark) {
    movieSwitch.timecodeEndValue.set(timecode("01:02:03:04"));
    deliver("01:02:03:04");
    EXPECT_TRUE(journal().empty());
    deliver("01:02:03:05");
    EXPECT_EQ(journal(), (Entries{"1 record nothing"}));
    EXPECT_EQ(log.lines(), (Entries{"END (01:02:03.04)"}));
    EXPECT_FALSE(movieSwitch.timecodeEndValue.get());
}

TEST_F(MovieSwitch, aBreakInTheTimecodeEndsTheMovieAsWell) {
    for (const auto change : {platform::QTSampleBufferTimeStampDiscontinuitySceneChange,
                              platform::QTSampleBufferExplicitSceneChange}) {
        movieSwitch.timecodeEndValue.set(timecode("01:02:03:04"));
        deliver("00:00:00:00", change);
        EXPECT_FALSE(movieSwitch.timecodeEndValue.get());
    }
    EXPECT_EQ(journal(), (Entries{"1 record nothing", "1 record nothing"}));
}

TEST_F(MovieSwitch, oneFrameEndsOneMovieAndStartsTheNext) {
    movieSwitch.timecodeEndValue.set(timecode("01:02:03:04"));
    movieSwitch.timecodeStartValue.set(timecode("01:02:03:05"));
    deliver("01:02:03:05");
    EXPECT_EQ(journal(), (Entries{"1 record nothing", "1 record /clip.mov"}));
    EXPECT_EQ(log.lines(), (Entries{"END (01:02:03.04)", "START (01:02:03.05)"}));
}

TEST_F(MovieSwitch, aMissingTimecodeCountsAsZero) {
    movieSwitch.timecodeEndValue.set(timecode("00:00:00:01"));
    movieSwitch.timecodeStartValue.set(timecode("00:00:00:00"));
    deliver("");
    EXPECT_EQ(log.lines(), (Entries{"START (00:00:00.00)"}));
}

TEST_F(MovieSwitch, theEndMarkOfAnEarlierClipDoesNotEndTheMovieOfALaterOne) {
    // The timecode began anew between the clips, and the session took it for no break.
    movieSwitch.timecodeEndValue.set(timecode("01:00:00:00"));
    movieSwitch.timecodeStartValue.set(timecode("00:00:00:00"));
    deliver("00:00:00:00");
    deliver("01:00:00:01");
    EXPECT_EQ(journal(), (Entries{"1 record /clip.mov"}));
}

TEST_F(MovieSwitch, aFrameThatIsLeftOutEndsTheMovieOnceAndOnlyWhereThereIsOne) {
    movieSwitch.leaveFrameOut();
    EXPECT_TRUE(journal().empty());
    movieSwitch.timecodeStartValue.set(timecode("00:00:00:00"));
    deliver("00:00:00:00");
    movieSwitch.leaveFrameOut();
    movieSwitch.leaveFrameOut();
    EXPECT_EQ(journal(), (Entries{"1 record /clip.mov", "1 record nothing"}));
}

TEST_F(MovieSwitch, aStopKeepsTheFrameThatIsOnItsWayInTheMovie) {
    platform::QTCaptureFileOutputDelegate delegate;
    delegate.didOutputSampleBuffer = [this](platform::QTCaptureMovieFileOutput&,
                                            const platform::QTSampleBuffer& sample,
                                            const platform::QTCaptureConnection&) {
        movieSwitch.movieDetection(sample);
        movieSwitch.endMovie();
        sharedJournal->add("shown");
    };
    output->setDelegate(std::move(delegate));
    movieSwitch.timecodeStartValue.set(timecode("00:00:00:00"));
    output->deliver({platform::MediaType::Video, {}, timecode("00:00:00:00")});
    EXPECT_EQ(journal(), (Entries{"1 record /clip.mov", "shown", "1 record nothing"}));
    EXPECT_TRUE(movieSwitch.isEnded());
}

TEST_F(MovieSwitch, aStopEndsTheMovieAtOnceWhileNoFrameIsOnItsWay) {
    movieSwitch.endMovie();
    EXPECT_EQ(journal(), (Entries{"1 record nothing"}));
    movieSwitch.timecodeStartValue.set(timecode("00:00:00:00"));
    deliver("00:00:00:00");
    EXPECT_FALSE(movieSwitch.isEnded());
}

// A stop's end takes effect after the frame at hand; a frame of no clip has to end the movie once more.
TEST_F(MovieSwitch, theFrameAtHandIsLeftOutAlsoWhenAStopHasJustEndedTheMovie) {
    movieSwitch.timecodeStartValue.set(timecode("00:00:00:00"));
    deliver("00:00:00:00");
    movieSwitch.endMovie();
    movieSwitch.leaveFrameOut();
    EXPECT_EQ(journal(), (Entries{"1 record /clip.mov", "1 record nothing", "1 record nothing"}));
}

TEST_F(MovieSwitch, hoursOutOfRangeArePrintedAsTheyAre) {
    SMPTETime time;
    time.mHours = -1;
    time.mMinutes = 123;
    movieSwitch.timecodeStartValue.set(TimecodeValue::valueWithSMPTETime(time));
    deliver("");
    EXPECT_EQ(log.lines(), (Entries{"START (-1:123:00.00)"}));
}

} // namespace
} // namespace merro::test
