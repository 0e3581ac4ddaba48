// Threads, mutexes and semaphores. A thread that somebody owns is better a worker (worker.h), which is built on
// these.
#pragma once

#include "toolkit/core/result.h"

#include <cstdint>
#include <functional>

struct tk_thread;
struct tk_mutex;
struct tk_semaphore;

/// Creates a thread object that will run `entry` once started. The entry's result is kept for tk_thread_result.
/// Any thread; each tk_thread object itself belongs to one owner at a time.
tk_thread* tk_thread_create(std::function<uint32_t()> entry);

/// Name shown by debuggers (15 characters at most reach the system; the whole name is kept). RET_BAD_PARAMS for
/// null.
ret_t tk_thread_set_name(tk_thread* thread, const char* name);
const char* tk_thread_name(const tk_thread* thread);

/// Priority as asked for. It is kept and not applied: every thread runs with the system's default scheduling.
/// Before tk_thread_start.
ret_t tk_thread_set_priority(tk_thread* thread, uint32_t priority);

/// Stack size in bytes as asked for. The thread gets at least what the platform and the run-time library need.
ret_t tk_thread_set_stack_size(tk_thread* thread, uint32_t bytes);

/// Starts the thread. RET_FAIL when the system refuses or it was started before.
[[nodiscard]] ret_t tk_thread_start(tk_thread* thread);
/// Test aid: the next `times` starts of any thread are refused, as by a system that has no more of them. Any
/// thread.
void tk_thread_refuse(uint32_t times);

/// Waits until the entry has returned. RET_FAIL when it was never started or was joined before.
ret_t tk_thread_join(tk_thread* thread);

/// Waits until the entry has returned, `timeout_ms` at most (0xFFFFFFFF: no limit). RET_FAIL on time-out and when
/// the calling worker is asked to stop.
ret_t tk_thread_wait(const tk_thread* thread, uint32_t timeout_ms);

/// Asks the thread to stop, waits until it has ended and frees the object (null is allowed). On the thread itself
/// it only asks.
ret_t tk_thread_destroy(tk_thread* thread);

/// Frees the object without asking the thread to stop and without waiting: for the final cleanup. What the thread
/// uses of it stays alive until it ends.
ret_t tk_thread_release(tk_thread* thread);

/// True until the entry has returned; false when never started.
bool tk_thread_is_running(const tk_thread* thread);

/// What the entry returned, 0 before that.
uint32_t tk_thread_result(const tk_thread* thread);

/// Asks the thread to end soon: tk_thread_should_stop() turns true on it and the wait that it is in ends at once.
void tk_thread_request_stop(tk_thread* thread);

/// On a toolkit thread: whether it was asked to stop. On any other thread: false. The same as worker_should_stop().
bool tk_thread_should_stop();

/// Sleeps, in milliseconds; ends early when the calling toolkit thread is asked to stop.
void sleep_ms(uint32_t ms);

/// A mutex that is not recursive: locking it twice on one thread is reported loudly (log and abort in debug
/// builds).
tk_mutex* tk_mutex_create();
ret_t tk_mutex_lock(tk_mutex* mutex);
/// RET_FAIL when another thread holds it.
[[nodiscard]] ret_t tk_mutex_try_lock(tk_mutex* mutex);
/// RET_FAIL when the calling thread does not hold it.
ret_t tk_mutex_unlock(tk_mutex* mutex);
/// Frees the mutex. One that is held or waited for is reported loudly (log and abort in debug builds) and not
/// freed; RET_FAIL then.
ret_t tk_mutex_destroy(tk_mutex* mutex);

tk_semaphore* tk_semaphore_create(uint32_t count);
/// Waits until the count is above 0 and takes one. `timeout_ms` 0xFFFFFFFF waits for ever. RET_FAIL on time-out and
/// when the calling worker is asked to stop.
ret_t tk_semaphore_wait(tk_semaphore* semaphore, uint32_t timeout_ms);
ret_t tk_semaphore_post(tk_semaphore* semaphore);
/// Frees the semaphore. One that is waited for is reported loudly (log and abort in debug builds) and not freed;
/// RET_FAIL then.
ret_t tk_semaphore_destroy(tk_semaphore* semaphore);

/// Holds a mutex for a scope; can let go early, and never unlocks twice.
class tk_lock {
  public:
    explicit tk_lock(tk_mutex* mutex) : mutex_(mutex) { tk_mutex_lock(mutex_); }
    ~tk_lock() { unlock(); }
    tk_lock(const tk_lock&) = delete;
    tk_lock& operator=(const tk_lock&) = delete;
    void unlock() {
        if (mutex_ != nullptr) tk_mutex_unlock(mutex_);
        mutex_ = nullptr;
    }

  private:
    tk_mutex* mutex_;
};
