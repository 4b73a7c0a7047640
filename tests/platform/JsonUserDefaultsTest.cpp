// Settings in a JSON file.
#include "platform/native/JsonUserDefaults.h"

#include "tests/platform/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace merro::platform::native {
namespace {

class JsonUserDefaultsTest : public testing::Test {
protected:
    std::unique_ptr<JsonUserDefaults> open() {
        return std::make_unique<JsonUserDefaults>(
            m_path, [this](const Error& problem) { m_problems.push_back(problem); });
    }
    [[nodiscard]] std::string contents() const { return TemporaryFolder::contents(m_path); }
    [[nodiscard]] nlohmann::json values() const { return nlohmann::json::parse(contents()).at("values"); }

    /// The file is left as it is, and settings last as long as the process.
    void expectLeftAlone(const std::string& before) {
        TemporaryFolder::write(m_path, before);
        {
            const auto defaults = open();
            ASSERT_EQ(m_problems.size(), 1U);
            EXPECT_NE(m_problems[0].message.find(m_path), std::string::npos);
            EXPECT_FALSE(m_problems[0].remedy.empty());
            defaults->setObjectForKey(3, "nbDropFrame");
            defaults->setObjectForKey(4, "nbDropFrame");
            EXPECT_EQ(defaults->integerForKey("nbDropFrame"), 4);
        }
        EXPECT_EQ(m_problems.size(), 1U); // told once
        EXPECT_EQ(contents(), before);
    }

    TemporaryFolder m_folder;
    const std::string m_path = m_folder.path("settings/defaults.json");
    std::vector<Error> m_problems;
};

TEST_F(JsonUserDefaultsTest, readingAloneMakesNoFile) {
    EXPECT_EQ(open()->objectForKey("detectScene"), std::nullopt);
    EXPECT_EQ(contents(), "(none)");
    EXPECT_TRUE(m_problems.empty());
}

TEST_F(JsonUserDefaultsTest, whatIsStoredIsThereInTheNextProcess) {
    open()->setObjectForKey(12, "nbDropFrame");
    open()->setObjectForKey(true, "detectScene");
    EXPECT_EQ(open()->integerForKey("nbDropFrame"), 12);
    EXPECT_EQ(open()->objectForKey("detectScene"), Value(true));
    open()->removeObjectForKey("nbDropFrame");
    EXPECT_EQ(open()->objectForKey("nbDropFrame"), std::nullopt);
}

TEST_F(JsonUserDefaultsTest, theFileSaysWhatItIsAndItsVersion) {
    open()->setObjectForKey(12, "nbDropFrame");
    const auto json = nlohmann::json::parse(contents());
    EXPECT_EQ(json.at("format"), "BXMerroCapture defaults");
    EXPECT_EQ(json.at("version"), 1);
    EXPECT_EQ(json.at("values"), (nlohmann::json{{"nbDropFrame", 12}}));
}

TEST_F(JsonUserDefaultsTest, aFileWrittenByHandIsRead) {
    std::filesystem::create_directories(m_folder.path("settings"));
    TemporaryFolder::write(m_path, R"({"format": "BXMerroCapture defaults", "version": 1, "values":
        {"detectScene": false, "movieVolume": 0.25, "captureMovieCompressionData": {"$data": "AAEC/w=="}}})");
    const auto defaults = open();
    EXPECT_EQ(defaults->objectForKey("detectScene"), Value(false));
    EXPECT_EQ(defaults->doubleForKey("movieVolume"), 0.25);
    EXPECT_EQ(defaults->objectForKey("captureMovieCompressionData"), Value(Data{0, 1, 2, 255}));
}

TEST_F(JsonUserDefaultsTest, aFileThatIsNoSettingsFileIsLeftAlone) {
    std::filesystem::create_directories(m_folder.path("settings"));
    expectLeftAlone("{\"format\": \"BXMerro");
}

TEST_F(JsonUserDefaultsTest, anEmptyFileIsLeftAlone) {
    std::filesystem::create_directories(m_folder.path("settings"));
    expectLeftAlone("");
}

TEST_F(JsonUserDefaultsTest, anotherProgramsFileIsLeftAlone) {
    std::filesystem::create_directories(m_folder.path("settings"));
    expectLeftAlone(R"({"format": "other", "version": 1, "values": {}})");
}

TEST_F(JsonUserDefaultsTest, aFileWithAValueThatIsNoneIsLeftAlone) {
    std::filesystem::create_directories(m_folder.path("settings"));
    expectLeftAlone(
        R"({"format": "BXMerroCapture defaults", "version": 1, "values": {"x": {"$data": "not base64"}}})");
}

TEST_F(JsonUserDefaultsTest, aFileOfANewerVersionIsLeftAloneAndSaidToBe) {
    std::filesystem::create_directories(m_folder.path("settings"));
    expectLeftAlone(R"({"format": "BXMerroCapture defaults", "version": 2, "values": "in another way"})");
    EXPECT_NE(m_problems[0].message.find("newer version"), std::string::npos);
}

TEST_F(JsonUserDefaultsTest, aFileThatIsDamagedMeanwhileIsLeftAlone) {
    const auto defaults = open();
    defaults->setObjectForKey(1, "nbDropFrame");
    TemporaryFolder::write(m_path, "damage");
    defaults->setObjectForKey(2, "nbDropFrame");
    EXPECT_EQ(contents(), "damage");
    EXPECT_EQ(m_problems.size(), 1U);
    EXPECT_EQ(defaults->integerForKey("nbDropFrame"), 2);
}

