// Sessions of VKT610B, VKT630B and VKT631B: frames AA (or AC) count function FF data CRC.
#include "serial/b_ops.h"
#include "serial/crc16_x25.h"
#include "serial/port.h"
#include "serial/session_engine.h"

#include <algorithm>

namespace {

constexpr uint32_t image_reply_bytes = 146;
constexpr uint32_t ack_bytes = 7;
constexpr std::size_t image_at = 4;
constexpr int mode_steps = 5;
constexpr int write_code = static_cast<int>(session_kind::write);

bool crc_is_good(const session_run& run, std::size_t at) {
    const uint16_t crc = crc16_x25(run.reply.data(), at);
    return run.reply[at] == (crc & 0xFF) && run.reply[at + 1] == crc >> 8;
}

/// Bytes 1 and on; byte 0 of a reply is not looked at.
bool header_is(const session_run& run, std::initializer_list<uint8_t> bytes) {
    return std::equal(bytes.begin(), bytes.end(), run.reply.begin() + 1);
}

// ---- connect
// -------------------------------------------------------------------------------------------------------

step_end configure(session_run& run) {
    static constexpr session_report after[] = {
        {20, "SetupComm....."}, {21, "SetCommTimeouts....."}, {22, "SetCommState....."}, {23, "PurgeComm....."}};
    port_configure(run.port(), [&run](int call) { run.say(after[call]); });
    port_clear_errors(run.port());
    run.say({24, "ClearCommError....."});
    return step_end::good;
}

void config_request(session_run& run) { run.set_request(mode_text(mode_config)); }

/// The module changes its mode meanwhile; it is not asked who it is.
step_end wait_for_mode(session_run& run) {
    for (int i = 0; i < mode_steps; ++i) {
        run.say({20u + static_cast<uint32_t>(i), text_config_mode, write_code});
        sleep_ms(session_timing_get().mode_step_ms);
        if (tk_thread_should_stop()) return step_end::stopped;
    }
    return step_idle(run);
}

constexpr exchange config_mode = {.texts = &b_config_texts, .request = config_request};
constexpr session_step connect_steps[] = {
    {.act = step_open},
    {.say = {20, text_port_settings}, .act = configure},
    {.with = &config_mode, .act = wait_for_mode},
    {.say = {90, text_init_buttons}, .act = step_button_init},
    {.say = {100, text_connected}, .act = step_finished},
};

// ---- read
// ----------------------------------------------------------------------------------------------------------

void build_read(session_run& run) { run.set_request(b_session_ops_get().read_request(run.input.code_mode)); }

std::optional<reply_fault> image_fault(const session_run& run) {
    if (!crc_is_good(run, image_reply_bytes - 2))
        return reply_fault{b_check_failed, run.log_text(b_log_read_check) + "\n\n"};
    if (!header_is(run, {0x8E, 0x05, 0xFF}))
        return reply_fault{b_check_failed, run.log_text(b_log_read_check) + ":" +
                                               hex_list(std::span(run.reply).first(4), "%02x", "") + "\n\n"};
    return std::nullopt;
}

step_end accept_image(session_run& run) {
    step_idle(run);
    b_session_ops_get().accept_image(std::span(run.reply).subspan<image_at, b_image_bytes>());
    return step_image_changed(run);
}

constexpr reply_check image_checks[] = {{{}, image_fault}};
constexpr exchange read_all = {
    .texts = &b_read_texts,
    .say = {30, text_read_config},
    .request = build_read,
    .say_reply = {50, text_read_config},
    .reply = image_reply_bytes,
    .checks = image_checks,
};
constexpr session_step read_steps[] = {
    {.act = step_drain},
    {.with = &read_all, .act = accept_image},
    {.act = step_unlock},
    {.say = {80, text_init_buttons}, .act = step_button_init},
    {.say = {100, text_read_done}, .act = step_finished},
};

// ---- write
// ---------------------------------------------------------------------------------------------------------

void build_write(session_run& run) {
    run.set_request(b_session_ops_get().write_frame(run.index, run.input.code_mode));
}

/// The log shows the frame of the AA table, whichever was sent.
std::optional<reply_fault> ack_fault(const session_run& run) {
    if (crc_is_good(run, ack_bytes - 2) && header_is(run, {0x03, 0x02, 0xFF, 0x80})) return std::nullopt;
    const b_write_frame frame = b_session_ops_get().write_frame(run.index, false);
    return reply_fault{b_check_failed,
                       run.log_text(b_log_write_check) + " send:" + hex_list(frame, "%02X", " ") +
                           "\n read:" + hex_list(std::span(run.reply).first(ack_bytes), "%02X", " ") + "\n\n"};
}

constexpr reply_check ack_checks[] = {{{}, ack_fault}};
constexpr exchange write_register = {
    .texts = &b_write_texts,
    .say = {35, text_write_config},
    .request = build_write,
    .reply = ack_bytes,
    .checks = ack_checks,
    .times = b_register_count,
};
constexpr session_step write_steps[] = {
    {.act = step_drain},
    {.say = {20, text_write_config}, .with = &write_register, .act = step_idle_unlock},
    {.say = {80, text_init_buttons}, .act = step_button_init},
    {.say = {100, text_write_done}, .act = step_finished},
};

constexpr session_script scripts[] = {
    {"thread_vkt610b_connect", session_kind::connect, 0, true, nullptr, connect_steps},
    {"thread_vkt610b_read", session_kind::read, 3, true, nullptr, read_steps},
    {"thread_vkt610b_write", session_kind::write, 2, true, nullptr, write_steps},
};

} // namespace

const session_script* b_script(session_kind kind) { return script_find(scripts, kind); }
