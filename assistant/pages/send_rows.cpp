#include "assistant/pages/send_rows.h"

#include "toolkit/core/text.h"

#include <algorithm>

namespace {

constexpr const char* id_name = "serial_send_id";
constexpr const char* data_name = "serial_send_data";

struct selector {
    const char* name;
    std::span<const assistant_option> options; ///< the first is chosen at first
    uint32_t assistant_form::*into;
};
constexpr selector selectors[] = {
    {"combo_box_ex_channal", assistant_channels, &assistant_form::channel},
    {"combo_box_ex_frame_type", assistant_formats, &assistant_form::format},
    {"combo_box_ex_can_canfd_or", assistant_speeds, &assistant_form::speed},
};

} // namespace

send_rows::send_rows(widget* win, std::optional<assistant_form>* kept) : win_(win), kept_(kept) {
    for (const selector& row : selectors) {
        widget* combo = at(row.name);
        for (const assistant_option& option : row.options)
            combo_box_append_option(combo, static_cast<int32_t>(option.value), option.text);
        widget_set_value_int(combo, static_cast<int32_t>(row.options[0].value));
        widget_on(combo, event_type::value_changed, [this](const event&) {
            limit();
            return RET_OK;
        });
    }
    for (const char* name : {id_name, data_name})
        for (const event_type what : {event_type::value_changing, event_type::value_changed})
            widget_on(at(name), what, [this](const event&) {
                follow();
                return RET_OK;
            });
    if (*kept_) {
        show(assistant_form(**kept_)); // a copy: what is kept changes on the way
    } else {
        limit();
    }
}

assistant_form send_rows::form() const {
    assistant_form now;
    for (const selector& row : selectors) now.*row.into = static_cast<uint32_t>(widget_get_value_int(at(row.name)));
    now.identifier = static_cast<uint32_t>(std::max(edit_get_int(at(id_name)), 0));
    now.data = widget_get_text_utf8(at(data_name));
    return now;
}

void send_rows::show(const assistant_form& form) {
    for (const selector& row : selectors) widget_set_value_int(at(row.name), static_cast<int32_t>(form.*row.into));
    limit();
    widget_set_text_utf8(at(id_name), std::to_string(form.identifier).c_str());
    widget_set_text_utf8(at(data_name), form.data.c_str());
    follow();
}

// What stands there already is brought within the new limits.
void send_rows::limit() {
    const assistant_form now = form();
    const uint32_t highest = assistant_identifier_max(now.format), longest = assistant_text_max(now.speed);
    edit_set_int_limit(at(id_name), 0, static_cast<int32_t>(highest), 1);
    if (now.identifier > highest) widget_set_text_utf8(at(id_name), std::to_string(highest).c_str());
    edit_set_text_limit(at(data_name), 0, longest);
    const std::string id_tip = tk_format("十进制，%s：0 至 %u，超出的不能输入",
                                         assistant_option_text(assistant_formats, now.format), highest);
    const std::string data_tip =
        tk_format("十六进制，每两个字符一个字节；%s：最多 %u 个字符，超出的不能输入，前 %zu 个有效",
                  assistant_option_text(assistant_speeds, now.speed), longest,
                  std::min<std::size_t>(longest, assistant_text_read));
    widget_set_tooltip(at(id_name), id_tip.c_str());
    widget_set_tooltip(at(data_name), data_tip.c_str());
    follow();
}

/// Hints, and what is kept.
void send_rows::follow() {
    const assistant_form now = form();
    *kept_ = now;
    widget_set_text_utf8(at("label_id_hex"), tk_format("= 0x%X", now.identifier).c_str());
    widget_set_text_utf8(at("label_send_hint"), assistant_hint(now.data).c_str());
}
