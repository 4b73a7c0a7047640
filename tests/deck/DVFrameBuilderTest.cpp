#include "platform/deck/DVFrameBuilder.h"

#include "dv/DVDifSequence.h"
#include "dv/FrameDate.h"
#include "dv/FrameTimecode.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace merro::platform::deck {
namespace {

constexpr DVSystem bothSystems[] = {DVSystem::System525_60, DVSystem::System625_50};

SMPTETime timecode(int hours, int minutes, int seconds, int frames) {
    SMPTETime time;
    time.mHours = static_cast<std::int16_t>(hours);
    time.mMinutes = static_cast<std::int16_t>(minutes);
    time.mSeconds = static_cast<std::int16_t>(seconds);
    time.mFrames = static_cast<std::int16_t>(frames);
    return time;
}

std::uint8_t byteAt(const DVFrameBuilder& builder, unsigned sequence, unsigned block, unsigned byte) {
    return builder.bytes()[(std::size_t{sequence} * 150 + block) * 80 + byte];
}

DVPack packAt(const DVFrameBuilder& builder, unsigned sequence, unsigned block, unsigned byte) {
    DVPack pack{};
    for (unsigned index = 0; index < pack.size(); ++index)
        pack[index] = byteAt(builder, sequence, block, byte + index);
    return pack;
}

DVDifSequence decoded(const DVFrameBuilder& builder, unsigned index) {
    DVDifSequence sequence(builder.frame(), index);
    sequence.decodeSequence();
    return sequence;
}

TEST(DVFrameBuilder, MakesAFrameOfTheSystemsSize) {
    EXPECT_EQ(DVFrameBuilder(DVSystem::System525_60).bytes().size(), 120000U);
    EXPECT_EQ(DVFrameBuilder(DVSystem::System625_50).bytes().size(), 144000U);
    EXPECT_EQ(DVFrameBuilder(DVSystem::System525_60).sequenceCount(), 10U);
    EXPECT_EQ(DVFrameBuilder(DVSystem::System625_50).sequenceCount(), 12U);
}

TEST(DVFrameBuilder, GivesEveryBlockItsId) {
    for (const DVSystem system : bothSystems) {
        const DVFrameBuilder builder(system);
        for (unsigned sequence = 0; sequence < builder.sequenceCount(); ++sequence) {
            for (unsigned block = 0; block < 150; ++block) {
                // header, two of subcode, three of VAUX, then nine times one of audio and fifteen of video
                const unsigned inGroup = block < 6 ? 0 : (block - 6) % 16;
                const unsigned group = block < 6 ? 0 : (block - 6) / 16;
                unsigned type = block == 0 ? 0U : block < 3 ? 1U : block < 6 ? 2U : inGroup == 0 ? 3U : 4U;
                unsigned number = block == 0  ? 0U
                                  : block < 3 ? block - 1
                                  : block < 6 ? block - 3
                                  : type == 3 ? group
                                              : group * 15 + inGroup - 1;
                ASSERT_EQ(byteAt(builder, sequence, block, 0), type << 5 | 0x1F) << sequence << " " << block;
                ASSERT_EQ(byteAt(builder, sequence, block, 1), sequence << 4 | 0x07);
                ASSERT_EQ(byteAt(builder, sequence, block, 2), number);
            }
        }
    }
}

TEST(DVFrameBuilder, MakesSequencesThatTheDecoderRecognises) {
    for (const DVSystem system : bothSystems) {
        const DVFrameBuilder builder(system);
        for (unsigned index = 0; index < builder.sequenceCount(); ++index) {
            const DVDifSequence sequence = decoded(builder, index);
            EXPECT_TRUE(sequence.containsExpectedSections());
            EXPECT_EQ(sequence.sequenceNumber(), index);
            EXPECT_EQ(sequence.sequenceFlag(), system == DVSystem::System625_50 ? 1U : 0U);
            EXPECT_FALSE(sequence.timecodeOk());
            EXPECT_EQ(sequence.captureDateTime(), nullptr);
        }
    }
}

TEST(DVFrameBuilder, WritesACamerasTimecodePack) {
    DVFrameBuilder builder(DVSystem::System525_60);
    builder.setTimecode(timecode(0, 0, 2, 17), {.dropFrame = true, .colourFrame = true, .fieldBit = true});
    // what a Digital8 camera writes for this, but for the two binary group flags
    EXPECT_EQ(builder.subcodePack(0, 0), (DVPack{0x13, 0xD7, 0x82, 0x00, 0x00}));
    builder.setTimecode(timecode(23, 59, 58, 24));
    EXPECT_EQ(builder.subcodePack(0, 0), (DVPack{0x13, 0x24, 0x58, 0x59, 0x23}));
}

TEST(DVFrameBuilder, PutsTheTimecodeWhereCamerasDo) {
    DVFrameBuilder builder(DVSystem::System525_60);
    builder.setTimecode(timecode(1, 2, 3, 4));
    for (unsigned sequence = 0; sequence < 10; ++sequence) {
        for (unsigned syncBlock = 0; syncBlock < 12; ++syncBlock) {
            const bool hasTimecode = sequence < 5 || syncBlock % 3 == 0;
            EXPECT_EQ(builder.subcodePack(sequence, syncBlock)[0], hasTimecode ? 0x13 : 0xFF);
        }
    }
    EXPECT_EQ(frameTimecode(builder.frame()).SMPTETimeValue().mHours, 1);
}

TEST(DVFrameBuilder, WritesACamerasDatePacks) {
    DVFrameBuilder builder(DVSystem::System525_60);
    builder.setRecordingDateTime({2024, 7, 8, 19, 55, 58});
    EXPECT_EQ(builder.subcodePack(5, 1), (DVPack{0x62, 0xFF, 0xC8, 0xE7, 0x24}));
    EXPECT_EQ(builder.subcodePack(5, 2), (DVPack{0x63, 0xFF, 0xD8, 0xD5, 0xD9}));
    EXPECT_EQ(packAt(builder, 0, 5, 58), (DVPack{0x62, 0xFF, 0xC8, 0xE7, 0x24}));
    EXPECT_EQ(packAt(builder, 0, 5, 63), (DVPack{0x63, 0xFF, 0xD8, 0xD5, 0xD9}));
    EXPECT_EQ(packAt(builder, 1, 3, 13), (DVPack{0x62, 0xFF, 0xC8, 0xE7, 0x24}));
    EXPECT_EQ(packAt(builder, 1, 3, 18), (DVPack{0x63, 0xFF, 0xD8, 0xD5, 0xD9}));
}

TEST(DVFrameBuilder, PutsTheDateIntoTheSecondHalfOfTheSequences) {
    DVFrameBuilder ntsc(DVSystem::System525_60);
    DVFrameBuilder pal(DVSystem::System625_50);
    for (DVFrameBuilder* builder : {&ntsc, &pal})
        builder->setRecordingDateTime({2005, 3, 17, 14, 3, 22});

    EXPECT_EQ(findFrameDate(ntsc.frame()).sequenceIndex, 5);
    EXPECT_EQ(findFrameDate(pal.frame()).sequenceIndex, 6);
    for (unsigned syncBlock = 0; syncBlock < 12; ++syncBlock) {
        EXPECT_EQ(pal.subcodePack(5, syncBlock), emptyPack);
        constexpr std::uint8_t types[] = {0xFF, 0x62, 0x63};
        EXPECT_EQ(pal.subcodePack(11, syncBlock)[0], types[syncBlock % 3]);
    }
    EXPECT_EQ(findFrameDate(pal.frame()).date->instant(),
              dateFromCalendar({2005, 3, 17, 14, 3, 22})->instant());
}

TEST(DVFrameBuilder, PutsTheDateIntoAllSequencesWhenAsked) {
    DVFrameBuilder builder(DVSystem::System625_50);
    builder.setRecordingDateTime({2005, 3, 17, 14, 3, 22}, DateSequences::All);
    builder.setTimecode(timecode(1, 2, 3, 4));
    EXPECT_EQ(findFrameDate(builder.frame()).sequenceIndex, 0);
    EXPECT_TRUE(decoded(builder, 0).timecodeOk());

    builder.setRecordingDateTime({2005, 3, 17, 14, 3, 23});
    EXPECT_EQ(findFrameDate(builder.frame()).sequenceIndex, 6);
}

TEST(DVFrameBuilder, ChangesOneHalfOfTheDateAlone) {
    DVFrameBuilder builder(DVSystem::System625_50);
    builder.setRecordingTime(14, 3, 22);
    EXPECT_EQ(findFrameDate(builder.frame()).date, nullptr);
    EXPECT_TRUE(decoded(builder, 6).captureDateTime()->isTimeSet());
    EXPECT_FALSE(decoded(builder, 6).captureDateTime()->isDateSet());

    builder.setRecordingDate(2005, 3, 17);
    builder.setRecordingDate(1998, 4, 18);
    EXPECT_EQ(findFrameDate(builder.frame()).date->instant(),
              dateFromCalendar({1998, 4, 18, 14, 3, 22})->instant());
}

TEST(DVFrameBuilder, CanSayDayZeroOfMonthZero) {
    DVFrameBuilder builder(DVSystem::System625_50);
    builder.setRecordingDateTime({2005, 0, 0, 14, 3, 22});
    EXPECT_EQ(findFrameDate(builder.frame()).captureDateTime->dayOfMonth(), 0);
    EXPECT_EQ(findFrameDate(builder.frame()).captureDateTime->monthOfYear(), 0);
}

TEST(DVFrameBuilder, ChangesTheDateOfTheSoundWhereThereIsSound) {
    DVFrameBuilder silent(DVSystem::System625_50);
    silent.setRecordingDateTime({2005, 3, 17, 14, 3, 22});
    EXPECT_EQ(byteAt(silent, 0, 6 + 5 * 16, 3), 0xFF);

    std::vector<std::uint8_t> bytes = silent.bytes();
    bytes[(6 + 3 * 16) * 80 + 3] = 0x50;         // even sequences: source in audio block 3, date in 5
    bytes[12000 + (6 + 0 * 16) * 80 + 3] = 0x50; // odd ones: 0 and 2
    DVFrameBuilder builder(bytes);
    builder.setRecordingDateTime({2005, 3, 17, 14, 3, 22});
    EXPECT_EQ(packAt(builder, 0, 6 + 5 * 16, 3), (DVPack{0x52, 0xFF, 0xD7, 0xE3, 0x05}));
    EXPECT_EQ(packAt(builder, 0, 6 + 6 * 16, 3), (DVPack{0x53, 0xFF, 0xA2, 0x83, 0xD4}));
    EXPECT_EQ(packAt(builder, 1, 6 + 2 * 16, 3), (DVPack{0x52, 0xFF, 0xD7, 0xE3, 0x05}));
    EXPECT_EQ(packAt(builder, 1, 6 + 3 * 16, 3), (DVPack{0x53, 0xFF, 0xA2, 0x83, 0xD4}));

    builder.clearRecordingDateTime();
    EXPECT_EQ(packAt(builder, 0, 6 + 5 * 16, 3), emptyPack);
    EXPECT_EQ(packAt(builder, 1, 6 + 3 * 16, 3), emptyPack);
}

TEST(DVFrameBuilder, DescribesThePicture) {
    DVFrameBuilder builder(DVSystem::System625_50);
    builder.setPicture({.isWide = true, .isStill = true, .isInterlaced = false, .startsRecording = true});
    EXPECT_EQ(packAt(builder, 0, 5, 48), (DVPack{0x60, 0xFF, 0xFF, 0x20, 0xFF}));
    EXPECT_EQ(packAt(builder, 0, 5, 53), (DVPack{0x61, 0x3F, 0x4A, 0xCC, 0xFF}));
    EXPECT_EQ(packAt(builder, 1, 3, 8), (DVPack{0x61, 0x3F, 0x4A, 0xCC, 0xFF}));
    EXPECT_EQ(findFrameDate(builder.frame()).aspectRatio, 0);
    EXPECT_TRUE(findFrameDate(builder.frame()).stillPicture);
    EXPECT_TRUE(findFrameDate(builder.frame()).interlaced);

    builder.setPicture({});
    EXPECT_EQ(packAt(builder, 1, 3, 8), (DVPack{0x61, 0x3F, 0xC8, 0xFC, 0xFF}));
    for (unsigned index = 0; index < 12; ++index) {
        const DVDifSequence sequence = decoded(builder, index);
        EXPECT_EQ(sequence.aspectRatio(), 1);
        EXPECT_EQ(sequence.pixelSampling(), 0);
        EXPECT_FALSE(sequence.stillPicture());
        EXPECT_FALSE(sequence.interlaced());
    }
}

TEST(DVFrameBuilder, ReplacesVauxPacksAlsoWhereAnEncoderRepeatsThem) {
    std::vector<std::uint8_t> bytes = DVFrameBuilder(DVSystem::System625_50).bytes();
    bytes[4 * 80 + 3] = 0x60;
    bytes[4 * 80 + 8] = 0x61;
    bytes[4 * 80 + 13] = 0x62;
    bytes[4 * 80 + 18] = 0x63;
    bytes[(6 + 7 * 16) * 80 + 3] = 0x52;
    DVFrameBuilder builder(bytes);

    builder.setPicture({.isWide = true});
    builder.setRecordingDateTime({2005, 3, 17, 14, 3, 22});

    EXPECT_EQ(packAt(builder, 0, 4, 3), (DVPack{0x60, 0xFF, 0xFF, 0x20, 0xFF}));
    EXPECT_EQ(packAt(builder, 0, 4, 8), (DVPack{0x61, 0x3F, 0xCA, 0xFC, 0xFF}));
    EXPECT_EQ(packAt(builder, 0, 4, 13), (DVPack{0x62, 0xFF, 0xD7, 0xE3, 0x05}));
    EXPECT_EQ(packAt(builder, 0, 4, 18), (DVPack{0x63, 0xFF, 0xA2, 0x83, 0xD4}));
    EXPECT_EQ(packAt(builder, 0, 6 + 7 * 16, 3), (DVPack{0x52, 0xFF, 0xD7, 0xE3, 0x05}));
    EXPECT_EQ(packAt(builder, 2, 4, 13), emptyPack);
}

TEST(DVFrameBuilder, EmptiesTimecodeAndDates) {
    for (const DVSystem system : bothSystems) {
        const DVFrameBuilder empty(system);
        DVFrameBuilder builder(system);
        builder.setTimecode(timecode(1, 2, 3, 4));
        builder.setRecordingDateTime({2005, 3, 17, 14, 3, 22}, DateSequences::All);

        builder.clearTimecode();
        EXPECT_FALSE(frameTimecode(builder.frame()));
        EXPECT_NE(findFrameDate(builder.frame()).date, nullptr);
        builder.clearRecordingDateTime();
        EXPECT_EQ(builder.bytes(), empty.bytes());
    }
}

TEST(DVFrameBuilder, PutsStrayTimecodesIntoSomeSequences) {
    DVFrameBuilder builder(DVSystem::System525_60);
    builder.setTimecode(timecode(1, 2, 3, 4));
    const unsigned strays[] = {0, 7};
    builder.setTimecodeInSequences(timecode(9, 9, 9, 9), strays);

    for (unsigned index = 0; index < 10; ++index)
        EXPECT_EQ(decoded(builder, index).timeCode().mHours, index == 0 || index == 7 ? 9 : 1);
    EXPECT_EQ(frameTimecode(builder.frame()).SMPTETimeValue().mHours, 1);
}

TEST(DVFrameBuilder, ReplacesTimecodesWhereverAFrameHasThem) {
    DVFrameBuilder builder(DVSystem::System525_60);
    for (unsigned syncBlock = 0; syncBlock < 12; ++syncBlock)
        builder.setSubcodePack(8, syncBlock, {0x13, 0, 0, 0, 0});
    builder.setSubcodePack(2, 4, {0x14, 1, 2, 3, 4});

    builder.setTimecode(timecode(1, 2, 3, 4));

    EXPECT_EQ(decoded(builder, 8).timeCode().mHours, 1);
    EXPECT_EQ(builder.subcodePack(2, 4), (DVPack{0x14, 1, 2, 3, 4}));
}

TEST(DVFrameBuilder, CountsFramesInVauxAudioAndVideo) {
    DVFrameBuilder builder(DVSystem::System525_60);
    builder.setFrameCount(5);
    EXPECT_EQ(byteAt(builder, 4, 0, 0), 0x1F);
    EXPECT_EQ(byteAt(builder, 4, 2, 0), 0x3F);
    EXPECT_EQ(byteAt(builder, 4, 3, 0), 0x55);
    EXPECT_EQ(byteAt(builder, 4, 6, 0), 0x75);
    EXPECT_EQ(byteAt(builder, 4, 149, 0), 0x95);
    EXPECT_TRUE(decoded(builder, 4).containsExpectedSections());
}

TEST(DVFrameBuilder, DamagesHeaders) {
    DVFrameBuilder builder(DVSystem::System525_60);
    builder.renumberHeader(3, 14);
    EXPECT_THROW((void)decoded(builder, 3), std::out_of_range);
    builder.overwriteBlock(2, 0);
    EXPECT_EQ(byteAt(builder, 2, 0, 0), 0xFF);
    EXPECT_EQ(byteAt(builder, 2, 0, 79), 0xFF);
    EXPECT_EQ(byteAt(builder, 2, 1, 0), 0x3F);
    EXPECT_THROW((void)decoded(builder, 2), std::out_of_range);
}

TEST(DVFrameBuilder, MarksVideoBlocksAsConcealed) {
    DVFrameBuilder builder(DVSystem::System525_60);
    builder.concealVideoBlocks(1, 14, 2, 0xA);
    EXPECT_EQ(byteAt(builder, 1, 6 + 14, 3), 0x0F);
    EXPECT_EQ(byteAt(builder, 1, 6 + 15, 3), 0xAF);
    EXPECT_EQ(byteAt(builder, 1, 6 + 17, 3), 0xAF); // an audio block lies between
    EXPECT_EQ(byteAt(builder, 1, 6 + 18, 3), 0x0F);
    builder.concealVideoBlocks(1, 0, 135, 0x2);
    EXPECT_EQ(byteAt(builder, 1, 149, 3), 0x2F);
}

TEST(DVFrameBuilder, RefusesPlacesThatDoNotExist) {
    DVFrameBuilder builder(DVSystem::System525_60);
    const unsigned tenth[] = {10};
    EXPECT_THROW(builder.setTimecodeInSequences({}, tenth), std::out_of_range);
    EXPECT_THROW(builder.overwriteBlock(0, 150), std::out_of_range);
    EXPECT_THROW(builder.renumberHeader(10, 0), std::out_of_range);
    EXPECT_THROW(builder.setSubcodePack(0, 12, emptyPack), std::out_of_range);
    EXPECT_THROW(builder.concealVideoBlocks(0, 100, 36, 2), std::out_of_range);
    EXPECT_THROW((void)DVFrameBuilder(std::vector<std::uint8_t>(143999)), std::out_of_range);
}

TEST(DVFrameBuilder, StampsACopyOfAFrame) {
    DVFrameBuilder source(DVSystem::System625_50);
    source.setTimecode(timecode(1, 2, 3, 4));
    const FrameBytes frame = source.frame();

    DVFrameBuilder builder(frame.bytes());
    builder.setTimecode(timecode(1, 2, 3, 5));

    EXPECT_EQ(builder.system(), DVSystem::System625_50);
    EXPECT_EQ(frameTimecode(frame).SMPTETimeValue().mFrames, 4);
    EXPECT_EQ(frameTimecode(builder.frame()).SMPTETimeValue().mFrames, 5);
}

} // namespace
} // namespace merro::platform::deck
