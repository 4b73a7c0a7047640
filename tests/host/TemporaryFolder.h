// A folder of a test's own, gone when the test is.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdlib.h>
#include <string>

namespace merro::host::test {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "merro-test-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            throw std::filesystem::filesystem_error("mkdtemp",
                                                    std::error_code(errno, std::generic_category()));
        m_path = pattern;
    }
    ~TemporaryFolder() {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] std::string operator/(const std::string& name) const { return (m_path / name).string(); }
    [[nodiscard]] std::string path() const { return m_path.string(); }

private:
    std::filesystem::path m_path;
};

inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

} // namespace merro::host::test
