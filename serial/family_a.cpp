// Sessions of VKT510A: the generic family's exchanges, the firmware request, and this family's own order of reports
// and of letting the lock go.
#include "config/dev_obj.h"
#include "serial/f7_exchanges.h"
#include "toolkit/core/text.h"

namespace {

void note_model(session_run& run) { session_log_append(run.input.model + ":\n"); }

/// One line with the firmware's five bytes; a reply with a foreign header is accepted without one.
void note_firmware(session_run& run) {
    const auto& r = run.reply;
    if (r[0] != 0xF7 || r[1] != 0xF8 || r[2] != 0x04 || r[3] != 0x05) return;
    session_log_append(
        tk_format("%s, %02X-%02X-%02X, %02X-%02X\r\n", run.input.model.c_str(), r[6], r[7], r[8], r[4], r[5]));
}

step_end encode(session_run&) {
    const dev_obj* dev = dev_get(family::a);
    if (dev != nullptr && dev->ops.encode != nullptr) dev->ops.encode(nullptr);
    return step_end::good;
}

step_end decode(session_run& run) {
    run.locked([](session_run&) {
        const dev_obj* dev = dev_get(family::a);
        if (dev != nullptr && dev->ops.decode != nullptr) dev->ops.decode(nullptr);
    });
    return step_image_changed(run);
}

constexpr reply_check firmware_checks[] = {
    {{80, text_check_firmware}, f7_firmware_fault},
};
constexpr exchange firmware = {
    .texts = &firmware_texts,
    .say = {60, text_send_firmware},
    .request = f7_firmware_request,
    .say_reply = {70, text_read_firmware},
    .reply = f7_firmware_bytes,
    .checks = firmware_checks,
    .accept = note_firmware,
};
constexpr session_step connect_steps[] = {
    {.act = step_open},
    {.say = {20, text_port_settings}, .act = step_configure},
    {.act = step_drain},
    {.with = &f7_handshake, .act = step_drain},
    {.with = &firmware, .act = step_idle},
    {.say = {90, text_init_buttons}, .act = step_button_init},
    {.say = {100, text_connected}, .act = step_finished},
};

constexpr reply_check image_checks[] = {
    {{40, text_check_config}, f7_image_check_fault},
    {{}, f7_image_header_fault},
};
constexpr exchange read_image = {
    .texts = &read_texts,
    .request = f7_read_request,
    .say_reply = {50, text_read_config},
    .reply = f7_image_bytes,
    .checks = image_checks,
    .accept = f7_accept_image,
};
constexpr session_step read_steps[] = {
    {.act = step_drain},
    {.say = {20, text_read_config}, .with = &read_image, .act = decode},
    {.act = step_idle_unlock},
    {.say = {80, text_init_buttons}, .act = step_button_init},
    {.say = {100, text_read_done}, .act = step_finished},
};

// No drain before a write: what still waits in the queue is the module's own business here.
constexpr session_step write_steps[] = {
    {.act = encode},
    {.with = &f7_write, .act = step_idle_unlock},
    {.say = {80, text_init_buttons}, .act = step_button_init},
    {.say = {100, text_write_done}, .act = step_finished},
};

constexpr session_script scripts[] = {
    {"thread_vkt510a_connect", session_kind::connect, 0, false, note_model, connect_steps},
    {"thread_vkt510a_read", session_kind::read, 3, false, nullptr, read_steps},
    {"thread_vkt510a_write", session_kind::write, 2, false, nullptr, write_steps},
};

} // namespace

const session_script* a_script(session_kind kind) { return script_find(scripts, kind); }
