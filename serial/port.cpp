#include "serial/port.h"

#include "config/dev_obj.h"
#include "serial/session.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <array>

namespace {

constexpr int open_attempts = 101;
constexpr DWORD queue_bytes = 1024;
constexpr std::size_t port_text_max = 100;

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

/// How many bytes wait in the input queue; nothing (and a console line) when the system cannot tell.
std::optional<DWORD> waiting_bytes(HANDLE port) {
    DWORD errors = 0;
    COMSTAT status{};
    if (com::ClearCommError(port, &errors, &status)) return status.cbInQue;
    console_error("ClearCommError", com::GetLastError());
    return std::nullopt;
}

/// One round of the drain; false when it failed (and said so).
bool drain_round(HANDLE port, HANDLE event) {
    std::array<uint8_t, 256> scratch{};
    const io_result read = port_read_with(port, event, scratch, session_timing_get().drain_wait_ms);
    switch (read.step) {
    case io_step::done:
        return true;
    case io_step::start:
        console_error("ReadFile", read.error);
        return false;
    case io_step::result:
        console_error("GetOverlappedResult", read.error);
        return false;
    case io_step::stopped:
        return false;
    case io_step::wait:
        if (read.error == 0) return true; // the time-out came before a byte did
        [[fallthrough]];
    default:
        console_error("WaitForSingleObject", read.error);
        return false;
    }
}

} // namespace

std::optional<std::string> port_path(family of, const std::string& text) {
    const std::string name = tk_utf8_cut(text, port_text_max);
    if (name.empty()) return std::nullopt;
    if (name.front() == 'C') {
        const std::string path = tk_object_get_prop_str(com_name_map(), name.c_str(), "");
        return path.empty() ? std::nullopt : std::optional(path);
    }
    return of == family::b ? std::string() : name;
}

HANDLE port_open(const std::string& path) {
    for (int attempt = 0; attempt < open_attempts && !tk_thread_should_stop(); ++attempt) {
        HANDLE port = com::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_OVERLAPPED, nullptr);
        if (port != INVALID_HANDLE_VALUE) return port;
    }
    return INVALID_HANDLE_VALUE;
}

void port_configure(HANDLE port, const std::function<void(int)>& after) {
    COMMTIMEOUTS timeouts = session_timing_get().port;
    DCB state = line_settings();
    const auto said = [&after](int step) {
        if (after) after(step);
    };
    com::SetupComm(port, queue_bytes, queue_bytes);
    said(0);
    com::SetCommTimeouts(port, &timeouts);
    said(1);
    com::SetCommState(port, &state);
    said(2);
    com::PurgeComm(port, PURGE_TXCLEAR | PURGE_RXCLEAR);
    said(3);
}

// One event serves one call and is closed at the end of each round: a second round is given no event that is one,
// and fails. So a drain swallows what waits, and a module that never stops talking cannot hold it.
void port_drain(HANDLE port) {
    owned_handle event(make_event());
    if (!event.valid()) {
        console_error("CreateEvent", com::GetLastError());
        return;
    }
    std::optional<DWORD> waiting = waiting_bytes(port);
    while (waiting.value_or(0) > 0) {
        if (!drain_round(port, event.get())) return;
        waiting = waiting_bytes(port);
        event.close();
    }
}

void port_clear_errors(HANDLE port) {
    DWORD errors = 0;
    COMSTAT status{};
    com::ClearCommError(port, &errors, &status);
}

std::span<const uint8_t> mode_text(uint8_t mode) {
    static constexpr std::array<uint8_t, 7> config = {'c', 'o', 'n', 'f', 'i', 'g', 0};
    static constexpr std::array<uint8_t, 9> transfer = {'t', 'r', 'a', 'n', 's', 'f', 'e', 'r', 0};
    static constexpr std::array<uint8_t, 1> none = {0};
    if (mode == mode_config) return config;
    if (mode == mode_transfer) return transfer;
    return none;
}

void mode_text_write(HANDLE port, uint8_t mode) {
    const io_result written = port_write(port, mode_text(mode));
    switch (written.step) {
    case io_step::create_event:
        log_console("Create event for async write failed\n");
        break;
    case io_step::start:
        log_console(tk_format("Async write operation failed with error code: %lu\n",
                              static_cast<unsigned long>(written.error)));
        break;
    case io_step::wait:
        log_console("Wait for async write operation failed\n");
        break;
    case io_step::result:
        log_console("Get overlapped result for async write failed\n");
        break;
    default:
        break;
    }
}
