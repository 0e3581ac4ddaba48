#include "toolkit/core/thread.h"

#include "toolkit/core/text.h"
#include "toolkit/core/thread_registry.h"
#include "toolkit/core/worker.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <stop_token>
#include <string>
#include <utility>

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
constexpr auto destroy_wait = std::chrono::milliseconds(200);
constexpr std::size_t system_name_bytes = 15;

/// What the running thread and its owner share; the last of the two frees it.
struct control_t {
    std::mutex lock;
    std::condition_variable ended;
    std::function<uint32_t()> entry;
    std::string name;
    uint32_t priority = 0;
    uint32_t stack_bytes = 0;
    std::atomic<uint32_t> result{0};
    std::atomic<bool> running{false}; ///< from start until the entry has returned
    bool started = false;
    bool joined = false; ///< or detached
    std::stop_source stop;
    pthread_t thread{};
};
using control_ptr = std::shared_ptr<control_t>;

/// The calling thread's own block, null on threads that the toolkit did not make.
thread_local control_t* current = nullptr;

void* trampoline(void* argument) {
    const std::unique_ptr<control_ptr> own(static_cast<control_ptr*>(argument));
    control_t& control = **own;
    current = &control;
    std::function<uint32_t()> entry;
    {
        const std::lock_guard<std::mutex> guard(control.lock);
        entry = std::move(control.entry);
        pthread_setname_np(pthread_self(), tk_utf8_cut(control.name, system_name_bytes).c_str());
    }
    const uint32_t result = entry ? entry() : 0;
    entry = nullptr;
    control.result = result;
    {
        const std::lock_guard<std::mutex> guard(control.lock);
        control.running = false;
        control.ended.notify_all();
    }
    thread_registry_remove(control.stop);
    current = nullptr;
    return nullptr;
}

bool create(const control_ptr& control) {
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

/// Joins a thread that has ended and detaches one that has not.
void settle(control_t& control, std::unique_lock<std::mutex>& guard) {
    if (!control.started || control.joined) return;
    control.joined = true;
    const pthread_t thread = control.thread;
    const bool ended = !control.running && current != &control;
    guard.unlock();
    if (ended) {
        pthread_join(thread, nullptr);
    } else {
        pthread_detach(thread);
    }
}

} // namespace

struct tk_thread {
    control_ptr control = std::make_shared<control_t>();
};

tk_thread* tk_thread_create(std::function<uint32_t()> entry) {
    auto* const thread = new tk_thread;
    thread->control->entry = std::move(entry);
    return thread;
}

ret_t tk_thread_set_name(tk_thread* thread, const char* name) {
    if (thread == nullptr || name == nullptr) return RET_BAD_PARAMS;
    const std::lock_guard<std::mutex> guard(thread->control->lock);
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
    control_t& control = *thread->control;
    const std::lock_guard<std::mutex> guard(control.lock);
    if (control.started) return RET_FAIL;
    control.running = true;
    thread_registry_add(control.stop);
    control.started = create(thread->control);
    if (control.started) return RET_OK;
    control.running = false;
    thread_registry_remove(control.stop);
    return RET_FAIL;
}

ret_t tk_thread_join(tk_thread* thread) {
    if (thread == nullptr) return RET_BAD_PARAMS;
    control_t& control = *thread->control;
    pthread_t system_thread{};
    {
        const std::lock_guard<std::mutex> guard(control.lock);
        if (!control.started || control.joined || current == &control) return RET_FAIL;
        control.joined = true;
        system_thread = control.thread;
    }
    return pthread_join(system_thread, nullptr) == 0 ? RET_OK : RET_FAIL;
}

ret_t tk_thread_destroy(tk_thread* thread) {
    if (thread == nullptr) return RET_OK;
    const std::unique_ptr<tk_thread> own(thread);
    control_t& control = *own->control;
    control.stop.request_stop();
    std::unique_lock<std::mutex> guard(control.lock);
    if (current != &control) {
        const auto end = std::chrono::steady_clock::now() + destroy_wait;
        control.ended.wait_until(guard, end, [&control] { return !control.running; });
    }
    settle(control, guard);
    if (guard.owns_lock()) guard.unlock();
    return RET_OK;
}

ret_t tk_thread_release(tk_thread* thread) {
    if (thread == nullptr) return RET_OK;
    const std::unique_ptr<tk_thread> own(thread);
    std::unique_lock<std::mutex> guard(own->control->lock);
    settle(*own->control, guard);
    if (guard.owns_lock()) guard.unlock();
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

uint32_t tk_thread_alive_count() { return workers_running(); }

std::stop_token worker_stop_token() { return current != nullptr ? current->stop.get_token() : std::stop_token(); }
