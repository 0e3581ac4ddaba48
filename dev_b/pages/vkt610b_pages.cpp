#include "dev_b/pages/vkt610b_pages.h"

#include "config/pages/family_pages.h"
#include "dev_b/pages/twin_table.h"
#include "dev_b/pages/vkt610b_code_view.h"
#include "dev_b/pages/vkt610b_options.h"
#include "dev_b/pages/vkt610b_row_kinds.h"

namespace {

using enum row_kind;
namespace lists = vkt610b_options;

constexpr page_row change_rows[] = {
    {.name = "combo_box_ex_1_vkt610b",
     .key = "change_mode_vkt610b",
     .options = lists::modes,
     .refused_from = 2,
     .refused_message = "mode_value is error\n",
     .fallback = 1},
    // Two selectors for one property: each shows what the other stored.
    {.name = "combo_box_ex_2_vkt610b",
     .key = "change_protcol_vkt610b",
     .kind = custom,
     .options = lists::routes,
     .refreshes = "spin_box_3_vkt610b",
     .own = &vkt610b_route_ops},
    {.name = "spin_box_3_vkt610b",
     .key = "change_can_channel_vkt610b",
     .kind = number,
     .refused_from = 2,
     .refused_message = "changal_value is error\n",
     .shown_above = 1,
     .refreshes = "combo_box_ex_2_vkt610b"},
    {.name = "change_label_4_2_vkt610b", .key = "version", .kind = custom, .own = &vkt610b_version_ops},
};

constexpr page_row spi_rows[] = {
    {.name = "spin_box_number_vkt610b",
     .key = "spi_picture_vkt610b",
     .kind = number,
     .refused_from = 100,
     .refused_message = "box_number_value is error\n",
     .fallback = 0,
     .shown_above = 1,
     .raised_to_0 = true,
     .failed_name = "spin_box_number_vkt610b"},
    {.name = "spin_box_time_vkt610b",
     .key = "spi_time_vkt610b",
     .kind = number,
     .refused_from = 256,
     .refused_message = "box_time_value is error\n",
     .fallback = 0,
     .shown_above = 1,
     .raised_to_0 = true,
     .failed_name = "spin_box_time_vkt610b"},
};

constexpr page_row uart_rows[] = {
    {.name = "combo_box_ex_bps_1_vkt610b",
     .key = "uart1_bps_vkt610b",
     .options = lists::uart_rates,
     .refused_from = 25,
     .refused_message = "uart1bps_value is error\n",
     .fallback = 15},
};

constexpr enable_rule switching{"canfd1_brs_vkt610b", 1};
constexpr enable_rule not_classic{"canfd1_mode_vkt610b", switched_on};
constexpr enable_rule user_timing{"canfd1_brs_do_button_vkt610b", switched_on};
constexpr enable_rule standard{"canfd1_leach_mode_vkt610b", lists::filter_standard, lists::filter_both};
constexpr enable_rule extended{"canfd1_leach_mode_vkt610b", lists::filter_extended, lists::filter_both};

constexpr page_row filter(const char* name, const char* key, const enable_rule& rule, const kind_ops& ops) {
    return {.name = name, .key = key, .kind = custom, .enabled_when = rule, .own = &ops};
}
constexpr page_row standard_filter(const char* name, const char* key) {
    return filter(name, key, standard, vkt610b_standard_filter_ops);
}
constexpr page_row extended_filter(const char* name, const char* key) {
    return filter(name, key, extended, vkt610b_extended_filter_ops);
}

// The bounds of the two rate selectors are one above their options: intended.
constexpr page_row canfd_rows[] = {
    {.name = "combo_box_ex_mode_vkt610b_canfd1",
     .key = "canfd1_mode_vkt610b",
     .options = lists::bus_modes,
     .refused_from = 3,
     .refused_message = "canfd1_mode_work_value is error\n",
     .fallback = 1,
     .also = {.key = "canfd1_brs_vkt610b", .when = 0, .value = 0},
     .refreshes = "check_button_vkt610b_canfd1"},
    {.name = "combo_box_ex_bps_vkt610b_canfd1",
     .key = "canfd1_speed_zc_vkt610b",
     .options = lists::nominal_rates,
     .refused_from = 12,
     .refused_message = "canfd1_bps_zc_value is error\n"},
    {.name = "combo_box_ex_rejector_vkt610b_canfd1",
     .key = "canfd1_speed_data_vkt610b",
     .options = lists::data_rates,
     .enabled_when = switching,
     .refused_from = 8,
     .refused_message = "canfd1_bps_data_value is error\n"},
    {.name = "check_button_vkt610b_canfd1",
     .key = "canfd1_brs_vkt610b",
     .kind = check,
     .enabled_when = not_classic,
     .refused_from = 2,
     .refused_message = "canfd1_ac_button_value is error\n"},
    {.name = "bps_do_button_vkt610b_canfd1", .key = "canfd1_brs_do_button_vkt610b", .kind = check},
    {.name = "canfd1_button_bp_calculate",
     .kind = custom,
     .enabled_when = user_timing,
     .hidden_when_disabled = true,
     .own = &vkt610b_calculator_ops},
    {.name = "combo_box_ex_reject_mode_vkt610b_canfd1",
     .key = "canfd1_leach_mode_vkt610b",
     .options = lists::filter_modes,
     .refused_from = 3,
     .refused_message = "canfd1_reject_mode_work_value is error\n"},
    standard_filter("edit_scherm0_vkt610b_canfd1", "canfd1_scherm_vkt610b"),
    standard_filter("edit_check0_vkt610b_canfd1", "canfd1_check0_vkt610b"),
    standard_filter("edit_check1_vkt610b_canfd1", "canfd1_check1_vkt610b"),
    standard_filter("edit_check2_vkt610b_canfd1", "canfd1_check2_vkt610b"),
    standard_filter("edit_check3_vkt610b_canfd1", "canfd1_check3_vkt610b"),
    extended_filter("edit_scherm1_vkt610b_canfd1", "canfd1_scherm_e_vkt610b"),
    extended_filter("edit_check4_vkt610b_canfd1", "canfd1_check0_e_vkt610b"),
    extended_filter("edit_check5_vkt610b_canfd1", "canfd1_check1_e_vkt610b"),
    extended_filter("edit_check6_vkt610b_canfd1", "canfd1_check2_e_vkt610b"),
    extended_filter("edit_check7_vkt610b_canfd1", "canfd1_check3_e_vkt610b"),
};

constexpr page_scheme scheme = {
    .of = family::b,
    .map = [] { return std::span<const reg_field>(); }, // no key is a bool, no edit shows bytes of an image
    .props = vkt610b_props,
    .lock = vkt610b_mutex,
    .stored = nullptr,
    .show_code = [](widget* window) { return vkt610b_code_mode(window, nullptr); },
    .numbers_by_text = false,
    .whole_values = true,
};

constexpr page_table change{"page_vkt610b_change", "page_vkt610b_change_init", change_rows, &scheme};
constexpr page_table spi{"page_vkt610b_spi", "page_vkt610b_spi_init", spi_rows, &scheme};
constexpr page_table uart{"page_vkt610b_uart", "page_vkt610b_uart_init", {}, &scheme};
constexpr page_table uart_1{"page_vkt610b_uart_1", "page_vkt610b_uart_1_init", uart_rows, &scheme};
constexpr page_table canfd{"page_vkt610b_canfd", "page_vkt610b_canfd_init", {}, &scheme};
constexpr page_table canfd_1{"page_vkt610b_canfd_1",       "page_vkt610b_canfd_1_init",      canfd_rows, &scheme,
                             "scroll_view_vkt610b_canfd1", "scroll_bar_d_can_vkt610b_canfd1"};

const page_table& uart_2() {
    static const twin_table twin(uart_1, {{"uart1", "uart2"}, {"bps_1", "bps_2"}, {"uart_1", "uart_2"}});
    return twin.table();
}
const page_table& canfd_2() {
    static const twin_table twin(canfd_1, {{"canfd1", "canfd2"}, {"canfd_1", "canfd_2"}});
    return twin.table();
}

// ---- pages within pages

struct inner_pages {
    const char* page_set;
    page_tab tabs[2];
};

constexpr inner_pages uart_pages = {"vkt610b_uart_pages",
                                    {{"tab_button_uart1", "page_vkt610b_uart_1", page_vkt610b_uart_1_init},
                                     {"tab_button_uart2", "page_vkt610b_uart_2", page_vkt610b_uart_2_init}}};
constexpr inner_pages canfd_pages = {"vkt610b_canfd_pages",
                                     {{"tab_button_canfd1", "page_vkt610b_canfd_1", page_vkt610b_canfd_1_init},
                                      {"tab_button_canfd2", "page_vkt610b_canfd_2", page_vkt610b_canfd_2_init}}};

/// A tab's value changes when it goes off too; only the one that is on shows its page.
void bind_tab(widget* page, widget* set, const page_tab& tab) {
    widget* button = widget_lookup(page, tab.button);
    widget_on(button, event_type::value_changed, [button, set, &tab](const event&) {
        if (widget_get_value_int(button) == 0) return RET_OK;
        pages_set_active_by_name(set, tab.page);
        return tab.init(widget_lookup(set, tab.page));
    });
}

ret_t outer_init(const page_table& outer, const inner_pages& inner, widget* page) {
    const bool bound = widget_get_prop_bool(page, "attached", false);
    const ret_t result = page_init(outer, page);
    if (result != RET_OK) return result;
    widget* set = widget_lookup(page, inner.page_set);
    for (const page_tab& tab : inner.tabs) {
        if (!bound) bind_tab(page, set, tab);
        tab.init(widget_lookup(set, tab.page));
    }
    return RET_OK;
}

} // namespace

ret_t page_vkt610b_change_init(widget* page) { return page_init(change, page); }
ret_t page_vkt610b_spi_init(widget* page) { return page_init(spi, page); }
ret_t page_vkt610b_uart_init(widget* page) { return outer_init(uart, uart_pages, page); }
ret_t page_vkt610b_uart_1_init(widget* page) { return page_init(uart_1, page); }
ret_t page_vkt610b_uart_2_init(widget* page) { return page_init(uart_2(), page); }
ret_t page_vkt610b_canfd_init(widget* page) { return outer_init(canfd, canfd_pages, page); }
ret_t page_vkt610b_canfd_1_init(widget* page) { return page_init(canfd_1, page); }
ret_t page_vkt610b_canfd_2_init(widget* page) { return page_init(canfd_2(), page); }

std::vector<const page_table*> vkt610b_page_tables() {
    return {&change, &spi, &uart_1, &uart_2(), &canfd_1, &canfd_2()};
}
