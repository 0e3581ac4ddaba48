#include "dev_b/pages/vkt610b_pages.h"

#include "dev_b/family.h"
#include "dev_b/pages/vkt610b_row_kinds.h"

namespace {

using enum row_kind;
namespace f = vkt610b_field;
namespace options = vkt610b_options;

// clang-format off
// Two selectors for one property: each shows what the other stored.
constexpr page_row change_rows[] = {
    {.name = "combo_box_ex_1_vkt610b",   .what = &f::change_mode, .refused_as = "mode_value", .missing = missing_value::as_packed},
    {.name = "combo_box_ex_2_vkt610b",   .what = &f::protocol,    .kind = custom, .refreshes = &f::can_channel, .own = &vkt610b_route_ops},
    {.name = "spin_box_3_vkt610b",       .what = &f::can_channel, .kind = number, .refused_as = "changal_value", .refreshes = &f::protocol},
    {.name = "change_label_4_2_vkt610b", .what = &f::version,     .kind = custom, .own = &vkt610b_version_ops},
    {.name = "button_serial_send",       .kind = custom, .own = &vkt610b_assistant_ops},
};

constexpr page_row spi_rows[] = {
    {.name = "spin_box_number_vkt610b", .what = &f::spi_count, .kind = number, .refused_as = "box_number_value", .missing = missing_value::as_zero},
    {.name = "spin_box_time_vkt610b",   .what = &f::spi_time,  .kind = number, .refused_as = "box_time_value",   .missing = missing_value::as_zero},
};

template <int N>
constexpr page_row uart_rows[] = {
    {.name = vkt610b_named<"combo_box_ex_bps_#_vkt610b", N>, .what = &f::uart<N>::rate, .refused_as = vkt610b_named<"uart#bps_value", N>, .missing = missing_value::as_packed},
};

template <int N>
struct canfd_channel {
    using of = f::canfd<N>;
    static constexpr enable_rule switching{&of::rate_switch, 1};
    static constexpr enable_rule not_classic{&of::bus_mode, switched_on};
    static constexpr enable_rule user_timing{&of::user_timing, switched_on};
    static constexpr companion not_switching{.what = &of::rate_switch, .when = 0, .value = 0};
    static constexpr enable_rule standard{&of::filter_mode, options::filter_standard, options::filter_both};
    static constexpr enable_rule extended{&of::filter_mode, options::filter_extended, options::filter_both};

