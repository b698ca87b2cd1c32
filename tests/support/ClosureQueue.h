#pragma once
// A queue of closures that a test runs by hand: the model's user-interface thread (the
// test thread drains it) and, where a test orders background work itself, the workers.
// Posting is safe from any thread; the queue must outlive what posts to it.
#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace kelvo::testing {

class ClosureQueue {
public:
    using Closure = std::function<void()>;

    std::function<void(Closure)> poster() {
        return [this](Closure closure) {
            const std::lock_guard hold(mutex_);
            closures_.push_back(std::move(closure));
            posted_.notify_all();
        };
    }
    // Runs queued closures, and those they queue, until none is left.
    void runAll() {
        for (auto closures = takeAll(); !closures.empty(); closures = takeAll())
            for (auto& closure : closures) closure();
    }
    // Waits until another thread queues a closure, then runs it.
    void runNextWhenPosted() {
        std::unique_lock hold(mutex_);
        posted_.wait(hold, [&] { return !closures_.empty(); });
        Closure closure = std::move(closures_.front());
        closures_.erase(closures_.begin());
        hold.unlock();
        closure();
    }
    // Removes the queued closures, oldest first, for a test to run in an order of its own.
    std::vector<Closure> takeAll() {
        const std::lock_guard hold(mutex_);
        return std::exchange(closures_, {});
    }

private:
    std::mutex mutex_;
    std::condition_variable posted_;
    std::vector<Closure> closures_;
};

}  // namespace kelvo::testing
