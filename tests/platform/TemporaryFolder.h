// A folder for one test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace merro::platform {

class TemporaryFolder {
public:
    TemporaryFolder() : m_folder(make()) {}
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] std::string path(const std::string& name) const { return m_folder + "/" + name; }

    /// The whole file; "(none)" when there is none.
    [[nodiscard]] static std::string contents(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        if (!file)
            return "(none)";
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static void write(const std::string& path, const std::string& contents) {
        std::ofstream(path, std::ios::binary) << contents;
    }

    [[nodiscard]] std::size_t fileCount() const {
        const std::filesystem::directory_iterator files(m_folder);
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

private:
    static std::string make() {
        std::string name = testing::TempDir() + "merro.XXXXXX";
        EXPECT_NE(::mkdtemp(name.data()), nullptr);
        return name;
    }

    const std::string m_folder;
};

} // namespace merro::platform
