#include "monitor/pages/send_form.h"

#include "monitor/names.h"
#include "monitor/settings.h"
#include "serial/traffic_frame.h"
#include "shell/err_display.h"
#include "toolkit/core/hex_text.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr int32_t length_usual = 8;
constexpr const char* lengths_name = "combo_box_ex_data_len";
constexpr const char* check_name = "combo_box_ex_crc_mode";

constexpr const char* text_names[] = {"edit_can_id", "edit_data", "edit_id_add", "edit_data_add", "edit_timer"};
constexpr const char* switch_names[] = {"check_button_id_add", "check_button_data_add"};

struct number_range {
    const char* name;
    int32_t min, max;
};
constexpr number_range numbers[] = {
    {"edit_id_add", 0, std::numeric_limits<int32_t>::max()},
    {"edit_data_add", 0, 255},
    {"edit_timer", period_min_ms, period_max_ms},
};

constexpr const char* periodic_names[] = {"edit_id_add", "edit_data_add", "edit_timer", "check_button_id_add",
                                          "check_button_data_add"};

/// Selects the option of a text, or else the first one.
void select(widget* combo, const std::string& text, int32_t first) {
    widget_set_value_int(combo, first);
    if (combo_box_has_option_text(combo, text.c_str())) widget_set_text_utf8(combo, text.c_str());
}

} // namespace

struct send_form::selector {
    const char* name;
    name_table options; ///< a value is its place
    uint32_t send_parameters::*into;
};
// The protocol comes before the lengths, which depend on it.
const send_form::selector send_form::selectors[] = {
    {"combo_box_ex_channel", channel_names, &send_parameters::channel},
    {"combo_box_type_2", protocol_page_names, &send_parameters::protocol},
    {"combo_box_type_1", format_names, &send_parameters::format},
};

send_form::send_form(widget* page, traffic& with, std::string settings)
    : page_(page), traffic_(with), settings_(std::move(settings)) {
    for (const selector& row : selectors) bind_selector(row);
    bind_lengths();
    bind_check_mode();
    for (const number_range& row : numbers) edit_set_int_limit(at(row.name), row.min, row.max, 1);
    for (const char* name : text_names) bind_text(name);
    for (const char* name : switch_names) bind_switch(name);
    widget_on(at("edit_data"), event_type::value_changing, [this](const event&) {
        show_hint();
        return RET_OK;
    });
    show_hint();
}

std::string send_form::setting(const char* key, const char* usual) const {
    std::string text;
    return setting_read(settings_.c_str(), key, &text) == 0 ? text : usual;
}

void send_form::store(const char* key, const std::string& text) const {
    setting_write(settings_.c_str(), key, text.c_str());
}

// ---- selectors ----

void send_form::bind_selector(const selector& row) {
    widget* combo = at(row.name);
    int32_t value = 0;
    for (const char* option : row.options) combo_box_append_option(combo, value++, option);
    select(combo, setting(row.name, ""), 0);
    now_.*row.into = static_cast<uint32_t>(widget_get_value_int(combo));
    widget_on(combo, event_type::value_changed, [this, combo, &row](const event&) {
        now_.*row.into = static_cast<uint32_t>(widget_get_value_int(combo));
        store(row.name, widget_get_text_utf8(combo));
        if (row.into == &send_parameters::protocol) protocol_changed();
        return RET_OK;
    });
}

void send_form::bind_lengths() {
    widget* combo = at(lengths_name);
    offer_lengths(setting(lengths_name, ""));
    widget_on(combo, event_type::value_changed, [this, combo](const event&) {
        now_.length = static_cast<uint32_t>(widget_get_value_int(combo));
        store(lengths_name, widget_get_text_utf8(combo));
        show_hint();
        return RET_OK;
    });
}

/// Offers the protocol's lengths and chooses one; one that it has not becomes the usual one.
void send_form::offer_lengths(const std::string& wanted) {
    widget* combo = at(lengths_name);
    combo_box_reset_options(combo);
    for (const uint32_t length : compose_lengths(now_.protocol))
        combo_box_append_option(combo, static_cast<int32_t>(length), std::to_string(length).c_str());
    select(combo, wanted, length_usual);
    now_.length = static_cast<uint32_t>(widget_get_value_int(combo));
    show_hint();
}

void send_form::protocol_changed() {
    const uint32_t before = now_.length;
    offer_lengths(std::to_string(before));
    if (now_.length != before) store(lengths_name, std::to_string(now_.length));
}

void send_form::bind_check_mode() {
    widget* combo = at(check_name);
    for (const int32_t mode : {1, 0}) combo_box_append_option(combo, mode, check_names[mode]);
    select(combo, setting(check_name, ""), 1);
    const auto take = [this, combo] {
        now_.check = widget_get_value_int(combo) == 1;
        traffic_.set_check(now_.check);
    };
    take();
    widget_on(combo, event_type::value_changed, [this, combo, take](const event&) {
        take();
        store(check_name, widget_get_text_utf8(combo));
        return RET_OK;
    });
}

// ---- texts and switches ----

void send_form::bind_text(const char* name) {
    widget* edit = at(name);
    widget_set_text_utf8(edit, setting(name, widget_get_text_utf8(edit).c_str()).c_str());
    widget_on(edit, event_type::value_changed, [this, name, edit](const event&) {
        store(name, widget_get_text_utf8(edit));
        return RET_OK;
    });
}

void send_form::bind_switch(const char* name) {
    widget* button = at(name);
    widget_set_value_int(button, tk_atoi(setting(name, "0").c_str()) != 0 ? 1 : 0);
    widget_on(button, event_type::value_changed, [this, name, button](const event&) {
        store(name, widget_get_value_int(button) != 0 ? "1" : "0");
        return RET_OK;
    });
}

void send_form::show_hint() const {
    const std::string data = widget_get_text_utf8(at("edit_data"));
    widget* hint = at("label_data_hint");
    widget_set_text_utf8(hint, compose_hint(data, now_.length).c_str());
    widget_set_style_state(hint, compose_data_size(data) < now_.length ? "warning" : "");
}

// ---- sending ----

bool send_form::compose(traffic_request* request) {
    const std::string identifier = widget_get_text_utf8(at("edit_can_id"));
    const std::string data = widget_get_text_utf8(at("edit_data"));
    if (const char* why = compose_request(now_, identifier, data, request)) {
        err_display_show(why);
        return false;
    }
    std::string shown;
    const traffic_wire frame = traffic_frame_build(*request, now_.check);
    for (const uint8_t byte : frame.bytes()) shown += tk_format("%02X ", byte);
    widget_set_text_utf8(at("edit_send_frame"), shown.c_str());
    return true;
}

periodic_step send_form::step() const {
    return {.to_identifier = widget_get_value_int(at("check_button_id_add")) != 0,
            .to_data = widget_get_value_int(at("check_button_data_add")) != 0,
            .identifier = static_cast<uint32_t>(tk_atoi(widget_get_text_utf8(at("edit_id_add")).c_str())),
            .data = static_cast<uint8_t>(tk_atoi(widget_get_text_utf8(at("edit_data_add")).c_str()))};
}

uint32_t send_form::period_ms() const { return periodic_period_ms(widget_get_text_utf8(at("edit_timer"))); }

void send_form::lock_periodic(bool locked) const {
    for (const char* name : periodic_names) widget_set_enable(at(name), !locked);
}
