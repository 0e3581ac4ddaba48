// Events, and the table that turns handles into objects. A handle's number is never given out again, so a handle
// that was closed, closed twice or made up is told from a good one: ERROR_INVALID_HANDLE, never undefined
// behaviour.
#pragma once

#include "platform/posix/com_port_system.h"

#include <condition_variable>
#include <memory>
#include <mutex>

namespace posix_com {

class event {
  public:
    event(bool manual_reset, bool initial_state) : manual_reset_(manual_reset), signalled_(initial_state) {}
    void set();
    void reset();
    /// Waits up to `ms` milliseconds (INFINITE: for ever); false on time-out. Takes the signal when not
    /// manual-reset.
    bool wait(DWORD ms);

  private:
    std::mutex lock_;
    std::condition_variable changed_;
    const bool manual_reset_;
    bool signalled_;
};

struct port;

/// What a handle stands for: an event, or a port whose `signal` is set whenever one of its operations ends.
struct object {
    std::shared_ptr<event> signal;
    std::shared_ptr<port> serial; ///< null for an event
};

HANDLE handle_add(object what);
/// The object (its members empty when the handle is not open). Any thread.
object handle_find(HANDLE handle);
/// The same, and the handle is no longer open.
object handle_remove(HANDLE handle);
/// The port of a handle; null, with ERROR_INVALID_HANDLE set, when it is none.
std::shared_ptr<port> handle_port(HANDLE handle);

/// Sets the calling thread's last error and returns FALSE.
BOOL fail(DWORD error);

} // namespace posix_com
