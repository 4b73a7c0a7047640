#include "host/cli/CommandLine.h"

#include <csignal>

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // a run goes on when nobody reads its events any more
    return merro::host::runCommandLine(argc, argv);
}
