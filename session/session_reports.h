// What a session reports while it runs. The functions are the owner's; they are called on the session's thread, in
// the order in which things happened, and must only post.
#pragma once

#include "session/session_script.h"

#include <functional>

struct session_progress {
    uint32_t percent; ///< 0 to 100
    std::string text;
    uint8_t operation; ///< 0 connect, 1 failed, 2 write, 3 read, 8 mode change
};

/// Bytes that went over the line.
struct session_traffic {
    bool sent; ///< or received
    session_bytes bytes;
};

/// The session gave up; its port has been given back already. `reached_end` is not called for it. After a reply of
/// which it can make something all the same it reports this and goes on to its good end.
struct session_failure {
    uint32_t run; ///< as device_session::start numbered it
    session_kind kind;
    std::string log_line;    ///< for both logs, as it stands
    std::string text;        ///< for the screen
    std::string cause{};     ///< one more line for both logs: port and system error in words; empty without one
    bool port_lost = false;  ///< the device behind the port is gone
    bool at_port = false;    ///< it lies with the port: not opened, or the system refused; else with the module
    bool not_opened = false; ///< the port could not be opened
    bool absent = false;     ///< because there is none of that name
};

struct session_reports {
    std::function<void(const session_progress&)> progress;
    /// What was moved, between the steps that it belongs to; null: nobody asks.
    std::function<void(const session_traffic&)> moved{};
    std::function<void(const session_failure&)> failed;
    /// A checked reply of session `run`: the module's image; empty when the old one stands and is only to be
    /// decoded again.
    std::function<void(uint32_t run, session_bytes)> image;
    /// What the module says of its firmware, as text; null: nobody asks.
    std::function<void(const std::string&)> firmware{};
    /// All went well: the buttons of a connected module may show.
    std::function<void()> connected;
    /// The last report of a session that went well.
    std::function<void(uint32_t run)> finished;
};
