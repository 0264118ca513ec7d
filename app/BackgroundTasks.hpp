#pragma once
// Runs the model's blocking work (file-system reads, scans, moves) on pool threads and
// brings answers back to the thread of a receiving QObject through its event queue.
// Answers are never applied directly by a worker: the receiver decides, on its own
// thread, whether an answer is still wanted (by comparing identity tokens).
//
// Contract: start(), run() and toReceiver() may be called from any thread. An answer queued for a
// receiver that no longer exists is dropped with the receiver's event queue. The
// destructor waits for every running task, so a task may use what its owner owns.

#include <QObject>
#include <QThreadPool>
#include <functional>
#include <memory>
#include <utility>

namespace veldan {

class BackgroundTasks {
public:
    // userInitiated: what the user waits for; utility: the daily check, which must not
    // compete with the user's own work.
    enum class Priority { userInitiated, utility };

    explicit BackgroundTasks(QObject* receiver);
    ~BackgroundTasks();
    BackgroundTasks(const BackgroundTasks&) = delete;
    BackgroundTasks& operator=(const BackgroundTasks&) = delete;

    void start(std::function<void()> work, Priority priority = Priority::userInitiated);

    // Calls `step` on the receiver's thread once its event loop gets to it.
    void toReceiver(std::function<void()> step) const;

    // Runs `work` on a pool thread and hands its result to `then` on the receiver's thread.
    template <class Work, class Then>
    void run(Work work, Then then, Priority priority = Priority::userInitiated) {
        start(
            [this, work = std::move(work), then = std::move(then)]() mutable {
                auto result = std::make_shared<decltype(work())>(work());
                toReceiver(
                    [then = std::move(then), result]() mutable { then(std::move(*result)); });
            },
            priority);
    }

    // Blocks until every task queued so far has finished (tests and shutdown).
    void waitForDone();

private:
    QObject* receiver_;
    QThreadPool userInitiated_;
    QThreadPool utility_;
};

}  // namespace veldan
