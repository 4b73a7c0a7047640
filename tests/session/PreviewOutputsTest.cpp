#include "platform/session/AudioPreviewOutput.h"
#include "platform/session/VideoPreviewOutput.h"
#include "tests/session/SessionFixture.h"
#include "tests/support/FakeCapture.h"

namespace merro::test {
namespace {

using platform::MediaType;
using testing::ElementsAre;

using PreviewOutputs = SessionFixture<platform::VirtualWorld>;

TEST_F(PreviewOutputs, whoeverDrawsThePictureGetsTheNewestFrameOnce) {
    const auto preview = framework->makeVideoPreviewOutput();
    session->addOutput(preview);
    start();
    device->send(1);
    device->send(2);
    auto& output = dynamic_cast<platform::session::VideoPreviewOutput&>(*preview);
    const auto newest = output.takeNewestFrame();
    ASSERT_TRUE(newest);
    EXPECT_EQ(numberOf(*newest), 2);
    EXPECT_FALSE(output.takeNewestFrame());
}

TEST_F(PreviewOutputs, theVolumeIsKeptBetweenSilentAndFull) {
    const auto sound = framework->makeAudioPreviewOutput();
    EXPECT_EQ(sound->volume(), 1.0F);
    sound->setVolume(0.25F);
    EXPECT_EQ(sound->volume(), 0.25F);
    sound->setVolume(1.5F);
    EXPECT_EQ(sound->volume(), 1.0F);
    sound->setVolume(-1.0F);
    EXPECT_EQ(sound->volume(), 0.0F);
}

TEST_F(PreviewOutputs, compressionChoicesAreListedByMediumInTheOrderOfAdding) {
    const auto h264 = std::make_shared<NamedCompressionOptions>("H.264");
    const auto jpeg = std::make_shared<NamedCompressionOptions>("Photo JPEG");
    const auto aac = std::make_shared<NamedCompressionOptions>("AAC");
    framework->addCompressionOptions(MediaType::Video, "h264", h264);
    framework->addCompressionOptions(MediaType::Sound, "aac", aac);
    framework->addCompressionOptions(MediaType::Video, "jpeg", jpeg);
    EXPECT_THAT(framework->compressionOptionsIdentifiersForMediaType(MediaType::Video),
                ElementsAre("h264", "jpeg"));
    EXPECT_EQ(framework->compressionOptionsWithIdentifier("jpeg"), jpeg);
    EXPECT_EQ(framework->compressionOptionsWithIdentifier("unknown"), nullptr);
}

} // namespace
} // namespace merro::test
