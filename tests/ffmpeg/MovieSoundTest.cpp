// The sound of recorded movies: taken out untouched, and kept together with the picture.
#include "ffmpeg/RecordingFixture.h"

#include <cmath>
#include <cstdlib>

namespace merro::test {

using platform::ffmpeg::TakeFault;
using platform::ffmpeg::TakeFaultKind;

class MovieSound : public Recording {
protected:
    static constexpr std::size_t kChannels = 2;

    ReadSound onlySound() const {
        const auto movie = readMovie(path);
        EXPECT_EQ(movie.sounds.size(), 1U);
        return movie.sounds.empty() ? ReadSound{} : movie.sounds.front();
    }

    static int loudest(const ReadSound& sound, std::size_t firstSample, std::size_t endSample) {
        int loudest = 0;
        for (std::size_t place = firstSample * kChannels; place < endSample * kChannels; ++place)
            loudest = std::max(loudest, std::abs(int{sound.samples.at(place)}));
        return loudest;
    }

    /// Changes the audio source packs of a frame (50 hex, IEC 61834-4): byte `number` of the pack.
    static void changeSoundPack(Bytes& frame, std::size_t number, std::uint8_t keep, std::uint8_t set) {
        for (std::size_t sequence = 0; sequence < frame.size(); sequence += 12000)
            for (std::size_t block = 6; block < 150; block += 16)
                if (std::uint8_t* pack = &frame[sequence + block * 80 + 3]; pack[0] == 0x50)
                    pack[number] = static_cast<std::uint8_t>((pack[number] & keep) | set);
    }
};

TEST_F(MovieSound, IsWhatLibavformatFindsInTheTape) {
    const auto frames = framesOf(takeOf(25));
    record(frames);
    writeContents(folder.path("tape.dv"), joined(frames));
    const auto tape = readMovie(folder.path("tape.dv"), "dv");
    ASSERT_EQ(tape.sounds.size(), 1U);
    const auto sound = onlySound();
    EXPECT_EQ(sound.codec, "pcm_s16le");
    EXPECT_EQ(sound.rateInHertz, 48000);
    EXPECT_EQ(sound.channels, 2);
    EXPECT_EQ(sound.samples.size(), kChannels * 48000);
    EXPECT_EQ(sound.samples, tape.sounds[0].samples);
    EXPECT_EQ(loudest(sound, 0, 48000), 8192); // a quarter of full scale, as made
}

TEST_F(MovieSound, FollowsTheFiveFrameCycleOf525Lines) {
    record(framesOf(takeOf(10), TapeSystem::System525_60));
    EXPECT_EQ(onlySound().samples.size(), kChannels * 2 * 8008); // 48000 × 1001 / 30000 × 5 = 8008
}

TEST_F(MovieSound, FramesWithoutSoundBecomeSilenceOfTheirLength) {
    Take take = takeOf(10);
    take.faults = {TakeFault{TakeFaultKind::NoSound, 2, 3, {}, {}}};
    record(framesOf(take));
    const auto sound = onlySound();
    ASSERT_EQ(sound.samples.size(), kChannels * 10 * 1920);
    EXPECT_EQ(loudest(sound, 2 * 1920, 4 * 1920), 0);
    EXPECT_GT(loudest(sound, 1920, 2 * 1920), 8000);
    EXPECT_GT(loudest(sound, 4 * 1920, 5 * 1920), 8000);
}

TEST_F(MovieSound, LostSamplesAreSilent) {
    Take take = takeOf(4);
    take.faults = {TakeFault{TakeFaultKind::LostSound, 1, 1, {}, {}}};
    record(framesOf(take));
    const auto sound = onlySound();
    ASSERT_EQ(sound.samples.size(), kChannels * 4 * 1920);
    EXPECT_EQ(loudest(sound, 1920, 2 * 1920), 0);
    EXPECT_GT(loudest(sound, 2 * 1920, 3 * 1920), 8000);
}

TEST_F(MovieSound, ATapeWithoutSoundHasNoSoundTrack) {
    Take take = takeOf(5);
    take.faults = {TakeFault{TakeFaultKind::NoSound, 0, 4, {}, {}}};
    EXPECT_TRUE(record(framesOf(take)).isPlayable);
    EXPECT_TRUE(readMovie(path).sounds.empty());
}

TEST_F(MovieSound, SoundThatBeginsLaterIsHeardAtItsPicture) {
    Take take = takeOf(10);
    take.faults = {TakeFault{TakeFaultKind::NoSound, 0, 4, {}, {}}};
    record(framesOf(take));
    const auto sound = onlySound();
    EXPECT_EQ(sound.samples.size(), kChannels * 5 * 1920);
    EXPECT_NEAR(sound.startInSeconds, 0.2, 0.001);
}

TEST_F(MovieSound, ASecondPairOfChannelsIsASecondTrack) {
    auto frames = framesOf(takeOf(5));
    for (auto& frame : frames) {
        changeSoundPack(frame, 1, 0xC0, 0x10); // 16 samples above the least of 1264: 1280 for each frame
        changeSoundPack(frame, 4, 0xC0, 0x11); // 32 kHz, 12 bits
    }
    record(frames);
    const auto movie = readMovie(path);
    ASSERT_EQ(movie.sounds.size(), 2U);
    for (const auto& sound : movie.sounds) {
        EXPECT_EQ(sound.rateInHertz, 32000);
        EXPECT_EQ(sound.samples.size(), kChannels * 5 * 1280);
    }
}

TEST_F(MovieSound, AnotherRateIsMadeToFit) {
    auto frames = framesOf(takeOf(50));
    for (std::size_t index = 10; index < 50; ++index) {
        changeSoundPack(frames[index], 1, 0xC0, 0x10);
        changeSoundPack(frames[index], 4, 0xC0, 0x10); // 32 kHz, 16 bits
    }
    record(frames);
    const auto sound = onlySound();
    EXPECT_EQ(sound.rateInHertz, 48000);
    EXPECT_NEAR(static_cast<double>(sound.samples.size()) / kChannels, 50 * 1920, 960);
}

TEST_F(MovieSound, ASoundClockThatIsFastDoesNotRunAway) {
    auto frames = framesOf(takeOf(60));
    for (auto& frame : frames)
        changeSoundPack(frame, 1, 0xC0, 0x30); // 1896 + 48 = 1944 samples, 24 more than a frame lasts
    record(frames);
    // 60 × 24 = 1440 too many; half a frame of them, 960, is let pass.
    EXPECT_EQ(onlySound().samples.size(), kChannels * (60 * 1920 + 960));
}

TEST_F(MovieSound, ASoundClockThatIsSlowDoesNotStayBehind) {
    auto frames = framesOf(takeOf(60));
    for (auto& frame : frames)
        changeSoundPack(frame, 1, 0xC0, 0x00); // 1896 samples, 24 fewer than a frame lasts
    record(frames);
    EXPECT_EQ(onlySound().samples.size(), kChannels * (60 * 1920 - 960));
}

} // namespace merro::test
