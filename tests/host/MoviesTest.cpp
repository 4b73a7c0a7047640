// The library of movies is loaded when it is needed, and only the one that belongs to the program.
#include "host/shared/Movies.h"

#include "host/shared/Failure.h"
#include "platform/Log.h"
#include "tests/host/TemporaryFolder.h"
#include "tests/host/TestTape.h"

#include <gmock/gmock.h>

#include <string_view>
#include <vector>

namespace merro::host::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

std::string refusal(const std::string& path) {
    try {
        (void)loadMovieLibrary(path);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "loaded";
}

TEST(MoviesTest, AMissingLibraryIsNamedWithTheRemedy) {
    const TemporaryFolder home;
    const std::string path = home / "merro_movies.so";
    EXPECT_THAT(refusal(path), AllOf(HasSubstr("movies need " + path), HasSubstr("install merro again")));
}

TEST(MoviesTest, AFileThatIsNoLibraryIsNamedWithTheRemedy) {
    const TemporaryFolder home;
    const std::string path = home / "merro_movies.so";
    writeFile(path, "no library");
    EXPECT_THAT(refusal(path), AllOf(HasSubstr("movies need " + path), HasSubstr("install merro again")));
}

TEST(MoviesTest, ALibraryOfAnotherVersionIsNotUsed) {
    EXPECT_THAT(refusal(MERRO_OLD_MOVIES),
                AllOf(HasSubstr(MERRO_OLD_MOVIES " is of merro 0.0.1"), HasSubstr("install merro again")));
}

TEST(MoviesTest, ALibraryOfSomethingElseIsNotUsed) {
    EXPECT_THAT(refusal("libm.so.6"), HasSubstr("movies need libm.so.6"));
}

TEST(MoviesTest, TheLibraryLogsIntoTheLogOfTheProgram) {
    struct CollectingLog final : platform::Log {
        void line(std::string_view text) override { written.append(text).append("\n"); }
        std::string written;
    };
    const TemporaryFolder home;
    DVFrameBuilder builder(DVSystem::System525_60);
    std::vector<std::uint8_t> frame(builder.bytes().begin(), builder.bytes().end());
    frame[80] = 0xFF; // block 1 of sequence 0 does not call itself subcode any more

    CollectingLog log;
    platform::setProcessLog(&log);
    EXPECT_EQ(movieLibrary().makePosterWriter()(frame, home / "poster.png"), std::nullopt);
    platform::setProcessLog(nullptr);

    EXPECT_THAT(log.written, HasSubstr("Cannot decode subcode"));
}

} // namespace
} // namespace merro::host::test
