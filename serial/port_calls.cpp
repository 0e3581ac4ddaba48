#include "serial/port_calls.h"

#include "toolkit/core/log.h"
#include "toolkit/core/text.h"
#include "toolkit/core/worker.h"

#include <array>

namespace {

constexpr int open_attempts = 101;
constexpr DWORD queue_bytes = 1024;
constexpr DWORD error_aborted = 995;

DCB line_settings() {
    DCB state{};
    state.DCBlength = sizeof state;
    state.BaudRate = 9600;
    state.ByteSize = 8;
    state.Parity = 0;   // none
    state.StopBits = 2; // two stop bits
    return state;
}

void console_error(const char* what, DWORD error) {
    log_console(tk_format("%s failed with error %d\n", what, static_cast<int>(error)));
}

/// The same, and a console line when the system cannot tell.
std::optional<DWORD> waiting_or_said(HANDLE port) {
    const std::optional<DWORD> waiting = port_handle_waiting(port);
    if (!waiting) console_error("ClearCommError", com::GetLastError());
    return waiting;
}

/// One round of the drain; false when it failed (and said so).
bool drain_round(const io_port& port, HANDLE event, DWORD wait_ms) {
    std::array<uint8_t, io_read_max> scratch{};
    const io_result read = overlapped_read_with(port, event, scratch, wait_ms);
    switch (read.step) {
    case io_step::done: // also when the port's time-out came before a byte did
        return true;
    case io_step::start:
        console_error("ReadFile", read.error);
        return false;
    case io_step::result:
        console_error("GetOverlappedResult", read.error);
        return false;
    case io_step::stopped:
        return false;
    default:
        console_error("WaitForSingleObject", read.error);
        return false;
    }
}

} // namespace

HANDLE port_handle_open(const std::string& path, DWORD* error) {
    for (int attempt = 0; attempt < open_attempts && !worker_should_stop(); ++attempt) {
        HANDLE port = com::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_OVERLAPPED, nullptr);
        if (port != INVALID_HANDLE_VALUE) return port;
        *error = com::GetLastError();
    }
    if (worker_should_stop()) *error = error_aborted;
    return INVALID_HANDLE_VALUE;
}

void port_handle_configure(HANDLE port, const COMMTIMEOUTS& timeouts, const std::function<void(int)>& after) {
    COMMTIMEOUTS wanted = timeouts;
    DCB state = line_settings();
    const auto said = [&after](int step) {
        if (after) after(step);
    };
    com::SetupComm(port, queue_bytes, queue_bytes);
    said(0);
    com::SetCommTimeouts(port, &wanted);
    said(1);
    com::SetCommState(port, &state);
    said(2);
    com::PurgeComm(port, PURGE_TXCLEAR | PURGE_RXCLEAR);
    said(3);
}

// One event serves one call and is closed at the end of each round: a second round is given no event that is one,
// and fails. So a drain swallows what waits, and a module that never stops talking cannot hold it.
void port_handle_drain(const io_port& port, DWORD wait_ms) {
    owned_handle event(make_event());
    if (!event.valid()) {
        console_error("CreateEvent", com::GetLastError());
        return;
    }
    std::optional<DWORD> waiting = waiting_or_said(port.handle);
    while (waiting.value_or(0) > 0) {
        if (!drain_round(port, event.get(), wait_ms)) return;
        waiting = waiting_or_said(port.handle);
        event.close();
    }
}

std::optional<DWORD> port_handle_waiting(HANDLE port) {
    DWORD errors = 0;
    COMSTAT status{};
    if (!com::ClearCommError(port, &errors, &status)) return std::nullopt;
    return status.cbInQue;
}
