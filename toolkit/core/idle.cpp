#include "toolkit/core/idle.h"

#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using steady = std::chrono::steady_clock;
using job_ptr = std::shared_ptr<idle_job>;

struct queued_t {
    uint64_t order = 0;
    uint32_t id = 0;      ///< 0 for a job of idle_queue
    std::string once_key; ///< of idle_queue_once: its job is in state_t::once
    job_ptr job;
};

struct timer_entry_t {
    job_ptr job;
    steady::duration period{};
    steady::time_point due;
    bool suspended = false;
    bool running = false;  ///< its job is on the stack: a nested dispatch leaves it alone
    uint64_t last_run = 0; ///< number of the dispatch that ran it last
    bool ready(steady::time_point now) const { return !suspended && !running && due <= now; }
};

struct state_t {
    std::mutex lock;
    std::condition_variable changed;
    std::deque<queued_t> queue;
    std::map<std::string, job_ptr> once; ///< the pending job of a key
    std::map<uint32_t, timer_entry_t> timers;
    std::vector<uint32_t> running; ///< ids of idle_add jobs on the stack that may still repeat
    uint64_t next_order = 1;
    uint32_t last_id = 0;
    uint64_t dispatches = 0;
    uint64_t changes = 0; ///< posts so far, so that idle_run_until misses none
    bool closed = false;
    std::atomic<std::thread::id> gui_thread{};

    std::mutex wakeup_lock; ///< held during a call, so that a wake-up that was taken out is not running any more
    std::function<void()> wakeup;
};

/// Never destroyed: workers may still post while the process ends.
state_t& state() {
    static state_t* const the_state = new state_t;
    return *the_state;
}

uint32_t next_id(state_t& s) {
    s.last_id = s.last_id == UINT32_MAX ? 1 : s.last_id + 1;
    return s.last_id;
}

/// After something was posted; the lock is not held.
void wake(state_t& s) {
    s.changed.notify_all();
    const std::lock_guard<std::mutex> guard(s.wakeup_lock);
    if (s.wakeup) s.wakeup();
}

/// Earliest due time of the timers that may fire.
std::optional<steady::time_point> next_due(const state_t& s) {
    std::optional<steady::time_point> due;
    for (const auto& [id, timer] : s.timers) {
        if (timer.suspended || timer.running) continue;
        if (!due || timer.due < *due) due = timer.due;
    }
    return due;
}

ret_t post(idle_job job, bool with_id, uint32_t* id) {
    if (!job) return RET_BAD_PARAMS;
    state_t& s = state();
    {
        const auto shared = std::make_shared<idle_job>(std::move(job));
        const std::lock_guard<std::mutex> guard(s.lock);
        if (s.closed) return RET_FAIL;
        if (with_id) *id = next_id(s);
        s.queue.push_back({s.next_order++, with_id ? *id : 0, "", shared});
        s.changes++;
    }
    wake(s);
    return RET_OK;
}

void log_result(const char* what, ret_t result) {
    if (result == RET_OK || result == RET_REMOVE || result == RET_REPEAT) return;
    log_write(LOG_LEVEL_DEBUG, tk_format("%s returned %d\n", what, static_cast<int>(result)));
}

/// Takes the next job that was queued up to `last_order` and runs it; false when there is none.
bool run_next_job(state_t& s, uint64_t last_order) {
    queued_t item;
    {
        const std::lock_guard<std::mutex> guard(s.lock);
        if (s.queue.empty() || s.queue.front().order > last_order) return false;
        item = std::move(s.queue.front());
        s.queue.pop_front();
        if (item.id != 0) s.running.push_back(item.id);
        if (const auto once = s.once.find(item.once_key); once != s.once.end()) {
            item.job = std::move(once->second);
            s.once.erase(once);
        }
    }
    const ret_t result = (*item.job)();
    if (item.id == 0) {
        log_result("idle job", result);
        return true;
    }
    bool repeated = false;
    {
        const std::lock_guard<std::mutex> guard(s.lock);
        const auto mine = std::find(s.running.begin(), s.running.end(), item.id);
        const bool removed = mine == s.running.end();
        if (!removed) s.running.erase(mine);
        repeated = result == RET_REPEAT && !removed && !s.closed;
        if (repeated) s.queue.push_back({s.next_order++, item.id, "", item.job});
        if (repeated) s.changes++;
    }
    if (repeated) wake(s);
    log_result("idle job", result);
    return true;
}

