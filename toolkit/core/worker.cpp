#include "toolkit/core/worker.h"

#include "toolkit/core/thread.h"

#include <chrono>
#include <thread>
#include <utility>

namespace {

struct thread_release {
    void operator()(tk_thread* thread) const { tk_thread_release(thread); }
};
using thread_ptr = std::shared_ptr<tk_thread>;

} // namespace

// The thread that runs now or ran last. The lock is for those who ask while the owner starts another.
struct worker::slot {
    mutable std::mutex lock;
    thread_ptr thread;

    thread_ptr get() const {
        const std::lock_guard guard(lock);
        return thread;
    }
    void set(thread_ptr other) {
        const std::lock_guard guard(lock);
        thread.swap(other);
    }
    void end() {
        const thread_ptr ending = get();
        if (ending == nullptr) return;
        tk_thread_request_stop(ending.get());
        tk_thread_join(ending.get());
    }
};

worker::worker() : slot_(std::make_unique<slot>()) {}

worker::~worker() {
    if (slot_ != nullptr) slot_->end();
}

worker::worker(worker&& other) noexcept : slot_(std::exchange(other.slot_, std::make_unique<slot>())) {}

worker& worker::operator=(worker&& other) noexcept {
    if (this == &other) return *this;
    slot_->end();
    slot_ = std::exchange(other.slot_, std::make_unique<slot>());
    return *this;
}

ret_t worker::start(const worker_plan& plan, work what) {
    if (!what) return RET_BAD_PARAMS;
    if (running()) return RET_FAIL;
    join();
    const thread_ptr next(tk_thread_create(std::move(what)), thread_release());
    tk_thread_set_name(next.get(), plan.name);
    tk_thread_set_priority(next.get(), plan.priority);
    tk_thread_set_stack_size(next.get(), plan.stack_bytes);
    if (tk_thread_start(next.get()) != RET_OK) return RET_FAIL;
    slot_->set(next);
    return RET_OK;
}

void worker::request_stop() { tk_thread_request_stop(slot_->get().get()); }

ret_t worker::join() {
    const thread_ptr thread = slot_->get();
    if (thread == nullptr) return RET_FAIL;
    return tk_thread_join(thread.get()) == RET_OK || !tk_thread_is_running(thread.get()) ? RET_OK : RET_FAIL;
}

bool worker::wait_ended(uint32_t ms) const {
    const thread_ptr thread = slot_->get();
    return thread == nullptr || tk_thread_wait(thread.get(), ms) == RET_OK;
}

bool worker::running() const { return tk_thread_is_running(slot_->get().get()); }
uint32_t worker::result() const { return tk_thread_result(slot_->get().get()); }
const char* worker::name() const { return tk_thread_name(slot_->get().get()); }

void worker::abandon() {
    request_stop();
    slot_->set(nullptr);
}

bool worker_should_stop() { return worker_stop_token().stop_requested(); }

bool worker_sleep_ms(uint32_t ms) {
    const stop_token stop = worker_stop_token();
    if (!stop.stop_possible()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
        return true;
    }
    std::mutex lock;
    stop_condition never;
    std::unique_lock guard(lock);
    never.wait(guard, stop, ms, [] { return false; });
    return !stop.stop_requested();
}

void worker_event::set() {
    const std::lock_guard guard(lock_);
    set_ = true;
    changed_.notify_all();
}

bool worker_event::wait(uint32_t ms) {
    std::unique_lock guard(lock_);
    if (!changed_.wait(guard, worker_stop_token(), ms, [this] { return set_; })) return false;
    set_ = false;
    return true;
}
