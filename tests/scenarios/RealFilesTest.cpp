// The same tapes with the files that a user gets: movies written by FFmpeg's libraries and read back as a
// player does, thumbnails on disk.
#include "capture/CaptureDefaults.h"
#include "platform/ffmpeg/MovieRecorder.h"
#include "platform/native/BackgroundFiles.h"
#include "tests/ffmpeg/MovieReader.h"
#include "tests/platform/TemporaryFolder.h"
#include "tests/scenarios/LoggingWorld.h"

#include <filesystem>

namespace merro::test {
namespace {

class RealFiles : public testing::Test {
protected:
    LoggingWorld& log(const TapeScript& script, const std::function<void(LoggingWorld&)>& settings = {}) {
        Equipment equipment;
        equipment.files = &files;
        equipment.recorders = &recorders;
        equipment.folder = folder.path("");
        world = std::make_unique<LoggingWorld>(script, equipment);
        if (settings)
            settings(*world);
        world->log();
        files.drain();
        return *world;
    }

    [[nodiscard]] std::vector<int> thumbnails(const std::string& clip) const {
        const std::string contents = platform::TemporaryFolder::contents(folder.path(clip + ".thumbnails"));
        const std::vector<std::uint8_t> bytes(contents.begin(), contents.end());
        return world->script.framesIn(bytes);
    }
    [[nodiscard]] ReadMovie movie(const std::string& clip) const {
        return readMovie(folder.path(clip + ".mov"));
    }

    platform::TemporaryFolder folder;
    platform::native::BackgroundFiles files;
    platform::ffmpeg::MovieRecorderFactory recorders;
    std::unique_ptr<LoggingWorld> world;
};

TEST_F(RealFiles, everyTakeIsAMovieThatPlayersOpenWithItsFramesByteForByte) {
    log(TapeScript()
            .take({.frames = 60, .timecode = "01:00:00:00", .date = "14:00:00"})
            .take({.frames = 40, .timecode = "01:00:02:10", .date = "15:30:00", .isWide = true})
            .take({.frames = 1, .timecode = "01:00:04:00", .date = "16:00:00"}));

    const ReadMovie first = movie("0001");
    const ReadMovie second = movie("0002");
    const ReadMovie third = movie("0003");
    EXPECT_TRUE(first.isReadable && second.isReadable && third.isReadable);
    EXPECT_EQ(world->script.framesIn(first.video), frames(0, 59));
    EXPECT_EQ(world->script.framesIn(second.video), frames(60, 99));
    EXPECT_EQ(world->script.framesIn(third.video), frames(100, 100));
    EXPECT_EQ(first.timecode, "01:00:00:00");
    EXPECT_EQ(second.timecode, "01:00:02:10");
    EXPECT_EQ(thumbnails("0001"), (std::vector{0, 50, 59}));
    EXPECT_EQ(thumbnails("0002"), (std::vector{60, 99}));
    EXPECT_EQ(thumbnails("0003"), (std::vector{100}));
    EXPECT_EQ(folder.fileCount(), 6U) << "three movies, three thumbnails files, nothing left over";
}

TEST_F(RealFiles, a525TapeWithSkippedFramesIsTheSame) {
    log(TapeScript()
            .take({.frames = 45,
                   .timecode = "00:00:00:00",
                   .date = "14:00:00",
                   .system = DVSystem::System525_60})
            .take({.frames = 45,
                   .timecode = "00:00:01:15",
                   .date = "15:00:00",
                   .system = DVSystem::System525_60}),
        [](LoggingWorld& settings) { settings.set(BXMCNbDropFrame, 5); });

    EXPECT_EQ(world->script.framesIn(movie("0001").video), frames(0, 44));
    EXPECT_EQ(world->script.framesIn(movie("0002").video), frames(50, 89));
    EXPECT_EQ(movie("0001").frameRate, "30000/1001");
    EXPECT_EQ(thumbnails("0002"), (std::vector{50, 89}));
}

TEST_F(RealFiles, aMovieCannotHoldTwoTelevisionSystemsAndTheThumbnailsCan) {
    log(TapeScript()
            .take({.frames = 30, .timecode = "00:00:00:00", .date = "14:00:00"})
            .take({.frames = 30,
                   .timecode = "00:00:01:05",
                   .date = "14:00:01",
                   .system = DVSystem::System525_60}),
        [](LoggingWorld& settings) { settings.set(BXMCSampleInterval, 0); });

    EXPECT_EQ(world->script.framesIn(movie("0001").video), frames(0, 29));
    EXPECT_EQ(world->messages().size(), 4U) << "one clip: with scene detection, cuts change files";
    EXPECT_EQ(thumbnails("0001"), (std::vector{0, 25, 55, 59}));
    EXPECT_EQ(world->framework.framesLost(), 30) << "counted, not silent";
}

TEST_F(RealFiles, withoutSceneDetectionEveryFrameAfterAChangeOfTheSystemIsInTheNextMovieOrCountedAsLost) {
    log(TapeScript()
            .take({.frames = 30, .timecode = "00:00:00:00", .date = "14:00:00"})
            .take({.frames = 30,
                   .timecode = "00:00:01:05",
                   .date = "14:00:01",
                   .system = DVSystem::System525_60}),
        [](LoggingWorld& settings) { settings.set(BXMCDetectScene, false); });

    EXPECT_EQ(world->script.framesIn(movie("0001").video), frames(0, 29));
    // When the movie's thread finds out is not repeatable: up to 64 frames may be waiting for it.
    const std::vector<int> second = world->script.framesIn(movie("0002").video);
    EXPECT_EQ(static_cast<std::int64_t>(second.size()) + world->framework.framesLost(), 30);
}

TEST_F(RealFiles, aControllerThatIsDestroyedWhileRecordingLeavesWholeFiles) {
    Equipment equipment;
    equipment.files = &files;
    equipment.recorders = &recorders;
    equipment.folder = folder.path("");
    world = std::make_unique<LoggingWorld>(
        TapeScript().take({.frames = 100, .timecode = "00:00:00:00", .date = "14:00:00"}), equipment);
    world->start();
    world->playTo(69);
    world->controller.reset();
    files.drain();

    EXPECT_EQ(world->script.framesIn(movie("0001").video), frames(0, 69));
    EXPECT_EQ(thumbnails("0001"), (std::vector{0, 50, 69}));
    EXPECT_EQ(folder.fileCount(), 2U);
}

} // namespace
} // namespace merro::test
