// The file system as the writers of this folder use it, so that tests can put faults in its place.
//
// Any thread for OutputFiles, one thread at a time for an OutputFile. Errors are errno values, 0 being
// success. A wrapper that forwards to another OutputFiles overrides only what it breaks.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace merro::platform::ffmpeg {

/// An open file; closed by its destructor.
class OutputFile {
public:
    virtual ~OutputFile() = default;

    /// Writes from `offsetBytes` on and returns how many bytes were written, all of them unless `error` is
    /// set.
    virtual std::size_t write(std::span<const std::uint8_t> bytes, std::int64_t offsetBytes, int& error) = 0;

    /// Gives the file `lengthBytes` of room on the disk, whether or not they are ever written.
    [[nodiscard]] virtual int allocate(std::int64_t lengthBytes) = 0;

    /// Waits until what was written is on the disk.
    [[nodiscard]] virtual int flushToDisk() = 0;
};

class OutputFiles {
public:
    virtual ~OutputFiles() = default;

    /// Creates a file that is not there yet; null with `error` set when there is one or it cannot be made.
    [[nodiscard]] virtual std::unique_ptr<OutputFile> create(const std::string& path, int& error) = 0;

    [[nodiscard]] virtual bool exists(const std::string& path) const = 0;
    virtual void remove(const std::string& path) = 0;

    /// EEXIST when something stands at `to`, which is left alone.
    [[nodiscard]] virtual int renameWithoutReplacing(const std::string& from, const std::string& to) = 0;

    /// The largest file that may be made in the folder of `path`.
    [[nodiscard]] virtual std::int64_t largestFileBytes(const std::string& path) const = 0;
};

/// The real file system.
[[nodiscard]] std::shared_ptr<OutputFiles> makeOutputFiles();

/// A name beside `path`, in the same folder and hidden: ".NAME.SUFFIX", or ".NAME.2.SUFFIX" and so on when
/// taken. Creates that file; null with `error` set when it cannot be made.
[[nodiscard]] std::unique_ptr<OutputFile> createBeside(OutputFiles& files, const std::string& path,
                                                       const std::string& suffix, std::string& createdPath,
                                                       int& error);

} // namespace merro::platform::ffmpeg
