// Posters: size, colours, one field only, damaged frames, and files that appear whole.
#include "platform/ffmpeg/PosterMaker.h"

#include "ffmpeg/MadeFrames.h"
#include "ffmpeg/MovieReader.h"

#include <cstdlib>

namespace merro::test {

using platform::ffmpeg::Poster;
using platform::ffmpeg::PosterMaker;
using platform::ffmpeg::TapeAspect;

namespace {

struct Colour {
    int red;
    int green;
    int blue;
};

/// Allows for what DV compression does to a plain surface.
void expectColour(const Poster& poster, int x, int y, const Colour& expected) {
    const auto place = static_cast<std::size_t>(3 * (y * poster.width + x));
    EXPECT_NEAR(poster.rgb.at(place), expected.red, 4) << "red at " << x << "," << y;
    EXPECT_NEAR(poster.rgb.at(place + 1), expected.green, 4) << "green at " << x << "," << y;
    EXPECT_NEAR(poster.rgb.at(place + 2), expected.blue, 4) << "blue at " << x << "," << y;
}

Bytes frameOf(const std::string& picture, TapeAspect aspect = TapeAspect::Aspect4By3,
              TapeSystem system = TapeSystem::System625_50) {
    Take take = takeOf(1);
    take.picture = picture;
    take.aspect = aspect;
    return framesOf(take, system).front();
}

Poster posterOf(const Bytes& frame) {
    PosterMaker maker;
    Poster poster;
    const auto error = maker.makePoster(frame, poster);
    EXPECT_FALSE(error) << error->text();
    return poster;
}

/// Bars of 75 %: eight of 40 pixels each, white at full level, the colours at 191 (three quarters of 255).
void expectBars(const Poster& poster) {
    const int y = poster.height / 2;
    expectColour(poster, 20, y, {255, 255, 255});
    expectColour(poster, 60, y, {191, 191, 0});
    expectColour(poster, 100, y, {0, 191, 191});
    expectColour(poster, 140, y, {0, 191, 0});
    expectColour(poster, 180, y, {191, 0, 191});
    expectColour(poster, 220, y, {191, 0, 0});
    expectColour(poster, 260, y, {0, 0, 191});
    expectColour(poster, 300, y, {0, 0, 0});
}

} // namespace

TEST(Poster, ShowsBarsOf625LinesInTheirColours) {
    const auto poster = posterOf(frameOf("bars"));
    EXPECT_EQ(poster.width, 320);
    EXPECT_EQ(poster.height, 240);
    expectBars(poster);
}

TEST(Poster, ShowsBarsOf525LinesInTheirColours) {
    const auto poster = posterOf(frameOf("bars", TapeAspect::Aspect4By3, TapeSystem::System525_60));
    EXPECT_EQ(poster.height, 240);
    expectBars(poster);
}

TEST(Poster, OfAWidePictureIsFlatter) {
    const auto poster = posterOf(frameOf("bars", TapeAspect::Aspect16By9));
    EXPECT_EQ(poster.width, 320);
    EXPECT_EQ(poster.height, 180);
    expectBars(poster);
}

TEST(Poster, IsNotUpsideDown) {
    // White above black.
    const auto poster =
        posterOf(frameOf("color=black:s=720x576:r=50,format=yuv444p,geq=lum='if(lt(Y,288),235,16)':"
                         "cb=128:cr=128"));
    expectColour(poster, 160, 30, {255, 255, 255});
    expectColour(poster, 160, 210, {0, 0, 0});
}

TEST(Poster, ShowsTheFirstFieldOnly) {
    // The first field is black, the second white: woven together they would be grey.
    const auto poster = posterOf(
        frameOf("color=black:s=720x576:r=50,format=yuv444p,geq=lum='if(mod(N,2),235,16)':cb=128:cr=128"));
    expectColour(poster, 160, 120, {0, 0, 0});
    expectColour(poster, 10, 10, {0, 0, 0});
}

TEST(Poster, MakerGoesFromOneSystemAndAspectToAnother) {
    PosterMaker maker;
    Poster poster;
    for (const auto& frame :
         {frameOf("bars"), frameOf("bars", TapeAspect::Aspect16By9, TapeSystem::System525_60),
          frameOf("bars", TapeAspect::Aspect16By9), frameOf("bars")}) {
        ASSERT_FALSE(maker.makePoster(frame, poster));
        expectBars(poster);
    }
}

TEST(Poster, OfADamagedFrameShowsWhatIsLeft) {
    Bytes frame = frameOf("bars");
    for (std::size_t sequence = 3; sequence < 5;
         ++sequence) // their subcode and VAUX, and a part of the picture
        std::fill_n(frame.begin() + static_cast<std::ptrdiff_t>(sequence * 12000 + 80), 3000, 0xFF);
    const auto poster = posterOf(frame);
    expectColour(poster, 20, 20, {255, 255, 255});
    expectColour(poster, 300, 20, {0, 0, 0});
}

TEST(Poster, OfBytesThatAreNoPictureIsAPictureOrAClearError) {
    PosterMaker maker;
    Poster poster;
    for (const int filling : {0x00, 0x55, 0xFF}) {
        const auto error = maker.makePoster(Bytes(144000, static_cast<std::uint8_t>(filling)), poster);
        EXPECT_TRUE(error ? !error->message.empty() : poster.rgb.size() == 3U * 320 * 240);
    }
    ASSERT_FALSE(maker.makePoster(frameOf("bars"), poster)); // and the maker goes on
    expectBars(poster);
}

TEST(Poster, OfAnythingButAFrameIsAnError) {
    PosterMaker maker;
    Poster poster;
    ASSERT_TRUE(maker.makePoster(Bytes(1000), poster));
    ASSERT_TRUE(maker.makePoster({}, poster));
}

TEST(Poster, FileIsAPngAndAppearsAlone) {
    const OwnFolder folder;
    PosterMaker maker;
    const auto error = maker.writePoster(frameOf("bars"), folder.path("0001.png"));
    ASSERT_FALSE(error) << error->text();
    EXPECT_EQ(folder.names(), std::vector<std::string>{"0001.png"});
    const Bytes file = contentsOf(folder.path("0001.png"));
    // RFC 2083: signature, then the header chunk with width 320 and height 240, 8 bits of red, green and
    // blue.
    const Bytes start{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0,    13, 'I',
                      'H',  'D', 'R', 0,   0,    1,    0x40, 0,    0, 0, 0xF0, 8,  2};
    ASSERT_GT(file.size(), start.size());
    EXPECT_TRUE(std::equal(start.begin(), start.end(), file.begin()));
}

TEST(Poster, DoesNotOverwriteAFile) {
    const OwnFolder folder;
    writeContents(folder.path("0001.png"), {1, 2, 3});
    PosterMaker maker;
    const auto error = maker.writePoster(frameOf("bars"), folder.path("0001.png"));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->systemCode, EEXIST);
    EXPECT_EQ(contentsOf(folder.path("0001.png")), (Bytes{1, 2, 3}));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"0001.png"});
}

TEST(Poster, InAMissingFolderIsAnErrorThatNamesIt) {
    const OwnFolder folder;
    PosterMaker maker;
    const auto error = maker.writePoster(frameOf("bars"), folder.path("nowhere/0001.png"));
    ASSERT_TRUE(error);
    EXPECT_NE(error->message.find("nowhere/0001.png"), std::string::npos);
}

} // namespace merro::test
