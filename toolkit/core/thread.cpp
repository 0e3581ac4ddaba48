#include "toolkit/core/thread.h"

#include "toolkit/core/date_time.h"
#include "toolkit/core/text.h"
#include "toolkit/core/worker.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <string>
#include <utility>
#include <vector>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitised = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool sanitised = true;
#else
constexpr bool sanitised = false;
#endif
#else
constexpr bool sanitised = false;
#endif

/// What the system's calls, file names and log texts of one thread fit into with room to spare.
constexpr std::size_t least_stack = sanitised ? 1024U * 1024U : 256U * 1024U;
constexpr std::size_t system_name_bytes = 15;

/// What a running thread, its owner and the registry share. The registry's lock guards what is neither atomic nor
/// the owner's alone.
struct thread_control {
    std::function<uint32_t()> entry; ///< the thread's from its start on
    std::string name;
    uint32_t priority = 0;
    uint32_t stack_bytes = 0;
    stop_source stop;
    std::atomic<uint32_t> result{0};
    std::atomic<bool> running{false}; ///< from start until the entry has returned
    bool started = false;
    bool joined = false; ///< or detached
    pthread_t thread{};
};
using control_ptr = std::shared_ptr<thread_control>;

struct thread_registry {
    std::mutex lock;
    stop_condition changed;         ///< a thread was started or has ended
    std::vector<control_ptr> known; ///< started, and not both ended and joined
    uint32_t refuse = 0;            ///< so many starts
};

/// Never destroyed: threads may end while the process does.
thread_registry& registry() {
    static thread_registry* const r = new thread_registry;
    return *r;
}

/// The calling thread's own block, null on threads that the toolkit did not make.
thread_local thread_control* current = nullptr;

/// With the registry's lock held.
void forget_if_done(const thread_control& control) {
    if (control.running || !control.joined) return;
    std::erase_if(registry().known, [&control](const control_ptr& one) { return one.get() == &control; });
}

void* trampoline(void* argument) {
    const std::unique_ptr<control_ptr> own(static_cast<control_ptr*>(argument));
    thread_control& control = **own;
    current = &control;
    thread_registry& r = registry();
    {
        const std::lock_guard guard(r.lock);
        pthread_setname_np(pthread_self(), tk_utf8_cut(control.name, system_name_bytes).c_str());
    }
    control.result = control.entry ? control.entry() : 0;
    control.entry = nullptr;
    const std::lock_guard guard(r.lock);
    control.running = false;
    forget_if_done(control);
    r.changed.notify_all();
    current = nullptr;
    return nullptr;
}

/// With the registry's lock held.
bool create(const control_ptr& control) {
    if (registry().refuse > 0) {
        registry().refuse--;
        return false;
    }
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return false;
    // Refused sizes leave the system's default, which is larger.
    pthread_attr_setstacksize(&attributes, std::max<std::size_t>(control->stack_bytes, least_stack));
    auto argument = std::make_unique<control_ptr>(control);
    const bool created = pthread_create(&control->thread, &attributes, trampoline, argument.get()) == 0;
    if (created) argument.release(); // the thread's from now on
    pthread_attr_destroy(&attributes);
    return created;
}

/// Waits for the thread's end, unless that was done before or it is the calling one.
bool join(const control_ptr& control) {
    thread_registry& r = registry();
    std::unique_lock guard(r.lock);
    if (!control->started || control->joined || current == control.get()) return false;
    control->joined = true;
    guard.unlock();
    pthread_join(control->thread, nullptr);
    guard.lock();
    forget_if_done(*control);
    return true;
}

/// Lets the system clean up after the thread when it ends, or at once when it has.
void detach(const control_ptr& control) {
    if (!control->running && join(control)) return;
    const std::lock_guard guard(registry().lock);
    if (!control->started || std::exchange(control->joined, true)) return;
    pthread_detach(control->thread);
    forget_if_done(*control);
}

/// All but the calling one, with the registry's lock held.
std::vector<control_ptr> other_threads() {
    std::vector<control_ptr> others = registry().known;
    std::erase_if(others, [](const control_ptr& one) { return one.get() == current; });
    return others;
}

} // namespace

struct tk_thread {
    control_ptr control = std::make_shared<thread_control>();
};

tk_thread* tk_thread_create(std::function<uint32_t()> entry) {
    auto* const thread = new tk_thread;
    thread->control->entry = std::move(entry);
    return thread;
}

