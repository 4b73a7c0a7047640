#include "capture/VideoCompression.h"

#include "tests/capture/CompressionFixture.h"

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace merro::test {
namespace {

using platform::Change;
using platform::MediaType;

// --- The marker objects ---

TEST_F(Compression, TheMarkersAreOneObjectEachWithALocalisedName) {
    EXPECT_EQ(QTNoCompressionOptions::noCompressionOptions(), none);
    EXPECT_EQ(QTCustomCompressionOptions::customCompressionOptions(), custom);
    EXPECT_NE(none, custom);
    EXPECT_EQ(none->localizedDisplayName(), "None");
    EXPECT_EQ(custom->localizedDisplayName(), "Custom...");

    QTNoCompressionOptions::localize(PlainLocalization("fr:"));
    QTCustomCompressionOptions::localize(PlainLocalization("fr:"));
    EXPECT_EQ(none->localizedDisplayName(), "fr:None");
    EXPECT_EQ(custom->localizedDisplayName(), "fr:Custom...");

    QTNoCompressionOptions::localize(surroundings.localization);
    QTCustomCompressionOptions::localize(surroundings.localization);
}

// --- The list of choices ---

TEST_F(Compression, TheChoicesAreNoneThePlatformsOwnAndCustom) {
    compression.buildVideoCompressionOptions();

    EXPECT_EQ(compression.allVideoCompressionOptions(),
              (std::vector<CompressionOptionsRef>{none, h264, jpeg, custom}));
    EXPECT_EQ(compression.lastIndex(), 3);
    ASSERT_EQ(popUp->numberOfItems(), 4);
    EXPECT_EQ(popUp->itemAtIndex(0)->title, "None");
    EXPECT_EQ(popUp->itemAtIndex(1)->title, "H.264");
    EXPECT_EQ(popUp->itemAtIndex(3)->title, "Custom...");
    EXPECT_EQ(std::get<CompressionOptionsRef>(popUp->itemAtIndex(2)->representedObject), jpeg);
}

TEST_F(Compression, BuildingTheListIsAnnouncedAroundThePopUpsItems) {
    std::vector<std::pair<std::string, int>> announced;
    const auto observation =
        announcements.addObserver("allVideoCompressionOptions", [&](const std::string&, Change change) {
            announced.emplace_back(change == Change::Will ? "will" : "did", popUp->numberOfItems());
        });

    compression.buildVideoCompressionOptions();

    EXPECT_EQ(announced, (std::vector<std::pair<std::string, int>>{{"will", 0}, {"did", 4}}));
}

TEST_F(Compression, TheStoredChoiceIsSelectedAndApplied) {
    defaults.setObjectForKey(2, "captureMovieCompression");

    compression.buildVideoCompressionOptions();

    EXPECT_EQ(popUp->indexOfSelectedItem(), 2);
    EXPECT_EQ(compression.videoCompressionOptions(), jpeg);
    EXPECT_EQ(applied(), jpeg);
    EXPECT_EQ(defaults.objectForKey("captureMovieCompression"), Value(2));
}

TEST_F(Compression, AStoredChoiceThatThisMachineDoesNotHaveFallsBackToNone) {
    for (const int index : {4, -1}) {
        defaults.setObjectForKey(index, "captureMovieCompression");
        compression.buildVideoCompressionOptions();

        EXPECT_EQ(popUp->indexOfSelectedItem(), 0);
        EXPECT_EQ(compression.videoCompressionOptions(), none);
    }
}

TEST_F(Compression, WithTheLastIndexStoredCustomIsAppliedWithTheStoredSettingsAndNoDialog) {
    defaults.setObjectForKey(3, "captureMovieCompression");
    storeCustomSettings({1, 2, 3});

    compression.buildVideoCompressionOptions();

    EXPECT_TRUE(compression.isCustomVideoCompression());
    EXPECT_EQ(component.dialogsShown, 0);
    EXPECT_EQ(component.settings, (Data{1, 2, 3}));
    ASSERT_NE(appliedCustomOptions(), nullptr);
    EXPECT_EQ(appliedCustomOptions()->codecType(), kCodec);
    EXPECT_EQ(appliedCustomOptions()->sizeMode(), 0);
    EXPECT_EQ(appliedCustomOptions()->sessionOptions(), component.lastSessionOptions);
}

TEST_F(Compression, WorksWithoutAPopUp) {
    VideoCompression other(surroundings.all, announcements, session, output, nullptr, "key");
    defaults.setObjectForKey(1, "captureMovieCompression");

    other.buildVideoCompressionOptions();
    EXPECT_EQ(other.videoCompressionOptions(), h264);

    other.selectItemAtIndex(2);
    EXPECT_EQ(other.videoCompressionOptions(), jpeg);
}

// --- The current choice ---

TEST_F(Compression, BeforeTheListIsMadeThereIsNoChoice) {
    EXPECT_EQ(compression.videoCompressionOptions(), nullptr);
    EXPECT_EQ(compression.lastIndex(), -1);
    EXPECT_FALSE(compression.isCustomVideoCompression());
    EXPECT_TRUE(compression.isCompressed()); // anything but "None" is
    compression.selectItemAtIndex(0);
    EXPECT_EQ(compression.videoCompressionOptions(), nullptr);
}

TEST_F(Compression, TellsPlainCompressedAndCustomApart) {
    compression.buildVideoCompressionOptions();
    EXPECT_FALSE(compression.isCompressed());
    EXPECT_FALSE(compression.isCustomVideoCompression());

    compression.selectItemAtIndex(1);
    EXPECT_TRUE(compression.isCompressed());
    EXPECT_FALSE(compression.isCustomVideoCompression());

    storeCustomSettings({1});
    compression.selectItemAtIndex(3);
    EXPECT_TRUE(compression.isCompressed());
    EXPECT_TRUE(compression.isCustomVideoCompression());
}

TEST_F(Compression, AnotherChoiceStoresTheSelectedIndexAndIsApplied) {
    compression.buildVideoCompressionOptions();
    popUp->selectItemAtIndex(2); // as the user does

    compression.setVideoCompressionOptions(jpeg);

    EXPECT_EQ(defaults.objectForKey("captureMovieCompression"), Value(2));
    EXPECT_EQ(applied(), jpeg);
}

// The stored index is the pop-up's, whatever choice is handed over: a host that sets a choice without
// selecting its item finds the item of the pop-up again at the next start.
TEST_F(Compression, AChoiceSetPastThePopUpStoresThePopUpsIndex) {
    compression.buildVideoCompressionOptions();
    popUp->selectItemAtIndex(1);

    compression.setVideoCompressionOptions(jpeg);

    EXPECT_EQ(defaults.objectForKey("captureMovieCompression"), Value(1));
}

TEST_F(Compression, TheIndexIsStoredBeforeTheChoiceIsApplied) {
    compression.buildVideoCompressionOptions();
    CompressionOptionsRef appliedWhenStored;
    const auto observation = defaults.addObserver("captureMovieCompression",
                                                  [&](const std::string&) { appliedWhenStored = applied(); });

    compression.selectItemAtIndex(2);

    EXPECT_EQ(appliedWhenStored, nullptr); // still the options of "None"
    EXPECT_EQ(applied(), jpeg);
}

TEST_F(Compression, TheCurrentChoiceSetAgainDoesNothing) {
    compression.buildVideoCompressionOptions();
    compression.selectItemAtIndex(1);
    defaults.setObjectForKey(0, "captureMovieCompression");
    const auto before = surroundings.journal->entries();

    compression.setVideoCompressionOptions(h264);

    EXPECT_EQ(surroundings.journal->entries(), before);
    EXPECT_EQ(defaults.objectForKey("captureMovieCompression"), Value(0));
}

TEST_F(Compression, AnotherChoiceIsAnnouncedWithWhatHangsOnIt) {
    compression.buildVideoCompressionOptions();
    std::vector<std::string> announced;
    const auto observation = announcements.addObserver({}, [&](const std::string& key, Change change) {
        announced.push_back((change == Change::Will ? "will " : "did ") + key);
    });

    compression.selectItemAtIndex(1);
    compression.selectItemAtIndex(1);

    EXPECT_EQ(announced,
              (std::vector<std::string>{"will videoCompressionOptions", "will customVideoCompression",
                                        "did videoCompressionOptions", "did customVideoCompression"}));
}

// --- Applying ---

TEST_F(Compression, NoneIsAppliedAsNoOptionsAndOnlyToVideoConnections) {
    compression.buildVideoCompressionOptions();

    const auto all = output->compressionOptions();
    ASSERT_EQ(all.size(), 1U); // the output has a sound connection, too
    EXPECT_EQ(all[0].first, MediaType::Video);
    EXPECT_EQ(all[0].second, nullptr);
}

TEST_F(Compression, ARunningSessionIsStoppedAroundTheChange) {
    compression.buildVideoCompressionOptions();
    giveTheSessionAnInput();
    session->startRunning();
    surroundings.journal->clear();

    compression.updateVideoCompression();

    EXPECT_EQ(surroundings.journal->entries(), (std::vector<std::string>{"stop", "compress", "start"}));
}

TEST_F(Compression, ASessionWithAnInputRunsAfterwardsThoughItDidNotBefore) {
    compression.buildVideoCompressionOptions();
    giveTheSessionAnInput();
    surroundings.journal->clear();

    compression.updateVideoCompression();

    EXPECT_EQ(surroundings.journal->entries(), (std::vector<std::string>{"compress", "start"}));
}

TEST_F(Compression, ASessionWithoutInputIsNotStartedAgain) {
    compression.buildVideoCompressionOptions();
    session->startRunning();
    surroundings.journal->clear();

    compression.updateVideoCompression();

    EXPECT_EQ(surroundings.journal->entries(), (std::vector<std::string>{"stop", "compress"}));
}

TEST_F(Compression, TheSizeTagDecidesTheSizeOfCustomMovies) {
    storeCustomSettings({1});
    defaults.setObjectForKey(3, "captureMovieCompression");
    compression.buildVideoCompressionOptions();
    const std::vector<std::tuple<Value, int, int>> tagsAndSizes{
        {0, 160, 120}, {1, 320, 240}, {2, 640, 480}, {3, 1280, 720},   {4, 1980, 1080},
        {5, 0, 0},     {7, 0, 0},     {-1, 0, 0},    {true, 320, 240}, // as a preset leaves it
    };
    for (const auto& [tag, width, height] : tagsAndSizes) {
        defaults.setObjectForKey(tag, "fitSizeTag");
        compression.updateVideoCompression();

        ASSERT_NE(appliedCustomOptions(), nullptr);
        EXPECT_EQ(appliedCustomOptions()->width(), width) << tag.integerValue();
        EXPECT_EQ(appliedCustomOptions()->height(), height) << tag.integerValue();
    }
}

TEST_F(Compression, CustomWithoutStoredSettingsShowsTheDialogAndStoresWhatIsSet) {
    defaults.setObjectForKey(3, "captureMovieCompression");

    compression.buildVideoCompressionOptions();

    EXPECT_EQ(component.dialogsShown, 1);
    EXPECT_EQ(storedCustomSettings(), Value(component.dialogSettings));
}

TEST_F(Compression, WhenTheComponentFailsCustomIsAppliedWithoutSessionOptions) {
    storeCustomSettings({1});
    defaults.setObjectForKey(3, "captureMovieCompression");
    component.opens = false;

    compression.buildVideoCompressionOptions();

    ASSERT_NE(appliedCustomOptions(), nullptr);
    EXPECT_EQ(appliedCustomOptions()->sessionOptions(), nullptr);
    EXPECT_EQ(appliedCustomOptions()->codecType(), 0U);
    EXPECT_EQ(appliedCustomOptions()->width(), 640);
}

TEST_F(Compression, ANewObjectIsAppliedEachTimeCustomIs) {
    storeCustomSettings({1});
    defaults.setObjectForKey(3, "captureMovieCompression");
    compression.buildVideoCompressionOptions();
    const CompressionOptionsRef before = applied();

    compression.updateVideoCompression();

    EXPECT_NE(applied(), before);
}

// --- The dialog ---

TEST_F(Compression, ChangingCustomSettingsOpensTheDialogOnTheStoredOnesAndAppliesTheNewOnes) {
    storeCustomSettings({1, 1});
    defaults.setObjectForKey(3, "captureMovieCompression");
    compression.buildVideoCompressionOptions();

    compression.changeCustomCompression();

    EXPECT_EQ(component.dialogsShown, 1);
    EXPECT_EQ(component.settingsWhenDialogOpened, (Data{1, 1}));
    EXPECT_EQ(storedCustomSettings(), Value(component.dialogSettings));
    EXPECT_EQ(component.settings, component.dialogSettings);
    EXPECT_EQ(appliedCustomOptions()->sessionOptions(), component.lastSessionOptions);
    EXPECT_EQ(component.openNow, 0);
}

TEST_F(Compression, CancellingTheDialogKeepsTheStoredSettingsAndLogsNothing) {
    storeCustomSettings({1, 1});
    compression.buildVideoCompressionOptions();
    component.requestResult = 1;

    compression.changeCustomCompression();

    EXPECT_EQ(storedCustomSettings(), Value(Data{1, 1}));
    EXPECT_TRUE(logged().empty());
    EXPECT_EQ(component.openNow, 0);
}

TEST_F(Compression, CustomSettingsAreKeptUnderTheKeyThatWasGiven) {
    VideoCompression other(surroundings.all, announcements, session, output, popUp, "otherData");

    other.changeCustomCompression();

    EXPECT_EQ(defaults.objectForKey("otherData"), Value(component.dialogSettings));
    EXPECT_EQ(storedCustomSettings(), std::nullopt);
}

} // namespace
} // namespace merro::test
