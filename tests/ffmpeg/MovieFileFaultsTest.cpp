// Names, full and broken disks: what is written stays playable, and nothing is overwritten.
#include "ffmpeg/RecordingFixture.h"
#include "platform/ffmpeg/MovieFile.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace merro::test {

class MovieFileFaults : public Recording {
protected:
    static constexpr std::int64_t kReserveBytes = std::int64_t{2} << 20; ///< of a short movie

    /// The frames that the result counts are in the movie, and none other.
    void expectPlayableWith(std::int64_t framesWritten, const std::vector<Bytes>& frames) const {
        const auto movie = readMovie(path);
        ASSERT_TRUE(movie.isReadable);
        EXPECT_EQ(movie.frames, framesWritten);
        const std::vector<Bytes> written(frames.begin(), frames.begin() + framesWritten);
        EXPECT_EQ(movie.video, joined(written));
    }
};

TEST_F(MovieFileFaults, TheFinalNameAppearsOnlyWithTheWholeMovie) {
    const auto frames = framesOf(takeOf(3));
    const auto recorder = start();
    for (const auto& frame : frames)
        recorder->append(sampleOf(frame));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{".0001.mov.part", ".0001.mov.reserve"}));
    recorder->finish();
    EXPECT_EQ(folder.names(), std::vector<std::string>{"0001.mov"});
}

TEST_F(MovieFileFaults, AnExistingFileIsNotOverwritten) {
    writeContents(path, {1, 2, 3});
    const auto recorder = start();
    EXPECT_TRUE(recorder->isFinished());
    const auto result = recorder->result();
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->systemCode, EEXIST);
    EXPECT_FALSE(result.isPlayable);
    EXPECT_EQ(contentsOf(path), (Bytes{1, 2, 3}));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"0001.mov"});
    EXPECT_EQ(told.results().size(), 1U);
}

TEST_F(MovieFileFaults, AFileThatAppearsMeanwhileIsNotOverwrittenAndTheMovieIsKept) {
    useFaultyFiles();
    files->beforeRename = [&] { writeContents(path, {1, 2, 3}); };
    const auto frames = framesOf(takeOf(3));
    const auto result = record(frames);
    ASSERT_TRUE(result.error);
    EXPECT_FALSE(result.isPlayable);
    EXPECT_NE(result.error->text().find(".0001.mov.part"), std::string::npos);
    EXPECT_EQ(contentsOf(path), (Bytes{1, 2, 3}));
    EXPECT_EQ(readMovie(folder.path(".0001.mov.part")).video, joined(frames));
}

TEST_F(MovieFileFaults, APartFileOfAKilledRunIsLeftAlone) {
    writeContents(folder.path(".0001.mov.part"), {7});
    EXPECT_TRUE(record(framesOf(takeOf(2))).isPlayable);
    EXPECT_EQ(contentsOf(folder.path(".0001.mov.part")), Bytes{7});
}

TEST_F(MovieFileFaults, AFolderThatIsMissingIsAnErrorAtOnce) {
    path = folder.path("nowhere/0001.mov");
    const auto recorder = start();
    EXPECT_TRUE(recorder->isFinished());
    ASSERT_TRUE(recorder->result().error);
    EXPECT_NE(recorder->result().error->message.find(path), std::string::npos);
    EXPECT_EQ(recorder->result().error->systemCode, ENOENT);
}

TEST_F(MovieFileFaults, AMovieWithoutFramesLeavesNothing) {
    const auto result = record({});
    EXPECT_TRUE(result.error);
    EXPECT_FALSE(result.isPlayable);
    EXPECT_TRUE(folder.names().empty());
    EXPECT_TRUE(told.problems().empty());
}

TEST_F(MovieFileFaults, OnAFullDiskWhatIsWrittenStaysPlayable) {
    useFaultyFiles();
    files->diskBytes = kReserveBytes + 1'000'000; // the reserve and not quite seven frames
    const auto frames = framesOf(takeOf(20));
    const auto result = record(frames);
    EXPECT_TRUE(result.isPlayable);
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->systemCode, ENOSPC);
    EXPECT_EQ(result.framesWritten, 7); // 7 × (144000 + 7680) > 1000000: the seventh goes into the reserve
    EXPECT_EQ(result.framesLost, 13);
    EXPECT_EQ(told.framesLost(), 13);
    EXPECT_EQ(told.problems().size(), 1U);
    expectPlayableWith(7, frames);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"0001.mov"});
}

