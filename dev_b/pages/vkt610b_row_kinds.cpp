#include "dev_b/pages/vkt610b_row_kinds.h"

#include "dev_b/pages/bps_calculator.h"
#include "dev_b/vkt610b_codec.h"
#include "toolkit/core/hex_text.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <algorithm>

namespace {

// ---- route ----

using vkt610b_field::can_channel;

constexpr auto routes = [] {
    std::array<choice_option, vkt610b_routes.size()> out{};
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = {static_cast<int32_t>(i), vkt610b_routes[i].text};
    return out;
}();

void fill_route(const bound_row& at) {
    widget_set_value_int(at.w, vkt610b_route_entry(row_number(at), field_byte(can_channel, at.props())));
}

ret_t store_route(const bound_row& at, const vkt610b_route& route) {
    const std::pair<const char*, uint8_t> values[] = {{at.what().key, route.protocol},
                                                      {can_channel.key, route.channel}};
    for (const auto& [key, value] : values) {
        if (tk_object_set_prop_uint8(at.props(), key, value) == RET_OK) continue;
        log_console(tk_format("set %s failed!\n", key));
        return RET_FAIL;
    }
    return RET_OK;
}

ret_t change_route(const bound_row& at) {
    const auto entry = static_cast<uint32_t>(widget_get_value_int(at.w));
    const bool known = entry < vkt610b_routes.size();
    widget_set_refused(at.w, known ? nullptr : "未采用：没有这种转换");
    if (known && store_route(at, vkt610b_routes[entry]) != RET_OK) return RET_FAIL;
    static_cast<void>(dev_encode(at.dev));
    return row_show(at);
}

// ---- filter edits ----

constexpr std::size_t digits_read = 8;

ret_t show_filter(const bound_row& at, uint32_t value) {
    return widget_set_text_utf8(at.w, tk_format("%08X", std::min(value, at.what().highest)).c_str());
}

void fill_filter(const bound_row& at) { show_filter(at, field_word(at.what(), at.props())); }

/// "edit_scherm0_vkt610b_canfd1" is told as "scherm0_value".
std::string told_name(std::string_view edit) {
    constexpr std::string_view head = "edit_";
    edit.remove_prefix(head.size());
    return std::string(edit.substr(0, edit.find('_'))) + "_value";
}

ret_t commit_filter(const bound_row& at) {
    uint32_t value = 0;
    if (!hex_scan(widget_get_text_utf8(at.w).substr(0, digits_read), &value)) {
        log_console("sscanf read " + told_name(at.row.name) + " failed!");
        return widget_set_refused(at.w, "未采用：不是十六进制数");
    }
    value = std::min(value, at.what().highest);
    show_filter(at, value);
    widget_set_refused(at.w, nullptr);
    const auto store = [value](tk_object* props, const char* key) {
        return tk_object_set_prop_uint32(props, key, value);
    };
    const ret_t result = row_store(at, store, "");
    return result == RET_OK ? row_show(at) : result;
}

// ---- version and calculator ----

void fill_version(const bound_row& at) {
    const uint32_t version = tk_object_get_prop_uint32(at.props(), at.what().key, 0);
    widget_set_text_utf8(at.w, vkt610b_version_text(version).c_str());
}

template <int Channel>
ret_t open_calculator(const bound_row& at) {
    bps_calculator_open(at.dev, Channel);
    // The calculator chooses rates too. Its loop ends as well when the window closes, and the page with it.
    return widget_get_window(at.page) == nullptr ? RET_OK : page_init(at.table, at.page, at.dev);
}

} // namespace

const kind_ops vkt610b_route_ops = {.fill = fill_route, .changed = change_route, .options = routes};
const kind_ops vkt610b_filter_ops = {.fill = fill_filter, .changed = commit_filter};
const kind_ops vkt610b_version_ops = {.fill = fill_version};
const kind_ops vkt610b_calculator_ops[2] = {{.click = open_calculator<1>}, {.click = open_calculator<2>}};
