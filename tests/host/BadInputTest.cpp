// Bad input gets one clear line, and nothing is lost by it.
#include "tests/host/Program.h"
#include "tests/host/TemporaryFolder.h"
#include "tests/host/TestTape.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace merro::host::test {
namespace {

using testing::HasSubstr;

struct BadInputTest : testing::Test {
    TemporaryFolder home;
    std::string tape = home / "tape.dv";
    std::string folder = home / "clips";

    Ended log(std::vector<std::string> more = {}) {
        std::vector<std::string> arguments{"log", tape, "--into", folder};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runProgram(arguments, home.path());
    }

    void expectOneLine(const Ended& ended, int status, const std::string& words) {
        EXPECT_EQ(ended.status, status) << ended.err;
        EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << ended.err;
        EXPECT_THAT(ended.err, HasSubstr(words));
        EXPECT_EQ(ended.out, "");
    }
    void expectFolderNotMade() { EXPECT_FALSE(std::filesystem::exists(folder)); }
};

TEST_F(BadInputTest, NoSuchFile) {
    expectOneLine(log(), 1, tape);
    expectFolderNotMade();
}

TEST_F(BadInputTest, AnEmptyFile) {
    writeFile(tape, "");
    expectOneLine(log(), 1, "empty");
    expectFolderNotMade();
}

TEST_F(BadInputTest, AFileThatIsNoDV) {
    writeFile(tape, std::string(500'000, 'x'));
    expectOneLine(log(), 3, tape);
    expectOneLine(runProgram({"inspect", tape}, home.path()), 3, tape);
    expectFolderNotMade();
}

TEST_F(BadInputTest, HDV) {
    std::string stream; // MPEG transport packets: 188 bytes, each beginning with 0x47
    for (int packet = 0; packet < 2000; ++packet)
        stream += "\x47" + std::string(187, '\0');
    writeFile(tape, stream);
    expectOneLine(log(), 3, "HDV");
}

TEST_F(BadInputTest, AFolderAsSource) {
    std::filesystem::create_directory(tape);
    expectOneLine(log(), 1, tape);
}

TEST_F(BadInputTest, AFolderThatCannotBeWrittenTo) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "root may write everywhere";
    writeFile(tape, tapeOfTwoTakes());
    std::filesystem::create_directory(folder);
    ::chmod(folder.c_str(), 0500);
    expectOneLine(log(), 1, "cannot be written to");
}

TEST_F(BadInputTest, AFolderThatIsAFile) {
    writeFile(tape, tapeOfTwoTakes());
    writeFile(folder, "my diary");
    expectOneLine(log(), 1, "is no folder");
    EXPECT_EQ(readFile(folder), "my diary");
}

TEST_F(BadInputTest, ACatalogueOfANewerVersionIsLeftAsItIs) {
    writeFile(tape, tapeOfTwoTakes());
    ASSERT_EQ(log({"--movies", "off"}).status, 0);
    std::string bytes = readFile(folder + "/catalogue.sqlite");
    bytes[63] = 9; // user_version
    writeFile(folder + "/catalogue.sqlite", bytes);
    expectOneLine(log(), 1, "of version 9");
    expectOneLine(runProgram({"export", folder}, home.path()), 1, "of version 9");
    EXPECT_EQ(readFile(folder + "/catalogue.sqlite"), bytes);
    EXPECT_FALSE(std::filesystem::exists(folder + "/0003.thumbnails"));
}

TEST_F(BadInputTest, ASourceThatLiesInItsOwnFolderIsLeftAsItIs) {
    std::filesystem::create_directory(folder);
    tape = folder + "/0001.dv";
    const std::string bytes = tapeOfTwoTakes();
    writeFile(tape, bytes);
    EXPECT_EQ(log({"--movies", "off"}).status, 0);
    EXPECT_EQ(readFile(tape), bytes);
    EXPECT_TRUE(std::filesystem::exists(folder + "/0002.thumbnails"));
    EXPECT_FALSE(std::filesystem::exists(folder + "/0001.thumbnails"));
}

TEST_F(BadInputTest, AnUnknownPreset) {
    writeFile(tape, tapeOfTwoTakes());
    expectOneLine(log({"--preset", "nosuch"}), 1, "There is no preset \"nosuch\"");
    expectFolderNotMade();
}

TEST_F(BadInputTest, WordsThatTheCommandLineDoesNotKnow) {
    expectOneLine(runProgram({"lgo"}, home.path()), 2, "merro");
    expectOneLine(runProgram({}, home.path()), 2, "merro");
    expectOneLine(log({"--scenes", "perhaps"}), 2, "--scenes");
    expectOneLine(log({"--sample-every", "3"}), 2, "--sample-every");
    expectOneLine(log({"--end-of-tape", "soon"}), 2, "--end-of-tape");
    expectOneLine(log({"--after", "party"}), 2, "--after");
    expectOneLine(log({"--drop-frames", "-1"}), 2, "--drop-frames");
    expectOneLine(runProgram({"log", tape}, home.path()), 2, "--into");
}

TEST_F(BadInputTest, AnExportOfWhatIsNoFolderOfClips) {
    expectOneLine(runProgram({"export", home / "nowhere"}, home.path()), 1, "There is no folder");
    expectOneLine(runProgram({"export", home.path()}, home.path()), 1, "There is no catalogue");
}

} // namespace
} // namespace merro::host::test
