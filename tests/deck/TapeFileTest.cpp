#include "platform/deck/TapeFile.h"

#include "platform/deck/DVFrameBuilder.h"
#include "tests/platform/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace merro::platform::deck {

inline bool operator==(const TapeFinding& a, const TapeFinding& b) {
    return a.offsetBytes == b.offsetBytes && a.lengthBytes == b.lengthBytes && a.what == b.what;
}
inline void PrintTo(const TapeFinding& finding, std::ostream* out) {
    *out << finding.lengthBytes << " bytes at " << finding.offsetBytes << ": " << finding.what;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t palSize = 144000;
constexpr std::int64_t ntscSize = 120000;
const std::string noFrame = "bytes that are no DV frame";
const std::string cutShort = "a frame that is cut short";

std::string text(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

DVFrameBuilder builder(DVSystem system, int number) {
    DVFrameBuilder frame(system);
    SMPTETime timecode;
    timecode.mFrames = static_cast<std::int16_t>(number);
    frame.setTimecode(timecode);
    return frame;
}

std::string pal(int number) {
    return text(builder(DVSystem::System625_50, number).bytes());
}

std::string ntsc(int number) {
    return text(builder(DVSystem::System525_60, number).bytes());
}

class TapeFile : public testing::Test {
protected:
    TapeOrError open(const std::string& contents) {
        TemporaryFolder::write(path, contents);
        return openTape(path);
    }

    std::unique_ptr<Tape> tape(const std::string& contents) {
        TapeOrError opened = open(contents);
        if (const auto* error = std::get_if<TapeError>(&opened)) {
            ADD_FAILURE() << error->error.text();
            return nullptr;
        }
        return std::get<std::unique_ptr<Tape>>(std::move(opened));
    }

    /// Where the frames lie.
    static std::vector<std::int64_t> offsets(Tape& tape) {
        std::vector<std::int64_t> offsets;
        while (const auto frame = tape.frameAt(static_cast<std::int64_t>(offsets.size())))
            offsets.push_back(frame->offsetBytes);
        return offsets;
    }

    TapeError error(TapeOrError opened) {
        auto* error = std::get_if<TapeError>(&opened);
        EXPECT_NE(error, nullptr);
        return error == nullptr ? TapeError{} : *error;
    }

    TemporaryFolder folder;
    const std::string path = folder.path("tape.dv");
};

TEST_F(TapeFile, framesOfBothSystemsFollowOneAnother) {
    const auto mixed = tape(pal(1) + pal(2) + ntsc(3) + pal(4));
    EXPECT_THAT(offsets(*mixed), ElementsAre(0, palSize, 2 * palSize, 2 * palSize + ntscSize));
    EXPECT_EQ(mixed->frameCount(), 4);
    EXPECT_TRUE(mixed->isFrameCountExact());
    EXPECT_THAT(mixed->findings(), IsEmpty());
}

TEST_F(TapeFile, everyByteOfAFrameIsThere) {
    const std::string second = pal(2);
    const auto two = tape(pal(1) + second);
    const auto frame = two->frameAt(1);
    ASSERT_TRUE(frame);
    const auto bytes = frame->bytes.bytes();
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), second);
}

TEST_F(TapeFile, aFrameOutlivesItsTape) {
    const std::string only = pal(1);
    auto one = tape(only);
    const FrameBytes frame = one->frameAt(0)->bytes;
    one.reset();
    std::filesystem::remove(path);
    EXPECT_EQ(std::string(frame.bytes().begin(), frame.bytes().end()), only);
}

TEST_F(TapeFile, theNumberOfFramesIsAnEstimateUntilTheEndHasBeenRead) {
    const auto three = tape(pal(1) + pal(2) + pal(3));
    EXPECT_EQ(three->frameCount(), 3);
    EXPECT_FALSE(three->isFrameCountExact());
    EXPECT_FALSE(three->frameAt(3));
    EXPECT_TRUE(three->isFrameCountExact());
}

TEST_F(TapeFile, framesCanBeReadAgainInAnyOrder) {
    const auto tapeWithJunk = tape(pal(1) + "junk" + pal(2) + pal(3) + ntsc(4));
    EXPECT_EQ(tapeWithJunk->frameAt(3)->offsetBytes, 3 * palSize + 4);
    EXPECT_EQ(tapeWithJunk->frameAt(0)->offsetBytes, 0);
    EXPECT_EQ(tapeWithJunk->frameAt(2)->offsetBytes, 2 * palSize + 4);
    EXPECT_FALSE(tapeWithJunk->frameAt(-1));
}

TEST_F(TapeFile, bytesThatAreNoFrameAreSkippedWhereverTheyStand) {
    const std::string junk(777, '\x07');
    const auto withJunk = tape(junk + pal(1) + std::string(50001, '\0') + pal(2) + junk);
    EXPECT_THAT(offsets(*withJunk), ElementsAre(777, 777 + palSize + 50001));
    EXPECT_THAT(withJunk->findings(),
                ElementsAre(TapeFinding{0, 777, noFrame}, TapeFinding{777 + palSize, 50001, noFrame},
                            TapeFinding{777 + 2 * palSize + 50001, 777, noFrame}));
}

