#include "host/shared/ClipLedger.h"

#include "capture/ClipInfoKeys.h"
#include "host/shared/Catalogue.h"
#include "host/shared/Failure.h"
#include "host/shared/Movies.h"
#include "tests/host/TemporaryFolder.h"
#include "tests/host/TestTape.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace merro::host::test {
namespace {

using platform::Dictionary;
using testing::HasSubstr;
using testing::IsEmpty;

struct ClipLedgerTest : testing::Test {
    TemporaryFolder home;
    std::mutex mutex;
    std::vector<std::string> lines;
    std::atomic<std::int64_t> framesLost = 0;
    RunMessages messages{listener()};
    LoggingFolder folder{home / "clips"};
    CatalogueKeeper keeper{{folder.cataloguePath(), folder.clipsJsonPath()}, {}, {}};
    platform::native::BackgroundFiles files;
    ClipLedger ledger{folder, keeper, files, messages, settings()};

    RunListener listener() {
        RunListener listener;
        listener.line = [this](const std::string& line) {
            const std::lock_guard lock(mutex);
            lines.push_back(line);
        };
        return listener;
    }
    ClipLedger::Settings settings() {
        ClipLedger::Settings settings;
        settings.firstNumber = 5;
        settings.writePoster = movieLibrary().makePosterWriter();
        settings.framesLost = [this] { return framesLost.load(); };
        return settings;
    }
    static Dictionary report(const Dictionary& answer) {
        return {{std::string(kBXMCClipId), *find(answer, kBXMCClipId)},
                {std::string(kBXMCClipStartTimecode), TimecodeValue::valueWithSMPTETime({})},
                {std::string(kBXMCClipAspectRatio), 1}};
    }
    void writeThumbnails(const Dictionary& answer, const std::string& bytes) {
        writeFile(find(answer, kBXMCThumbnailsPath)->stringValue(), bytes);
    }
    ClipEntry kept() {
        files.drain();
        ledger.finish();
        keeper.finish();
        return keeper.clipsOfThisRun().at(0);
    }
    platform::session::RecordingResult movie(std::int64_t lost, bool isPlayable) {
        platform::session::RecordingResult result;
        result.path = folder.path() + "/0005.mov";
        result.framesLost = lost;
        result.isPlayable = isPlayable;
        if (!isPlayable)
            result.error = platform::Error{"The disk is full", "", ENOSPC};
        return result;
    }
};

TEST_F(ClipLedgerTest, ThumbnailsGetTheirNameWhenTheyAreWholeAndAPosterIsMadeOfTheFirstFrame) {
    const Dictionary answer = ledger.willRecord();
    EXPECT_EQ(find(answer, kBXMCClipId)->stringValue(), "0005");
    EXPECT_EQ(find(answer, kBXMCMoviePath)->stringValue(), folder.path() + "/0005.mov");
    writeThumbnails(answer,
                    testTape({{2, CalendarFields{2005, 3, 17, 14, 3, 22}, 0}}, DVSystem::System525_60));
    ledger.didRecord(report(answer));
    const ClipEntry clip = kept();
    EXPECT_EQ(clip.thumbnailPath, "0005.thumbnails");
    EXPECT_EQ(clip.posterPath, "0005.png");
    EXPECT_EQ(readFile(folder.path() + "/0005.thumbnails").size(), 240'000U);
    EXPECT_TRUE(readFile(folder.path() + "/0005.png").starts_with("\x89PNG"));
}

TEST_F(ClipLedgerTest, AClipThatGotNoFrameLeavesNoFile) {
    const Dictionary answer = ledger.willRecord();
    writeThumbnails(answer, "");
    ledger.didRecord(report(answer));
    EXPECT_FALSE(kept().thumbnailPath);
    EXPECT_FALSE(std::filesystem::exists(find(answer, kBXMCThumbnailsPath)->stringValue()));
}

TEST_F(ClipLedgerTest, NothingThatHasTheNameOfTheThumbnailsAlreadyIsOverwritten) {
    const Dictionary answer = ledger.willRecord();
    writeFile(folder.path() + "/0005.thumbnails", "somebody else's");
    writeThumbnails(answer, "frames");
    ledger.didRecord(report(answer));
    EXPECT_FALSE(kept().thumbnailPath);
    EXPECT_EQ(readFile(folder.path() + "/0005.thumbnails"), "somebody else's");
    EXPECT_EQ(readFile(find(answer, kBXMCThumbnailsPath)->stringValue()), "frames");
    EXPECT_TRUE(messages.hasFailed());
}

TEST_F(ClipLedgerTest, FramesLostAreThoseThatWereLostWhileTheClipWasOpen) {
    framesLost = 100; // before the clip
    const Dictionary answer = ledger.willRecord();
    framesLost = 107;
    ledger.didRecord(report(answer));
    framesLost = 200;                     // after it
    ledger.movieFinished(movie(4, true)); // 4 of the 7 were lost in front of the disk
    const ClipEntry clip = kept();
    EXPECT_EQ(clip.framesLost, 7);
    EXPECT_EQ(clip.moviePath, "0005.mov");
}

TEST_F(ClipLedgerTest, FramesGivenUpAfterTheReportAreCountedToo) {
    const Dictionary answer = ledger.willRecord();
    ledger.didRecord(report(answer));
    ledger.movieFinished(movie(9, false)); // the disk was full when the last of them came to it
    EXPECT_EQ(kept().framesLost, 9);
}

TEST_F(ClipLedgerTest, AMovieThatFailsBeforeItsClipHasEndedIsNotForgotten) {
    const Dictionary answer = ledger.willRecord();
    ledger.movieFinished(movie(4, false));
    ledger.didRecord(report(answer));
    const ClipEntry clip = kept();
    EXPECT_FALSE(clip.moviePath);
    EXPECT_EQ(clip.framesLost, 4);
    EXPECT_EQ(clip.problem, "The disk is full");
    EXPECT_TRUE(messages.hasFailed());
}

TEST_F(ClipLedgerTest, AClipWithoutAMovieIsToldWithTheReason) {
    Dictionary withoutTimecode = report(ledger.willRecord());
    withoutTimecode.erase(std::string(kBXMCClipStartTimecode));
    ledger.didRecord(withoutTimecode);
    EXPECT_EQ(kept().problem, "no movie: the tape has no timecode here");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], HasSubstr("got no movie"));
    EXPECT_FALSE(messages.hasFailed());
}

