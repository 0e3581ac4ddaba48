#include "serial/session_engine.h"

#include "serial/port.h"
#include "toolkit/core/date_time.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"

#include <algorithm>

namespace {

constexpr uint32_t result_failed = 2;

void ensure_log_folder() {
    const std::string& path = session_log_path();
    const std::size_t end = path.find_last_of("/\\");
    if (end == std::string::npos || end == 0) return;
    const std::string folder = path.substr(0, end);
    if (!fs_dir_exist(os_fs(), folder.c_str())) fs_create_dir(os_fs(), folder.c_str());
}

} // namespace

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

session_run::session_run(family f, const session_script& script, session_input in, session_reports reports)
    : of(f), input(std::move(in)), context(session_of(f)), script_(script), reports_(std::move(reports)),
      mutex_(session_lock(f)) {}

uint32_t session_run::run() {
    ensure_log_folder();
    if (script_.before_lock != nullptr) script_.before_lock(*this);
    tk_mutex_lock(mutex_);
    holds_ = true;
    step_end end = step_end::good;
    for (const session_step& step : script_.steps) {
        end = tk_thread_should_stop() ? step_end::stopped : run_step(step);
        if (end != step_end::good) break;
    }
    unlock();
    return end == step_end::good ? 0 : result_failed;
}

step_end session_run::run_step(const session_step& step) {
    say(step.say);
    const step_end end = step.with == nullptr ? step_end::good : run_exchange(*step.with);
    if (end != step_end::good || step.act == nullptr) return end;
    return step.act(*this);
}

void session_run::set_request(std::span<const uint8_t> bytes) {
    request_size = std::min(bytes.size(), request.size());
    std::copy_n(bytes.begin(), request_size, request.begin());
}

void session_run::say(const session_report& report) const {
    if (report.text == nullptr || !reports_.progress) return;
    const int operation = report.operation >= 0 ? report.operation : script_.report_operation;
    reports_.progress(report.percent, report.text, static_cast<uint8_t>(operation));
}

void session_run::unlock() {
    if (!holds_) return;
    holds_ = false;
    tk_mutex_unlock(mutex_);
}

void session_run::locked(void (*work)(session_run&)) {
    if (holds_) {
        work(*this);
        return;
    }
    const tk_lock hold(mutex_);
    work(*this);
}

std::string session_run::log_text(const std::string& format) const {
    date_time_t now;
    date_time_init(&now);
    const std::string model = script_.model_in_log ? tk_format(log_model_head, input.model.c_str()) : std::string();
    return model + tk_format(format.c_str(), now.hour, now.minute, now.second);
}

step_end session_run::fail(const char* message, const std::string& log) {
    if (script_.kind == session_kind::connect) {
        session_close_port(of);
        context.connected = false;
    }
    unlock();
    if (reports_.fail) reports_.fail(of, log, message, static_cast<uint8_t>(script_.kind));
    return step_end::failed;
}

step_end session_run::run_exchange(const exchange& with) {
    for (index = 0; index < with.times; ++index) {
        if (tk_thread_should_stop()) return step_end::stopped;
        const step_end end = exchange_once(with);
        if (end != step_end::good) return end;
    }
    return step_end::good;
}

step_end session_run::exchange_once(const exchange& with) {
    with.request(*this);
    say({with.say.percent + index, with.say.text, with.say.operation});
    port_clear_errors(port());
    const io_result written = port_write(port(), std::span(request).first(request_size));
    if (!written.ok()) return io_failed(with, true, written);
    if (with.reply == 0) return step_end::good;
    say(with.say_reply);
    reply.fill(0);
    const io_result read = port_read(port(), std::span(reply).first(with.reply), session_timing_get().read_wait_ms);
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
    const std::string lost =
        port_lost_error(result.error) ? tk_format(log_port_lost, static_cast<unsigned long>(result.error)) : "";
    switch (result.step) {
    case io_step::create_event:
        return fail(writing ? message.create_write_event : message.create_read_event,
                    log_text(head + tails.create_event));
    case io_step::start:
        return fail(writing ? message.write : message.read, log_text(head + tails.start) + lost);
    case io_step::wait:
        return fail(writing ? message.wait_write : message.wait_read, log_text(head + tails.wait));
    case io_step::result:
        return fail(writing ? message.write_result : message.read_result, log_text(head + tails.result) + lost);
    default:
        return step_end::stopped;
    }
}

const session_script* session_script_of(family of, session_kind kind) {
    switch (of) {
    case family::a:
        return a_script(kind);
    case family::b:
        return b_script(kind);
    default:
        return generic_script(kind);
    }
}