    static constexpr page_row rows[] = {
        {.name = vkt610b_named<"combo_box_ex_mode_vkt610b_canfd#", N>,        .what = &of::bus_mode,       .refused_as = vkt610b_named<"canfd#_mode_work_value", N>, .missing = missing_value::as_packed, .also = not_switching, .refreshes = &of::rate_switch},
        {.name = vkt610b_named<"combo_box_ex_bps_vkt610b_canfd#", N>,         .what = &of::nominal_rate,   .refused_as = vkt610b_named<"canfd#_bps_zc_value", N>},
        {.name = vkt610b_named<"combo_box_ex_rejector_vkt610b_canfd#", N>,    .what = &of::data_rate,      .enabled_when = switching, .refused_as = vkt610b_named<"canfd#_bps_data_value", N>},
        {.name = vkt610b_named<"check_button_vkt610b_canfd#", N>,             .what = &of::rate_switch,    .kind = check, .enabled_when = not_classic, .refused_as = vkt610b_named<"canfd#_ac_button_value", N>},
        {.name = vkt610b_named<"bps_do_button_vkt610b_canfd#", N>,            .what = &of::user_timing,    .kind = check},
        {.name = vkt610b_named<"canfd#_button_bp_calculate", N>,              .kind = custom, .enabled_when = user_timing, .hidden_when_disabled = true, .own = &vkt610b_calculator_ops[N - 1]},
        {.name = vkt610b_named<"combo_box_ex_reject_mode_vkt610b_canfd#", N>, .what = &of::filter_mode,    .refused_as = vkt610b_named<"canfd#_reject_mode_work_value", N>},
        {.name = vkt610b_named<"edit_scherm0_vkt610b_canfd#", N>,             .what = &of::standard_mask,  .kind = custom, .enabled_when = standard, .own = &vkt610b_mask_ops},
        {.name = vkt610b_named<"edit_check0_vkt610b_canfd#", N>,              .what = &of::standard_code0, .kind = custom, .enabled_when = standard, .own = &vkt610b_filter_ops},
        {.name = vkt610b_named<"edit_check1_vkt610b_canfd#", N>,              .what = &of::standard_code1, .kind = custom, .enabled_when = standard, .own = &vkt610b_filter_ops},
        {.name = vkt610b_named<"edit_check2_vkt610b_canfd#", N>,              .what = &of::standard_code2, .kind = custom, .enabled_when = standard, .own = &vkt610b_filter_ops},
        {.name = vkt610b_named<"edit_check3_vkt610b_canfd#", N>,              .what = &of::standard_code3, .kind = custom, .enabled_when = standard, .own = &vkt610b_filter_ops},
        {.name = vkt610b_named<"edit_scherm1_vkt610b_canfd#", N>,             .what = &of::extended_mask,  .kind = custom, .enabled_when = extended, .own = &vkt610b_filter_ops},
        {.name = vkt610b_named<"edit_check4_vkt610b_canfd#", N>,              .what = &of::extended_code0, .kind = custom, .enabled_when = extended, .own = &vkt610b_filter_ops},
        {.name = vkt610b_named<"edit_check5_vkt610b_canfd#", N>,              .what = &of::extended_code1, .kind = custom, .enabled_when = extended, .own = &vkt610b_filter_ops},
        {.name = vkt610b_named<"edit_check6_vkt610b_canfd#", N>,              .what = &of::extended_code2, .kind = custom, .enabled_when = extended, .own = &vkt610b_filter_ops},
        {.name = vkt610b_named<"edit_check7_vkt610b_canfd#", N>,              .what = &of::extended_code3, .kind = custom, .enabled_when = extended, .own = &vkt610b_filter_ops},
        {.name = vkt610b_named<"hint_standard_canfd#", N>,                    .kind = rule_hint, .enabled_when = standard},
        {.name = vkt610b_named<"hint_extended_canfd#", N>,                    .kind = rule_hint, .enabled_when = extended},
    };
};

constexpr page_rules rules{.bounded = true, .whole_values = true};
constexpr page_rules spi_rules{.bounded = true, .whole_values = true, .raised_to_0 = true, .names_widgets = true};

constexpr page_table change{"page_vkt610b_change", change_rows, rules};
constexpr page_table spi   {"page_vkt610b_spi",    spi_rows,    spi_rules};
constexpr page_table uart  {"page_vkt610b_uart",   {},          rules};
constexpr page_table canfd {"page_vkt610b_canfd",  {},          rules};
template <int N>
constexpr page_table uart_of{.name = vkt610b_named<"page_vkt610b_uart_#", N>, .rows = uart_rows<N>, .rules = rules,
                             .inside = {uart.name, "vkt610b_uart_pages", vkt610b_named<"tab_button_uart#", N>}};
template <int N>
constexpr page_table canfd_of{vkt610b_named<"page_vkt610b_canfd_#", N>, canfd_channel<N>::rows, rules,
                              vkt610b_named<"scroll_view_vkt610b_canfd#", N>, vkt610b_named<"scroll_bar_d_can_vkt610b_canfd#", N>,
                              {canfd.name, "vkt610b_canfd_pages", vkt610b_named<"tab_button_canfd#", N>}};
// clang-format on

// ---- pages within pages ----

struct inner_pages {
    const char* page_set;
    page_tab tabs[2];
};

template <const page_table& Table>
constexpr page_tab inner_tab{Table.inside.button, Table.name, page_init_of<Table>};
constexpr inner_pages uart_pages = {uart_of<1>.inside.page_set, {inner_tab<uart_of<1>>, inner_tab<uart_of<2>>}};
constexpr inner_pages canfd_pages = {canfd_of<1>.inside.page_set, {inner_tab<canfd_of<1>>, inner_tab<canfd_of<2>>}};

/// A tab's value changes when it goes off too; only the one that is on shows its page.
void bind_tab(widget* page, dev_obj& dev, widget* set, const page_tab& tab) {
    widget* button = widget_lookup(page, tab.button);
    widget_on(button, event_type::value_changed, [button, set, dev = &dev, &tab](const event&) {
        if (widget_get_value_int(button) == 0) return RET_OK;
        pages_set_active_by_name(set, tab.page);
        return tab.init(widget_lookup(set, tab.page), *dev);
    });
}

ret_t outer_init(const page_table& outer, const inner_pages& inner, widget* page, dev_obj& dev) {
    const bool bound = widget_get_prop_bool(page, "attached", false);
    const ret_t result = page_init(outer, page, dev);
    if (result != RET_OK) return result;
    widget* set = widget_lookup(page, inner.page_set);
    for (const page_tab& tab : inner.tabs) {
        if (!bound) bind_tab(page, dev, set, tab);
        tab.init(widget_lookup(set, tab.page), dev);
    }
    return RET_OK;
}

ret_t page_vkt610b_uart_init(widget* page, dev_obj& dev) { return outer_init(uart, uart_pages, page, dev); }
ret_t page_vkt610b_canfd_init(widget* page, dev_obj& dev) { return outer_init(canfd, canfd_pages, page, dev); }

constexpr page_tab tabs[] = {
    {"vkt610b_tab_button_change", "page_vkt610b_change", page_init_of<change>},
    {"vkt610b_tab_button_spi", "page_vkt610b_spi", page_init_of<spi>},
    {"vkt610b_tab_button_uart", "page_vkt610b_uart", page_vkt610b_uart_init},
    {"vkt610b_tab_button_canfd", "page_vkt610b_canfd", page_vkt610b_canfd_init},
};
constexpr const page_table* tables[] = {&change, &spi, &uart_of<1>, &uart_of<2>, &canfd_of<1>, &canfd_of<2>};

} // namespace

constinit const family_pages vkt610b_pages = {
    .of = &vkt610b_family,
    .log_name = "dev_vkt610b",
    .container = "vkt610b_view_1",
    .code_mode = "code_mode_vkt610b",
    .page_set = "vkt610b_pages",
    .tabs = tabs,
    .tables = tables,
    .starts_at_first_tab = true,
    .code_lost = "set mledit_text failed!\n",
};
