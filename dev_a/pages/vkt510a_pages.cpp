#include "dev_a/pages/vkt510a_pages.h"

#include "dev_a/family.h"
#include "dev_a/fields.h"

namespace {

using enum row_kind;
namespace f = vkt510a_field;

constexpr enable_rule with_id{&f::change_mode, options::mode_with_id};
constexpr enable_rule transparent{&f::change_mode, options::mode_transparent};
constexpr enable_rule custom_mode{&f::change_mode, options::mode_custom};
constexpr enable_rule filtering{&f::filter_on, switched_on};

// clang-format off
constexpr page_row change_rows[] = {
    {.name = "combo_box_ex_vkt510a",  .what = &f::change_mode,   .kind = choice, .refused_as = "mode_value_vkt510a"},
    {.name = "combo_box_ex1_vkt510a", .what = &f::direction,     .kind = choice, .refused_as = "dir_value_vkt510a"},
    {.name = "check_button_vkt510a",  .what = &f::can_to_serial, .kind = check,      .enabled_when = transparent, .refused_as = "can_c_value_vkt510a"},
    {.name = "check_button1_vkt510a", .what = &f::id_to_serial,  .kind = check,      .enabled_when = transparent},
    {.name = "spin_box_vkt510a",      .what = &f::id_start,      .kind = number,     .enabled_when = with_id},
    {.name = "spin_box1_vkt510a",     .what = &f::id_length,     .kind = number,     .enabled_when = with_id},
    {.name = "edit_vkt510a",          .what = &f::frame_head,    .kind = hex_number, .enabled_when = custom_mode},
    {.name = "edit1_vkt510a",         .what = &f::frame_end,     .kind = hex_number, .enabled_when = custom_mode},
    {.name = "hint_with_id_vkt510a",     .kind = rule_hint, .enabled_when = with_id},
    {.name = "hint_transparent_vkt510a", .kind = rule_hint, .enabled_when = transparent},
    {.name = "hint_custom_vkt510a",      .kind = rule_hint, .enabled_when = custom_mode},
};

constexpr page_row spi_rows[] = {
    {.name = "label1_vkt510a",                .kind = caption, .text = "SPI_F"},
    {.name = "combo_box_ex_bit_send_vkt510a", .what = &f::bit_order, .kind = still_choice},
    {.name = "spin_box_number_vkt510a",       .what = &f::spi_count, .kind = number, .refused_as = "box_number_value"},
    {.name = "spin_box_time_vkt510a",         .what = &f::spi_time,  .kind = number, .refused_as = "box_time_value"},
};

constexpr page_row uart_rows[] = {
    {.name = "combo_box_ex_bps_vkt510a",     .what = &f::uart_rate,     .kind = choice},
    {.name = "combo_box_ex_check_vkt510a",   .what = &f::uart_parity,   .kind = still_choice},
    {.name = "combo_box_ex_control_vkt510a", .what = &f::uart_control,  .kind = still_choice},
    {.name = "spin_box_distance_vkt510a",    .what = &f::uart_interval, .kind = number},
};

constexpr page_row can_rows[] = {
    {.name = "combo_box_ex_bps_vkt510a",      .what = &f::can_rate,     .kind = choice},
    {.name = "combo_box_ex_rejector_vkt510a", .what = &f::filter_frame, .kind = choice, .enabled_when = filtering},
    {.name = "check_button_vkt510a",          .what = &f::filter_on,    .kind = check},
    {.name = "combo_box_ex_Fkind_vkt510a",    .what = &f::send_frame,   .kind = choice},
    {.name = "edit_send_vkt510a",             .what = &f::send_id,      .kind = hex_word},
    {.name = "edit_scherm_vkt510a",           .what = &f::mask,         .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check0_vkt510a",           .what = &f::code0,        .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check1_vkt510a",           .what = &f::code1,        .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check2_vkt510a",           .what = &f::code2,        .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check3_vkt510a",           .what = &f::code3,        .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check4_vkt510a",           .what = &f::code4,        .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check5_vkt510a",           .what = &f::code5,        .kind = hex_word, .enabled_when = filtering},
};

constexpr auto changing = event_type::value_changing;
constexpr lost_line lost[] = {
    {"page_vkt510a_change", "edit_vkt510a",        changing,          "get f_vchanging failed!"},
    {"page_vkt510a_change", "edit_vkt510a",        event_type::focus, "set f_vfocus failed!"},
    {"page_vkt510a_change", "edit_vkt510a",        event_type::blur,  "get f_vblur failed!"},
    {"page_vkt510a_change", "edit1_vkt510a",       changing,          "get f_vchanging failed!"},
    {"page_vkt510a_change", "edit1_vkt510a",       event_type::focus, "set f_vfocus failed!"},
    {"page_vkt510a_change", "edit1_vkt510a",       event_type::blur,  "get f_vblur failed!"},
    {"page_vkt510a_can",    "edit_send_vkt510a",   changing,          "get changing failed!"},
    {"page_vkt510a_can",    "edit_scherm_vkt510a", changing,          "get changing failed!"},
    {"page_vkt510a_can",    "edit_check0_vkt510a", changing,          "get changing failed!"},
    {"page_vkt510a_can",    "edit_check1_vkt510a", changing,          "get changing failed!"},
    {"page_vkt510a_can",    "edit_check2_vkt510a", changing,          "get changing failed!"},
    {"page_vkt510a_can",    "edit_check3_vkt510a", changing,          "get changing failed!"},
    {"page_vkt510a_can",    "edit_check4_vkt510a", changing,          "get changing failed!"},
    {"page_vkt510a_can",    "edit_check5_vkt510a", changing,          "get changing failed!"},
};

constexpr page_rules rules{.bounded = true, .lost = lost};

constexpr page_table change{"page_vkt510a_change", change_rows, rules};
constexpr page_table spi   {"page_vkt510a_spi",    spi_rows,    rules};
constexpr page_table uart  {"page_vkt510a_uart",   uart_rows,   rules};
constexpr page_table can   {"page_vkt510a_can",    can_rows,    rules, "scroll_view_can_vkt510a", "scroll_bar_d_can_vkt510a"};
// clang-format on
constexpr const page_table* tables[] = {&change, &spi, &uart, &can};

constexpr page_tab tabs[] = {
    {"vkt510a_tab_button_change", "page_vkt510a_change", page_init_of<change>},
    {"vkt510a_tab_button_spi", "page_vkt510a_spi", page_init_of<spi>},
    {"vkt510a_tab_button_uart", "page_vkt510a_uart", page_init_of<uart>},
    {"vkt510a_tab_button_can", "page_vkt510a_can", page_init_of<can>},
};

} // namespace

constinit const family_pages vkt510a_pages = {
    .of = &vkt510a_family,
    .log_name = "dev_vkt510a",
    .container = "vkt510a_view_1",
    .code_mode = "code_mode_vkt510a",
    .page_set = "vkt510a_pages",
    .tabs = tabs,
    .tables = tables,
    .starts_at_first_tab = true,
    .code_lost = "set mledit_text failed!\n",
};
