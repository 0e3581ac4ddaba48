// Workers: threads that end when they are asked to. Every wait of the toolkit (sleep, semaphore, event) and every
// wait for a port is ended by a stop, so an owner's destructor asks, the wait ends, the join returns.
#pragma once

#include "toolkit/core/result.h"
#include "toolkit/core/stop.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

/// What a worker is started with. The name is kept whole (its first 15 bytes reach the system); the priority is
/// kept and not applied: all threads run with the system's default scheduling; the thread gets at least
/// `stack_bytes` of stack, and never less than what the platform and the run-time library need (256 KiB).
struct worker_plan {
    const char* name = "";
    uint32_t priority = 4;
    uint32_t stack_bytes = 4096;
};

/// Owns a thread and ends it. Declare it after what its work uses, so that the thread ends first. Moving,
/// assigning, start, join, abandon and the destructor belong to the owner; the other functions may be called by any
/// thread.
class worker {
  public:
    using work = std::function<uint32_t()>;

    worker();
    /// Asks the work to stop and waits until it has ended. On the worker's own thread it only asks.
    ~worker();
    worker(worker&& other) noexcept;
    /// What this one ran before is ended first, as by the destructor.
    worker& operator=(worker&& other) noexcept;

    /// Runs `what` on a thread of its own; one that has ended before is joined first. RET_FAIL while one still
    /// runs, or when the system refuses a thread; RET_BAD_PARAMS without work.
    [[nodiscard]] ret_t start(const worker_plan& plan, work what);
    /// Asks the work to end soon: its waits end, worker_should_stop() turns true on it. Nothing when none runs.
    void request_stop();
    /// Waits until the work has ended, for as long as it takes. RET_OK also when it had ended before; RET_FAIL when
    /// none was ever started, and on the worker's own thread.
    ret_t join();
    /// Waits up to `ms` milliseconds (0xFFFFFFFF: for ever) for the work to end; true when none runs. False on
    /// time-out and when the calling worker is asked to stop.
    bool wait_ended(uint32_t ms) const;
    /// True from start until the work has returned and what it captured has been released.
    bool running() const;
    /// What the work returned; 0 before that.
    uint32_t result() const;
    /// The plan's name; empty when none was started.
    const char* name() const;
    /// For the final cleanup only: asks the work to stop and lets go of the thread without waiting for it. The work
    /// keeps what it captured until it returns; nothing else that it uses may be freed while workers_running()
    /// still counts it.
    void abandon();

  private:
    struct slot;
    std::unique_ptr<slot> slot_;
};

/// The stop token of the calling worker; on any other thread one that never stops.
stop_token worker_stop_token();
/// Whether the calling worker was asked to stop; on any other thread false.
bool worker_should_stop();

/// Sleeps, in milliseconds. False when the calling worker was asked to stop, which ends the sleep at once. Any
/// thread.
bool worker_sleep_ms(uint32_t ms);

/// How many workers are between start and the return of their work; threads of thread.h count as well. Any thread.
uint32_t workers_running();
/// Asks every worker to stop, also those that are started meanwhile, and waits up to `patience_ms` for all of them
/// to end. Returns how many still run; the calling worker is neither asked nor counted. Any thread.
uint32_t workers_stop_all(uint32_t patience_ms);

/// A signal that one thread gives and another waits for; it stays until a wait takes it. Any thread.
class worker_event {
  public:
    void set();
    /// Takes the signal, waiting up to `ms` milliseconds for it (0xFFFFFFFF: for ever). False on time-out and when
    /// the calling worker is asked to stop.
    bool wait(uint32_t ms);

  private:
    std::mutex lock_;
    stop_condition changed_;
    bool set_ = false;
};
