// Small text files that are never seen half written.
#pragma once

#include <string>
#include <string_view>

namespace merro::host {

/// Whether the text is on the disk before the file gets its name: dear, and only a power failure shows it.
enum class Durable { No, Yes };

/// Puts `text` into the file at `path`, in place of what was there: written under a temporary name in the
/// same folder, then renamed. Throws Failure (path and reason); the old file is then untouched. Any thread,
/// one at a time for a path.
void writeFileAtomically(const std::string& path, std::string_view text, Durable durable = Durable::Yes);

} // namespace merro::host
