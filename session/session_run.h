// The one engine behind every session: it works through a script, with one way to fail.
#pragma once

#include "serial/port_cause.h"
#include "serial/port_lease.h"
#include "session/family.h"
#include "session/session_reports.h"

#include <array>
#include <atomic>

/// What the next session needs from the screen and from the device, by value.
struct session_input {
    std::string port_text;               ///< text of the port selector, at most 100 bytes
    std::string model;                   ///< current model name
    std::vector<session_bytes> requests; ///< what is sent beside the script's fixed requests
};

/// What a device's owner and its sessions share.
struct session_state {
    com_port port;
    std::atomic<bool> connected{false}; ///< set once the port is open; cleared by a failed connect and disconnect
    std::atomic<uint8_t> operation{0};  ///< 0 idle, else a session_kind; cleared when a session ends well
};

/// One session, on its thread. The port is held from the start until a step, a failure or the end gives it back.
class session_run {
  public:
    session_run(const family_descriptor& of, const session_script& script, uint32_t number, session_input input,
                session_state& state, port_lease port, session_reports reports);

    /// 0 after a good end, 2 after a failure or a stop.
    uint32_t run();

    const family_descriptor& of;
    const session_input input;
    session_state& state;
    port_lease port;
    const session_reports reports;
    std::span<const uint8_t> request;         ///< what was sent last
    std::array<uint8_t, io_read_max> reply{}; ///< zeroed before each read
    uint32_t index = 0;                       ///< which of exchange::times
    session_bytes image;                      ///< of an accepted reply; empty: the old one stands

    void say(const session_report& report) const;
    /// Works with this port from now on.
    void hold(port_lease lease);
    void finish() const;
    void report_image() const;

    /// The one way to fail: a connect closes its port, others drop what is left of the reply; the port is given
    /// back, the failure is reported.
    step_end fail(const char* message, const std::string& log, port_cause cause = {});
    /// Judges what stands in `reply`: reports its faults, accepts it when it has none.
    step_end check_reply(const exchange& with);
    /// A log text with the time in its three "%d", the model's name before it where the family has that.
    std::string log_text(const std::string& format) const;

  private:
    step_end run_step(const session_step& step);
    step_end run_exchange(const exchange& with);
    step_end exchange_once(const exchange& with);
    step_end io_failed(const exchange& with, bool writing, const io_result& result);
    /// Drops what still comes of a reply. The system's error when the port refuses that, else 0.
    DWORD drop_input();

    const session_script& script_;
    const uint32_t number_;
};

/// What a lease shows, as a session reports it; null for null.
port_observer port_traffic_to(const std::function<void(const session_traffic&)>& moved);

/// Appends to the session log, on the GUI thread, after what was appended before. Any thread.
void session_log_append(const std::string& text);
/// "../log/p_v_info.txt"; tests choose another. GUI thread.
std::string& session_log_path();

/// Waits, in milliseconds; tests shorten them.
struct session_timing {
    uint32_t start_wait_ms = 500; ///< a start waits at most this long for the session before it
    uint32_t read_wait_ms = 5000; ///< a pending read is waited for at most this long
    uint32_t mode_step_ms = 200;  ///< a B module changes its mode in five steps of this length
    uint32_t quiet_ms = 30;       ///< after a failure: when nothing comes for this long, the reply has ended
};
session_timing& session_timing_get();

// Steps that more than one family uses.
step_end step_open(session_run& run);        ///< from the port text to an open port
step_end step_configure(session_run& run);   ///< line settings, without a word
step_end step_drain(session_run& run);       ///< swallows what waits in the input
step_end step_idle(session_run& run);        ///< clears the operation
step_end step_let_go(session_run& run);      ///< gives the port back
step_end step_idle_let_go(session_run& run); ///< both, in this order
step_end step_connected(session_run& run);   ///< the buttons may show
step_end step_image(session_run& run);       ///< reports the image to decode
step_end step_finished(session_run& run);

/// Bytes for a log line: each with `format` ("%02x"), `between` between two.
std::string hex_list(std::span<const uint8_t> bytes, const char* format, const char* between);