/// Runs the timer that was due first at `now` and did not run in this dispatch; false when there is none.
bool run_next_timer(state_t& s, steady::time_point now, uint32_t newest, uint64_t dispatch) {
    uint32_t id = 0;
    job_ptr job;
    {
        const std::lock_guard<std::mutex> guard(s.lock);
        timer_entry_t* first = nullptr;
        for (auto& [candidate, timer] : s.timers) {
            if (candidate > newest || !timer.ready(now) || timer.last_run >= dispatch) continue;
            if (first != nullptr && timer.due >= first->due) continue;
            first = &timer;
            id = candidate;
        }
        if (first == nullptr) return false;
        first->running = true;
        first->last_run = dispatch;
        first->due += first->period;
        job = first->job;
    }
    const ret_t result = (*job)();
    {
        const std::lock_guard<std::mutex> guard(s.lock);
        const auto found = s.timers.find(id);
        if (found != s.timers.end() && found->second.job == job) {
            timer_entry_t& timer = found->second;
            timer.running = false;
            const steady::time_point after = steady::now();
            // Ticks that were missed are left out; the next one comes when it would have come.
            if (timer.due <= after && timer.period.count() > 0)
                timer.due += ((after - timer.due) / timer.period + 1) * timer.period;
            if (result != RET_REPEAT) s.timers.erase(found);
        }
    }
    log_result("timer", result);
    return true;
}

} // namespace

ret_t idle_queue(idle_job job) { return post(std::move(job), false, nullptr); }

ret_t idle_queue_once(const std::string& key, idle_job job) {
    if (!job || key.empty()) return RET_BAD_PARAMS;
    state_t& s = state();
    auto shared = std::make_shared<idle_job>(std::move(job)); // ends as the job that it replaced, outside the lock
    {
        const std::lock_guard<std::mutex> guard(s.lock);
        if (s.closed) return RET_FAIL;
        job_ptr& pending = s.once[key];
        const bool queued = pending != nullptr;
        pending.swap(shared);
        if (queued) return RET_OK;
        s.queue.push_back({s.next_order++, 0, key, nullptr});
        s.changes++;
    }
    wake(s);
    return RET_OK;
}

uint32_t idle_add(idle_job job) {
    uint32_t id = 0;
    return post(std::move(job), true, &id) == RET_OK ? id : 0;
}

ret_t idle_remove(uint32_t id) {
    if (id == 0) return RET_FAIL;
    state_t& s = state();
    job_ptr removed; // destroyed after the lock is let go: a job's captures may do anything
    const std::lock_guard<std::mutex> guard(s.lock);
    const auto same = [id](const queued_t& item) { return item.id == id; };
    const auto found = std::find_if(s.queue.begin(), s.queue.end(), same);
    if (found != s.queue.end()) {
        removed = std::move(found->job);
        s.queue.erase(found);
        return RET_OK;
    }
    const auto running = std::find(s.running.begin(), s.running.end(), id);
    if (running == s.running.end()) return RET_FAIL;
    s.running.erase(running);
    return RET_OK;
}

uint32_t timer_add(idle_job job, uint32_t ms) {
    if (!job) return 0;
    state_t& s = state();
    uint32_t id = 0;
    {
        timer_entry_t timer;
        timer.job = std::make_shared<idle_job>(std::move(job));
        timer.period = std::chrono::milliseconds(ms);
        timer.due = steady::now() + timer.period;
        const std::lock_guard<std::mutex> guard(s.lock);
        if (s.closed) return 0;
        id = next_id(s);
        s.timers.emplace(id, timer);
        s.changes++;
    }
    wake(s);
    return id;
}

