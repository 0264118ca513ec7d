#include "platform/SerialQueue.hpp"

namespace veldan::platform {

SerialQueue::SerialQueue(std::string label) : label_(std::move(label)) {}

SerialQueue::~SerialQueue() {
    {
        std::unique_lock lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) thread_.join();
}

void SerialQueue::async(std::function<void()> task) {
    {
        std::unique_lock lock(mutex_);
        tasks_.push_back(std::move(task));
        if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
    }
    wake_.notify_one();
}

void SerialQueue::drain() {
    std::unique_lock lock(mutex_);
    idle_.wait(lock, [this] { return tasks_.empty() && !running_; });
}

void SerialQueue::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
        if (tasks_.empty()) return;  // stopping, and everything queued has run
        auto task = std::move(tasks_.front());
        tasks_.pop_front();
        running_ = true;
        lock.unlock();
        task();
        lock.lock();
        running_ = false;
        if (tasks_.empty()) idle_.notify_all();
    }
}

}  // namespace veldan::platform
