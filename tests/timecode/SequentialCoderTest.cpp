#include "timecode/SequentialCoder.h"

#include <gtest/gtest.h>

namespace merro {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(SequentialCoder, WritesTypeAndBytesMostSignificantFirst) {
    SequentialEncoder coder;
    coder.encodeInt(-2);
    coder.encodeChar(1);
    EXPECT_EQ(coder.bytes(), (Bytes{'i', 0xFF, 0xFF, 0xFF, 0xFE, 'c', 1}));
}

TEST(SequentialCoder, ReadsBackInOrder) {
    const Bytes bytes{'i', 0x00, 0x00, 0x07, 0xD5, 'c', 0xFF};
    SequentialDecoder coder(bytes);
    EXPECT_EQ(coder.decodeInt(), 2005);
    EXPECT_EQ(coder.decodeChar(), -1);
    EXPECT_EQ(coder.decodeChar(), std::nullopt);
}

TEST(SequentialCoder, AnswersNothingForAnotherTypeOrACutValue) {
    const Bytes bytes{'i', 0x00, 0x00, 0x07};
    EXPECT_EQ(SequentialDecoder(bytes).decodeInt(), std::nullopt);
    const Bytes other{'c', 0x00};
    EXPECT_EQ(SequentialDecoder(other).decodeInt(), std::nullopt);
}

} // namespace
} // namespace merro
