#include "dev_generic/family.h"

#include "dev_generic/fields.h"
#include "f7/f7_exchanges.h"

void cfg_image_from_props(dev_obj& dev) { f7_encode(dev.of.fields, dev.props.get(), f7_image_of(dev)); }

void cfg_image_to_props(dev_obj& dev) { f7_decode(dev.of.fields, dev.props.get(), f7_image_of(dev)); }

ret_t cfg_image_refresh(dev_obj& dev, const char* key) {
    const field* row = field_find(dev.of.fields, key);
    if (row == nullptr) return RET_FAIL;
    f7_encode_field(*row, dev.props.get(), f7_image_of(dev));
    return RET_OK;
}

namespace {

std::string code_text(const dev_obj& dev, code_form form, code_spans* spans) {
    const auto blanks = form.restored ? listing_blanks::restore : listing_blanks::show;
    return f7_listing(f7_image_of(dev), form.alternative, blanks, spans);
}

constexpr session_step connect_steps[] = {
    {.act = step_open},
    {.say = {20, text_port_settings_6s}, .act = step_configure},
    {.act = step_drain},
    {.with = &f7_handshake, .act = step_idle_let_go},
    {.say = {90, text_init_buttons}, .act = step_connected},
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
    .reply = f7_image_frame_size,
    .checks = image_checks,
    .accept = f7_accept_image,
};
constexpr session_step read_steps[] = {
    {.act = step_drain},
    {.say = {20, text_read_config}, .with = &read_image},
    {.say = {80, text_load_config}, .act = step_image},
    {.act = step_idle_let_go},
    {.say = {90, text_init_buttons}, .act = step_connected},
    {.say = {100, text_read_done}, .act = step_finished},
};

constexpr session_step write_steps[] = {
    {.act = step_drain},
    {.with = &f7_write, .act = step_idle_let_go},
    {.say = {80, text_init_buttons}, .act = step_connected},
    {.say = {100, text_write_done}, .act = step_finished},
};

constexpr session_script scripts[] = {
    {.thread_name = "connect_entry", .kind = session_kind::connect, .report_operation = 0, .steps = connect_steps},
    {.thread_name = "read_entry", .kind = session_kind::read, .report_operation = 3, .steps = read_steps},
    {.thread_name = "write_entry", .kind = session_kind::write, .report_operation = 2, .steps = write_steps},
};

constexpr family_model models[] = {{"VKT531A", 1}, {"VKT530A", 6}};

} // namespace

constinit const family_descriptor generic_family = {
    .device = "VKT531A",
    .models = models,
    .fields = generic_fields,
    .pages = f7_page::names,
    .image_size = f7_image_size,
    .encode = cfg_image_from_props,
    .decode = cfg_image_to_props,
    .encode_key = cfg_image_refresh,
    .code_text = code_text,
    .scripts = scripts,
    .requests = f7_requests,
    .acknowledgement = f7_acknowledgement,
};
