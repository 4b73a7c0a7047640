#include "dv/DVDifSequenceBlock.h"

#include "tests/dv/HandMadeFrame.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace merro {
namespace {

using test::HandMadeFrame;

DVDifSequenceBlock blockOf(const platform::FrameBytes& frame, unsigned sequence, unsigned block) {
    return DVDifSequenceBlock::initWithDataForSequenceIndexBlockIndex(frame, sequence, block);
}

TEST(DifBlock, ReadsItsThreeIdBytes) {
    HandMadeFrame made(HandMadeFrame::size525);
    made.put(3, 7, 0, {0x95, 0x3F, 0x86});

    const DVDifSequenceBlock block = blockOf(made.frame(), 3, 7);

    EXPECT_EQ(block.sectionType(), kDIFSectionVideo);
    EXPECT_EQ(block.sequenceNumber(), 3U);
    EXPECT_EQ(block.sequenceChannel(), 1U);
    EXPECT_EQ(block.blockNumber(), 0x86U);
    EXPECT_EQ(block.sequenceIndex(), 3U);
    EXPECT_EQ(block.blockIndex(), 7U);
    EXPECT_EQ(block.offset(), 36560U); // (3 x 150 + 7) x 80
}

TEST(DifBlock, HasItsChannelInOneBitOfTheSecondByte) {
    HandMadeFrame made(HandMadeFrame::size525);
    made.put(0, 7, 0, {0x95, 0xF7, 0x00});
    EXPECT_EQ(blockOf(made.frame(), 0, 7).sequenceChannel(), 0U);
    EXPECT_EQ(blockOf(made.frame(), 0, 7).sequenceNumber(), 15U);
}

TEST(DifBlock, ReadsNothingFromANullFrame) {
    const DVDifSequenceBlock block = blockOf({}, 1, 2);
    EXPECT_EQ(block.sectionType(), 0);
    EXPECT_EQ(block.offset(), 12160U);
}

TEST(DifBlock, CopiesBytesCountedFromItsStart) {
    HandMadeFrame made(HandMadeFrame::size525);
    made.put(3, 7, 78, {1, 2}).put(3, 8, 0, {3, 4});
    const DVDifSequenceBlock block = blockOf(made.frame(), 3, 7);

    std::array<std::uint8_t, 4> bytes{};
    block.getBytesStartLength(bytes.data(), 78, 4);

    EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{1, 2, 3, 4}));
}

TEST(DifBlock, RaisesPastTheEndOfTheFrame) {
    const platform::FrameBytes frame = HandMadeFrame(HandMadeFrame::size525).frame();
    EXPECT_THROW((void)blockOf(frame, 10, 0), std::out_of_range);

    const DVDifSequenceBlock last = blockOf(frame, 9, 149);
    std::array<std::uint8_t, 81> bytes{};
    EXPECT_NO_THROW(last.getBytesStartLength(bytes.data(), 0, 80));
    EXPECT_THROW(last.getBytesStartLength(bytes.data(), 0, 81), std::out_of_range);
    EXPECT_THROW(last.getBytesStartLength(bytes.data(), 4294967295U, 1), std::out_of_range);
}

TEST(DifBlock, DecodesAgainWhenGivenAFrameAlsoTheSameOne) {
    HandMadeFrame made(HandMadeFrame::size525);
    auto bytes = std::make_shared<std::vector<std::uint8_t>>(made.bytes());
    const platform::FrameBytes frame(bytes, *bytes);
    DVDifSequenceBlock block = blockOf(frame, 0, 1);
    EXPECT_EQ(block.sectionType(), kDIFSectionSubcode);

    (*bytes)[80] = 0x7F;
    block.setData(frame);
    EXPECT_EQ(block.sectionType(), kDIFSectionAudio);

    made.put(0, 1, 0, {0x9F});
    block.setData(made.frame());
    EXPECT_EQ(block.sectionType(), kDIFSectionVideo);
}

} // namespace
} // namespace merro
