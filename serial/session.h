// Configuration sessions: what the home page starts, and what it hears back.
#pragma once

#include "config/dev_obj.h"
#include "config/models.h"
#include "platform/com_port.h"
#include "toolkit/core/thread.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

enum class session_kind : uint8_t { none = 0, connect = 1, write = 2, read = 3, mode_switch = 8 };

/// One per family, for the whole run of the program. `port`, `port_open`, `connected` and `operation` may be read
/// by any thread; the thread slots belong to the GUI thread.
struct session_context {
    family of = family::generic;
    std::atomic<HANDLE> port{INVALID_HANDLE_VALUE};
    std::atomic<bool> port_open{false}; ///< generic: "port-open flag", A and B: "port open byte"
    std::atomic<bool> connected{false}; ///< set once the port is open; cleared by a failed connect and disconnect
    std::atomic<uint8_t> operation{0};  ///< busy: 0 idle, else a session_kind; cleared when a session ends well
    tk_thread* connect_thread = nullptr;
    tk_thread* read_thread = nullptr;
    tk_thread* write_thread = nullptr;
};

session_context& session_of(family of);
/// The family's session mutex: the generic session lock, or the device object's. Null before it was created.
tk_mutex* session_lock(family of);
/// True while any session thread of any family, or a disconnect, runs. Any thread.
bool session_any_running();

/// What a session needs from the screen, read on the GUI thread by the starter.
struct session_input {
    std::string port_text;  ///< text of "combo_box_ex_serial", at most 100 bytes
    std::string model;      ///< current model name
    bool code_mode = false; ///< the family's code switch (B: frames start with AC)
};

/// What the application does with a session's news. All are called on the session's thread (or on the mode-switch
/// worker) and must only post.
struct session_reports {
    /// Percentage 0 to 100, step text, operation code as the report carries it (0, 1, 2, 3 or 8).
    std::function<void(uint32_t percent, const std::string& text, uint8_t operation)> progress;
    /// The session gave up; its lock has been released already. `state` is the session_kind. The receiver posts the
    /// failure display (which appends `char_log` to both logs) and then the clean-up that `finished` posts;
    /// `finished` is not called for a failed session. After a bad header in a reply of the generic and A families
    /// the session reports this and goes on to its good end.
    std::function<void(family of, const std::string& char_log, const std::string& progress_text, uint8_t state)>
        fail;
    /// The session went well: put the buttons into the connected state.
    std::function<void(family of)> button_init;
    /// The last words of a session that went well: join and let go of its threads, let go of the port watcher's
    /// handle.
    std::function<void(family of)> finished;
    /// A decoded reply: the code view shows the new image.
    std::function<void(family of)> image_changed;
};
void session_set_reports(session_reports reports);

/// Starts a session thread under the family's lock, stores it in its slot (an old handle there is released) and
/// sets the operation. RET_FAIL when the family has no such session, when another session of it holds the lock
/// (waited for up to half a second), or when the thread cannot be started. GUI thread.
ret_t session_start(family of, session_kind kind, const session_input& input);

/// Session-finished step: joins and destroys the family's recorded threads. GUI thread.
void session_join_threads(family of);
/// Releases old thread handles without joining (the slots become empty). GUI thread.
void session_release_thread(tk_thread** slot);

/// Closes the family's port if one is open and clears the port flag. Any thread that may own the port.
void session_close_port(family of);
/// The same without closing: hands over the port, INVALID_HANDLE_VALUE when none is open. Closing may take a driver
/// long, so it is done without the lock.
HANDLE session_take_port(family of);

/// Disconnect: closes the ports of all families and clears their connected and operation fields. A B module with an
/// open port is sent "transfer" first, reported through session_reports::progress with operation 8. It all happens
/// on a worker of its own, so that a blocked port never freezes the window; `done` runs on the GUI thread when it
/// has ended, well or not. RET_FAIL when a disconnect is under way already (nothing happens then) or the worker
/// cannot be started (the ports are closed on the spot then, and no module is told). GUI thread.
ret_t session_disconnect(std::function<void()> done);
/// Exit: asks a disconnect under way to stop and lets go of its worker (200 ms at most). GUI thread.
void session_disconnect_abandon();

/// The thread function of a family's session, for the device objects' slots; it runs with the input of the last
/// session_start of that family and returns 0, or 2 after a failure. Null for session_kind::none and mode_switch.
uint32_t (*session_entry_of(family of, session_kind kind))();

/// Waits and retries, in milliseconds; tests shorten them.
struct session_timing {
    uint32_t read_wait_ms = 5000;  ///< a pending read is waited for at most this long
    uint32_t drain_wait_ms = 5000; ///< the same inside the input drain
    uint32_t mode_step_ms = 200;   ///< B connect: five steps of this length
    uint32_t watcher_period_ms = 60000;
    uint32_t stop_check_ms = 100; ///< not looked at: a stop ends a wait at once
    COMMTIMEOUTS port = {1000, 500, 1000, 500,
                         1000}; ///< interval, read multiplier, read constant, write multiplier, write constant
};
session_timing& session_timing_get();

/// "../log/p_v_info.txt"; tests choose another.
std::string& session_log_path();
