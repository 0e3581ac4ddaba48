#include "config/pages/generic_pages.h"

#include "config/cfg_image.h"
#include "config/dev_obj.h"
#include "config/pages/options.h"
#include "toolkit/core/log.h"

#include <array>

namespace {

using enum row_kind;

constexpr choice_option err_checks[] = {{0, "否"}, {1, "是"}};
constexpr choice_option can_rates[] = {
    {1, "5K"},   {2, "10K"},  {3, "20K"},   {16, "25K"},  {4, "40K"},   {5, "50K"},   {6, "80K"},   {7, "100K"},
    {8, "125K"}, {9, "200K"}, {10, "250K"}, {11, "400K"}, {12, "500K"}, {13, "666K"}, {14, "800K"}, {15, "1M"},
};
constexpr choice_option filter_frames[] = {{0, "仅标准滤波"}, {8, "仅扩展滤波"}};
constexpr choice_option send_frames[] = {{0, "标准帧"}, {8, "扩展帧"}};

constexpr int32_t standard_frame_length = 2;

/// A standard frame's identifier has two bytes: a longer length is cut before the frame type is stored.
void cut_length_for_standard(widget* combo) {
    if (widget_get_text_utf8(combo) != "标准帧") return;
    if (cfg_image_get(family::generic)[layout::length.at] <= standard_frame_length) return;
    tk_object_set_prop_int(config_store(), "change_len", standard_frame_length);
    cfg_image_refresh("change_len");
    log_console("1231546548789\n");
}

constexpr enable_rule with_id{"change_mode", options::mode_with_id};
constexpr enable_rule transparent{"change_mode", options::mode_transparent};
constexpr enable_rule custom_mode{"change_mode", options::mode_custom};
constexpr enable_rule filtering{"can_check", switched_on};

#define CANNOT_READ(variable) "widget_get_text_utf8(" variable ", data, sizeof(data)) == RET_OK"

constexpr page_row change_rows[] = {
    {.name = "combo_box_ex", .key = "change_mode", .kind = choice, .options = options::modes},
    {.name = "combo_box_ex1", .key = "change_dir", .kind = choice, .options = options::directions},
    {.name = "combo_box_ex2", .key = "change_err_check", .kind = choice_text, .options = err_checks},
    {.name = "check_button", .key = "change_can_serial", .kind = check, .enabled_when = transparent},
    {.name = "check_button1", .key = "change_id_serial", .kind = check, .enabled_when = transparent},
    {.name = "spin_box",
     .key = "change_star",
     .kind = number,
     .enabled_when = with_id,
     .handler = "on_can_start_value_changed",
     .failed_condition = CANNOT_READ("can_start")},
    {.name = "spin_box1",
     .key = "change_len",
     .kind = number,
     .enabled_when = with_id,
     .handler = "on_can_len_value_changed",
     .failed_condition = CANNOT_READ("can_len")},
    {.name = "edit", .key = "change_fh", .kind = hex_pair, .enabled_when = custom_mode},
    {.name = "edit1", .key = "change_fe", .kind = hex_pair, .enabled_when = custom_mode},
};

constexpr page_row spi_rows[] = {
    {.name = "label1", .key = "SPI_F", .kind = caption},
    {.name = "combo_box_ex_bit_send", .kind = still_choice, .options = options::bit_orders},
    {.name = "spin_box_number",
     .key = "spi_ff_fnum",
     .kind = number,
     .handler = "on_spi_ffn_value_changing",
     .failed_condition = CANNOT_READ("spi_ffn")},
    {.name = "spin_box_time",
     .key = "spi_ff_time",
     .kind = number,
     .handler = "on_spi_fft_value_changing",
     .failed_condition = CANNOT_READ("spi_fft")},
};

constexpr page_row uart_rows[] = {
    {.name = "combo_box_ex_bps", .key = "uart_baud_rate", .kind = choice, .options = options::uart_rates},
    {.name = "combo_box_ex_check", .kind = still_choice, .options = options::uart_parities},
    {.name = "combo_box_ex_control", .kind = still_choice, .options = options::uart_controls},
    {.name = "spin_box_distance",
     .key = "uart_f_distance",
     .kind = number,
     .handler = "on_uart_distance_value_changing",
     .failed_condition = CANNOT_READ("uart_distance")},
};

constexpr page_row can_rows[] = {
    {.name = "combo_box_ex_bps", .key = "can_baud_rate", .kind = choice, .options = can_rates},
    {.name = "combo_box_ex_rejector",
     .key = "can_filtration",
     .kind = choice,
     .options = filter_frames,
     .enabled_when = filtering},
    {.name = "check_button", .key = "can_check", .kind = check},
    {.name = "combo_box_ex_Fkind",
     .key = "can_sendf_kind",
     .kind = choice,
     .options = send_frames,
     .before_store = cut_length_for_standard},
    // Sent frames have their identifier whether or not received ones are filtered.
    {.name = "edit_send",
     .key = "can_sendf_flage",
     .kind = hex_text,
     .handler = "on_edit_send_focus",
     .failed_condition = "edit != NULL"},
    {.name = "edit_scherm", .key = "can_scherm", .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check0", .key = "can_check0", .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check1", .key = "can_check1", .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check2", .key = "can_check2", .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check3", .key = "can_check3", .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check4", .key = "can_check4", .kind = hex_text, .enabled_when = filtering},
    {.name = "edit_check5", .key = "can_check5", .kind = hex_text, .enabled_when = filtering},
};

constexpr page_scheme scheme = {
    .of = family::generic,
    .map = generic_map,
    .props = config_store,
    .lock = nullptr,
    .stored = cfg_image_refresh,
    .show_code = [](widget* window) { return cfg_image_show_code(window, nullptr); },
    .numbers_by_text = true,
};

constexpr std::array<page_table, 4> tables = {{
    {"page_change", "page_change_init", change_rows, &scheme},
    {"page_spi", "page_spi_init", spi_rows, &scheme},
    {"page_uart", "page_uart_init", uart_rows, &scheme},
    {"page_can", "page_can_init", can_rows, &scheme, "scroll_view_can", "scroll_bar_d_can"},
}};

} // namespace

ret_t page_change_init(widget* page) { return page_init(tables[0], page); }
ret_t page_spi_init(widget* page) { return page_init(tables[1], page); }
ret_t page_uart_init(widget* page) { return page_init(tables[2], page); }
ret_t page_can_init(widget* page) { return page_init(tables[3], page); }

std::span<const page_table> generic_page_tables() { return tables; }

ret_t cfg_image_show_code(widget* window, void* /*event*/) {
    widget* code_mode = widget_lookup(window, "code_mode");
    widget* mledit = widget_lookup(window, "mledit");
    if (code_mode == nullptr || mledit == nullptr) return RET_FAIL;
    cfg_code_mode_set(widget_get_prop_bool(code_mode, "value", false));
    return widget_set_text_utf8(mledit, image_listing(cfg_image_get(family::generic), cfg_code_mode()).c_str());
}
