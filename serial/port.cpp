#include "serial/port.h"

#include "serial/port_calls.h"
#include "serial/port_names.h"
#include "serial/session.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <array>

std::optional<std::string> port_path(family of, const std::string& text) {
    return port_path(text, of != family::b);
}

HANDLE port_open(const std::string& path) {
    DWORD error = 0;
    return port_handle_open(path, &error);
}

void port_configure(HANDLE port, const std::function<void(int)>& after) {
    port_handle_configure(port, session_timing_get().port, after);
}

void port_drain(HANDLE port) { port_handle_drain({port, {}}, session_timing_get().drain_wait_ms); }

void port_clear_errors(HANDLE port) { port_handle_waiting(port); }

io_result port_write(HANDLE port, std::span<const uint8_t> bytes) { return overlapped_write({port, {}}, bytes); }

io_result port_read(HANDLE port, std::span<uint8_t> into, DWORD wait_ms) {
    return overlapped_read({port, {}}, into, wait_ms);
}

std::span<const uint8_t> mode_text(uint8_t mode) {
    static constexpr std::array<uint8_t, 7> config = {'c', 'o', 'n', 'f', 'i', 'g', 0};
    static constexpr std::array<uint8_t, 9> transfer = {'t', 'r', 'a', 'n', 's', 'f', 'e', 'r', 0};
    static constexpr std::array<uint8_t, 1> none = {0};
    if (mode == mode_config) return config;
    if (mode == mode_transfer) return transfer;
    return none;
}

namespace {

void mode_text_say(const io_result& written) {
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

} // namespace

void mode_text_write(HANDLE port, uint8_t mode) { mode_text_say(port_write(port, mode_text(mode))); }
void mode_text_write(port_lease& port, uint8_t mode) { mode_text_say(port.write(mode_text(mode))); }
