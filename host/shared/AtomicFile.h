// Small text files that are never seen half written.
#pragma once

#include <string>
#include <string_view>

namespace merro::host {

/// Puts `text` into the file at `path`, in place of what was there: written under a temporary name in the
/// same folder, made durable, then renamed. Throws Failure (path and reason); the old file is then untouched.
/// Any thread, one at a time for a path.
void writeFileAtomically(const std::string& path, std::string_view text);

} // namespace merro::host