TEST_F(TapeFile, aShortTailIsReported) {
    const auto cut = tape(pal(1) + pal(2).substr(0, 100000));
    EXPECT_THAT(offsets(*cut), ElementsAre(0));
    EXPECT_THAT(cut->findings(), ElementsAre(TapeFinding{palSize, 100000, cutShort}));
}

TEST_F(TapeFile, aTailShorterThanAFramesStartIsReported) {
    const auto cut = tape(pal(1) + pal(2).substr(0, 100));
    EXPECT_THAT(offsets(*cut), ElementsAre(0));
    EXPECT_THAT(cut->findings(), ElementsAre(TapeFinding{palSize, 100, noFrame}));
}

TEST_F(TapeFile, aFrameCutShortInTheMiddleTakesNoneOfTheNextOneWithIt) {
    const auto cut = tape(pal(1) + pal(2).substr(0, 50001) + pal(3) + pal(4));
    EXPECT_THAT(offsets(*cut), ElementsAre(0, palSize + 50001, 2 * palSize + 50001));
    EXPECT_THAT(cut->findings(), ElementsAre(TapeFinding{palSize, 50001, cutShort}));
}

TEST_F(TapeFile, aFrameWithADamagedHeaderBlockIsStillAFrame) {
    auto damaged = builder(DVSystem::System625_50, 2);
    damaged.overwriteBlock(0, 0);
    const auto withDamage = tape(pal(1) + text(damaged.bytes()) + pal(3));
    EXPECT_THAT(offsets(*withDamage), ElementsAre(0, palSize, 2 * palSize));
    EXPECT_THAT(withDamage->findings(), IsEmpty());
}

TEST_F(TapeFile, theFirstAndTheLastFrameMayBeDamagedToo) {
    auto damaged = builder(DVSystem::System625_50, 2);
    damaged.overwriteBlock(0, 0);
    damaged.overwriteBlock(0, 4);
    const auto withDamage = tape(text(damaged.bytes()) + pal(1) + text(damaged.bytes()));
    EXPECT_THAT(offsets(*withDamage), ElementsAre(0, palSize, 2 * palSize));
}

TEST_F(TapeFile, aDamagedFrameAfterAChangeOfSystemHasItsOwnSize) {
    auto damaged = builder(DVSystem::System525_60, 2);
    damaged.overwriteBlock(0, 0);
    const auto withDamage = tape(pal(1) + text(damaged.bytes()) + ntsc(3));
    EXPECT_THAT(offsets(*withDamage), ElementsAre(0, palSize, palSize + ntscSize));
}

TEST_F(TapeFile, aFrameOfNothingButDropoutsIsAFrameWhenAGoodOneFollows) {
    const auto withDropout = tape(pal(1) + std::string(palSize, '\xFF') + pal(3));
    EXPECT_THAT(offsets(*withDropout), ElementsAre(0, palSize, 2 * palSize));
    EXPECT_THAT(withDropout->findings(), IsEmpty());
}

TEST_F(TapeFile, aWrongSystemBitDoesNotMoveTheFramesAfterIt) {
    std::string wrong = pal(2);
    wrong[3] = '\x3F'; // says 525/60
    const auto withWrongBit = tape(pal(1) + wrong + pal(3));
    EXPECT_THAT(offsets(*withWrongBit), ElementsAre(0, palSize, 2 * palSize));
}

TEST_F(TapeFile, twoDamagedFramesInARowAreTwoFrames) {
    auto damaged = builder(DVSystem::System625_50, 2);
    damaged.overwriteBlock(0, 0);
    const auto withDamage = tape(pal(1) + text(damaged.bytes()) + text(damaged.bytes()) + pal(4));
    EXPECT_THAT(offsets(*withDamage), ElementsAre(0, palSize, 2 * palSize, 3 * palSize));
}

TEST_F(TapeFile, framesInARowOfWhichOnlyTheHeaderBlocksAreLeftAreFrames) {
    auto damaged = builder(DVSystem::System625_50, 2);
    for (unsigned sequence = 0; sequence < damaged.sequenceCount(); ++sequence)
        for (unsigned block = 1; block < 6; ++block)
            damaged.overwriteBlock(sequence, block);
    const std::string twice = text(damaged.bytes()) + text(damaged.bytes());
    const auto withDamage = tape(pal(1) + twice + pal(4));
    EXPECT_THAT(offsets(*withDamage), ElementsAre(0, palSize, 2 * palSize, 3 * palSize));
    EXPECT_THAT(withDamage->findings(), IsEmpty());
}

TEST_F(TapeFile, aFrameWhoseOtherSequencesAreGoneIsAFrameWhenNoneStartsInIt) {
    std::string broken = pal(2);
    broken.replace(12000, std::string::npos, std::string(palSize - 12000, '\xFF'));
    const auto withDamage = tape(pal(1) + broken + std::string(99, '\x07') + pal(3));
    EXPECT_THAT(offsets(*withDamage), ElementsAre(0, palSize, 2 * palSize + 99));
}

