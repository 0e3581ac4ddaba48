// The generic family's exchanges, the firmware request, and this family's own order of reports and of giving the
// port back.
#include "dev_a/family.h"

#include "dev_a/fields.h"
#include "f7/f7_exchanges.h"
#include "toolkit/core/text.h"

namespace {

void encode(dev_obj& dev) { f7_encode(dev.of.fields, dev.props.get(), f7_image_of(dev)); }
void decode(dev_obj& dev) { f7_decode(dev.of.fields, dev.props.get(), f7_image_of(dev)); }

std::string code_text(const dev_obj& dev, code_form form, code_spans* spans) {
    return f7_listing(f7_image_of(dev), form.alternative, listing_blanks::show, spans);
}

step_end note_model(session_run& run) {
    session_log_append(run.input.model + ":\n");
    return step_end::good;
}

/// The firmware's five bytes; a reply with a foreign header is accepted without a word.
void note_firmware(session_run& run) {
    if (!f7_starts_with(run.reply, f7_command_firmware, 0x05)) return;
    const auto& r = run.reply;
    const std::string firmware = tk_format("%02X-%02X-%02X, %02X-%02X", r[6], r[7], r[8], r[4], r[5]);
    session_log_append(run.input.model + ", " + firmware + "\r\n");
    if (run.reports.firmware) run.reports.firmware(firmware);
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
    {.act = note_model},
    {.act = step_open},
    {.say = {20, text_port_settings}, .act = step_configure},
    {.act = step_drain},
    {.with = &f7_handshake, .act = step_drain},
    {.with = &firmware, .act = step_idle},
    {.say = {90, text_init_buttons}, .act = step_connected},
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
    .reply = f7_image_frame_size,
    .checks = image_checks,
    .accept = f7_accept_image,
};
constexpr session_step read_steps[] = {
    {.act = step_drain},
    {.say = {20, text_read_config}, .with = &read_image, .act = step_image},
    {.act = step_idle_let_go},
    {.say = {80, text_init_buttons}, .act = step_connected},
    {.say = {100, text_read_done}, .act = step_finished},
};

// No drain before a write: what still waits in the queue is the module's own business here.
constexpr session_step write_steps[] = {
    {.with = &f7_write, .act = step_idle_let_go},
    {.say = {80, text_init_buttons}, .act = step_connected},
    {.say = {100, text_write_done}, .act = step_finished},
};

constexpr session_script scripts[] = {
    {.thread_name = "thread_vkt510a_connect",
     .kind = session_kind::connect,
     .report_operation = 0,
     .steps = connect_steps},
    {.thread_name = "thread_vkt510a_read", .kind = session_kind::read, .report_operation = 3, .steps = read_steps},
    {.thread_name = "thread_vkt510a_write",
     .kind = session_kind::write,
     .report_operation = 2,
     .steps = write_steps},
};

constexpr family_model models[] = {{"VKT510A", 3}};

} // namespace

constinit const family_descriptor vkt510a_family = {
    .device = "VKT510A",
    .models = models,
    .fields = vkt510a_fields,
    .pages = f7_page::names,
    .image_size = f7_image_size,
    .encode = encode,
    .decode = decode,
    .encodes_after_decode = true,
    .code_text = code_text,
    .scripts = scripts,
    .requests = f7_requests,
    .acknowledgement = f7_acknowledgement,
};
