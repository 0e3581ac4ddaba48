// Sessions of VKT530A and VKT531A. Their lock is let go before the last reports.
#include "config/cfg_image.h"
#include "serial/f7_exchanges.h"

namespace {

step_end decode(session_run& run) {
    run.locked([](session_run&) { cfg_image_to_props(); });
    return step_image_changed(run);
}

constexpr session_step connect_steps[] = {
    {.act = step_open},
    {.say = {20, text_port_settings_6s}, .act = step_configure},
    {.act = step_drain},
    {.with = &f7_handshake, .act = step_idle_unlock},
    {.say = {90, text_init_buttons}, .act = step_button_init},
    {.say = {100, text_connected}, .act = step_finished},
};

constexpr reply_check image_checks[] = {
    {{40, text_check_config}, f7_image_check_fault},
    {{60, text_check_config}, f7_image_header_fault},
};
constexpr exchange read_image = {
    .texts = &read_texts,
    .request = f7_read_request,
    .say_reply = {30, text_read_config},
    .reply = f7_image_bytes,
    .checks = image_checks,
    .accept = f7_accept_image,
};
constexpr session_step read_steps[] = {
    {.act = step_drain},
    {.say = {20, text_read_config}, .with = &read_image},
    {.say = {80, text_load_config}, .act = decode},
    {.act = step_idle_unlock},
    {.say = {90, text_init_buttons}, .act = step_button_init},
    {.say = {100, text_read_done}, .act = step_finished},
};

constexpr session_step write_steps[] = {
    {.act = step_drain},
    {.with = &f7_write, .act = step_idle_unlock},
    {.say = {80, text_init_buttons}, .act = step_button_init},
    {.say = {100, text_write_done}, .act = step_finished},
};

constexpr session_script scripts[] = {
    {"connect_entry", session_kind::connect, 0, false, nullptr, connect_steps},
    {"read_entry", session_kind::read, 3, false, nullptr, read_steps},
    {"write_entry", session_kind::write, 2, false, nullptr, write_steps},
};

} // namespace

const session_script* generic_script(session_kind kind) { return script_find(scripts, kind); }
