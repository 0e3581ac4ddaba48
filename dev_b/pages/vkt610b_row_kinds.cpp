#include "dev_b/pages/vkt610b_row_kinds.h"

#include "config/defaults.h"
#include "config/hex_text.h"
#include "dev_b/pages/bps_calculator.h"
#include "dev_b/vkt610b_codec.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <algorithm>

namespace {

// ---- route

constexpr const char* channel_key = "change_can_channel_vkt610b";

void fill_route(const bound_row& at) {
    const auto channel = static_cast<uint8_t>(default_number(family::b, channel_key));
    widget_set_value_int(
        at.w, vkt610b_route_entry(row_number(at), tk_object_get_prop_uint8(at.props(), channel_key, channel)));
}

ret_t store_route(tk_object* props, const char* protocol_key, const vkt610b_route& route) {
    const std::pair<const char*, uint8_t> values[] = {{protocol_key, route.protocol}, {channel_key, route.channel}};
    for (const auto& [key, value] : values) {
        if (tk_object_set_prop_uint8(props, key, value) == RET_OK) continue;
        log_console(tk_format("set %s failed!\n", key));
        return RET_FAIL;
    }
    return RET_OK;
}

ret_t change_route(const bound_row& at) {
    const auto entry = static_cast<uint32_t>(widget_get_value_int(at.w));
    const bool known = entry < vkt610b_routes.size();
    widget_set_refused(at.w, known ? nullptr : "未采用：没有这种转换");
    const scheme_lock hold(at.scheme());
    if (known && store_route(at.props(), at.row.key, vkt610b_routes[entry]) != RET_OK) return RET_FAIL;
    return at.scheme().show_code(widget_get_window(at.page));
}

// ---- filter edits

constexpr uint32_t standard_max = 0x7FF;
constexpr uint32_t extended_max = 0x1FFFFFFF;
constexpr std::size_t digits_read = 8;

template <uint32_t Max>
ret_t show_filter(const bound_row& at, uint32_t value) {
    return widget_set_text_utf8(at.w, tk_format("%08X", std::min(value, Max)).c_str());
}

template <uint32_t Max>
void fill_filter(const bound_row& at) {
    show_filter<Max>(at,
                     tk_object_get_prop_uint32(at.props(), at.row.key, default_number(at.scheme().of, at.row.key)));
}

/// "edit_scherm0_vkt610b_canfd1" is told as "scherm0_value".
std::string told_name(std::string_view edit) {
    constexpr std::string_view head = "edit_";
    edit.remove_prefix(head.size());
    return std::string(edit.substr(0, edit.find('_'))) + "_value";
}

template <uint32_t Max>
ret_t commit_filter(const bound_row& at) {
    uint32_t value = 0;
    if (!hex_scan(widget_get_text_utf8(at.w).substr(0, digits_read), &value)) {
        log_console("sscanf read " + told_name(at.row.name) + " failed!");
        return widget_set_refused(at.w, "未采用：不是十六进制数");
    }
    value = std::min(value, Max);
    const scheme_lock hold(at.scheme());
    show_filter<Max>(at, value);
    widget_set_refused(at.w, nullptr);
    const auto store = [value](tk_object* props, const char* key) {
        return tk_object_set_prop_uint32(props, key, value);
    };
    const ret_t result = row_store(at, store, "");
    return result == RET_OK ? at.scheme().show_code(widget_get_window(at.page)) : result;
}

// ---- version and calculator

void fill_version(const bound_row& at) {
    const uint32_t version = tk_object_get_prop_uint32(at.props(), at.row.key, 0);
    widget_set_text_utf8(at.w, vkt610b_version_text(version).c_str());
}

ret_t open_calculator(const bound_row& at) {
    const bool second = std::string_view(at.row.name).find("canfd2") != std::string_view::npos;
    bps_calculator_open(second ? 2 : 1);
    // The calculator chooses rates too. Its loop ends as well when the window closes, and the page with it.
    return widget_get_window(at.page) == nullptr ? RET_OK : page_init(at.table, at.page);
}

} // namespace

const kind_ops vkt610b_route_ops = {.fill = fill_route, .changed = change_route};
const kind_ops vkt610b_standard_filter_ops = {.fill = fill_filter<standard_max>,
                                              .changed = commit_filter<standard_max>};
const kind_ops vkt610b_extended_filter_ops = {.fill = fill_filter<extended_max>,
                                              .changed = commit_filter<extended_max>};
const kind_ops vkt610b_version_ops = {.fill = fill_version};
const kind_ops vkt610b_calculator_ops = {.click = open_calculator};
