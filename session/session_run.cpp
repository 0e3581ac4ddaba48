#include "session/session_run.h"

#include "toolkit/core/date_time.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"
#include "toolkit/core/worker.h"

#include <algorithm>

namespace {

constexpr uint32_t result_failed = 2;
constexpr int drop_rounds = 10; ///< of quiet_ms each: the longest reply takes 167 ms

void log_folder_ensure() {
    const std::string& path = session_log_path();
    const std::size_t end = path.find_last_of("/\\");
    if (end == std::string::npos || end == 0) return;
    const std::string folder = path.substr(0, end);
    if (!fs_dir_exist(os_fs(), folder.c_str())) static_cast<void>(fs_create_dir(os_fs(), folder.c_str()));
}

} // namespace

session_timing& session_timing_get() {
    static session_timing timing;
    return timing;
}

std::string& session_log_path() {
    static std::string path = "../log/p_v_info.txt";
    return path;
}

void session_log_append(const std::string& text) {
    idle_queue([text] { return fs_append(session_log_path().c_str(), text); });
}

std::string hex_list(std::span<const uint8_t> bytes, const char* format, const char* between) {
    std::string text;
    for (uint8_t byte : bytes) {
        if (!text.empty()) text += between;
        text += tk_format(format, byte);
    }
    return text;
}

port_observer port_traffic_to(const std::function<void(const session_traffic&)>& moved) {
    if (!moved) return nullptr;
    return [moved](bool sent, std::span<const uint8_t> bytes) { moved({sent, {bytes.begin(), bytes.end()}}); };
}

session_run::session_run(const family_descriptor& family, const session_script& script, uint32_t number,
                         session_input in, session_state& shared, port_lease lease, session_reports to)
    : of(family), input(std::move(in)), state(shared), reports(std::move(to)), script_(script), number_(number) {
    hold(std::move(lease));
}

void session_run::hold(port_lease lease) {
    port = std::move(lease);
    port.observe(port_traffic_to(reports.moved));
}

uint32_t session_run::run() {
    log_folder_ensure();
    step_end end = step_end::good;
    for (const session_step& step : script_.steps) {
        end = worker_should_stop() ? step_end::stopped : run_step(step);
        if (end != step_end::good) break;
    }
    return end == step_end::good ? 0 : result_failed;
}

step_end session_run::run_step(const session_step& step) {
    say(step.say);
    const step_end end = step.with == nullptr ? step_end::good : run_exchange(*step.with);
    if (end != step_end::good || step.act == nullptr) return end;
    return step.act(*this);
}

void session_run::say(const session_report& report) const {
    if (report.text == nullptr || !reports.progress) return;
    const int operation = report.operation >= 0 ? report.operation : script_.report_operation;
    reports.progress({report.percent, report.text, static_cast<uint8_t>(operation)});
}

void session_run::finish() const {
    if (reports.finished) reports.finished(number_);
}

void session_run::report_image() const {
    if (reports.image) reports.image(number_, image);
}

std::string session_run::log_text(const std::string& format) const {
    date_time_t now;
    date_time_init(&now);
    const std::string model = script_.model_in_log ? tk_format(log_model_head, input.model.c_str()) : std::string();
    return model + tk_format(format.c_str(), now.hour, now.minute, now.second);
}

step_end session_run::fail(const char* message, const std::string& log, port_cause cause) {
    const bool never_open = !port;
    if (script_.kind == session_kind::connect) {
        port.close_port();
        state.port.close(); // one that was open before a connect that never came to its own
        state.connected = false;
    }
    if (const DWORD error = drop_input(); cause.words == nullptr && port_lost_error(error))
        cause = port_use_cause(error);
    port.give_back();
    const std::string line = port_cause_line(input.port_text, cause);
    if (reports.failed)
        reports.failed({.run = number_,
                        .kind = script_.kind,
                        .log_line = log,
                        .text = message,
                        .cause = line,
                        .port_lost = cause.lost,
                        .at_port = never_open || cause.words != nullptr,
                        .not_opened = never_open,
                        .absent = cause.absent});
    return step_end::failed;
}

// The end of a reply may still be on its way, and a session that does not drain would take it for its own. A module
// that never stops talking cannot hold the session.
DWORD session_run::drop_input() {
    DWORD error = 0;
    for (int round = 0; port && round < drop_rounds; ++round) {
        if (!port.purge(PURGE_RXCLEAR, &error) || !worker_sleep_ms(session_timing_get().quiet_ms)) break;
        if (port.waiting(&error).value_or(0) == 0) break;
    }
    return error;
}

step_end session_run::run_exchange(const exchange& with) {
    for (index = 0; index < with.times; ++index) {
        if (worker_should_stop()) return step_end::stopped;
        const step_end end = exchange_once(with);
        if (end != step_end::good) return end;
    }
    return step_end::good;
}

step_end session_run::exchange_once(const exchange& with) {
    request = with.request;
    if (request.empty() && index < input.requests.size()) request = input.requests[index];
    say({with.say.percent + index, with.say.text, with.say.operation});
    port.clear_errors();
    const io_result written = port.write(request);
    if (!written.ok()) return io_failed(with, true, written);
    if (with.reply == 0) return step_end::good;
    say(with.say_reply);
    reply.fill(0);
    const io_result read = port.read(std::span(reply).first(with.reply), session_timing_get().read_wait_ms);
    if (!read.ok()) return io_failed(with, false, read);
    return check_reply(with);
}

step_end session_run::check_reply(const exchange& with) {
    bool good = true;
    for (const reply_check& check : with.checks) {
        say(check.say);
        const std::optional<reply_fault> fault = check.fault_of(*this);
        if (!fault) continue;
        fail(fault->message, fault->log);
        if (!fault->go_on) return step_end::failed;
        good = false;
    }
    if (good && with.accept != nullptr) with.accept(*this);
    return step_end::good;
}

step_end session_run::io_failed(const exchange& with, bool writing, const io_result& result) {
    const io_messages& message = with.texts->message;
    const io_tails& tails = writing ? write_tails : read_tails;
    const std::string head = writing ? with.texts->write_head : with.texts->read_head;
    const port_cause cause = port_use_cause(result.error);
    switch (result.step) {
    case io_step::create_event:
        return fail(writing ? message.create_write_event : message.create_read_event,
                    log_text(head + tails.create_event), cause);
    case io_step::start:
        return fail(writing ? message.write : message.read, log_text(head + tails.start), cause);
    case io_step::wait:
        return fail(writing ? message.wait_write : message.wait_read, log_text(head + tails.wait));
    case io_step::result:
        return fail(writing ? message.write_result : message.read_result, log_text(head + tails.result), cause);
    default:
        return step_end::stopped;
    }
}
