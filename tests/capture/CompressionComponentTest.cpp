#include "tests/capture/CompressionFixture.h"

#include <string>
#include <tuple>
#include <vector>

namespace merro::test {
namespace {

using platform::MediaType;

using CompressionComponent = Compression;

TEST_F(CompressionComponent, TheComponentIsTheStandardOneForTheMedium) {
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

TEST_F(CompressionComponent, AnotherMediumIsRefused) {
    EXPECT_EQ(compression.userOptions(nullptr, nullptr, nullptr, "", MediaType::Muxed), nullptr);

    EXPECT_EQ(logged(), std::vector<std::string>{"Invalid mediaType muxx. Aborting."});
    EXPECT_TRUE(component.opened.empty());
}

TEST_F(CompressionComponent, AMissingComponentIsLogged) {
    component.opens = false;

    EXPECT_EQ(compression.userOptions(nullptr, nullptr, nullptr, "", MediaType::Video), nullptr);

    EXPECT_EQ(logged(), std::vector<std::string>{"Compression component opening failed"});
}

TEST_F(CompressionComponent, GivenSettingsAreUsedSilentlyAndStoredUnderTheName) {
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

TEST_F(CompressionComponent, TheSessionOptionsAreGivenOneProperty) {
    const Data settings{1};

    (void)compression.userOptions(nullptr, nullptr, &settings, "", MediaType::Video);

    using Property = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>;
    EXPECT_EQ(component.lastSessionOptions->properties,
              (std::vector<Property>{{fourCharCode("icso"), fourCharCode("imps"), 0}}));
}

TEST_F(CompressionComponent, WithoutANameNothingIsReadOrStored) {
    storeCustomSettings({9});

    (void)compression.userOptions(nullptr, nullptr, nullptr, "", MediaType::Sound);

    EXPECT_EQ(component.dialogsShown, 1);
    EXPECT_EQ(component.settingsWhenDialogOpened, std::nullopt);
    EXPECT_EQ(storedCustomSettings(), Value(Data{9}));
    EXPECT_EQ(defaults.objectForKey(""), std::nullopt);
}

TEST_F(CompressionComponent, SettingsThatTheComponentRefusesAreLoggedAndTheRestGoesOn) {
    component.setSettingsResult = -50;
    const Data settings{1};

    EXPECT_NE(compression.userOptions(nullptr, nullptr, &settings, "", MediaType::Video), nullptr);

    EXPECT_EQ(logged(), std::vector<std::string>{"SCSetSettingsFromAtomContainer() failed with error -50"});
}

TEST_F(CompressionComponent, ADialogThatFailsIsLoggedAndEndsTheCall) {
    component.requestResult = -2;

    EXPECT_EQ(
        compression.userOptions(nullptr, nullptr, nullptr, "captureMovieCompressionData", MediaType::Video),
        nullptr);

    EXPECT_EQ(logged(), std::vector<std::string>{"SCRequestSequenceSettings() failed with error -2"});
    EXPECT_EQ(storedCustomSettings(), std::nullopt);
    EXPECT_EQ(component.openNow, 0);
}

// Support tools look for the line with the name of the other function.
TEST_F(CompressionComponent, SettingsThatCannotBeReadBackAreLoggedUnderTheSettersNameAndNotStored) {
    storeCustomSettings({9});
    component.settingsResult = -7;
    const Data settings{1};

    EXPECT_NE(
        compression.userOptions(nullptr, nullptr, &settings, "captureMovieCompressionData", MediaType::Video),
        nullptr);

    EXPECT_EQ(logged(), std::vector<std::string>{"SCSetSettingsFromAtomContainer() failed with error -7"});
    EXPECT_EQ(storedCustomSettings(), Value(Data{9}));
}

TEST_F(CompressionComponent, SessionOptionsThatCannotBeHadAreLoggedAfterTheSettingsWereStored) {
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
