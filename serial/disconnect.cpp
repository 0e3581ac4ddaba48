// Leaving the module: the ports of all families are closed, a B module goes back to transfer mode first.
#include "config/dev_obj.h"
#include "serial/overlapped.h"
#include "serial/port.h"
#include "serial/session_texts.h"
#include "serial/session_threads.h"
#include "toolkit/core/idle.h"

namespace {

constexpr auto mode_operation = static_cast<uint8_t>(session_kind::mode_switch);

// GUI thread only.
tk_thread* worker = nullptr;

/// The last report's text.
const char* transfer_text(io_step end) {
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

/// With the B family's lock held and its port open; the port is closed however it goes.
void leave_b(const session_reports& reports) {
    const auto say = [&reports](uint32_t percent, const char* text) {
        if (reports.progress) reports.progress(percent, text, mode_operation);
    };
    HANDLE port = session_of(family::b).port;
    say(10, text_mode_switch);
    port_clear_errors(port);
    say(40, text_mode_switch);
    const io_result written = port_write(port, mode_text(mode_transfer));
    if (written.ok()) say(80, text_mode_switch);
    session_close_port(family::b);
    say(100, transfer_text(written.step));
}

void leave(family of, const session_reports& reports) {
    tk_lock hold(session_lock(of));
    if (of == family::b && session_of(of).port_open) leave_b(reports);
    const owned_handle port(session_take_port(of));
    hold.unlock(); // before the port is closed: the pages of a family wait for its lock
}

void flags_clear() {
    for (family of : {family::generic, family::b, family::a}) {
        session_of(of).connected = false;
        session_of(of).operation = static_cast<uint8_t>(session_kind::none);
    }
}

void disconnect_all(const session_reports& reports) {
    for (family of : {family::generic, family::b, family::a}) leave(of, reports);
    flags_clear();
}

ret_t ended(const std::function<void()>& done) {
    tk_thread_join(worker);
    tk_thread_destroy(worker);
    worker = nullptr;
    if (done) done();
    return RET_OK;
}

} // namespace

ret_t session_disconnect(std::function<void()> done) {
    if (worker != nullptr) return RET_FAIL;
    const auto work = [reports = session_reports_get(), done = std::move(done)] {
        disconnect_all(reports);
        idle_queue([done] { return ended(done); });
        return 0u;
    };
    worker = session_thread_start("mode_switch", session_place_disconnect, work);
    if (worker != nullptr) return RET_OK;
    for (family of : {family::generic, family::b, family::a}) session_close_port(of);
    flags_clear();
    return RET_FAIL;
}

void session_disconnect_abandon() {
    tk_thread_destroy(worker);
    worker = nullptr;
}
