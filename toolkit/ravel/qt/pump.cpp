#include "toolkit/ravel/qt/pump.h"

#include "toolkit/core/idle.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <climits>
#include <mutex>

namespace {

class pump final : public QObject {
  public:
    pump() {
        clock_.setSingleShot(true);
        clock_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&clock_, &QTimer::timeout, this, [this] { dispatch(); });
    }
    /// Any thread. One event is on its way at most.
    void wake() {
        if (!asked_.exchange(true)) QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
    bool event(QEvent* what) override {
        if (what->type() != QEvent::User) return QObject::event(what);
        dispatch();
        return true;
    }

  private:
    void dispatch() {
        asked_ = false;
        idle_dispatch();
        const int64_t due = idle_next_due_ms();
        if (due == 0) {
            wake(); // what is left runs after Qt's own events
        } else if (due > 0) {
            clock_.start(static_cast<int>(std::min<int64_t>(due, INT_MAX)));
        } else {
            clock_.stop();
        }
    }

    QTimer clock_;
    std::atomic<bool> asked_{false};
};

std::mutex lock; // a worker may post while the pump is taken down
pump* the_pump = nullptr;

} // namespace

void wake_pump() {
    const std::lock_guard<std::mutex> guard(lock);
    if (the_pump != nullptr) the_pump->wake();
}

void start_pump() {
    {
        const std::lock_guard<std::mutex> guard(lock);
        if (the_pump == nullptr) the_pump = new pump;
    }
    idle_set_wakeup(wake_pump);
    wake_pump(); // for what was posted before
}

void stop_pump() {
    idle_set_wakeup({});
    pump* old = nullptr;
    {
        const std::lock_guard<std::mutex> guard(lock);
        old = std::exchange(the_pump, nullptr);
    }
    delete old;
}
