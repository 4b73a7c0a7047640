// Files written on a thread of their own.
#include "platform/native/BackgroundFiles.h"

#include "tests/platform/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <latch>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <vector>

namespace merro::platform::native {
namespace {

FrameBytes bytes(const std::string& text) {
    return FrameBytes::taking({text.begin(), text.end()});
}

/// Keeps what the writing thread tells; read it after a drain.
struct Told {
    [[nodiscard]] BackgroundFilesEvents events() {
        return {[this](const Error& problem) { problems.push_back(problem); },
                [this](const std::string& path, std::int64_t frames) {
                    lost.push_back(path + ": " + std::to_string(frames));
                }};
    }
    std::vector<Error> problems;
    std::vector<std::string> lost;
};

class BackgroundFilesTest : public testing::Test {
protected:
    std::string path(const std::string& name) const { return m_folder.path(name); }
    std::string contents(const std::string& name) const { return TemporaryFolder::contents(path(name)); }

    TemporaryFolder m_folder;
    Told m_told;
};

TEST_F(BackgroundFilesTest, whatIsAppendedIsWrittenInOrder) {
    BackgroundFiles files(m_told.events());
    const auto one = files.openForWriting(path("one"));
    const auto other = files.openForWriting(path("other"));
    one->append(bytes("a"));
    other->append(bytes("x"));
    one->append(bytes("bc"));
    one->close();
    files.drain();
    EXPECT_EQ(contents("one"), "abc");
    EXPECT_EQ(contents("other"), "x");
    EXPECT_TRUE(m_told.problems.empty());
}

TEST_F(BackgroundFilesTest, anOpenedFileIsThereAndEmpty) {
    BackgroundFiles files;
    const auto file = files.openForWriting(path("empty"));
    files.drain();
    EXPECT_EQ(contents("empty"), "");
}

TEST_F(BackgroundFilesTest, anExistingFileIsOverwrittenInPlaceAndNotCut) {
    TemporaryFolder::write(path("old"), "0123456789");
    BackgroundFiles files;
    const auto file = files.openForWriting(path("old"));
    file->append(bytes("ab"));
    file->append(bytes("c"));
    files.drain();
    EXPECT_EQ(contents("old"), "abc3456789");
}

TEST_F(BackgroundFilesTest, aHandleThatGoesClosesItsFileAndAClosedOneSwallows) {
    BackgroundFiles files(m_told.events());
    auto file = files.openForWriting(path("file"));
    file->append(bytes("a"));
    file->close();
    file->append(bytes("b"));
    file->close();
    file.reset();
    (void)files.openForWriting(path("dropped"));
    files.drain();
    EXPECT_EQ(contents("file"), "a");
    EXPECT_EQ(contents("dropped"), "");
    EXPECT_TRUE(m_told.lost.empty());
}

TEST_F(BackgroundFilesTest, everythingIsFinishedBeforeTheFilesGoAndHandlesMayOutliveThem) {
    std::unique_ptr<FileHandle> survivor;
    {
        BackgroundFiles files;
        survivor = files.openForWriting(path("survivor"));
        for (int i = 0; i < 1000; ++i)
            survivor->append(bytes("x"));
    }
    EXPECT_EQ(contents("survivor"), std::string(1000, 'x'));
    survivor->append(bytes("too late"));
    survivor->close();
    EXPECT_EQ(contents("survivor"), std::string(1000, 'x'));
}

TEST_F(BackgroundFilesTest, aFileGetsItsFinalNameBehindAllThatWasAppended) {
    BackgroundFiles files;
    const auto file = files.openForWriting(path("0001.part"));
    file->append(bytes("all of it"));
    file->close();
    std::string whenDone;
    files.finish(path("0001.part"), path("0001.thumbnails"), [&](const std::optional<Error>& error) {
        EXPECT_EQ(error, std::nullopt);
        whenDone = contents("0001.thumbnails");
    });
    files.drain();
    EXPECT_EQ(whenDone, "all of it");
    EXPECT_EQ(contents("0001.part"), "(none)");
}

TEST_F(BackgroundFilesTest, aFinalNameThatIsTakenIsNotOverwritten) {
    TemporaryFolder::write(path("part"), "new");
    TemporaryFolder::write(path("taken"), "precious");
    BackgroundFiles files;
    std::optional<Error> told;
    files.finish(path("part"), path("taken"), [&](const std::optional<Error>& error) { told = error; });
    files.drain();
    ASSERT_TRUE(told);
    EXPECT_EQ(told->systemCode, EEXIST);
    EXPECT_NE(told->message.find(path("taken")), std::string::npos);
    EXPECT_FALSE(told->remedy.empty());
    EXPECT_EQ(contents("taken"), "precious");
    EXPECT_EQ(contents("part"), "new");
}

TEST_F(BackgroundFilesTest, aFileThatIsNotThereCannotBeFinished) {
    BackgroundFiles files;
    std::optional<Error> told;
    files.finish(path("none"), path("final"), [&](const std::optional<Error>& error) { told = error; });
    files.finish(path("none"), path("final"), nullptr);
    files.drain();
    ASSERT_TRUE(told);
    EXPECT_EQ(told->systemCode, ENOENT);
}

TEST_F(BackgroundFilesTest, postedWorkRunsBehindWhatWasAskedForBeforeOnOneOtherThread) {
    BackgroundFiles files;
    std::vector<std::string> seen;
    std::thread::id thread;
    const auto file = files.openForWriting(path("file"));
    file->append(bytes("a"));
    files.post([&] {
        seen.push_back(contents("file"));
        thread = std::this_thread::get_id();
        files.drain(); // on its own thread it has nothing to wait for
    });
    file->append(bytes("b"));
    files.post([&] {
        seen.push_back(contents("file"));
        files.post([&] { seen.emplace_back("last"); });
    });
    files.drain();
    files.drain();
    EXPECT_EQ(seen, (std::vector<std::string>{"a", "ab", "last"}));
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_F(BackgroundFilesTest, aPathThatCannotBeHadIsToldOnceAndTheHandleSwallows) {
    TemporaryFolder::write(path("file"), "");
    BackgroundFiles files(m_told.events());
    const auto file = files.openForWriting(path("file/below"));
    file->append(bytes("a"));
    file->append(bytes("b"));
    file->close();
    (void)files.openForWriting(path("no such folder/x"));
    files.drain();
    ASSERT_EQ(m_told.problems.size(), 2U);
    EXPECT_EQ(m_told.problems[0].systemCode, ENOTDIR);
    EXPECT_EQ(m_told.problems[0].message, "Cannot open " + path("file/below") + ": Not a directory");
    EXPECT_FALSE(m_told.problems[0].remedy.empty());
    EXPECT_EQ(m_told.problems[1].systemCode, ENOENT);
    EXPECT_EQ(m_told.lost, std::vector{path("file/below") + ": 2"});
}

TEST_F(BackgroundFilesTest, aFullDiskIsToldOnceAndWhatIsLostIsCounted) {
    BackgroundFiles files(m_told.events());
    const auto file = files.openForWriting("/dev/full");
    for (int i = 0; i < 3; ++i)
        file->append(bytes("frame"));
    file->close();
    files.drain();
    ASSERT_EQ(m_told.problems.size(), 1U);
    EXPECT_EQ(m_told.problems[0].text(),
              "Cannot write /dev/full: No space left on device: free some space on that disk, "
              "or choose another folder");
    EXPECT_EQ(m_told.lost, std::vector<std::string>{"/dev/full: 3"});
}

TEST_F(BackgroundFilesTest, aFileThatFillsUpKeepsWholeFramesOnly) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    BackgroundFiles files(m_told.events());
    const rlimit tight{25, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    const auto file = files.openForWriting(path("clip"));
    for (int i = 0; i < 4; ++i)
        file->append(bytes("0123456789")); // the third would reach byte 30
    file->close();
    files.drain();
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(contents("clip"), "01234567890123456789");
    ASSERT_EQ(m_told.problems.size(), 1U);
    EXPECT_EQ(m_told.problems[0].systemCode, EFBIG);
    EXPECT_EQ(m_told.lost, std::vector{path("clip") + ": 2"});
}

TEST_F(BackgroundFilesTest, anotherFileGoesOnWhenOneCannotBeWritten) {
    BackgroundFiles files(m_told.events());
    const auto full = files.openForWriting("/dev/full");
    const auto good = files.openForWriting(path("good"));
    full->append(bytes("a"));
    good->append(bytes("b"));
    files.drain();
    EXPECT_EQ(contents("good"), "b");
}

TEST_F(BackgroundFilesTest, aFullQueueLosesFramesWhereItMayNotWaitAndSaysSo) {
    BackgroundFiles files(m_told.events(), {8, session::WhenFull::LoseFrame});
    std::latch disk(1);
    const auto file = files.openForWriting(path("live"));
    files.post([&] { disk.wait(); });
    file->append(bytes("aaaa"));
    file->append(bytes("bbbb")); // 8 bytes wait
    file->append(bytes("cccc"));
    file->append(bytes("dddd"));
    disk.count_down();
    files.drain();
    file->append(bytes("eeee"));
    file->close();
    files.drain();
    EXPECT_EQ(contents("live"), "aaaabbbbeeee");
    ASSERT_EQ(m_told.problems.size(), 1U);
    EXPECT_NE(m_told.problems[0].message.find("too slow"), std::string::npos);
    EXPECT_NE(m_told.problems[0].message.find(path("live")), std::string::npos);
    EXPECT_EQ(m_told.lost, std::vector{path("live") + ": 2"});
}

TEST_F(BackgroundFilesTest, aFullQueueMakesTheCallerWaitWhereItMay) {
    BackgroundFiles files(m_told.events(), {8, session::WhenFull::Wait});
    std::latch disk(1);
    const auto file = files.openForWriting(path("tape"));
    files.post([&] { disk.wait(); });
    std::atomic<int> appended = 0;
    std::thread appends([&] {
        for (const char* const text : {"aaaa", "bbbb", "cccc", "dddd"}) {
            file->append(bytes(text));
            ++appended;
        }
    });
    while (appended < 2)
        std::this_thread::yield();
    EXPECT_EQ(appended, 2); // the third stays where it is until the disk moves
    disk.count_down();
    appends.join();
    files.drain();
    EXPECT_EQ(contents("tape"), "aaaabbbbccccdddd");
    EXPECT_TRUE(m_told.lost.empty());
}

TEST_F(BackgroundFilesTest, oneAppendLargerThanTheQueueIsTaken) {
    BackgroundFiles files(m_told.events(), {1, session::WhenFull::LoseFrame});
    const auto file = files.openForWriting(path("large"));
    files.drain();
    file->append(bytes("larger than one byte"));
    files.drain();
    EXPECT_EQ(contents("large"), "larger than one byte");
}

TEST_F(BackgroundFilesTest, threadsAppendAtTheSameTime) {
    BackgroundFiles files(m_told.events(), {64, session::WhenFull::Wait});
    std::vector<std::thread> threads;
    for (const char* const name : {"a", "b", "c"}) {
        threads.emplace_back([&, name] {
            const auto file = files.openForWriting(path(name));
            for (int i = 0; i < 500; ++i)
                file->append(bytes(name));
        });
    }
    for (auto& thread : threads)
        thread.join();
    files.drain();
    EXPECT_EQ(contents("a"), std::string(500, 'a'));
    EXPECT_EQ(contents("b"), std::string(500, 'b'));
    EXPECT_EQ(contents("c"), std::string(500, 'c'));
}

} // namespace
} // namespace merro::platform::native
