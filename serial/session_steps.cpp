// Steps that more than one family's sessions use.
#include "serial/port.h"
#include "serial/session_engine.h"

step_end step_open(session_run& run) {
    const std::optional<std::string> path = port_path(run.of, run.input.port_text);
    if (!path) return run.fail(text_bad_port_name, run.log_text(log_open_failed));
    session_close_port(run.of);
    HANDLE port = port_open(*path);
    if (port == INVALID_HANDLE_VALUE) {
        if (tk_thread_should_stop()) return step_end::stopped;
        return run.fail(text_open_failed, run.log_text(log_open_failed));
    }
    run.context.port = port;
    run.context.port_open = true;
    run.context.connected = true;
    return step_end::good;
}

step_end step_configure(session_run& run) {
    port_configure(run.port());
    return step_end::good;
}

step_end step_drain(session_run& run) {
    port_drain(run.port());
    return step_end::good;
}

step_end step_idle(session_run& run) {
    run.context.operation = static_cast<uint8_t>(session_kind::none);
    return step_end::good;
}

step_end step_unlock(session_run& run) {
    run.unlock();
    return step_end::good;
}

step_end step_idle_unlock(session_run& run) {
    step_idle(run);
    return step_unlock(run);
}

step_end step_button_init(session_run& run) {
    if (run.news().button_init) run.news().button_init(run.of);
    return step_end::good;
}

step_end step_image_changed(session_run& run) {
    if (run.news().image_changed) run.news().image_changed(run.of);
    return step_end::good;
}

step_end step_finished(session_run& run) {
    if (run.news().finished) run.news().finished(run.of);
    return step_end::good;
}
