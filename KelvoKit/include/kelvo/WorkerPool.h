#pragma once
// One pool of worker threads shared by a whole scan: cleaners run on it and big trees
// are split across it. It is sized for I/O (threads mostly wait on the file system), not
// for cores. Tasks are grouped; a thread waiting for its group runs queued tasks itself
// meanwhile, so a task may wait for tasks it submitted without ever deadlocking the pool.
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace kelvo {

class TaskGroup {
public:
    TaskGroup() = default;
    TaskGroup(const TaskGroup&) = delete;
    TaskGroup& operator=(const TaskGroup&) = delete;

private:
    friend class WorkerPool;
    std::atomic<std::size_t> pending_{0};
};

class WorkerPool {
public:
    explicit WorkerPool(std::size_t threadCount = defaultThreadCount());
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    static std::size_t defaultThreadCount();
    std::size_t threadCount() const { return threads_.size(); }

    void submit(TaskGroup& group, std::function<void()> task);
    // Returns once every task of the group has finished; runs queued tasks meanwhile.
    void wait(TaskGroup& group);
    // True when a thread is waiting for work that nothing queued will give it: the
    // moment to hand it part of a walk rather than doing it all on the current thread.
    // A hint read without locking, cheap enough to ask once per directory.
    bool hasIdleWorker() const;

private:
    struct Job {
        TaskGroup* group;
        std::function<void()> task;
    };
    void workerLoop();
    void runJob(Job& job);
    // Takes the queue's first job and runs it with the mutex released; held again after.
    void runFirstQueued(std::unique_lock<std::mutex>& lock);
    void updateIdleHint();  // with the mutex held

    mutable std::mutex mutex_;
    std::condition_variable workAvailable_;
    std::condition_variable jobFinished_;
    std::deque<Job> queue_;
    std::size_t idleThreads_ = 0;
    std::size_t waitingHelpers_ = 0;
    bool stopping_ = false;
    std::atomic<std::ptrdiff_t> idleWithoutWork_{0};  // idle threads minus queued jobs
    std::vector<std::thread> threads_;
};

}  // namespace kelvo
