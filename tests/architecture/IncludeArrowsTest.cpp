// The folders' arrows point down only. This reads every include of the project and names the line that points
// up.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

using Folders = std::set<std::string>;

/// A surrounding that several others build on may be named by them; no component folder may name any.
const Folders kSurroundings = {"platform/native", "platform/virtualtime", "platform/session", "platform/deck",
                               "platform/ffmpeg", "platform/qt",          "platform/firewire"};

/// What the sources of a folder may include, itself aside.
const std::map<std::string, Folders> kAllowed = {
    {"platform", {}},
    {"timecode", {"platform"}},
    {"dv", {"platform", "timecode"}},
    {"catalogue", {"platform", "timecode", "dv"}},
    {"views", {"platform", "timecode", "dv", "catalogue"}},
    {"capture", {"platform", "timecode", "dv", "catalogue", "views"}},
    {"recapture", {"platform", "timecode", "dv", "catalogue", "views", "capture"}},
    {"platform/native", {"platform", "platform/session"}},
    {"platform/virtualtime", {"platform"}},
    {"platform/session", {"platform"}},
    {"platform/deck", {"platform", "platform/session", "timecode", "dv"}},
    {"platform/ffmpeg", {"platform", "platform/session", "platform/deck", "timecode", "dv"}},
};

std::string folderOf(const std::filesystem::path& relative) {
    return relative.parent_path().generic_string();
}

bool mayInclude(const std::string& from, const std::string& to) {
    if (from == to || from.starts_with("tests") || from.starts_with("bench"))
        return true;
    // Of platform/ffmpeg a host needs MovieLibrary.h alone: it is not linked with the rest, but loads it.
    if (from.starts_with("host"))
        return !to.starts_with("tests") && !to.starts_with("bench");
    const auto rule = kAllowed.find(from);
    return rule != kAllowed.end() && rule->second.contains(to);
}

/// "file:line: folder may not include target" for every include that points up.
std::vector<std::string> wrongIncludes(const std::filesystem::path& root) {
    std::vector<std::string> wrong;
    const std::regex include("^\\s*#\\s*include\\s+\"([^\"]+)\"");
    for (const char* top :
         {"platform", "timecode", "dv", "catalogue", "views", "capture", "recapture", "host"}) {
        if (!std::filesystem::exists(root / top))
            continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root / top)) {
            if (entry.path().extension() != ".h" && entry.path().extension() != ".cpp")
                continue;
            const auto relative = std::filesystem::relative(entry.path(), root);
            std::ifstream file(entry.path());
            std::string text;
            for (int line = 1; std::getline(file, text); ++line) {
                std::smatch match;
                if (!std::regex_search(text, match, include))
                    continue;
                const std::filesystem::path target(match[1].str());
                const std::string place = relative.generic_string() + ":" + std::to_string(line) + ": ";
                if (!std::filesystem::exists(root / target))
                    wrong.push_back(place + "includes are named from the project's top: " + target.string());
                else if (!mayInclude(folderOf(relative), folderOf(target)))
                    wrong.push_back(place + folderOf(relative) + "/ may not include " + target.string());
            }
        }
    }
    return wrong;
}

TEST(IncludeArrows, PointDownOnly) {
    for (const std::string& line : wrongIncludes(MERRO_SOURCE_DIR))
        ADD_FAILURE() << line;
}

TEST(IncludeArrows, AComponentFolderNamingASurroundingIsFoundWithItsLine) {
    const auto root = std::filesystem::temp_directory_path() / "merro-include-arrows";
    std::filesystem::remove_all(root);
    std::filesystem::create_directories(root / "capture");
    std::filesystem::create_directories(root / "platform/deck");
    std::ofstream(root / "platform/deck/Deck.h") << "#pragma once\n";
    std::ofstream(root / "capture/Wrong.cpp") << "// first line\n#include \"platform/deck/Deck.h\"\n";

    const auto wrong = wrongIncludes(root);

    ASSERT_EQ(wrong.size(), 1U);
    EXPECT_EQ(wrong.front(), "capture/Wrong.cpp:2: capture/ may not include platform/deck/Deck.h");
    std::filesystem::remove_all(root);
}

TEST(IncludeArrows, NoComponentFolderIsAllowedASurrounding) {
    for (const char* folder : {"timecode", "dv", "catalogue", "views", "capture", "recapture", "platform"})
        for (const std::string& surrounding : kSurroundings)
            EXPECT_FALSE(mayInclude(folder, surrounding)) << folder << " → " << surrounding;
}

} // namespace
