#pragma once
// A serial queue: tasks run one at a time, in the order they were queued, on one
// thread that the queue starts on first use.
//
// Contract: async() may be called from any thread. drain() blocks until every task
// queued before the call has finished. The destructor drains, then joins the thread.
// A task must not call drain() on its own queue.

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace veldan::platform {

class SerialQueue {
public:
    explicit SerialQueue(std::string label);
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    const std::string& label() const { return label_; }
    void async(std::function<void()> task);
    void drain();

private:
    void run();

    std::string label_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable idle_;
    std::deque<std::function<void()>> tasks_;
    bool running_ = false;  // a task is executing
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace veldan::platform