TEST_F(JsonUserDefaultsTest, aFolderThatCannotBeHadIsToldOnceAndSettingsLastForTheProcess) {
    TemporaryFolder::write(m_folder.path("settings"), "a file where the folder should be");
    const auto defaults = open();
    defaults->setObjectForKey(2, "nbDropFrame");
    defaults->setObjectForKey(3, "nbDropFrame");
    EXPECT_EQ(defaults->integerForKey("nbDropFrame"), 3);
    EXPECT_EQ(m_problems.size(), 1U);
}

TEST_F(JsonUserDefaultsTest, programsThatRunAtTheSameTimeKeepEachOthersSettings) {
    const auto one = open();
    const auto other = open();
    one->setObjectForKey(1, "fromOne");
    other->setObjectForKey(2, "fromOther");
    EXPECT_EQ(values(), (nlohmann::json{{"fromOne", 1}, {"fromOther", 2}}));
    EXPECT_EQ(other->integerForKey("fromOne"), 1); // taken over when it wrote
}

TEST_F(JsonUserDefaultsTest, whatAnotherProgramChangedIsHeardOfWhenItIsTakenOver) {
    const auto one = open();
    const auto other = open();
    other->setObjectForKey(1, "stays");
    one->setObjectForKey(5, "nbDropFrame");
    std::vector<std::string> heard;
    const auto observation =
        other->addObserver("nbDropFrame", [&](const std::string& key) { heard.push_back(key); });
    const auto unchanged = other->addObserver("stays", [&](const std::string& key) { heard.push_back(key); });
    other->setObjectForKey(true, "detectScene");
    EXPECT_EQ(heard, std::vector<std::string>{"nbDropFrame"});
}

TEST_F(JsonUserDefaultsTest, whatAnotherProgramRemovedStaysRemoved) {
    const auto one = open();
    one->setObjectForKey(1, "gone");
    const auto other = open();
    one->removeObjectForKey("gone");
    other->setObjectForKey(2, "nbDropFrame");
    EXPECT_EQ(values(), (nlohmann::json{{"nbDropFrame", 2}}));
}

TEST_F(JsonUserDefaultsTest, manyProcessesLoseNothing) {
    constexpr int kProcesses = 4;
    constexpr int kEach = 10;
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        const pid_t child = ::fork();
        if (child == 0) {
            JsonUserDefaults defaults(m_path, nullptr);
            for (int i = 0; i < kEach; ++i)
                defaults.setObjectForKey(i, std::to_string(process) + "." + std::to_string(i));
            ::_exit(0);
        }
        children.push_back(child);
    }
    for (const pid_t child : children)
        ::waitpid(child, nullptr, 0);
    EXPECT_EQ(values().size(), std::size_t{kProcesses * kEach});
}

TEST_F(JsonUserDefaultsTest, changesThatAreHeldAreWrittenTogether) {
    const auto defaults = open();
    int heard = 0;
    const auto observation = defaults->addObserver("detectScene", [&](const auto&) { ++heard; });
    auto hold = defaults->holdWriting();
    defaults->setObjectForKey(true, "detectScene");
    defaults->setObjectForKey(0, "nbDropFrame");
    EXPECT_EQ(heard, 1);
    EXPECT_TRUE(defaults->boolForKey("detectScene"));
    EXPECT_EQ(contents(), "(none)");
    hold.reset();
    EXPECT_EQ(values(), (nlohmann::json{{"detectScene", true}, {"nbDropFrame", 0}}));
}

TEST_F(JsonUserDefaultsTest, anEqualValueIsNotWrittenAgain) {
    const auto defaults = open();
    defaults->setObjectForKey(1, "nbDropFrame");
    const auto before = std::filesystem::last_write_time(m_path);
    std::filesystem::last_write_time(m_path, before - std::chrono::hours(1));
    defaults->setObjectForKey(1, "nbDropFrame");
    EXPECT_EQ(std::filesystem::last_write_time(m_path), before - std::chrono::hours(1));
}

TEST_F(JsonUserDefaultsTest, nothingIsLeftBesideTheFileButItsLock) {
    open()->setObjectForKey(1, "nbDropFrame");
    const std::filesystem::directory_iterator files(m_folder.path("settings"));
    EXPECT_EQ(std::distance(begin(files), end(files)), 2);
    EXPECT_EQ(TemporaryFolder::contents(m_path + ".lock"), "");
}

TEST_F(JsonUserDefaultsTest, aSymbolicLinkStaysOne) {
    open()->setObjectForKey(1, "nbDropFrame");
    std::filesystem::rename(m_path, m_folder.path("elsewhere.json"));
    std::filesystem::create_symlink(m_folder.path("elsewhere.json"), m_path);
    open()->setObjectForKey(true, "detectScene");
    EXPECT_TRUE(std::filesystem::is_symlink(m_path));
    EXPECT_EQ(values(), (nlohmann::json{{"nbDropFrame", 1}, {"detectScene", true}}));
}

TEST(DefaultsPath, isInTheUsersConfigurationFolder) {
    ::setenv("XDG_CONFIG_HOME", "/somewhere", 1);
    EXPECT_EQ(JsonUserDefaults::defaultPath(), "/somewhere/BXMerroCapture/defaults.json");
    ::setenv("HOME", "/home/ada", 1);
    ::setenv("XDG_CONFIG_HOME", "relative/is/ignored", 1);
    EXPECT_EQ(JsonUserDefaults::defaultPath(), "/home/ada/.config/BXMerroCapture/defaults.json");
    ::unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(JsonUserDefaults::defaultPath(), "/home/ada/.config/BXMerroCapture/defaults.json");
}

} // namespace
} // namespace merro::platform::native
