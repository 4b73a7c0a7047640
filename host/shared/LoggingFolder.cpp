#include "host/shared/LoggingFolder.h"

#include "host/shared/Catalogue.h"
#include "host/shared/ClipsJson.h"
#include "host/shared/Failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

namespace merro::host {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostDigits = 9; ///< longer rows of digits are no clip numbers of ours

/// The clip number of a file name, or 0: four or more digits, then a dot. Hidden files are names in the
/// making.
int clipNumberOfName(std::string name) {
    if (name.starts_with('.'))
        name.erase(0, 1);
    const auto digits = static_cast<std::size_t>(
        std::find_if(name.begin(), name.end(), [](unsigned char c) { return std::isdigit(c) == 0; }) -
        name.begin());
    if (digits < 4 || digits > kMostDigits || digits == name.size() || name[digits] != '.')
        return 0;
    return std::stoi(name.substr(0, digits));
}

void makeFolder(const std::string& path) {
    std::error_code error;
    if (fs::exists(path, error) && !fs::is_directory(path, error))
        throw Failure(fmt::format("{} is no folder", path));
    fs::create_directories(path, error);
    if (error)
        throw Failure(fmt::format("The folder {} cannot be made: {}", path, error.message()));
}

/// Permissions alone do not tell (a read-only disk, a quota): a file is really made.
void requireWritable(const std::string& path) {
    const std::string probe = (fs::path(path) / fmt::format(".merro-{}.part", ::getpid())).string();
    const int file = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0)
        throw Failure(fmt::format("The folder {} cannot be written to: {}", path,
                                  std::generic_category().message(errno)));
    ::close(file);
    ::unlink(probe.c_str());
}

} // namespace

LoggingFolder::LoggingFolder(const std::string& folder) {
    makeFolder(folder);
    std::error_code error;
    m_path = fs::canonical(folder, error).string();
    if (error)
        throw Failure(fmt::format("The folder {} cannot be entered: {}", folder, error.message()));
    requireWritable(m_path);
    Database::requireUsable(cataloguePath());
    m_lock = ::open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_lock >= 0 && ::flock(m_lock, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        ::close(m_lock);
        throw Failure(fmt::format("Another run is logging into the folder {}", m_path));
    }
}

LoggingFolder::~LoggingFolder() {
    if (m_lock >= 0)
        ::close(m_lock);
}

std::string LoggingFolder::cataloguePath() const {
    return (fs::path(m_path) / Catalogue::kFileName).string();
}

std::string LoggingFolder::clipsJsonPath() const {
    return (fs::path(m_path) / kClipsJsonName).string();
}

ClipPaths LoggingFolder::paths(int clipNumber) const {
    const std::string id = clipIdOfNumber(clipNumber);
    const fs::path folder(m_path);
    return {id, (folder / (id + ".mov")).string(), (folder / (id + ".thumbnails")).string(),
            (folder / ("." + id + ".thumbnails.part")).string(), (folder / (id + ".png")).string()};
}

int LoggingFolder::lastNumberOfFiles() const {
    int last = 0;
    std::error_code error;
    for (fs::directory_iterator entry(m_path, error); !error && entry != fs::directory_iterator();
         entry.increment(error))
        last = std::max(last, clipNumberOfName(entry->path().filename().string()));
    return last;
}

} // namespace merro::host