TEST_F(MovieFileFaults, AFullDiskIsToldWhileTheTapeStillRuns) {
    useFaultyFiles();
    files->diskBytes = kReserveBytes + 200'000;
    const auto frames = framesOf(takeOf(5));
    const auto recorder = start();
    for (int round = 0; told.problems().empty() && round < 1000; ++round)
        recorder->append(sampleOf(frames[static_cast<std::size_t>(round % 5)]));
    EXPECT_EQ(told.problems().size(), 1U);
    EXPECT_TRUE(told.results().empty());
    recorder->finish();
    EXPECT_EQ(told.results().size(), 1U);
}

TEST_F(MovieFileFaults, ADiskWithoutRoomForTheReserveIsFullAtOnce) {
    useFaultyFiles();
    files->diskBytes = 500'000;
    const auto recorder = start();
    EXPECT_TRUE(recorder->isFinished());
    ASSERT_TRUE(recorder->result().error);
    EXPECT_EQ(recorder->result().error->systemCode, ENOSPC);
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(MovieFileFaults, TheReserveGrowsWithTheIndex) {
    platform::ffmpeg::MovieFile file(files, path);
    ASSERT_FALSE(file.open());
    EXPECT_EQ(files->largestAllocation(), kReserveBytes);
    file.prepareFor(90'000, 0); // an hour
    EXPECT_GE(files->largestAllocation(), (std::int64_t{1} << 20) + 90'000 * 64);
}

TEST_F(MovieFileFaults, ABrokenDiskIsNamedWithItsReason) {
    useFaultyFiles();
    files->failAtBytes = 500'000;
    const auto frames = framesOf(takeOf(10));
    const auto result = record(frames);
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->systemCode, EIO);
    EXPECT_NE(result.error->message.find(path), std::string::npos);
    EXPECT_NE(result.error->message.find("Input/output error"), std::string::npos);
    EXPECT_EQ(result.framesWritten, 3); // the fourth would end beyond 500000
    EXPECT_EQ(result.framesLost, 7);
    EXPECT_FALSE(result.isPlayable); // the index cannot be written either
    EXPECT_EQ(folder.names(), std::vector<std::string>{".0001.mov.part"});
}

TEST_F(MovieFileFaults, AFileSystemForSmallFilesEndsTheMovieInTime) {
    useFaultyFiles();
    files->largestFile = kReserveBytes + 500'000; // room is kept for the index
    files->failAtBytes = files->largestFile;
    files->failWith = EFBIG;
    const auto frames = framesOf(takeOf(10));
    const auto result = record(frames);
    EXPECT_TRUE(result.isPlayable);
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->systemCode, EFBIG);
    EXPECT_EQ(result.framesWritten + result.framesLost, 10);
    EXPECT_GT(result.framesLost, 0);
    EXPECT_GT(result.framesWritten, 0);
    expectPlayableWith(result.framesWritten, frames);
}

TEST_F(MovieFileFaults, OnARealFullDiskWhatIsWrittenStaysPlayable) {
    const std::string disk = folder.path("disk");
    ASSERT_EQ(::mkdir(disk.c_str(), 0700), 0);
    if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=3m") != 0)
        GTEST_SKIP() << "a small disk can be mounted by root only";
    path = disk + "/0001.mov";
    const auto frames = framesOf(takeOf(30));
    const auto result = record(frames);
    EXPECT_TRUE(result.isPlayable);
    EXPECT_GT(result.framesWritten, 5);
    EXPECT_EQ(result.framesWritten + result.framesLost, 30);
    expectPlayableWith(result.framesWritten, frames);
    EXPECT_EQ(::umount(disk.c_str()), 0);
}

} // namespace merro::test
