// Calls a function now and then, in real time, on a thread of its own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace merro::host {

class Ticker {
public:
    /// `tick` is called every `interval`, the first time after one.
    Ticker(std::chrono::milliseconds interval, std::function<void()> tick);
    ~Ticker(); ///< waits for a call under way; there is none afterwards
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

private:
    std::mutex m_mutex;
    std::condition_variable m_wakeUp;
    bool m_isEnding = false;
    std::thread m_thread;
};

} // namespace merro::host
