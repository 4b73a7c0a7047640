// The program's command line: what it understands, and what it teaches with --help.
#pragma once

namespace merro::host {

/// Runs the command that was typed and answers the exit status. Problems of the command line, and of the
/// command, are told in one line on standard error.
[[nodiscard]] int runCommandLine(int argc, char** argv);

} // namespace merro::host
