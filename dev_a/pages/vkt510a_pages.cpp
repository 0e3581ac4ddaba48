#include "dev_a/pages/vkt510a_pages.h"

#include "config/cfg_image.h"
#include "config/dev_obj.h"
#include "config/pages/options.h"
#include "dev_a/vkt510a_codec.h"
#include "toolkit/core/log.h"
#include "toolkit/ravel/window_manager.h"

#include <array>

namespace {

using enum row_kind;

constexpr choice_option can_rates[] = {
    {1, "5k"},   {2, "10k"},   {3, "20k"},   {4, "40k"},   {5, "50k"},   {6, "80k"},   {7, "100k"}, {8, "125k"},
    {9, "200k"}, {10, "250k"}, {11, "400k"}, {12, "500k"}, {13, "666k"}, {14, "800k"}, {15, "1M"},
};
constexpr choice_option filter_frames[] = {{8, "仅扩展帧滤波"}, {0, "仅标准帧滤波"}};
constexpr choice_option send_frames[] = {{8, "扩展帧"}, {0, "标准帧"}};
// This module goes up to 921600.
constexpr auto uart_rates = std::span(options::uart_rates).first<16>();

constexpr enable_rule with_id{"change_mode_vkt510a", options::mode_with_id};
constexpr enable_rule transparent{"change_mode_vkt510a", options::mode_transparent};
constexpr enable_rule custom_mode{"change_mode_vkt510a", options::mode_custom};
constexpr enable_rule filtering{"can_filtration_en_vkt510a", switched_on};

// The bounds are intended as they stand, also where they are wider than the options: 17 for the UART rate keeps the
// three fastest codes out, 17 ends the interval, and an SPI value may be anything that a byte holds below 255.
constexpr page_row change_rows[] = {
    {.name = "combo_box_ex_vkt510a",
     .key = "change_mode_vkt510a",
     .kind = choice,
     .options = options::modes,
     .refused_from = 4,
     .refused_message = "mode_value_vkt510a is error\n"},
    {.name = "combo_box_ex1_vkt510a",
     .key = "change_dir_vkt510a",
     .kind = choice,
     .options = options::directions,
     .refused_from = 3,
     .refused_message = "dir_value_vkt510a is error\n"},
    {.name = "check_button_vkt510a",
     .key = "change_can_c_vkt510a",
     .kind = check,
     .enabled_when = transparent,
     .refused_from = 3,
     .refused_message = "can_c_value_vkt510a is error\n"},
    {.name = "check_button1_vkt510a",
     .key = "change_can_id_vkt510a",
     .kind = check,
     .enabled_when = transparent,
     .refused_from = 3,
     .refused_message = "change_can_id_vkt510a is error\n"},
    {.name = "spin_box_vkt510a",
     .key = "change_can_star_vkt510a",
     .kind = number,
     .enabled_when = with_id,
     .refused_from = 8,
     .refused_message = "change_can_star_vkt510a is error\n"},
    {.name = "spin_box1_vkt510a",
     .key = "change_can_len_vkt510a",
     .kind = number,
     .enabled_when = with_id,
     .refused_from = 5,
     .refused_message = "change_can_len_vkt510a is error\n"},
    {.name = "edit_vkt510a", .key = "change_f_h_vkt510a", .kind = hex_number, .enabled_when = custom_mode},
    {.name = "edit1_vkt510a", .key = "change_f_e_vkt510a", .kind = hex_number, .enabled_when = custom_mode},
};

constexpr page_row spi_rows[] = {
    {.name = "label1_vkt510a", .key = "SPI_F", .kind = caption},
    {.name = "combo_box_ex_bit_send_vkt510a", .kind = still_choice, .options = options::bit_orders},
    {.name = "spin_box_number_vkt510a",
     .key = "spi_number_vkt510a",
     .kind = number,
     .refused_from = 255,
     .refused_message = "box_number_value is error\n"},
    {.name = "spin_box_time_vkt510a",
     .key = "spi_time_vkt510a",
     .kind = number,
     .refused_from = 255,
     .refused_message = "box_time_value is error\n"},
};

constexpr page_row uart_rows[] = {
    {.name = "combo_box_ex_bps_vkt510a",
     .key = "uart_bps_vkt510a",
     .kind = choice,
     .options = uart_rates,
     .refused_from = 17,
     .refused_message = "uart_bps_vkt510a is error\n"},
    {.name = "combo_box_ex_check_vkt510a", .kind = still_choice, .options = options::uart_parities},
    {.name = "combo_box_ex_control_vkt510a", .kind = still_choice, .options = options::uart_controls},
    {.name = "spin_box_distance_vkt510a",
     .key = "uart_distance_vkt510a",
     .kind = number,
     .refused_from = 17,
     .refused_message = "uart_distance_vkt510a is error\n"},
};

constexpr page_row can_rows[] = {
    {.name = "combo_box_ex_bps_vkt510a",
     .key = "can_bps_vkt510a",
     .kind = choice,
     .options = can_rates,
     .refused_from = 16,
     .refused_message = "can_bps_vkt510a is error\n"},
    {.name = "combo_box_ex_rejector_vkt510a",
     .key = "can_filtration_mode_vkt510a",
     .kind = choice,
     .options = filter_frames,
     .enabled_when = filtering,
     .refused_from = 16,
     .refused_message = "can_filtration_mode_vkt510a is error\n"},
    {.name = "check_button_vkt510a",
     .key = "can_filtration_en_vkt510a",
     .kind = check,
     .refused_from = 16,
     .refused_message = "can_filtration_en_vkt510a is error\n"},
    {.name = "combo_box_ex_Fkind_vkt510a",
     .key = "can_send_kind_vkt510a",
     .kind = choice,
     .options = send_frames,
     .refused_from = 16,
     .refused_message = "can_send_kind_vkt510a is error\n"},
    {.name = "edit_send_vkt510a", .key = "can_send_data_vkt510a", .kind = hex_word},
    {.name = "edit_scherm_vkt510a", .key = "can_send_shield_vkt510a", .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check0_vkt510a", .key = "can_send_check0_vkt510a", .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check1_vkt510a", .key = "can_send_check1_vkt510a", .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check2_vkt510a", .key = "can_send_check2_vkt510a", .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check3_vkt510a", .key = "can_send_check3_vkt510a", .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check4_vkt510a", .key = "can_send_check4_vkt510a", .kind = hex_word, .enabled_when = filtering},
    {.name = "edit_check5_vkt510a", .key = "can_send_check5_vkt510a", .kind = hex_word, .enabled_when = filtering},
};

tk_object* props() {
    const dev_obj* dev = dev_get(family::a);
    return dev == nullptr ? nullptr : dev->props;
}
tk_mutex* device_lock() {
    const dev_obj* dev = dev_get(family::a);
    return dev == nullptr ? nullptr : dev->mutex;
}

constexpr page_scheme scheme = {
    .of = family::a,
    .map = vkt510a_map,
    .props = props,
    .lock = device_lock,
    .stored = nullptr,
    .show_code = [](widget* window) { return vkt510a_show_code(window, nullptr); },
    .numbers_by_text = false,
};

constexpr std::array<page_table, 4> tables = {{
    {"page_vkt510a_change", "page_vkt510a_change_init", change_rows, &scheme},
    {"page_vkt510a_spi", "page_vkt510a_spi_init", spi_rows, &scheme},
    {"page_vkt510a_uart", "page_vkt510a_uart_init", uart_rows, &scheme},
    {"page_vkt510a_can", "page_vkt510a_can_init", can_rows, &scheme, "scroll_view_can_vkt510a",
     "scroll_bar_d_can_vkt510a"},
}};

} // namespace

ret_t page_vkt510a_change_init(widget* page) { return page_init(tables[0], page); }
ret_t page_vkt510a_spi_init(widget* page) { return page_init(tables[1], page); }
ret_t page_vkt510a_uart_init(widget* page) { return page_init(tables[2], page); }
ret_t page_vkt510a_can_init(widget* page) { return page_init(tables[3], page); }

std::span<const page_table> vkt510a_page_tables() { return tables; }

ret_t vkt510a_show_code(widget* /*window*/, void* /*event*/) {
    vkt510a_encode(nullptr);
    widget* home = widget_child(window_manager(), "home_page");
    const bool list = widget_get_value_int(widget_lookup(home, "code_mode_vkt510a")) != 0;
    const std::string text = image_listing(cfg_image_get(family::a), list);
    if (widget_set_text_utf8(widget_lookup(home, "mledit"), text.c_str()) != RET_OK)
        log_console("set mledit_text failed!\n");
    return RET_OK;
}
