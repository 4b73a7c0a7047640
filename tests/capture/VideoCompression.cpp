#include "capture/VideoCompression.h"

#include "capture/CaptureDefaults.h"
#include "capture/QTCustomCompressionOptions.h"
#include "capture/QTNoCompressionOptions.h"
#include "tests/support/FakeDevice.h"
#include "tests/support/TestSurroundings.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace merro::test {
namespace {

using platform::Change;
using platform::CompressionOptionsRef;
using platform::Data;
using platform::fourCharCode;
using platform::MediaType;
using platform::QTVideoCompressionOptions;
using platform::Value;
using platform::native::HeadlessPopUpButton;

constexpr std::uint32_t kCodec = fourCharCode("avc1");

/// The choices are "None" (0), "H.264" (1), "Photo JPEG" (2), "Custom..." (3).
class Compression : public testing::Test {
protected:
    Compression() {
        storeMissingCaptureDefaults(surroundings.defaults);
        declareCaptureDependentKeys(announcements);
        component.codecType = kCodec;
    }

    void giveTheSessionAnInput() {
        const auto input = std::make_shared<FakeDeviceInput>(std::make_shared<FakeDevice>());
        ASSERT_FALSE(session->addInput(input).has_value());
    }

    /// What the video connection was given last.
    [[nodiscard]] CompressionOptionsRef applied() const {
        const auto all = output->compressionOptions();
        return all.empty() ? nullptr : all.back().second;
    }
    [[nodiscard]] std::shared_ptr<const QTVideoCompressionOptions> appliedCustomOptions() const {
        return std::dynamic_pointer_cast<const QTVideoCompressionOptions>(applied());
    }

    void storeCustomSettings(const Data& settings) {
        defaults.setObjectForKey(settings, "captureMovieCompressionData");
    }
    [[nodiscard]] std::optional<Value> storedCustomSettings() const {
        return defaults.objectForKey("captureMovieCompressionData");
    }
    [[nodiscard]] std::vector<std::string> logged() const { return surroundings.log.lines(); }