TEST_F(ClipLedgerTest, ACauseThatHitsManyFilesIsToldOnce) {
    messages.fail(platform::Error{"a.mov", "no space", ENOSPC});
    messages.fail(platform::Error{"b.mov", "no space", ENOSPC});
    messages.fail(platform::Error{"c.mov", "not allowed", EACCES});
    EXPECT_EQ(lines.size(), 2U);
}

TEST(LoggingFolderTest, CountsOnFromEveryFileThatCarriesAClipNumber) {
    TemporaryFolder home;
    std::filesystem::create_directory(home / "clips");
    const LoggingFolder folder(home / "clips");
    EXPECT_EQ(folder.lastNumberOfFiles(), 0);
    for (const char* name : {"/0003.mov", "/0011", "/12.mov", "/photo0100.png", "/99999999999.mov"})
        writeFile(folder.path() + name, "");
    EXPECT_EQ(folder.lastNumberOfFiles(), 3);
    writeFile(folder.path() + "/.0007.thumbnails.part", ""); // left by a run that was killed
    EXPECT_EQ(folder.lastNumberOfFiles(), 7);
    writeFile(folder.path() + "/10000.png", "");
    EXPECT_EQ(folder.lastNumberOfFiles(), 10000);
}

TEST(LoggingFolderTest, TwoRunsDoNotShareAFolder) {
    TemporaryFolder home;
    {
        const LoggingFolder first(home / "clips");
        EXPECT_THROW(LoggingFolder second(home / "clips"), Failure);
    }
    EXPECT_NO_THROW(LoggingFolder third(home / "clips"));
}

} // namespace
} // namespace merro::host::test
