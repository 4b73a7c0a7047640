#include "tests/host/Program.h"

#include "tests/host/TemporaryFolder.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace merro::host::test {

namespace {

std::atomic<int> runCount = 0;

void redirect(const std::string& path, int descriptor) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0 || ::dup2(file, descriptor) < 0)
        ::_exit(99);
    ::close(file);
}

int exitStatus(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

Program::Program(const std::vector<std::string>& arguments, const std::string& home,
                 const std::string& program) {
    const std::string prefix = home + "/run" + std::to_string(runCount++);
    m_outPath = prefix + ".out";
    m_errPath = prefix + ".err";
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    m_process = ::fork();
    if (m_process < 0)
        throw std::runtime_error("fork");
    if (m_process == 0) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the child has one thread
        ::setenv("XDG_CONFIG_HOME", home.c_str(), 1);
        redirect("/dev/null", STDIN_FILENO);
        redirect(m_outPath, STDOUT_FILENO);
        redirect(m_errPath, STDERR_FILENO);
        ::execv(argv[0], argv.data());
        ::_exit(99);
    }
}

Program::~Program() {
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
}

void Program::sendSignal(int signal) const {
    ::kill(m_process, signal);
}

bool Program::waitForOutput(const std::string& text) const {
    for (;;) {
        if (readFile(m_outPath).find(text) != std::string::npos)
            return true;
        siginfo_t ended{};
        if (::waitid(P_PID, static_cast<id_t>(m_process), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 ||
            ended.si_pid != 0)
            return readFile(m_outPath).find(text) != std::string::npos;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

Ended Program::wait() {
    int status = 0;
    ::waitpid(m_process, &status, 0);
    m_process = -1;
    return {exitStatus(status), readFile(m_outPath), readFile(m_errPath)};
}

Ended runProgram(const std::vector<std::string>& arguments, const std::string& home,
                 const std::string& program) {
    return Program(arguments, home, program).wait();
}

} // namespace merro::host::test
