// The file of one movie on its way to its final name: written under a hidden name beside it, with a reserve
// of disk space for the movie's index.
//
// One thread at a time.
#pragma once

#include "platform/Error.h"
#include "platform/ffmpeg/OutputFiles.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace merro::platform::ffmpeg {

class MovieFile {
public:
    MovieFile(std::shared_ptr<OutputFiles> files, std::string path);
    ~MovieFile(); ///< gives up the reserve; a part file that was neither completed nor discarded stays
    MovieFile(const MovieFile&) = delete;
    MovieFile& operator=(const MovieFile&) = delete;

    /// Makes the part file and the reserve. Says why it cannot, leaving nothing behind.
    [[nodiscard]] std::optional<Error> open();

    /// Writes at the present position and moves it on. When the disk is full, the reserve is given up and the
    /// bytes are tried again: they are whole on the disk unless false is returned.
    [[nodiscard]] bool write(std::span<const std::uint8_t> bytes);
    void seek(std::int64_t positionBytes) { m_position = positionBytes; }
    [[nodiscard]] std::int64_t position() const { return m_position; }

    /// Sees to it that the index of `frames` frames finds room, and that the next `bytes` do not make the
    /// file larger than the file system allows. What is found to be wrong is told by `failure`.
    void prepareFor(std::int64_t frames, std::size_t bytes);

    /// Why nothing but the index may be written any more: the first thing that went wrong.
    [[nodiscard]] const std::optional<Error>& failure() const { return m_failure; }
    /// Forgets a failed write, so that the index can be tried.
    void clearWriteError() { m_isBroken = false; }

    /// Gives the file its final name, which must be free. Where that fails the part file stays and the error
    /// names it.
    [[nodiscard]] std::optional<Error> complete(bool flushToDisk);

    /// Removes the part file.
    void discard();

    [[nodiscard]] const std::string& partPath() const { return m_partPath; }

private:
    void growReserve(std::int64_t frames);
    void dropReserve();
    void fail(const Error& error);

    std::shared_ptr<OutputFiles> m_files;
    std::string m_path;
    std::string m_partPath;
    std::string m_reservePath;
    std::unique_ptr<OutputFile> m_file;
    std::unique_ptr<OutputFile> m_reserve;
    std::int64_t m_position = 0;
    std::int64_t m_end = 0;
    std::int64_t m_largest = 0;
    std::int64_t m_reserved = 0;
    bool m_isBroken = false;
    std::optional<Error> m_failure;
};

} // namespace merro::platform::ffmpeg