ret_t tk_thread_set_name(tk_thread* thread, const char* name) {
    if (thread == nullptr || name == nullptr) return RET_BAD_PARAMS;
    const std::lock_guard guard(registry().lock);
    thread->control->name = name;
    return RET_OK;
}

const char* tk_thread_name(const tk_thread* thread) {
    return thread != nullptr ? thread->control->name.c_str() : "";
}

ret_t tk_thread_set_priority(tk_thread* thread, uint32_t priority) {
    if (thread == nullptr) return RET_BAD_PARAMS;
    thread->control->priority = priority;
    return RET_OK;
}

ret_t tk_thread_set_stack_size(tk_thread* thread, uint32_t bytes) {
    if (thread == nullptr) return RET_BAD_PARAMS;
    thread->control->stack_bytes = bytes;
    return RET_OK;
}

ret_t tk_thread_start(tk_thread* thread) {
    if (thread == nullptr) return RET_BAD_PARAMS;
    const control_ptr& control = thread->control;
    thread_registry& r = registry();
    const std::lock_guard guard(r.lock);
    if (control->started) return RET_FAIL;
    r.known.push_back(control);
    control->running = true;
    control->started = create(control);
    r.changed.notify_all();
    if (control->started) return RET_OK;
    control->running = false;
    r.known.pop_back();
    return RET_FAIL;
}

void tk_thread_refuse(uint32_t times) {
    const std::lock_guard guard(registry().lock);
    registry().refuse = times;
}

ret_t tk_thread_join(tk_thread* thread) {
    if (thread == nullptr) return RET_BAD_PARAMS;
    return join(thread->control) ? RET_OK : RET_FAIL;
}

ret_t tk_thread_wait(const tk_thread* thread, uint32_t timeout_ms) {
    if (thread == nullptr) return RET_BAD_PARAMS;
    const thread_control& control = *thread->control;
    thread_registry& r = registry();
    std::unique_lock guard(r.lock);
    const auto ended = [&control] { return !control.running; };
    return r.changed.wait(guard, worker_stop_token(), timeout_ms, ended) ? RET_OK : RET_FAIL;
}

ret_t tk_thread_destroy(tk_thread* thread) {
    if (thread == nullptr) return RET_OK;
    tk_thread_request_stop(thread);
    join(thread->control);
    return tk_thread_release(thread);
}

ret_t tk_thread_release(tk_thread* thread) {
    if (thread == nullptr) return RET_OK;
    const std::unique_ptr<tk_thread> own(thread);
    detach(own->control);
    return RET_OK;
}

bool tk_thread_is_running(const tk_thread* thread) { return thread != nullptr && thread->control->running; }

uint32_t tk_thread_result(const tk_thread* thread) {
    return thread != nullptr ? thread->control->result.load() : 0;
}

void tk_thread_request_stop(tk_thread* thread) {
    if (thread != nullptr) thread->control->stop.request_stop();
}

bool tk_thread_should_stop() { return worker_should_stop(); }

void sleep_ms(uint32_t ms) { static_cast<void>(worker_sleep_ms(ms)); }

// ---- all threads ----

stop_token worker_stop_token() { return current != nullptr ? current->stop.get_token() : stop_token(); }

uint32_t workers_running() {
    thread_registry& r = registry();
    const std::lock_guard guard(r.lock);
    return static_cast<uint32_t>(
        std::ranges::count_if(r.known, [](const auto& one) { return one->running.load(); }));
}

uint32_t workers_stop_all(uint32_t patience_ms) {
    thread_registry& r = registry();
    const int64_t end = time_now_ms() + patience_ms;
    const auto runs = [](const control_ptr& one) { return one->running.load(); };
    const auto unasked = [](const control_ptr& one) { return !one->stop.stop_requested(); };
    const auto ended = [&runs] { return std::ranges::none_of(other_threads(), runs); };
    const auto more = [&unasked] { return std::ranges::any_of(other_threads(), unasked); };
    std::unique_lock guard(r.lock);
    for (bool in_time = true; in_time && !ended();) {
        const std::vector<control_ptr> others = other_threads();
        guard.unlock(); // a stop runs what its waits have registered for it
        for (const control_ptr& one : others) one->stop.request_stop();
        guard.lock();
        const auto left = static_cast<uint32_t>(std::max<int64_t>(end - time_now_ms(), 0));
        in_time = r.changed.wait(guard, {}, left, [&] { return ended() || more(); });
    }
    const std::vector<control_ptr> others = other_threads();
    guard.unlock();
    for (const control_ptr& one : others)
        if (!one->running) join(one);
    return static_cast<uint32_t>(std::ranges::count_if(others, runs));
}
