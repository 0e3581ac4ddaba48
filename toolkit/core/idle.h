// The GUI thread's work queue and timers. Any thread posts; jobs run on the GUI thread, in order, outside the lock.
#pragma once

#include "toolkit/core/result.h"

#include <cstdint>
#include <functional>
#include <string>

using idle_job = std::function<ret_t()>;

/// Queues `job` to run once on the GUI thread, after everything queued before it. Its result is only logged at
/// debug level. Returns RET_FAIL after idle_shutdown (the job is destroyed unrun), else RET_OK. Any thread.
ret_t idle_queue(idle_job job);

/// As idle_queue, but at most one job of a key is pending: while one is, `job` takes its place (and its turn in the
/// queue), and the one before is destroyed unrun. Once a job has begun to run, the next one is queued anew. For
/// refreshes that are asked for more often than they can be done. RET_BAD_PARAMS for an empty key. Any thread.
ret_t idle_queue_once(const std::string& key, idle_job job);

/// As idle_queue, but a job that answers RET_REPEAT is queued again at the end. Returns an id above 0, 0 on
/// failure.
uint32_t idle_add(idle_job job);

/// Removes a job of idle_add that has not run yet. RET_FAIL when there is none.
ret_t idle_remove(uint32_t id);

/// Runs `job` on the GUI thread `ms` milliseconds from now and, while it answers RET_REPEAT, every `ms` after
/// (ticks that are missed are left out; those that follow keep to the first one's rhythm). Returns an id above 0.
/// Any thread.
uint32_t timer_add(idle_job job, uint32_t ms);
/// Removes a timer, also from inside its own job. RET_FAIL when there is none.
ret_t timer_remove(uint32_t id);
/// Stops a timer from firing until timer_resume. RET_FAIL when there is none.
ret_t timer_suspend(uint32_t id);
ret_t timer_resume(uint32_t id);

/// Makes the calling thread the GUI thread and empties nothing. Called by the toolkit's start-up and by tests.
void idle_set_gui_thread();
/// True on the GUI thread.
bool idle_is_gui_thread();

/// Called (outside the lock, on the posting thread) whenever there is new work or an earlier due time; the main
/// loop sets it to wake itself. An empty function is allowed.
void idle_set_wakeup(std::function<void()> wakeup);

/// Runs the jobs that were queued when it was called and the timers that are due, in order. Returns how many ran.
/// GUI thread.
uint32_t idle_dispatch();

/// Milliseconds until the next timer is due, 0 when jobs wait or a timer is due, -1 when there is nothing to wait
/// for.
int64_t idle_next_due_ms();

/// For programs and tests without a window: dispatches, sleeping in between, until `done` answers true or
/// `timeout_ms` have passed. Returns what `done` answered last. GUI thread.
bool idle_run_until(const std::function<bool()>& done, uint32_t timeout_ms);

/// Destroys what is queued and refuses new work from now on (jobs of dying workers go nowhere). GUI thread.
void idle_shutdown();
/// Test aid: accepts work again with an empty queue.
void idle_restart();
