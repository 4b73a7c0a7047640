// Files that are written on a thread of their own.
#pragma once

#include "platform/Files.h"
#include "platform/session/MovieRecorder.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace merro::platform::native {

/// Told on the writing thread. Empty members are not called.
struct BackgroundFilesEvents {
    /// A file cannot be had or written, or the disk is too slow for it. Once a file, when it first happens.
    std::function<void(const Error& problem)> problem;
    /// When a file of which not everything could be written is closed: how many of the things appended to it
    /// are not in it.
    std::function<void(const std::string& path, std::int64_t frames)> framesLost;
};

struct BackgroundFilesLimits {
    /// What may wait for the disk. One append is always taken, however large.
    std::size_t queuedBytes = std::size_t{32} << 20;
    session::WhenFull whenFull = session::WhenFull::Wait;
};

/// Opening, appending, closing, renaming and posted functions happen one after another on one thread, in the
/// order in which they were asked for. Operations may be called from any thread; the object is not
/// destroyed on the writing thread.
///
/// A file never ends within something appended to it: what could be written only in part is cut off again.
class BackgroundFiles final : public Files {
public:
    explicit BackgroundFiles(BackgroundFilesEvents events = {}, BackgroundFilesLimits limits = {});

    /// Finishes everything asked for. Handles that live on swallow what they are given.
    ~BackgroundFiles() override;
    BackgroundFiles(const BackgroundFiles&) = delete;
    BackgroundFiles& operator=(const BackgroundFiles&) = delete;

    /// The file appears when the writing thread comes to it.
    [[nodiscard]] std::unique_ptr<FileHandle> openForWriting(const std::string& path) override;

    /// Gives the file at `path` its final name once everything asked for before is done, unless something has
    /// that name already. `done` is called on the writing thread with the error, if any; the file then still
    /// lies at `path`.
    void finish(const std::string& path, const std::string& finalPath,
                std::function<void(const std::optional<Error>& error)> done);

    /// Runs `function` on the writing thread once everything asked for before is done.
    void post(std::function<void()> function);

    /// Blocks until everything asked for before is done; at once on the writing thread itself.
    void drain();

private:
    class Handle;
    class Writer;
    std::shared_ptr<Writer> m_writer;
};

/// Gives a file another name in the same file system unless something has that name already (EEXIST).
[[nodiscard]] std::optional<Error> renameWithoutReplacing(const std::string& from, const std::string& to);

} // namespace merro::platform::native
