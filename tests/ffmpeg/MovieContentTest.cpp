// What is inside a recorded movie: picture, timecode, date.
#include "ffmpeg/RecordingFixture.h"

namespace merro::test {

using platform::ffmpeg::TakeFault;
using platform::ffmpeg::TakeFaultKind;
using platform::ffmpeg::TapeAspect;

class MovieContent : public Recording {};

TEST_F(MovieContent, EveryByteOfEveryFrameComesBack) {
    const auto frames = framesOf(takeOf(30));
    const auto result = record(frames);
    EXPECT_EQ(result.framesWritten, 30);
    EXPECT_EQ(result.framesLost, 0);
    EXPECT_TRUE(result.isPlayable);
    EXPECT_FALSE(result.error);
    EXPECT_EQ(readMovie(path).video, joined(frames));
}

TEST_F(MovieContent, DamagedFramesComeBackAsTheyWere) {
    auto frames = framesOf(takeOf(5));
    std::fill(frames[0].begin() + 12000, frames[0].end(),
              0xFF);                                  // only the first sequence of the first frame is left
    std::fill(frames[2].begin(), frames[2].end(), 0); // no header at all
    std::fill(frames[3].begin(), frames[3].begin() + 480, 0xFF);
    EXPECT_EQ(record(frames).framesWritten, 5);
    const auto movie = readMovie(path);
    EXPECT_EQ(movie.video, joined(frames));
    ASSERT_EQ(movie.sounds.size(), 1U);
    EXPECT_EQ(movie.sounds[0].samples.size(), 2U * 5 * 1920);
}

TEST_F(MovieContent, Of625LinesSaysSoInItsHeader) {
    record(framesOf(takeOf(2)));
    const auto movie = readMovie(path);
    EXPECT_EQ(movie.fourcc, "dvcp");
    EXPECT_EQ(movie.sampleAspect, "16:15"); // 720 × 16/15 = 768 = 576 × 4/3
    EXPECT_EQ(movie.frameRate, "25/1");
    EXPECT_TRUE(movie.isBottomFieldFirst);
}

TEST_F(MovieContent, Of525LinesAndWideSaysSoInItsHeader) {
    Take take = takeOf(2);
    take.aspect = TapeAspect::Aspect16By9;
    record(framesOf(take, TapeSystem::System525_60));
    const auto movie = readMovie(path);
    EXPECT_EQ(movie.fourcc, "dvc ");
    EXPECT_EQ(movie.sampleAspect, "32:27"); // 720 × 32/27 = 853.3 = 480 × 16/9
    EXPECT_EQ(movie.frameRate, "30000/1001");
    EXPECT_TRUE(movie.isBottomFieldFirst);
}

TEST_F(MovieContent, TakesTheAspectOfItsFirstFrame) {
    auto frames = framesOf(takeOf(1));
    Take wide = takeOf(1);
    wide.aspect = TapeAspect::Aspect16By9;
    frames.push_back(framesOf(wide).front());
    record(frames);
    EXPECT_EQ(readMovie(path).sampleAspect, "16:15");
}

TEST_F(MovieContent, TimecodeTrackStartsWithTheFirstFramesTimecode) {
    record(framesOf(takeOf(2)), timecodeOf(10, 59, 58, 24));
    EXPECT_EQ(readMovie(path).timecode, "10:59:58:24");
}

TEST_F(MovieContent, DropFrameIsShownWhereTheTapeSaysSo) {
    Take take = takeOf(2);
    take.dropFrame = true;
    record(framesOf(take, TapeSystem::System525_60), timecodeOf(1, 2, 3, 29));
    EXPECT_EQ(readMovie(path).timecode, "01:02:03;29");
}

TEST_F(MovieContent, NonDropTimecodeOf525LinesHasNoSemicolon) {
    record(framesOf(takeOf(2), TapeSystem::System525_60), timecodeOf(1, 2, 3, 29));
    EXPECT_EQ(readMovie(path).timecode, "01:02:03:29");
}

TEST_F(MovieContent, WithoutATimecodeThereIsNoTimecodeTrack) {
    record(framesOf(takeOf(2)));
    EXPECT_EQ(readMovie(path).timecode, "");
}

TEST_F(MovieContent, ATimecodeThatNoClockShowsIsLeftOut) {
    EXPECT_TRUE(record(framesOf(takeOf(2)), timecodeOf(1, 2, 3, 25)).isPlayable); // frames go to 24 here
    EXPECT_EQ(readMovie(path).timecode, "");
}

TEST_F(MovieContent, CreationTimeIsTheFirstRecordingDate) {
    record(framesOf(takeOf(2)));
    EXPECT_EQ(readMovie(path).creationTime, "2005-03-17T14:03:22.000000Z");
}

// The two digits 31 read as 1931: nothing that a camera can have meant.
TEST_F(MovieContent, ADateFromBeforeThereWereDVCamerasIsNoCreationTime) {
    Take take = takeOf(2);
    take.recordingDate = platform::CalendarFields{2031, 12, 31, 23, 59, 59};
    record(framesOf(take));
    EXPECT_EQ(readMovie(path).creationTime, "");
}

TEST_F(MovieContent, ADateThatDoesNotExistIsNoCreationTime) {
    Take take = takeOf(2);
    take.recordingDate = platform::CalendarFields{2005, 0, 0, 14, 3, 22};
    record(framesOf(take));
    EXPECT_EQ(readMovie(path).creationTime, "");
}

} // namespace merro::test