    TestSurroundings surroundings;
    platform::native::MemoryUserDefaults& defaults = surroundings.defaults;
    FakeCompressionComponents& component = surroundings.compression;
    platform::KeyValueObserving announcements;
    std::shared_ptr<FakeSession> session = std::make_shared<FakeSession>(surroundings.journal);
    std::shared_ptr<FakeMovieFileOutput> output =
        std::make_shared<FakeMovieFileOutput>(1, surroundings.journal);
    std::shared_ptr<HeadlessPopUpButton> popUp = std::make_shared<HeadlessPopUpButton>();
    CompressionOptionsRef none = QTNoCompressionOptions::noCompressionOptions();
    CompressionOptionsRef custom = QTCustomCompressionOptions::customCompressionOptions();
    CompressionOptionsRef h264 = surroundings.capture.videoChoices[0].second;
    CompressionOptionsRef jpeg = surroundings.capture.videoChoices[1].second;
    VideoCompression compression{surroundings.all, announcements, session,
                                 output,           popUp,         "captureMovieCompressionData"};
};

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

// --- The compression component ---

TEST_F(Compression, TheComponentIsTheStandardOneForTheMedium) {
    const Data settings{1};
    (void)compression.userOptions(nullptr, nullptr, &settings, "", MediaType::Video);
    (void)compression.userOptions(nullptr, nullptr, &settings, "", MediaType::Sound);

    ASSERT_EQ(component.opened.size(), 2U);
    EXPECT_EQ(component.opened[0].type, fourCharCode("scdi"));
    EXPECT_EQ(component.opened[0].subType, fourCharCode("imag"));
    EXPECT_EQ(component.opened[1].type, fourCharCode("scdi"));
    EXPECT_EQ(component.opened[1].subType, fourCharCode("audi"));
    EXPECT_EQ(component.preferenceFlags, 256U);
}

TEST_F(Compression, AnotherMediumIsRefused) {
    EXPECT_EQ(compression.userOptions(nullptr, nullptr, nullptr, "", MediaType::Muxed), nullptr);

    EXPECT_EQ(logged(), std::vector<std::string>{"Invalid mediaType muxx. Aborting."});
    EXPECT_TRUE(component.opened.empty());
}

TEST_F(Compression, AMissingComponentIsLogged) {
    component.opens = false;

    EXPECT_EQ(compression.userOptions(nullptr, nullptr, nullptr, "", MediaType::Video), nullptr);

    EXPECT_EQ(logged(), std::vector<std::string>{"Compression component opening failed"});
}

TEST_F(Compression, GivenSettingsAreUsedSilentlyAndStoredUnderTheName) {
    storeCustomSettings({9});
    const Data settings{1, 2};
    std::uint32_t codecType = 0;
    double frameRate = 0;
    component.frameRate = 12.5;

    const auto options = compression.userOptions(&codecType, &frameRate, &settings,
                                                 "captureMovieCompressionData", MediaType::Video);

    EXPECT_EQ(options, component.lastSessionOptions);
    EXPECT_EQ(component.dialogsShown, 0);
    EXPECT_EQ(component.settings, settings);
    EXPECT_EQ(storedCustomSettings(), Value(settings));
    EXPECT_EQ(codecType, kCodec);
    EXPECT_EQ(frameRate, 12.5);
    EXPECT_EQ(component.openNow, 0);
}

TEST_F(Compression, TheSessionOptionsAreGivenOneProperty) {
    const Data settings{1};

    (void)compression.userOptions(nullptr, nullptr, &settings, "", MediaType::Video);

    using Property = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>;
    EXPECT_EQ(component.lastSessionOptions->properties,
              (std::vector<Property>{{fourCharCode("icso"), fourCharCode("imps"), 0}}));
}

TEST_F(Compression, WithoutANameNothingIsReadOrStored) {
    storeCustomSettings({9});

    (void)compression.userOptions(nullptr, nullptr, nullptr, "", MediaType::Sound);

    EXPECT_EQ(component.dialogsShown, 1);
    EXPECT_EQ(component.settingsWhenDialogOpened, std::nullopt);
    EXPECT_EQ(storedCustomSettings(), Value(Data{9}));
    EXPECT_EQ(defaults.objectForKey(""), std::nullopt);
}

TEST_F(Compression, SettingsThatTheComponentRefusesAreLoggedAndTheRestGoesOn) {
    component.setSettingsResult = -50;
    const Data settings{1};

    EXPECT_NE(compression.userOptions(nullptr, nullptr, &settings, "", MediaType::Video), nullptr);

    EXPECT_EQ(logged(), std::vector<std::string>{"SCSetSettingsFromAtomContainer() failed with error -50"});
}

TEST_F(Compression, ADialogThatFailsIsLoggedAndEndsTheCall) {
    component.requestResult = -2;

    EXPECT_EQ(
        compression.userOptions(nullptr, nullptr, nullptr, "captureMovieCompressionData", MediaType::Video),
        nullptr);

    EXPECT_EQ(logged(), std::vector<std::string>{"SCRequestSequenceSettings() failed with error -2"});
    EXPECT_EQ(storedCustomSettings(), std::nullopt);
    EXPECT_EQ(component.openNow, 0);
}

// Support tools look for the line with the name of the other function.
TEST_F(Compression, SettingsThatCannotBeReadBackAreLoggedUnderTheSettersNameAndNotStored) {
    storeCustomSettings({9});
    component.settingsResult = -7;
    const Data settings{1};

    EXPECT_NE(
        compression.userOptions(nullptr, nullptr, &settings, "captureMovieCompressionData", MediaType::Video),
        nullptr);

    EXPECT_EQ(logged(), std::vector<std::string>{"SCSetSettingsFromAtomContainer() failed with error -7"});
    EXPECT_EQ(storedCustomSettings(), Value(Data{9}));
}

TEST_F(Compression, SessionOptionsThatCannotBeHadAreLoggedAfterTheSettingsWereStored) {
    component.copyOptionsResult = -3;
    const Data settings{4};
    std::uint32_t codecType = 1;

    EXPECT_EQ(compression.userOptions(&codecType, nullptr, &settings, "captureMovieCompressionData",
                                      MediaType::Video),
              nullptr);

    EXPECT_EQ(logged(), std::vector<std::string>{"SCCopyCompressionSessionOptions() failed with error -3"});
    EXPECT_EQ(storedCustomSettings(), Value(Data{4}));
    EXPECT_EQ(codecType, 1U);
    EXPECT_EQ(component.openNow, 0);
}

} // namespace
} // namespace merro::test
