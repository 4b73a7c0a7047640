// A thread that does small jobs in order, so that the thread that hands them over never waits for a disk.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace merro::host {

class BackgroundWorker {
public:
    using Job = std::function<void()>;

    /// `afterBatch`, when given, runs on the worker's thread each time all jobs that were waiting have been
    /// done. Neither it nor a job may throw.
    explicit BackgroundWorker(Job afterBatch = {});
    ~BackgroundWorker(); ///< finishes

    BackgroundWorker(const BackgroundWorker&) = delete;
    BackgroundWorker& operator=(const BackgroundWorker&) = delete;

    /// Any thread. After finish() the job is dropped.
    void post(Job job);

    /// Returns when everything posted so far is done and the thread has ended. Any thread but the worker's;
    /// the second call does nothing.
    void finish();

private:
    void run();

    Job m_afterBatch;
    std::mutex m_mutex;
    std::condition_variable m_wakeUp;
    std::deque<Job> m_jobs;
    bool m_finishing = false;
    std::thread m_thread;
};

} // namespace merro::host
