// The one engine behind every session: a session is a list of steps, most of them exchanges (a request, and a reply
// that is checked). The families' files hold nothing but such lists.
#pragma once

#include "serial/overlapped.h"
#include "serial/session.h"
#include "serial/session_texts.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

class session_run;

/// A progress report; without a text there is none.
struct session_report {
    uint32_t percent = 0;
    const char* text = nullptr;
    int operation = -1; ///< -1: the session's own code
};

/// What is wrong with a reply.
struct reply_fault {
    const char* message;
    std::string log;
    bool go_on = false; ///< the failure is reported, and the session goes on as if the reply were good
};

struct reply_check {
    session_report say{}; ///< before the check
    std::optional<reply_fault> (*fault_of)(const session_run&);
};

struct exchange {
    const io_texts* texts;
    session_report say{}; ///< before the write; with `times`, its percentage rises by one each time
    void (*request)(session_run&);
    session_report say_reply{}; ///< between write and read
    uint32_t reply = 0;         ///< bytes asked for; 0: no reply is read
    std::span<const reply_check> checks{};
    void (*accept)(session_run&) = nullptr; ///< a reply without any fault
    uint32_t times = 1;                     ///< session_run::index counts from 0
};

/// How a step ended. `failed`: the failure has been reported.
enum class step_end : uint8_t { good, failed, stopped };

/// Report, exchange, act: in this order, each if present.
struct session_step {
    session_report say{};
    const exchange* with = nullptr;
    step_end (*act)(session_run&) = nullptr;
};

struct session_script {
    const char* thread_name;
    session_kind kind;
    uint8_t report_operation; ///< the code that this session's reports carry
    bool model_in_log;        ///< log texts begin with the model's name
    void (*before_lock)(session_run&);
    std::span<const session_step> steps;
};

/// One session, on its thread. The lock is held from run() on, until a step, a failure or the end lets it go.
class session_run {
  public:
    session_run(family of, const session_script& script, session_input in, session_reports reports);

    /// 0 after a good end, 2 after a failure or a stop.
    uint32_t run();

    const family of;
    const session_input input;
    session_context& context;
    std::array<uint8_t, io_read_max> request{};
    std::size_t request_size = 0;
    std::array<uint8_t, io_read_max> reply{}; ///< zeroed before each read
    uint32_t index = 0;                       ///< which of exchange::times

    HANDLE port() const { return context.port; }
    void set_request(std::span<const uint8_t> bytes);
    void say(const session_report& report) const;
    const session_reports& news() const { return reports_; }

    /// The one way to fail: a connect gives its port back, the lock is let go, the failure and the session's end
    /// are reported.
    step_end fail(const char* message, const std::string& log);
    /// Judges what stands in `reply`: reports its faults, accepts it when it has none.
    step_end check_reply(const exchange& with);
    void unlock();
    /// Calls `work` with the family's lock held, taking it again where a reported failure let it go.
    void locked(void (*work)(session_run&));
    /// A log text with the time in its three "%d", the model's name before it where the family has that.
    std::string log_text(const std::string& format) const;

  private:
    step_end run_step(const session_step& step);
    step_end run_exchange(const exchange& with);
    step_end exchange_once(const exchange& with);
    step_end io_failed(const exchange& with, bool writing, const io_result& result);

    const session_script& script_;
    session_reports reports_;
    tk_mutex* mutex_;
    bool holds_ = false;
};

/// Appends to the session log, on the GUI thread, after what was appended before. Any thread.
void session_log_append(const std::string& text);

// Steps that more than one family uses.
step_end step_open(session_run& run);        ///< from the port text to an open, stored port
step_end step_configure(session_run& run);   ///< port_configure without a word
step_end step_drain(session_run& run);       ///< port_drain
step_end step_idle(session_run& run);        ///< clears the operation
step_end step_unlock(session_run& run);      ///< lets go of the lock
step_end step_idle_unlock(session_run& run); ///< both, in this order
step_end step_button_init(session_run& run);
step_end step_image_changed(session_run& run);
step_end step_finished(session_run& run);

/// Bytes for a log line: each with `format` ("%02x"), `between` between two.
std::string hex_list(std::span<const uint8_t> bytes, const char* format, const char* between);

/// A family's script, null when it has none.
const session_script* session_script_of(family of, session_kind kind);
inline const session_script* script_find(std::span<const session_script> scripts, session_kind kind) {
    for (const session_script& script : scripts)
        if (script.kind == kind) return &script;
    return nullptr;
}
const session_script* generic_script(session_kind kind);
const session_script* a_script(session_kind kind);
const session_script* b_script(session_kind kind);