TEST_F(TapeFile, aFileThatShrinksWhileItIsReadEndsTheTapeWithAFinding) {
    std::string contents;
    for (int i = 0; i < 60; ++i) // 8.6 MB: more than is looked at in one go
        contents += pal(i % 25);
    const auto shrinking = tape(contents);
    ASSERT_TRUE(shrinking->frameAt(0));
    std::filesystem::resize_file(path, 10 * palSize + 5);
    EXPECT_FALSE(shrinking->frameAt(59));
    EXPECT_TRUE(shrinking->isFrameCountExact());
    ASSERT_FALSE(shrinking->findings().empty());
    EXPECT_EQ(shrinking->findings().front().what, "bytes that were cut off the file while it was read");
}

// --- What is no tape ---

TEST_F(TapeFile, whatDoesNotExistIsNamed) {
    const TapeError missing = error(openTape(folder.path("missing.dv")));
    EXPECT_EQ(missing.problem, TapeProblem::NoSuchFile);
    EXPECT_EQ(missing.error.text(), "\"" + folder.path("missing.dv") + "\" does not exist");
    EXPECT_FALSE(missing.isNotDV());
}

TEST_F(TapeFile, aFolderIsNoTape) {
    EXPECT_EQ(error(openTape(folder.path(""))).problem, TapeProblem::Folder);
}

TEST_F(TapeFile, anEmptyFileIsNoTape) {
    EXPECT_EQ(error(open("")).problem, TapeProblem::Empty);
}

TEST_F(TapeFile, aDeviceFileIsNotRead) {
    EXPECT_EQ(error(openTape("/dev/zero")).problem, TapeProblem::Unreadable);
}

TEST_F(TapeFile, aFileWithoutAnyFrameIsNotDV) {
    const TapeError other = error(open(std::string(300000, 'x')));
    EXPECT_EQ(other.problem, TapeProblem::NotDV);
    EXPECT_TRUE(other.isNotDV());
    EXPECT_EQ(error(open("x")).problem, TapeProblem::NotDV);
    EXPECT_EQ(error(open(pal(1).substr(0, 100000))).problem, TapeProblem::NotDV);
}

TEST_F(TapeFile, aTransportStreamIsHDVAndTheRemedyIsDownConversion) {
    std::string stream;
    for (int packet = 0; packet < 1000; ++packet)
        stream += '\x47' + std::string(187, 'v');
    const TapeError hdv = error(open(stream));
    EXPECT_EQ(hdv.problem, TapeProblem::HDV);
    EXPECT_TRUE(hdv.isNotDV());
    EXPECT_THAT(hdv.error.remedy, testing::HasSubstr("down-conversion"));
    EXPECT_EQ(error(open(stream.substr(100))).problem, TapeProblem::HDV);
}

TEST_F(TapeFile, aTransportStreamWithTimeStampsIsHDVToo) {
    std::string stream;
    for (int packet = 0; packet < 1000; ++packet)
        stream += "time\x47" + std::string(187, 'v');
    EXPECT_EQ(error(open(stream)).problem, TapeProblem::HDV);
}

TEST_F(TapeFile, aSecondChannelIsFiftyMegabits) {
    std::string second = pal(1);
    for (std::size_t block = 0; block < second.size(); block += 80)
        second[block + 1] = static_cast<char>(second[block + 1] | 0x08);
    const TapeError fifty = error(open(pal(1) + second + pal(2) + second));
    EXPECT_EQ(fifty.problem, TapeProblem::FiftyMbs);
    EXPECT_TRUE(fifty.isNotDV());
}

TEST_F(TapeFile, aSourcePackThatSays422IsFiftyMegabits) {
    std::string frame = pal(1);
    frame[5 * 80 + 48] = '\x60';
    frame[5 * 80 + 48 + 3] = static_cast<char>((frame[5 * 80 + 48 + 3] & 0xE0) | 0x04);
    EXPECT_EQ(error(open(frame + frame)).problem, TapeProblem::FiftyMbs);
}

TEST_F(TapeFile, containersGoToTheirOpener) {
    for (const std::string& start : {std::string("RIFF....AVI LIST"), std::string("\0\0\0\x14"
                                                                                  "ftypqt  ",
                                                                                  12)}) {
        TemporaryFolder::write(path, start + std::string(1000, 'x'));
        EXPECT_EQ(error(openTape(path)).problem, TapeProblem::NotDV);
        std::string opened;
        const auto opener = [&](const std::string& container) -> TapeOrError {
            opened = container;
            return TapeError{TapeProblem::Unreadable, {}};
        };
        EXPECT_EQ(error(openTape(path, opener)).problem, TapeProblem::Unreadable);
        EXPECT_EQ(opened, path);
    }
}

} // namespace
} // namespace merro::platform::deck