ret_t timer_remove(uint32_t id) {
    state_t& s = state();
    timer_entry_t removed;
    const std::lock_guard<std::mutex> guard(s.lock);
    const auto found = s.timers.find(id);
    if (found == s.timers.end()) return RET_FAIL;
    removed = std::move(found->second);
    s.timers.erase(found);
    return RET_OK;
}

ret_t timer_suspend(uint32_t id) {
    state_t& s = state();
    const std::lock_guard<std::mutex> guard(s.lock);
    const auto found = s.timers.find(id);
    if (found == s.timers.end()) return RET_FAIL;
    found->second.suspended = true;
    return RET_OK;
}

ret_t timer_resume(uint32_t id) {
    state_t& s = state();
    {
        const std::lock_guard<std::mutex> guard(s.lock);
        const auto found = s.timers.find(id);
        if (found == s.timers.end()) return RET_FAIL;
        if (!found->second.suspended) return RET_OK;
        found->second.suspended = false;
        found->second.due = steady::now() + found->second.period;
        s.changes++;
    }
    wake(s);
    return RET_OK;
}

void idle_set_gui_thread() { state().gui_thread = std::this_thread::get_id(); }

bool idle_is_gui_thread() { return state().gui_thread.load() == std::this_thread::get_id(); }

void idle_set_wakeup(std::function<void()> wakeup) {
    state_t& s = state();
    const std::lock_guard<std::mutex> guard(s.wakeup_lock);
    s.wakeup = std::move(wakeup);
}

uint32_t idle_dispatch() {
    state_t& s = state();
    uint64_t last_order = 0;
    uint64_t dispatch = 0;
    uint32_t newest = 0;
    const steady::time_point now = steady::now();
    {
        const std::lock_guard<std::mutex> guard(s.lock);
        last_order = s.next_order - 1;
        dispatch = ++s.dispatches;
        newest = s.timers.empty() ? 0 : s.timers.rbegin()->first;
    }
    uint32_t count = 0;
    while (run_next_job(s, last_order)) count++;
    while (run_next_timer(s, now, newest, dispatch)) count++;
    return count;
}

int64_t idle_next_due_ms() {
    state_t& s = state();
    const std::lock_guard<std::mutex> guard(s.lock);
    if (!s.queue.empty()) return 0;
    const std::optional<steady::time_point> due = next_due(s);
    if (!due) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - steady::now()).count();
    return std::max<int64_t>(left, 0);
}

bool idle_run_until(const std::function<bool()>& done, uint32_t timeout_ms) {
    // What `done` looks at may change without a post: look again this often.
    constexpr auto look_again = std::chrono::milliseconds(10);
    state_t& s = state();
    const steady::time_point end = steady::now() + std::chrono::milliseconds(timeout_ms);
    for (;;) {
        uint64_t seen = 0;
        {
            const std::lock_guard<std::mutex> guard(s.lock);
            seen = s.changes;
        }
        idle_dispatch();
        if (done()) return true;
        const steady::time_point now = steady::now();
        if (now >= end) return false;
        std::unique_lock<std::mutex> guard(s.lock);
        if (!s.queue.empty()) continue;
        steady::time_point until = std::min(end, now + look_again);
        if (const auto due = next_due(s)) until = std::min(until, *due);
        s.changed.wait_until(guard, until, [&] { return s.changes != seen; });
    }
}

void idle_shutdown() {
    state_t& s = state();
    std::deque<queued_t> queue;
    std::map<std::string, job_ptr> once;
    std::map<uint32_t, timer_entry_t> timers;
    {
        const std::lock_guard<std::mutex> guard(s.lock);
        s.closed = true;
        queue.swap(s.queue);
        once.swap(s.once);
        timers.swap(s.timers);
        s.running.clear();
    }
}

void idle_restart() {
    idle_shutdown();
    state_t& s = state();
    const std::lock_guard<std::mutex> guard(s.lock);
    s.closed = false;
}
