// Tapes in AVI, QuickTime and Matroska files.
#include "platform/ffmpeg/ContainerTape.h"

#include "ffmpeg/MadeFrames.h"
#include "ffmpeg/MovieReader.h"

#include <functional>
#include <memory>
#include <variant>

namespace merro::test {

using platform::deck::Tape;
using platform::deck::TapeError;
using platform::deck::TapeProblem;
using platform::ffmpeg::openContainerTape;

namespace {

struct Container {
    std::string name;
    std::function<void(const std::string& path, const std::vector<Bytes>& frames)> write;
};

void PrintTo(const Container& container, std::ostream* out) {
    *out << container.name;
}

class ContainerTapes : public ::testing::TestWithParam<Container> {
protected:
    ContainerTapes() {
        frames = framesOf(takeOf(12));
        GetParam().write(path, frames);
        auto opened = openContainerTape(path);
        if (auto* opening = std::get_if<std::unique_ptr<Tape>>(&opened))
            tape = std::move(*opening);
        else
            ADD_FAILURE() << std::get<TapeError>(opened).error.text();
    }

    Bytes bytesAt(std::int64_t index) {
        const auto frame = tape->frameAt(index);
        return frame ? Bytes(frame->bytes.bytes().begin(), frame->bytes.bytes().end()) : Bytes();
    }

    OwnFolder folder;
    std::string path = folder.path("tape." + GetParam().name);
    std::vector<Bytes> frames;
    std::unique_ptr<Tape> tape;
};

std::function<void(const std::string&, const std::vector<Bytes>&)> as(const std::string& format) {
    return [format](const std::string& path, const std::vector<Bytes>& frames) {
        writeContainer(path, format, frames);
    };
}

} // namespace

TEST_P(ContainerTapes, GiveEveryFrameByteForByte) {
    for (std::size_t index = 0; index < frames.size(); ++index)
        EXPECT_EQ(bytesAt(static_cast<std::int64_t>(index)), frames[index]) << "frame " << index;
    EXPECT_FALSE(tape->frameAt(12));
    EXPECT_FALSE(tape->frameAt(-1));
    EXPECT_EQ(tape->frameCount(), 12);
    EXPECT_TRUE(tape->isFrameCountExact());
    EXPECT_TRUE(tape->findings().empty());
}

TEST_P(ContainerTapes, CanBeReadInAnyOrder) {
    for (const std::int64_t index : {7, 2, 11, 0, 0, 5, 6, 4})
        EXPECT_EQ(bytesAt(index), frames[static_cast<std::size_t>(index)]) << "frame " << index;
}

TEST_P(ContainerTapes, SayWhereAFrameLies) {
    const Bytes file = contentsOf(path);
    const auto frame = tape->frameAt(3);
    ASSERT_TRUE(frame);
    // The place of the frame, or of the few bytes of its chunk's header before it.
    const auto found = std::search(file.begin() + static_cast<std::ptrdiff_t>(frame->offsetBytes), file.end(),
                                   frames[3].begin(), frames[3].end());
    EXPECT_LE(found - file.begin() - frame->offsetBytes, 16);
}

TEST_P(ContainerTapes, FramesOutliveTheTape) {
    const auto frame = tape->frameAt(4);
    ASSERT_TRUE(frame);
    tape.reset();
    EXPECT_TRUE(std::ranges::equal(frame->bytes.bytes(), frames[4]));
}

TEST_P(ContainerTapes, CutShortGiveWhatIsThere) {
    tape.reset();
    std::filesystem::resize_file(path, std::filesystem::file_size(path) * 2 / 3);
    auto opened = openContainerTape(path);
    auto* opening = std::get_if<std::unique_ptr<Tape>>(&opened);
    if (opening == nullptr) {
        EXPECT_EQ(GetParam().name, "mov"); // a movie without its index cannot be read at all
        return;
    }
    tape = std::move(*opening);
    for (std::int64_t index = 0; index < 7; ++index)
        EXPECT_EQ(bytesAt(index), frames[static_cast<std::size_t>(index)]);
    EXPECT_FALSE(tape->frameAt(11));
}

INSTANTIATE_TEST_SUITE_P(All, ContainerTapes,
                         ::testing::Values(Container{"avi", as("avi")}, Container{"dv1", writeAviType1},
                                           Container{"mov", as("mov")}, Container{"mkv", as("matroska")}),
                         [](const auto& tested) { return tested.param.name; });

class NoContainerTape : public ::testing::Test {
protected:
    TapeError problemOf(const std::string& path) {
        auto opened = openContainerTape(path);
        const auto* problem = std::get_if<TapeError>(&opened);
        EXPECT_NE(problem, nullptr);
        return problem == nullptr ? TapeError{} : *problem;
    }

    OwnFolder folder;
};

TEST_F(NoContainerTape, WhereThereIsNoFile) {
    const auto problem = problemOf(folder.path("none.avi"));
    EXPECT_EQ(problem.problem, TapeProblem::NoSuchFile);
    EXPECT_NE(problem.error.message.find("none.avi"), std::string::npos);
}

TEST_F(NoContainerTape, InAFolderOrAnEmptyFile) {
    EXPECT_EQ(problemOf(folder.path("")).problem, TapeProblem::Folder);
    writeContents(folder.path("empty.mov"), {});
    EXPECT_EQ(problemOf(folder.path("empty.mov")).problem, TapeProblem::Empty);
}

TEST_F(NoContainerTape, InAFileOfAnotherKind) {
    writeContents(folder.path("text.avi"), Bytes(5000, 'x'));
    const auto problem = problemOf(folder.path("text.avi"));
    EXPECT_EQ(problem.problem, TapeProblem::NotDV);
    EXPECT_TRUE(problem.isNotDV());
}

TEST_F(NoContainerTape, InDVOfFiftyMegabits) {
    writeContainer(folder.path("fifty.mov"), "mov", std::vector<Bytes>(2, Bytes(288000, 7)));
    EXPECT_EQ(problemOf(folder.path("fifty.mov")).problem, TapeProblem::FiftyMbs);
}

TEST(ContainerTape, SkipsAndReportsAStoredFrameOfAnotherSize) {
    const OwnFolder folder;
    auto frames = framesOf(takeOf(3));
    auto stored = frames;
    stored.insert(stored.begin() + 1, Bytes(5000, 1));
    writeContainer(folder.path("tape.mov"), "mov", stored);
    auto opened = openContainerTape(folder.path("tape.mov"));
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<Tape>>(opened));
    auto& tape = *std::get<std::unique_ptr<Tape>>(opened);
    for (int round = 0; round < 2; ++round)
        for (std::size_t index = 0; index < 3; ++index) {
            const auto frame = tape.frameAt(static_cast<std::int64_t>(index));
            ASSERT_TRUE(frame);
            EXPECT_TRUE(std::ranges::equal(frame->bytes.bytes(), frames[index]));
        }
    const auto findings = tape.findings();
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].lengthBytes, 5000);
}

} // namespace merro::test
