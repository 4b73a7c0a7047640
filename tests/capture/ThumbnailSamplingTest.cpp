#include "tests/capture/LoggingFixture.h"

namespace merro::test {
namespace {

using ThumbnailSampling = LoggingFixture;

TEST_F(ThumbnailSampling, theFirstFrameThenOneEveryIntervalThenTheLastAreWritten) {
    connectDeck();
    set(BXMCSampleInterval, 1); // 2 seconds: 50 frames
    controller->setRecording(true);
    deliverRun(120, "00:00:00:00", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0, 50, 100, 119}));
}

TEST_F(ThumbnailSampling, aLastFrameThatIsASampleIsNotWrittenAgain) {
    connectDeck();
    set(BXMCSampleInterval, 1);
    controller->setRecording(true);
    deliverRun(51, "00:00:00:00", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0, 50}));
}

TEST_F(ThumbnailSampling, aClipOfOneFrameHasItOnce) {
    connectDeck();
    controller->setRecording(true);
    deliver("00:00:00:00", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0}));
}

TEST_F(ThumbnailSampling, withSamplingOffTheFirstAndTheLastFrameAreWritten) {
    connectDeck();
    set(BXMCFrameSampling, false);
    controller->setRecording(true);
    deliverRun(60, "00:00:00:00", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0, 59}));
}

TEST_F(ThumbnailSampling, aClipWithoutTimecodesHasItsFirstAndItsLastFrame) {
    connectDeck();
    controller->setRecording(true);
    for (int i = 0; i < 60; ++i)
        deliver("", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0, 59}));
}

TEST_F(ThumbnailSampling, aSamplingPointThatIsMissingOnTheTapeIsMadeUpForByTheNextFrame) {
    connectDeck();
    controller->setRecording(true);
    deliver("00:00:00:00", "10:00:00");
    deliver("00:00:00:24", "10:00:00");
    deliver("00:00:01:03", "10:00:00"); // past 00:00:01:00; the next point is 00:00:02:03
    deliver("00:00:02:02", "10:00:00");
    deliver("00:00:02:03", "10:00:00");
    deliver("00:00:02:04", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0, 2, 4, 5}));
}

TEST_F(ThumbnailSampling, theIntervalFollowsTheFrameRateOfTheTimecode) {
    connectDeck();
    controller->setRecording(true);
    const auto deliverAtThirty = [this](const std::string& at) {
        platform::QTSampleBuffer frame = makeFrame(at, "10:00:00");
        SMPTETime time = frame.timecode.SMPTETimeValue();
        time.mType = kSMPTETimeType30Drop;
        frame.timecode = TimecodeValue::valueWithSMPTETime(time);
        deliver(frame);
    };
    deliverAtThirty("00:00:00:10"); // 30 frames on is 00:00:01:10
    deliverAtThirty("00:00:01:09");
    deliverAtThirty("00:00:01:10");
    deliverAtThirty("00:00:01:11");
    deliverAtThirty("00:00:01:12");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0, 2, 4}));
}

TEST_F(ThumbnailSampling, aCutWritesTheLastFrameOfTheOldClipAndTheFirstOfTheNew) {
    connectDeck();
    controller->setRecording(true);
    deliverRun(3, "00:00:00:00", "10:00:00");
    deliverRun(3, "00:00:00:03", "11:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0, 2}));
    EXPECT_EQ(framesIn(thumbnails(2)), (std::vector<int>{3, 5}));
}

TEST_F(ThumbnailSampling, theFrameThatEndsASkipCountsAsWritten) {
    connectDeck();
    set(BXMCNbDropFrame, 1);
    controller->setRecording(true);
    deliver("00:00:00:00", "10:00:00");
    deliver("00:00:00:01", "11:00:00");
    deliver("00:00:00:02", "11:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(2)), (std::vector<int>{2}));
}

TEST_F(ThumbnailSampling, noFrameOfAClipWithoutFileFindsItsWayIntoTheNextFile) {
    connectDeck();
    controller->setRecording(true);
    deliver("00:00:00:00", "10:00:00");
    answer = platform::Dictionary{};
    deliverRun(2, "00:00:00:01", "11:00:00");
    answer.reset();
    deliver("00:00:00:03", "12:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(3)), (std::vector<int>{3}));
}

TEST_F(ThumbnailSampling, aForcedChangeOfFilesLeavesNoFrameInBothFiles) {
    connectDeck();
    set(BXMCDetectScene, false);
    controller->setRecording(true);
    deliverRun(3, "00:00:00:00", "10:00:00");
    surroundings.capture.movieFileOutputs[1]->demandAnotherFile("/1.mov");
    deliverRun(3, "00:00:00:03", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0, 2}));
    EXPECT_EQ(framesIn(thumbnails(2)), (std::vector<int>{3, 5}));
}

TEST_F(ThumbnailSampling, anExistingFileIsOverwrittenInPlaceAndNotCut) {
    connectDeck();
    surroundings.files.put(thumbnails(1), std::vector<std::uint8_t>(144001, 0x55));
    controller->setRecording(true);
    const auto frame = deliver("00:00:00:00", "10:00:00");
    controller->setRecording(false);
    const auto bytes = surroundings.files.file(thumbnails(1)).bytes;
    ASSERT_EQ(bytes.size(), 144001U);
    EXPECT_TRUE(std::equal(frame.bytesForAllSamples.bytes().begin(), frame.bytesForAllSamples.bytes().end(),
                           bytes.begin()));
    EXPECT_EQ(bytes.back(), 0x55);
}

TEST_F(ThumbnailSampling, theNewestUnwrittenFrameIsKeptByReference) {
    connectDeck();
    controller->setRecording(true);
    deliver("00:00:00:00", "10:00:00");
    EXPECT_TRUE(controller->lastFrameData().isNull());
    const auto frame = deliver("00:00:00:01", "10:00:00");
    EXPECT_TRUE(controller->lastFrameData().isSameBuffer(frame.bytesForAllSamples));
    controller->setRecording(false);
    EXPECT_TRUE(controller->lastFrameData().isNull());
}

TEST_F(ThumbnailSampling, settingThePathByHandClosesTheFileWithItsLastFrameAndOpensTheOther) {
    connectDeck();
    controller->setRecording(true);
    deliverRun(2, "00:00:00:00", "10:00:00");
    controller->setThumbnailsPath("/other");
    EXPECT_EQ(framesIn(thumbnails(1)), (std::vector<int>{0, 1}));
    EXPECT_EQ(surroundings.files.file(thumbnails(1)).openNow, 0);
    EXPECT_EQ(surroundings.files.file("/other").openNow, 1);
    deliver("00:00:00:02", "10:00:00");
    controller->setRecording(false);
    EXPECT_EQ(framesIn("/other"), (std::vector<int>{2}));
}

} // namespace
} // namespace merro::test
