// The program without its library of movies: everything but movies goes on.
#include "tests/host/Program.h"
#include "tests/host/TemporaryFolder.h"
#include "tests/host/TestTape.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace merro::host::test {
namespace {

using testing::HasSubstr;

struct WithoutMoviesTest : testing::Test {
    TemporaryFolder home;
    std::string tape = home / "tape.dv";
    std::string folder = home / "clips";
    std::string program = home / "bin/merro";

    WithoutMoviesTest() {
        std::filesystem::create_directory(home / "bin");
        std::filesystem::copy_file(MERRO_PROGRAM, program);
        writeFile(tape, tapeOfTwoTakes());
    }
    Ended run(const std::vector<std::string>& arguments) {
        return runProgram(arguments, home.path(), program);
    }
    void expectTheLibraryNamed(const Ended& ended) {
        EXPECT_EQ(ended.status, 1) << ended.err;
        EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << ended.err;
        EXPECT_THAT(ended.err, HasSubstr("merro_movies.so"));
        EXPECT_THAT(ended.err, HasSubstr("install merro again"));
    }
};

TEST_F(WithoutMoviesTest, ARawTapeIsLoggedWhenNeitherMoviesNorPostersAreWanted) {
    const Ended ended = run({"log", tape, "--into", folder, "--movies", "off", "--posters", "off"});
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_TRUE(std::filesystem::exists(folder + "/0002.thumbnails"));
}

TEST_F(WithoutMoviesTest, ARawTapeIsInspected) {
    EXPECT_EQ(run({"inspect", tape, "--frames", "0"}).status, 0);
}

TEST_F(WithoutMoviesTest, MoviesOrPostersAreRefusedBeforeAnythingIsWritten) {
    expectTheLibraryNamed(run({"log", tape, "--into", folder, "--posters", "off"}));
    expectTheLibraryNamed(run({"log", tape, "--into", folder, "--movies", "off"}));
    EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST_F(WithoutMoviesTest, APresetDecidesWhetherMoviesAreWanted) {
    ASSERT_EQ(run({"preset", "save", "reports", "--movies", "off"}).status, 0);
    const Ended ended = run({"log", tape, "--into", folder, "--preset", "reports", "--posters", "off"});
    EXPECT_EQ(ended.status, 0) << ended.err;
}

TEST_F(WithoutMoviesTest, ATapeInAContainerIsRefused) {
    writeFile(tape, std::string("\0\0\0\x14"
                                "ftypqt  ",
                                12) +
                        std::string(1000, '\0'));
    expectTheLibraryNamed(run({"log", tape, "--into", folder, "--movies", "off", "--posters", "off"}));
}

TEST_F(WithoutMoviesTest, ATapeIsNotMade) {
    writeFile(home / "scenario.json", R"({"takes": [{"frames": 5}]})");
    expectTheLibraryNamed(run({"tape", "make", home / "scenario.json", home / "made.dv"}));
    EXPECT_FALSE(std::filesystem::exists(home / "made.dv"));
}

} // namespace
} // namespace merro::host::test
