#include "host/shared/BackgroundWorker.h"

#include <utility>

namespace merro::host {

BackgroundWorker::BackgroundWorker(Job afterBatch)
    : m_afterBatch(std::move(afterBatch)), m_thread([this] { run(); }) {}

BackgroundWorker::~BackgroundWorker() {
    finish();
}

void BackgroundWorker::post(Job job) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_finishing)
            return;
        m_jobs.push_back(std::move(job));
    }
    m_wakeUp.notify_one();
}

void BackgroundWorker::finish() {
    {
        const std::lock_guard lock(m_mutex);
        m_finishing = true;
    }
    m_wakeUp.notify_one();
    if (m_thread.joinable())
        m_thread.join();
}

void BackgroundWorker::run() {
    for (;;) {
        std::deque<Job> batch;
        {
            std::unique_lock lock(m_mutex);
            m_wakeUp.wait(lock, [this] { return m_finishing || !m_jobs.empty(); });
            if (m_jobs.empty())
                return;
            batch.swap(m_jobs);
        }
        for (const Job& job : batch)
            job();
        if (m_afterBatch)
            m_afterBatch();
    }
}

} // namespace merro::host
