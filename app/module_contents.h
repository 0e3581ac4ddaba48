// What sessions tell of the module's contents: which image is known to be in it, and what a check finds. GUI thread
// only, in the order in which the reports come.
#pragma once

#include "session/dev_obj.h"
#include "toolkit/ravel/widget.h"

/// Whether a session is a check: its reply is compared, not taken over.
enum class module_check : uint8_t {
    none,
    by_hand,
    after_write, ///< a difference is a failure
};

/// Session `run` of a device has begun, as device_session numbers it; no report of it has been taken yet.
void module_session_began(const dev_obj& dev, uint32_t run, session_kind kind, module_check check);
/// A checked reply of it has come. True when a check has taken it.
bool module_reply(dev_obj& dev, uint32_t run, std::span<const uint8_t> image);
/// It has come to its good end: what was written is in the module; a check says what it found. A failure of the
/// check is for the caller to show. Another session may have begun since.
std::optional<session_failure> module_session_ended(widget* home, dev_obj& dev, uint32_t run);
/// A session has failed: after a write that was broken off, and once the port is lost, nothing is known any more.
void module_session_failed(dev_obj& dev, const session_failure& failure);

/// Whether a good write is followed by a check, and what starts it; null: none is.
struct check_after_write {
    bool (*wanted)();
    ret_t (*start)(widget* home);
};
void module_check_after_write(check_after_write how);
