#include "serial/mode_text.h"

#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

std::span<const uint8_t> mode_text(uint8_t mode) {
    static constexpr std::array<uint8_t, 1> none = {0};
    if (mode == mode_config) return mode_text_config;
    if (mode == mode_transfer) return mode_text_transfer;
    return none;
}

void mode_text_write(port_lease& port, uint8_t mode) {
    const io_result written = port.write(mode_text(mode));
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
