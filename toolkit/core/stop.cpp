#include "toolkit/core/stop.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <utility>
#include <vector>

struct stop_state {
    std::mutex lock;
    std::condition_variable ran; ///< a callback has returned
    std::atomic<bool> requested{false};
    std::vector<stop_callback*> callbacks;  ///< not run yet
    const stop_callback* running = nullptr; ///< on the thread `asking`
    std::thread::id asking;
};

bool stop_token::stop_requested() const { return state_ != nullptr && state_->requested; }

stop_source::stop_source() : state_(std::make_shared<stop_state>()) {}

void stop_source::request_stop() const {
    const std::shared_ptr<stop_state> state = state_; // a callback may let go of this source
    stop_state& s = *state;
    std::unique_lock guard(s.lock);
    if (s.requested.exchange(true)) return;
    s.asking = std::this_thread::get_id();
    while (!s.callbacks.empty()) {
        stop_callback* const one = s.callbacks.back();
        s.callbacks.pop_back();
        s.running = one;
        guard.unlock();
        one->call_(); // it may destroy itself
        guard.lock();
        s.running = nullptr;
        s.ran.notify_all();
    }
}

stop_callback::stop_callback(const stop_token& token, std::function<void()> call)
    : state_(token.state_), call_(std::move(call)) {
    if (state_ == nullptr) return;
    {
        const std::lock_guard guard(state_->lock);
        if (!state_->requested) {
            state_->callbacks.push_back(this);
            return;
        }
    }
    call_();
}

stop_callback::~stop_callback() {
    if (state_ == nullptr) return;
    std::unique_lock guard(state_->lock);
    if (std::erase(state_->callbacks, this) > 0) return;
    if (state_->asking == std::this_thread::get_id()) return;
    state_->ran.wait(guard, [this] { return state_->running != this; });
}

void stop_condition::notify_all() {
    const std::lock_guard guard(lock_);
    changed_.notify_all();
}

bool stop_condition::wait(std::unique_lock<std::mutex>& guard, const stop_token& stop, uint32_t ms,
                          const std::function<bool()>& ready) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    const stop_callback on_stop(stop, [this] { notify_all(); });
    for (bool in_time = true; !ready();) {
        // From here on to the wait nobody notifies: neither who changes the condition nor who asks for a stop.
        std::unique_lock inner(lock_);
        if (!in_time || stop.stop_requested()) return false;
        guard.unlock();
        if (ms == wait_for_ever) {
            changed_.wait(inner);
        } else {
            in_time = changed_.wait_until(inner, end) == std::cv_status::no_timeout;
        }
        inner.unlock();
        guard.lock();
    }
    return true;
}
