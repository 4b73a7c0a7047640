#include "host/shared/Catalogue.h"

#include "host/shared/Failure.h"
#include "tests/host/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace merro::host::test {
namespace {

using testing::HasSubstr;

TapeEntry aTape() {
    TapeEntry tape;
    tape.name = "holiday";
    tape.source = "/tapes/holiday.dv";
    tape.system = "625/50";
    tape.frames = 5'000'000'000;
    tape.loggedAt = "2024-05-01T10:00:00Z";
    tape.settings = "{}";
    return tape;
}

ClipEntry aClip(int number, std::int64_t tapeId) {
    ClipEntry clip;
    clip.number = number;
    clip.tapeId = tapeId;
    clip.recordingDate = "2005-03-17T14:03:22";
    clip.startTimecode = "00:00:00:00";
    clip.aspectRatio = 1;
    clip.framesLost = 3;
    clip.problem = "O'Brien said \"no\"";
    return clip;
}

std::string whyNot(const std::string& path) {
    try {
        (void)Catalogue::openForWriting(path);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "opened";
}

struct CatalogueTest : testing::Test {
    TemporaryFolder folder;
    std::string path = folder / "catalogue.sqlite";
};

TEST_F(CatalogueTest, WhatIsKeptOfTapesAndClipsComesBackAfterReopening) {
    TapeEntry tape = aTape();
    ClipEntry clip = aClip(7, 1);
    {
        Catalogue catalogue = Catalogue::openForWriting(path);
        tape.tapeId = catalogue.addTape(tape);
        tape.findings = {{6'000'000'000, 777, "bytes that are no DV frame"},
                         {1, 2, "a frame that is cut short"}};
        catalogue.updateTape(tape);
        catalogue.addClip(clip);
    }
    Catalogue catalogue = Catalogue::openForReading(path);
    std::swap(tape.findings[0], tape.findings[1]); // in tape order
    EXPECT_EQ(catalogue.tapes(), std::vector{tape});
    EXPECT_EQ(catalogue.clips(), std::vector{clip});
    EXPECT_EQ(catalogue.lastClipNumber(), 7);
}

TEST_F(CatalogueTest, AClipIsReplacedByWhatIsKnownLater) {
    Catalogue catalogue = Catalogue::openForWriting(path);
    ClipEntry clip = aClip(1, catalogue.addTape(aTape()));
    catalogue.addClip(clip);
    clip.moviePath = "0001.mov";
    clip.endTimecode = "00:00:01:00";
    catalogue.updateClip(clip);
    EXPECT_EQ(catalogue.clips(), std::vector{clip});
}

TEST_F(CatalogueTest, ANumberThatIsTakenIsRefusedAndTheFirstClipStays) {
    Catalogue catalogue = Catalogue::openForWriting(path);
    const ClipEntry first = aClip(1, catalogue.addTape(aTape()));
    catalogue.addClip(first);
    ClipEntry second = first;
    second.recordingDate.reset();
    EXPECT_THROW(catalogue.addClip(second), Failure);
    EXPECT_EQ(catalogue.clips(), std::vector{first});
}

TEST_F(CatalogueTest, ATransactionThatFailsLeavesNothingBehind) {
    Catalogue catalogue = Catalogue::openForWriting(path);
    const std::int64_t tapeId = catalogue.addTape(aTape());
    EXPECT_THROW(catalogue.inOneTransaction([&] {
        catalogue.addClip(aClip(1, tapeId));
        catalogue.addClip(aClip(1, tapeId));
    }),
                 Failure);
    EXPECT_TRUE(catalogue.clips().empty());
    catalogue.addClip(aClip(1, tapeId));
    EXPECT_EQ(catalogue.clips().size(), 1U);
}

TEST_F(CatalogueTest, AnEmptyFileBecomesACatalogue) {
    writeFile(path, "");
    EXPECT_EQ(whyNot(path), "opened");
}

TEST_F(CatalogueTest, ACatalogueOfANewerVersionIsLeftAsItIs) {
    { (void)Catalogue::openForWriting(path); }
    std::string bytes = readFile(path);
    bytes[63] = 2; // the low byte of user_version in the header of an SQLite file
    writeFile(path, bytes);
    EXPECT_THAT(whyNot(path), HasSubstr("is of version 2"));
    EXPECT_THROW((void)Catalogue::openForReading(path), Failure);
    EXPECT_EQ(readFile(path), bytes);
}

TEST_F(CatalogueTest, AFileOfAnotherProgramIsLeftAsItIs) {
    { (void)Catalogue::openForWriting(path); }
    std::string database = readFile(path);
    database[68] = 0; // application_id
    for (const std::string& bytes : {database, std::string("shopping list")}) {
        writeFile(path, bytes);
        EXPECT_THAT(whyNot(path), HasSubstr("is not a catalogue of this program"));
        EXPECT_EQ(readFile(path), bytes);
    }
}

TEST_F(CatalogueTest, PathsWithSignsOfTheirOwnInThemCanBeOpened) {
    const std::string odd = folder / "a=b 'c' &d";
    std::filesystem::create_directory(odd);
    EXPECT_EQ(whyNot(odd + "/catalogue.sqlite"), "opened");
    EXPECT_TRUE(std::filesystem::exists(odd + "/catalogue.sqlite"));
}

TEST_F(CatalogueTest, ReadingACatalogueThatIsNotThereSaysSo) {
    try {
        (void)Catalogue::openForReading(path);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("There is no catalogue"));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

} // namespace
} // namespace merro::host::test
