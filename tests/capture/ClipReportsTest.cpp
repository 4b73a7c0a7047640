#include "capture/ClipReports.h"

#include "tests/capture/LoggingFixture.h"

namespace merro::test {
namespace {

class ClipReports : public ::testing::Test {
protected:
    platform::KeyValueObserving announcements;
    ClipRecord clip{announcements};
};

TEST_F(ClipReports, aClipOfWhichNothingIsKnownIsReportedWithItsAspectRatioAlone) {
    clip.setClipAspectRatio(1);
    EXPECT_EQ(clipDictionary(clip), (platform::Dictionary{{"clipAspectRatio", 1}}));
}

TEST_F(ClipReports, aReportHoldsEverythingKnownUnderItsKey) {
    const auto date = platform::dateFromCalendar({2005, 3, 17, 10, 0, 0});
    clip.setClipId(platform::Value("a"));
    clip.setClipRecordingDate(date);
    clip.setClipStartTimecode(timecode("00:00:01:20"));
    clip.setClipEndTimecode(timecode("00:00:03:10"));
    const platform::Dictionary info = clipDictionary(clip);
    EXPECT_EQ(info, (platform::Dictionary{
                        {"clipId", "a"},
                        {"clipRecordingDate", date},
                        {"clipStartTimecode", timecode("00:00:01:20")},
                        {"clipEndTimecode", timecode("00:00:03:10")},
                        // 10 - 20 frames borrow a second of 25: 15 frames, 3 - 1 - 1 seconds
                        {"clipDuration",
                         BXMCTimecodeUtils::generateTimecodeValueWithHourMinuteSecondFrame(0, 0, 1, 15)},
                        {"clipAspectRatio", 0}}));
}

TEST_F(ClipReports, thePathsAreNotPartOfAReport) {
    clip.setMoviePath("/m");
    clip.setThumbnailsPath("/t");
    EXPECT_EQ(clipDictionary(clip).size(), 1U);
}

TEST_F(ClipReports, theExportedKeysAreThoseThatHostsKnow) {
    EXPECT_EQ(kBXMCClipId, "clipId");
    EXPECT_EQ(kBXMCMoviePath, "moviePath");
    EXPECT_EQ(kBXMCThumbnailsPath, "thumbnailPath");
    EXPECT_EQ(kBXMCRecapturePath, "recapturePath");
    EXPECT_EQ(kBXMCClipRecordingDate, "clipRecordingDate");
    EXPECT_EQ(kBXMCClipStartTimecode, "clipStartTimecode");
    EXPECT_EQ(kBXMCClipEndTimecode, "clipEndTimecode");
    EXPECT_EQ(kBXMCClipAspectRatio, "clipAspectRatio");
    EXPECT_EQ(kBXMCClipDuration, "clipDuration");
}

TEST_F(ClipReports, theDurationOfAnEarlierClipIsForgottenWhereStartOrEndIsMissing) {
    clip.setClipStartTimecode(timecode("00:00:01:00"));
    clip.setClipEndTimecode(timecode("00:00:02:00"));
    clip.setClipEndTimecode({});
    EXPECT_FALSE(clip.clipDuration());
    clip.setClipDuration(timecode("00:00:01:00"));
    clip.setClipStartTimecode({});
    clip.setClipEndTimecode(timecode("00:00:02:00"));
    EXPECT_FALSE(clip.clipDuration());
}

TEST_F(ClipReports, aFieldIsAnnouncedWhenItChangesAndOnlyThen) {
    Entries seen;
    const auto observation =
        announcements.addObserver("", [&](const std::string& key, platform::Change change) {
            seen.push_back((change == platform::Change::Will ? "will " : "did ") + key);
        });
    clip.setMoviePath("/m");
    clip.setMoviePath("/m");
    clip.setClipAspectRatio(0);
    EXPECT_EQ(seen, (Entries{"will moviePath", "did moviePath"}));
}

} // namespace
} // namespace merro::test
