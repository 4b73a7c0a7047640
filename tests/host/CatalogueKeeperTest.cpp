#include "host/shared/CatalogueKeeper.h"

#include "host/shared/Catalogue.h"
#include "tests/host/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace merro::host::test {
namespace {

using testing::HasSubstr;

struct CatalogueKeeperTest : testing::Test {
    TemporaryFolder folder;
    CatalogueKeeper::Places places{folder / "catalogue.sqlite", folder / "clips.json"};
    std::vector<std::string> problems;

    std::unique_ptr<CatalogueKeeper> keeper(const std::string& tapeName = "tape") {
        TapeEntry tape;
        tape.name = tapeName;
        return std::make_unique<CatalogueKeeper>(
            places, tape, [this](const std::string& line) { problems.push_back(line); });
    }

    static ClipEntry clip(int number) {
        ClipEntry clip;
        clip.number = number;
        return clip;
    }

    std::vector<ClipEntry> clipsInCatalogue() { return Catalogue::openForReading(places.catalogue).clips(); }
    nlohmann::json clipsJson() { return nlohmann::json::parse(readFile(places.clipsJson)); }
};

TEST_F(CatalogueKeeperTest, ReportsAreInCatalogueAndFileAfterFinish) {
    const auto kept = keeper();
    kept->addClip(clip(1));
    kept->addClip(clip(2));
    kept->changeClip(1, [](ClipEntry& entry) { entry.moviePath = "0001.mov"; });
    kept->finish();
    ASSERT_EQ(clipsInCatalogue().size(), 2U);
    EXPECT_EQ(clipsInCatalogue()[0].moviePath, "0001.mov");
    EXPECT_EQ(clipsJson()["clips"][0]["moviePath"], "0001.mov");
    EXPECT_EQ(clipsJson()["clips"].size(), 2U);
}

TEST_F(CatalogueKeeperTest, WhatIsKnownBeforeTheClipIsReportedIsNotLost) {
    const auto kept = keeper();
    kept->changeClip(3, [](ClipEntry& entry) { entry.framesLost += 5; });
    ClipEntry report = clip(3);
    report.framesLost = 2;
    kept->addClip(report);
    kept->finish();
    EXPECT_EQ(clipsInCatalogue().at(0).framesLost, 7);
}

TEST_F(CatalogueKeeperTest, TheTapeIsKnownThoughNoClipEverComes) {
    keeper("lonely")->finish();
    const auto tapes = Catalogue::openForReading(places.catalogue).tapes();
    ASSERT_EQ(tapes.size(), 1U);
    EXPECT_EQ(tapes[0].name, "lonely");
    EXPECT_TRUE(clipsJson()["clips"].empty());
}

TEST_F(CatalogueKeeperTest, ASecondTapeJoinsTheClipsOfTheFirst) {
    const auto first = keeper("first");
    first->addClip(clip(1));
    first->finish();
    const auto second = keeper("second");
    second->addClip(clip(2));
    second->changeTape([](TapeEntry& tape) {
        tape.frames = 25;
        tape.findings = {{1, 2, "bytes that are no DV frame"}};
    });
    second->finish();
    EXPECT_EQ(clipsJson()["tape"]["name"], "second");
    EXPECT_EQ(clipsJson()["tape"]["frames"], 25);
    EXPECT_EQ(clipsJson()["clips"].size(), 2U);
    EXPECT_EQ(clipsInCatalogue()[0].tapeId, 1);
    EXPECT_EQ(clipsInCatalogue()[1].tapeId, 2);
    EXPECT_EQ(Catalogue::openForReading(places.catalogue).tapes()[1].findings.size(), 1U);
}

TEST_F(CatalogueKeeperTest, AFailureIsToldOnceAndNothingIsLostWhenWritingWorksAgain) {
    std::filesystem::create_directory(places.clipsJson); // in the way of the report file
    const auto kept = keeper();
    for (int number = 1; number <= 20; ++number)
        kept->addClip(clip(number));
    std::filesystem::remove(places.clipsJson);
    kept->addClip(clip(21));
    kept->finish();
    EXPECT_FALSE(kept->failure());
    EXPECT_LE(problems.size(), 1U);
    EXPECT_EQ(clipsJson()["clips"].size(), 21U);
    EXPECT_EQ(clipsInCatalogue().size(), 21U);
}

TEST_F(CatalogueKeeperTest, AFailureThatLastsIsStillThereAtTheEnd) {
    std::filesystem::create_directory(places.clipsJson);
    const auto kept = keeper();
    kept->addClip(clip(1));
    kept->finish();
    ASSERT_TRUE(kept->failure());
    EXPECT_THAT(*kept->failure(), HasSubstr("clips.json cannot be written"));
    EXPECT_EQ(problems.size(), 1U);
    EXPECT_EQ(clipsInCatalogue().size(), 1U);
}

} // namespace
} // namespace merro::host::test
