#include "kelvo/WorkerPool.h"

#include <algorithm>

namespace kelvo {

std::size_t WorkerPool::defaultThreadCount() {
    // Walking trees is waiting on the file system far more than computing: a few threads
    // per core keep the disk's queue full on a cold cache and cost little on a warm one.
    // (On 2 cores, 8 threads walk a cold tree about as fast as 16 or 32 and a warm one as
    // fast as 2 or 4; 16 and more start to lose on a warm cache.)
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
        updateIdleHint();
        if (waitingHelpers_ > 0) jobFinished_.notify_all();  // a waiter may take it
    }
    workAvailable_.notify_one();
}

bool WorkerPool::hasIdleWorker() const {
    // Asked once per directory of a walk: a hint read without the lock, which is all a
    // hand-off decision needs (a stale answer costs one hand-off more or less).
    return idleWithoutWork_.load(std::memory_order_relaxed) > 0;
}

void WorkerPool::updateIdleHint() {
    const auto idle = static_cast<std::ptrdiff_t>(idleThreads_) - static_cast<std::ptrdiff_t>(queue_.size());
    idleWithoutWork_.store(idle, std::memory_order_relaxed);
}

void WorkerPool::runJob(Job& job) {
    job.task();
    TaskGroup* group = job.group;
    bool anyoneWaiting = false;
    {
        // Decrement under the lock so a waiter cannot miss the wake-up between its check
        // and its sleep.
        std::lock_guard lock(mutex_);
        group->pending_.fetch_sub(1, std::memory_order_acq_rel);
        anyoneWaiting = waitingHelpers_ > 0;
    }
    if (anyoneWaiting) jobFinished_.notify_all();
}

void WorkerPool::workerLoop() {
    std::unique_lock lock(mutex_);
    while (true) {
        ++idleThreads_;
        updateIdleHint();
        workAvailable_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
        --idleThreads_;
        if (queue_.empty()) return;  // stopping and nothing left
        runFirstQueued(lock);
    }
}

void WorkerPool::runFirstQueued(std::unique_lock<std::mutex>& lock) {
    Job job = std::move(queue_.front());
    queue_.pop_front();
    updateIdleHint();
    lock.unlock();
    runJob(job);
    lock.lock();
}

void WorkerPool::wait(TaskGroup& group) {
    std::unique_lock lock(mutex_);
    while (group.pending_.load(std::memory_order_acquire) != 0) {
        if (!queue_.empty()) {
            runFirstQueued(lock);
            continue;
        }
        // Nothing queued: this thread is idle until a task of its group finishes or new
        // work arrives, and counts as such so walkers hand work over.
        ++idleThreads_;
        ++waitingHelpers_;
        updateIdleHint();
        jobFinished_.wait(lock);
        --waitingHelpers_;
        --idleThreads_;
        updateIdleHint();
    }
}

}  // namespace kelvo
