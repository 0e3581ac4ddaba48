#include "session/device_session.h"

#include "toolkit/core/date_time.h"

#include <memory>

namespace {

constexpr uint32_t running_look_ms = 20;

} // namespace

device_session::device_session(const family_descriptor& of, session_reports reports)
    : of_(of), reports_(std::move(reports)) {}

// A session that has just reported its end may still have a moment to go; one that hangs must not take the window
// with it. The port is taken here, so that the session begins with it and nobody comes between; a connect opens it
// anew.
ret_t device_session::start(session_kind kind, session_input input) {
    const session_script* script = script_find(of_.scripts, kind);
    if (script == nullptr) return RET_FAIL;
    const uint32_t patience_ms = session_timing_get().start_wait_ms;
    const int64_t until = time_now_ms() + patience_ms;
    port_lease port = state_.port.take(patience_ms);
    if (!port && state_.port.is_open()) return RET_FAIL;
    if (kind == session_kind::connect) port.give_back();
    while (run_.running() && time_now_ms() < until) static_cast<void>(worker_sleep_ms(1));
    if (run_.running()) return RET_FAIL;
    const auto run = std::make_shared<session_run>(of_, *script, last_run_ + 1, std::move(input), state_,
                                                   std::move(port), reports_);
    const auto before = state_.operation.exchange(static_cast<uint8_t>(kind));
    const worker_plan plan{.name = script->thread_name};
    if (run_.start(plan, [run] { return run->run(); }) != RET_OK) {
        state_.operation = before;
        return RET_FAIL;
    }
    ++last_run_;
    return RET_OK;
}

void device_session::join(uint32_t run) {
    if (run == last_run_) static_cast<void>(run_.join());
}

void device_session::give_up() {
    state_.port.close();
    state_.connected = false;
}

void device_session::drop() {
    give_up();
    state_.operation = static_cast<uint8_t>(session_kind::none);
}

void device_session::leave(const std::function<void(const session_progress&)>& report) {
    const auto say = [&report](uint32_t percent, const char* text) {
        if (report) report({percent, text, static_cast<uint8_t>(session_kind::mode_switch)});
    };
    while (run_.running() && worker_sleep_ms(running_look_ms)) {
    }
    port_lease port = state_.port.take(INFINITE);
    if (port && !of_.leave.empty()) {
        port.observe(port_traffic_to(reports_.moved));
        say(10, text_mode_switch);
        port.clear_errors();
        say(40, text_mode_switch);
        const io_result written = port.write(of_.leave);
        if (written.ok()) say(80, text_mode_switch);
        port.close_port();
        say(100, leave_text(written.step));
    }
    port.close_port();
    state_.connected = false;
    state_.operation = static_cast<uint8_t>(session_kind::none);
}
