// Runs the program as a user does.
#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace merro::host::test {

struct Ended {
    int status = -1; ///< exit status; 128 and the signal when a signal ended it
    std::string out;
    std::string err;
};

/// The program on its way. Settings and presets lie in `home`; nothing of the user's own is touched.
class Program {
public:
    Program(const std::vector<std::string>& arguments, const std::string& home,
            const std::string& program = MERRO_PROGRAM);
    ~Program(); ///< ends it when it still runs
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void sendSignal(int signal) const;

    /// Blocks until standard output has `text` in it or the program ends; whether it had.
    [[nodiscard]] bool waitForOutput(const std::string& text) const;

    [[nodiscard]] Ended wait();

private:
    pid_t m_process = -1;
    std::string m_outPath;
    std::string m_errPath;
    int m_status = -1;
};

[[nodiscard]] Ended runProgram(const std::vector<std::string>& arguments, const std::string& home,
                               const std::string& program = MERRO_PROGRAM);

} // namespace merro::host::test
