// A module's port and the sessions that use it, one at a time. Its owner makes one per module, as many as wanted;
// destroying it ends what runs.
#pragma once

#include "session/session_run.h"
#include "toolkit/core/worker.h"

class device_session {
  public:
    device_session(const family_descriptor& of, session_reports reports);

    // Any thread.
    bool port_open() const { return state_.port.is_open(); }
    /// Waits for an opening of the port, as com_port::wait_opened does. Any thread.
    [[nodiscard]] uint64_t wait_port_opened(uint64_t seen) const { return state_.port.wait_opened(seen); }
    bool connected() const { return state_.connected; }
    /// The session_kind under way; stays after a failure.
    session_kind operation() const { return static_cast<session_kind>(state_.operation.load()); }
    /// Until a session's thread has done its work.
    bool running() const { return run_.running(); }

    /// Starts a session with all that it needs, and sets the operation. RET_FAIL when the family has no such
    /// session, when somebody else holds the port or a session still runs (waited for as session_timing says), or
    /// when the thread cannot be started. Owner's thread.
    ret_t start(session_kind kind, session_input input);
    /// The number of the session started last; 0: none yet. Owner's thread.
    uint32_t last_run() const { return last_run_; }
    /// Waits for the end of session `run`, unless another one was started since. Owner's thread.
    void join(uint32_t run);
    /// A failed connect: the port is closed, and the module counts as not connected. Owner's thread.
    void give_up();

    /// Disconnects: waits for the port, tells the module where its family has something to say (reported as
    /// operation 8), closes the port, clears the state. On a worker.
    void leave(const std::function<void(const session_progress&)>& report);
    /// The same without a word and without waiting for anybody: closes and clears.
    void drop();

    /// The port for somebody else than a session; no session starts while it is held. Waits up to `wait_ms` for who
    /// has it; empty as com_port::take answers it. Any thread.
    [[nodiscard]] port_lease take_port(uint32_t wait_ms) { return state_.port.take(wait_ms); }

    /// Test aid: a module that counts as connected without a port.
    void assume_connected(bool connected) { state_.connected = connected; }
    /// Test aid: whether nobody holds the port.
    bool port_free() { return !port_open() || take_port(0); }

  private:
    const family_descriptor& of_;
    const session_reports reports_;
    session_state state_;
    uint32_t last_run_ = 0;
    worker run_; // last: it uses the others
};
