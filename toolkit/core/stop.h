// Asking for an end: a source asks, tokens tell whether it did, callbacks are run for it, waits are ended by it.
//
// The standard library's own kind has the same names and rules. It is not used because the destructor of its
// callback may sleep for ever on Windows: the C++ library's waits on atomics lose wake-ups there.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

struct stop_state;

/// Tells whether a stop was asked for. One that belongs to no source never does. Copies tell the same. Any thread.
class stop_token {
  public:
    stop_token() = default;
    bool stop_requested() const;
    /// True when it belongs to a source.
    bool stop_possible() const { return state_ != nullptr; }
    bool operator==(const stop_token&) const = default;

  private:
    friend class stop_source;
    friend class stop_callback;
    explicit stop_token(std::shared_ptr<stop_state> state) : state_(std::move(state)) {}
    std::shared_ptr<stop_state> state_;
};

/// Asks for a stop, once and for all. Copies ask for the same. Any thread.
class stop_source {
  public:
    stop_source();
    stop_token get_token() const { return stop_token(state_); }
    bool stop_requested() const { return get_token().stop_requested(); }
    /// Runs the callbacks that are there, on the calling thread and without a lock held, newest first. Whoever asks
    /// again meanwhile does not wait for them.
    void request_stop() const;

  private:
    std::shared_ptr<stop_state> state_;
};

/// Has `call` run when a stop is asked for; at once, in the constructor, when it was before.
class stop_callback {
  public:
    stop_callback(const stop_token& token, std::function<void()> call);
    /// It does not run any more afterwards: one that is running on another thread is waited for.
    ~stop_callback();
    stop_callback(const stop_callback&) = delete;
    stop_callback& operator=(const stop_callback&) = delete;

  private:
    friend class stop_source;
    std::shared_ptr<stop_state> state_;
    std::function<void()> call_;
};

/// The time-out that never comes.
inline constexpr uint32_t wait_for_ever = UINT32_MAX;

/// A condition variable whose waits a stop ends. Any thread.
class stop_condition {
  public:
    /// With or without the lock that guards the condition; a change is made under it.
    void notify_all();
    /// Waits, with `guard` let go meanwhile, until `ready` answers true, `ms` milliseconds have passed
    /// (wait_for_ever: no limit) or a stop is asked for. `ready` is asked with `guard` held; returns what it
    /// answered last.
    bool wait(std::unique_lock<std::mutex>& guard, const stop_token& stop, uint32_t ms,
              const std::function<bool()>& ready);

  private:
    std::mutex lock_; ///< taken after the guard's, held by nobody for long
    std::condition_variable changed_;
};
