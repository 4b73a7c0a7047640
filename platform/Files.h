// Files that the component writes.
#pragma once

#include "platform/Error.h"
#include "platform/FrameBytes.h"

#include <memory>
#include <optional>
#include <string>

namespace merro::platform {

/// An open file. One thread at a time.
class FileHandle {
public:
    virtual ~FileHandle() = default; ///< closes when still open

    /// Hands `bytes` over for writing at the end of what this handle has written so far. Writing happens on a
    /// thread of the surroundings, never on the caller's; a failure is told to the user by the surroundings,
    /// once for a file.
    virtual void append(const FrameBytes& bytes) = 0;

    /// No more bytes will come. What was appended is written in order before the file is closed.
    virtual void close() = 0;
};

class Files {
public:
    virtual ~Files() = default;

    /// Creates an empty file at `path` unless there is one, and opens it for writing from its first byte. An
    /// existing file is overwritten in place, not cut. Never null: where the file cannot be had, the
    /// surroundings tell the user which path and why, and the handle swallows what it is given.
    [[nodiscard]] virtual std::unique_ptr<FileHandle> openForWriting(const std::string& path) = 0;
};

} // namespace merro::platform
