// The folder that a tape is logged into: its names, and that nothing in it is ever overwritten.
//
// One thread at a time, except `paths`, which any thread may call. While the object lives no other run logs
// into the folder.
#pragma once

#include <string>

namespace merro::host {

/// Where the files of one clip lie, as absolute paths.
struct ClipPaths {
    std::string clipId;
    std::string movie;
    std::string thumbnails;
    std::string thumbnailsInTheMaking; ///< hidden, beside `thumbnails`, until the file is whole
    std::string poster;
};

class LoggingFolder {
public:
    /// Makes the folder where there is none and takes it for this run. Throws Failure: it cannot be made or
    /// written to, it is no folder, another run has it, or its catalogue is of a newer version.
    explicit LoggingFolder(const std::string& folder);
    ~LoggingFolder();
    LoggingFolder(const LoggingFolder&) = delete;
    LoggingFolder& operator=(const LoggingFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; } ///< absolute
    [[nodiscard]] std::string cataloguePath() const;
    [[nodiscard]] std::string clipsJsonPath() const;
    [[nodiscard]] ClipPaths paths(int clipNumber) const;

    /// The highest clip number that a file of the folder carries ("0007.mov", ".0007.thumbnails.part"); 0
    /// when there is none.
    [[nodiscard]] int lastNumberOfFiles() const;

private:
    std::string m_path;
    int m_lock = -1;
};

} // namespace merro::host
