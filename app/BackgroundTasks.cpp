#include "app/BackgroundTasks.hpp"

#include <QMetaObject>
#include <QThread>

namespace veldan {

namespace {

// A scan, a duplicate search, a cleanup and an exploration each hold a thread for their
// whole run, and a stopped task may still be winding down when the next one starts;
// short lookups must never queue behind them.
constexpr int maximumThreads = 16;

}  // namespace

BackgroundTasks::BackgroundTasks(QObject* receiver) : receiver_(receiver) {
    userInitiated_.setMaxThreadCount(maximumThreads);
    utility_.setMaxThreadCount(2);
    utility_.setThreadPriority(QThread::LowPriority);
}

BackgroundTasks::~BackgroundTasks() {
    waitForDone();
}

void BackgroundTasks::start(std::function<void()> work, Priority priority) {
    (priority == Priority::utility ? utility_ : userInitiated_).start(std::move(work));
}

void BackgroundTasks::toReceiver(std::function<void()> step) const {
    QMetaObject::invokeMethod(
        receiver_, [step = std::move(step)] { step(); }, Qt::QueuedConnection);
}

void BackgroundTasks::waitForDone() {
    userInitiated_.waitForDone();
    utility_.waitForDone();
}

}  // namespace veldan
