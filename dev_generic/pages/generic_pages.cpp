#include "dev_generic/pages/generic_pages.h"

#include "dev_generic/family.h"
#include "dev_generic/fields.h"
#include "fields/row_kinds.h"
#include "toolkit/core/log.h"

namespace {

using enum row_kind;
namespace f = generic_field;

constexpr int32_t standard_frame_length = 2;

/// A standard frame's identifier has two bytes: a longer length is cut before the frame type is stored.
void cut_length_for_standard(const bound_row& at) {
    if (widget_get_text_utf8(at.w) != "标准帧") return;
    if (at.dev.image[f::id_length.place.at] <= standard_frame_length) return;
    tk_object_set_prop_int(at.props(), f::id_length.key, standard_frame_length);
    static_cast<void>(dev_encode(at.dev, f::id_length.key));
    log_console("1231546548789\n");
}

constexpr enable_rule with_id{&f::change_mode, options::mode_with_id};
constexpr enable_rule transparent{&f::change_mode, options::mode_transparent};
constexpr enable_rule custom_mode{&f::change_mode, options::mode_custom};
constexpr enable_rule filtering{&f::filter_on, switched_on};

// clang-format off
constexpr page_row change_rows[] = {
    {.name = "combo_box_ex",  .what = &f::change_mode,   .kind = choice},
    {.name = "combo_box_ex1", .what = &f::direction,     .kind = choice},
    {.name = "combo_box_ex2", .what = &f::check_byte,    .kind = choice_text},
    {.name = "check_button",  .what = &f::can_to_serial, .kind = check,    .enabled_when = transparent},
    {.name = "check_button1", .what = &f::id_to_serial,  .kind = check,    .enabled_when = transparent},
    {.name = "spin_box",      .what = &f::id_start,      .kind = number,   .enabled_when = with_id},
    {.name = "spin_box1",     .what = &f::id_length,     .kind = number,   .enabled_when = with_id},
    {.name = "edit",          .what = &f::frame_head,    .kind = hex_pair, .enabled_when = custom_mode},
    {.name = "edit1",         .what = &f::frame_end,     .kind = hex_pair, .enabled_when = custom_mode},
    {.name = "hint_with_id",     .kind = rule_hint, .enabled_when = with_id},
    {.name = "hint_transparent", .kind = rule_hint, .enabled_when = transparent},
    {.name = "hint_custom",      .kind = rule_hint, .enabled_when = custom_mode},
};

constexpr page_row spi_rows[] = {
    {.name = "label1",                .kind = caption, .text = "SPI_F"},
    {.name = "combo_box_ex_bit_send", .what = &f::bit_order, .kind = still_choice},
    {.name = "spin_box_number",       .what = &f::spi_count, .kind = number},
    {.name = "spin_box_time",         .what = &f::spi_time,  .kind = number},
};

constexpr page_row uart_rows[] = {
    {.name = "combo_box_ex_bps",     .what = &f::uart_rate,     .kind = choice},
    {.name = "combo_box_ex_check",   .what = &f::uart_parity,   .kind = still_choice},
    {.name = "combo_box_ex_control", .what = &f::uart_control,  .kind = still_choice},
    {.name = "spin_box_distance",    .what = &f::uart_interval, .kind = number},
};

// Sent frames have their identifier whether or not received ones are filtered.
constexpr page_row can_rows[] = {
    {.name = "combo_box_ex_bps",      .what = &f::can_rate,     .kind = choice},
    {.name = "combo_box_ex_rejector", .what = &f::filter_frame, .kind = choice, .enabled_when = filtering},
    {.name = "check_button",          .what = &f::filter_on,    .kind = check},
    {.name = "combo_box_ex_Fkind",    .what = &f::send_frame,   .kind = choice, .before_store = cut_length_for_standard},
    {.name = "edit_send",             .what = &f::send_id,      .kind = hex_text},
    {.name = "edit_scherm",           .what = &f::mask,         .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check0",           .what = &f::code0,        .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check1",           .what = &f::code1,        .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check2",           .what = &f::code2,        .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check3",           .what = &f::code3,        .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check4",           .what = &f::code4,        .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check5",           .what = &f::code5,        .kind = hex_text, .enabled_when = filtering},
};

#define CANNOT_READ(variable) "widget_get_text_utf8(" variable ", data, sizeof(data)) == RET_OK"
constexpr auto changing = event_type::value_changing;
constexpr lost_line lost[] = {
    {"page_change", "spin_box",          changing,          CANNOT_READ("can_start"),     "on_can_start_value_changed"},
    {"page_change", "spin_box1",         changing,          CANNOT_READ("can_len"),       "on_can_len_value_changed"},
    {"page_spi",    "spin_box_number",   changing,          CANNOT_READ("spi_ffn"),       "on_spi_ffn_value_changing"},
    {"page_spi",    "spin_box_time",     changing,          CANNOT_READ("spi_fft"),       "on_spi_fft_value_changing"},
    {"page_uart",   "spin_box_distance", changing,          CANNOT_READ("uart_distance"), "on_uart_distance_value_changing"},
    {"page_can",    "edit_send",         event_type::focus, "edit != NULL",               "on_edit_send_focus"},
    {"page_can",    "edit_send",         event_type::blur,  "edit != NULL",               "on_edit_send_focus"},
};

constexpr page_rules rules{.numbers_by_text = true, .boxes_bounded = true, .lost = lost};

constexpr page_table change{"page_change", change_rows, rules};
constexpr page_table spi   {"page_spi",    spi_rows,    rules};
constexpr page_table uart  {"page_uart",   uart_rows,   rules};
constexpr page_table can   {"page_can",    can_rows,    rules, "scroll_view_can", "scroll_bar_d_can"};
// clang-format on
constexpr const page_table* tables[] = {&change, &spi, &uart, &can};

constexpr page_tab tabs[] = {
    {"table_button_change", "page_change", page_init_of<change>},
    {"table_button_spi", "page_spi", page_init_of<spi>},
    {"table_button_uart", "page_uart", page_init_of<uart>},
    {"table_button_can", "page_can", page_init_of<can>},
};

} // namespace

constinit const family_pages generic_pages = {
    .of = &generic_family,
    .log_name = "dev_vkt530a",
    .container = "view10",
    .code_mode = "code_mode",
    .page_set = "pages",
    .tabs = tabs,
    .tables = tables,
    .starts_at_first_tab = false,
};
