#include "kelvo/WorkerPool.h"

#include <algorithm>

namespace kelvo {

std::size_t WorkerPool::defaultThreadCount() {
    // Walking trees is waiting on the file system far more than computing: a few threads
    // per core keep the disk's queue full on a cold cache and cost little on a warm one.
    const std::size_t cores = std::max(1u, std::thread::hardware_concurrency());
    return std::clamp<std::size_t>(cores * 4, 8, 32);
}

WorkerPool::WorkerPool(std::size_t threadCount) {
    threadCount = std::max<std::size_t>(threadCount, 1);
    threads_.reserve(threadCount);
    for (std::size_t i = 0; i < threadCount; ++i) threads_.emplace_back([this] { workerLoop(); });
}

WorkerPool::~WorkerPool() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    workAvailable_.notify_all();
    for (auto& thread : threads_) thread.join();
}

void WorkerPool::submit(TaskGroup& group, std::function<void()> task) {
    group.pending_.fetch_add(1, std::memory_order_relaxed);
    {
        std::lock_guard lock(mutex_);
        queue_.push_back(Job{&group, std::move(task)});
        if (waitingHelpers_ > 0) jobFinished_.notify_all();  // a waiter may take it
    }
    workAvailable_.notify_one();
}

bool WorkerPool::hasIdleWorker() const {
    std::lock_guard lock(mutex_);
    return idleThreads_ > queue_.size();
}

void WorkerPool::runJob(Job& job) {
    job.task();
    TaskGroup* group = job.group;
    {
        // Decrement under the lock so a waiter cannot miss the wake-up between its check
        // and its sleep.
        std::lock_guard lock(mutex_);
        group->pending_.fetch_sub(1, std::memory_order_acq_rel);
    }
    jobFinished_.notify_all();
}

void WorkerPool::workerLoop() {
    std::unique_lock lock(mutex_);
    while (true) {
        ++idleThreads_;
        workAvailable_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
        --idleThreads_;
        if (queue_.empty()) return;  // stopping and nothing left
        Job job = std::move(queue_.front());
        queue_.pop_front();
        lock.unlock();
        runJob(job);
        lock.lock();
    }
}

void WorkerPool::wait(TaskGroup& group) {
    std::unique_lock lock(mutex_);
    while (group.pending_.load(std::memory_order_acquire) != 0) {
        if (!queue_.empty()) {
            Job job = std::move(queue_.front());
            queue_.pop_front();
            lock.unlock();
            runJob(job);
            lock.lock();
            continue;
        }
        // Nothing queued: this thread is idle until a task of its group finishes or new
        // work arrives, and counts as such so walkers hand work over.
        ++idleThreads_;
        ++waitingHelpers_;
        jobFinished_.wait(lock);
        --waitingHelpers_;
        --idleThreads_;
    }
}

}  // namespace kelvo
