// Steps that more than one family's sessions use.
#include "serial/port_names.h"
#include "session/session_run.h"
#include "toolkit/core/worker.h"

step_end step_open(session_run& run) {
    const std::optional<std::string> path = port_path(run.input.port_text, run.of.typed_paths);
    if (!path) return run.fail(text_bad_port_name, run.log_text(log_open_failed));
    DWORD error = 0;
    if (run.state.port.open(*path, &error) != RET_OK) {
        if (worker_should_stop()) return step_end::stopped;
        return run.fail(text_open_failed, run.log_text(log_open_failed), port_open_cause(*path, error));
    }
    run.hold(run.state.port.take(INFINITE));
    run.state.connected = true;
    return step_end::good;
}

step_end step_configure(session_run& run) {
    run.port.configure();
    return step_end::good;
}

step_end step_drain(session_run& run) {
    run.port.drain();
    return step_end::good;
}

step_end step_idle(session_run& run) {
    run.state.operation = static_cast<uint8_t>(session_kind::none);
    return step_end::good;
}

step_end step_let_go(session_run& run) {
    run.port.give_back();
    return step_end::good;
}

step_end step_idle_let_go(session_run& run) {
    step_idle(run);
    return step_let_go(run);
}

step_end step_connected(session_run& run) {
    if (run.reports.connected) run.reports.connected();
    return step_end::good;
}

step_end step_image(session_run& run) {
    run.report_image();
    return step_end::good;
}

step_end step_finished(session_run& run) {
    run.finish();
    return step_end::good;
}

const char* leave_text(io_step end) {
    static constexpr io_messages message{.write = text_transfer_write};
    switch (end) {
    case io_step::done:
        return text_mode_transfer;
    case io_step::create_event:
        return message.create_write_event;
    case io_step::start:
        return message.write;
    case io_step::result:
        return message.write_result;
    default:
        return message.wait_write;
    }
}
