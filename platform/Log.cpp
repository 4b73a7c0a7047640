#include "platform/Log.h"

#include <atomic>
#include <cstdio>
#include <string>

namespace merro::platform {

namespace {

class StandardErrorLog final : public Log {
public:
    void line(std::string_view text) override {
        std::string whole(text);
        whole += '\n';
        (void)std::fwrite(whole.data(), 1, whole.size(),
                          stderr); // one call: stdio locks the stream around it
    }
};

std::atomic<Log*>& currentLog() {
    static std::atomic<Log*> current = nullptr;
    return current;
}

} // namespace

void setProcessLog(Log* log) {
    currentLog() = log;
}

Log& processLog() {
    static StandardErrorLog standardError;
    Log* const log = currentLog();
    return log ? *log : standardError;
}

} // namespace merro::platform
