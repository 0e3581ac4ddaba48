#include "dev_b/pages/vkt610b_row_kinds.h"

#include "dev_b/pages/bps_calculator.h"
#include "dev_b/vkt610b_codec.h"
#include "shell/navigator.h"
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
    return widget_set_text_utf8(at.w, tk_format("%08X", value).c_str());
}

void fill_mask(const bound_row& at) { show_filter(at, field_word(at.what(), at.props())); }
void fill_filter(const bound_row& at) {
    show_filter(at, std::min(field_word(at.what(), at.props()), at.what().highest));
}

/// "edit_scherm0_vkt610b_canfd1" is told as "scherm0_value".
std::string told_name(std::string_view edit) {
    constexpr std::string_view head = "edit_";
    edit.remove_prefix(head.size());
    return std::string(edit.substr(0, edit.find('_'))) + "_value";
}

/// Whether what was typed is the number `value`, and nothing beside it.
bool is_number(std::string_view typed, uint32_t value) {
    const auto digit = [](char c) { return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c; };
    typed.remove_prefix(std::min(typed.find_first_not_of(' '), typed.size()));
    if (typed.starts_with("0x") || typed.starts_with("0X")) typed.remove_prefix(2);
    typed.remove_prefix(std::min(typed.find_first_not_of('0'), typed.size()));
    const std::string wanted = value == 0 ? "" : tk_format("%X", value);
    return std::ranges::equal(typed, wanted, {}, digit);
}

/// For the line below the field.
std::string wanted_text(const bound_row& at) { return tk_format("应为 0–%X 的十六进制数", at.what().highest); }

ret_t commit_filter(const bound_row& at) {
    const std::string typed = widget_get_text_utf8(at.w);
    uint32_t value = 0;
    if (!hex_scan(typed.substr(0, digits_read), &value)) {
        log_console("sscanf read " + told_name(at.row.name) + " failed!");
        return widget_set_refused(at.w, "未采用：不是十六进制数", wanted_text(at).c_str());
    }
    value = std::min(value, at.what().highest);
    show_filter(at, value);
    const std::string why = tk_format("未采用 %s：实际保存的是 %08X", typed.c_str(), value);
    widget_set_refused(at.w, is_number(typed, value) ? nullptr : why.c_str(), wanted_text(at).c_str());
    const auto store = [value](tk_object* props, const char* key) {
        return tk_object_set_prop_uint32(props, key, value);
    };
    const ret_t result = row_store(at, store, "");
    return result == RET_OK ? row_show(at) : result;
}

/// What was no number gives way to what will be sent; the mark goes on saying what it was.
ret_t leave_filter(const bound_row& at) {
    const std::string typed = widget_get_text_utf8(at.w);
    uint32_t value = 0;
    if (!widget_get_refused(at.w) || hex_scan(typed.substr(0, digits_read), &value)) return RET_OK;
    kind_ops_of(at.row).fill(at);
    const std::string why = tk_format("未采用 %s：不是十六进制数，实际保存的是 %08X",
                                      typed.empty() ? "空白" : typed.c_str(), field_word(at.what(), at.props()));
    return widget_set_refused(at.w, why.c_str(), wanted_text(at).c_str());
}

// ---- version and calculator ----

void fill_version(const bound_row& at) {
    const uint32_t version = tk_object_get_prop_uint32(at.props(), at.what().key, 0);
    widget_set_text_utf8(at.w, version == 0 ? "—" : vkt610b_version_text(version).c_str()); // 0: never read
}

template <int Channel>
ret_t open_calculator(const bound_row& at) {
    bps_calculator_open(at.dev, Channel);
    // The calculator chooses rates too. Its loop ends as well when the window closes, and the page with it.
    return widget_get_window(at.page) == nullptr ? RET_OK : page_init(at.table, at.page, at.dev);
}

ret_t open_assistant(const bound_row& /*at*/) { return navigator_to("serial_send"); }

} // namespace

const kind_ops vkt610b_route_ops = {.fill = fill_route, .changed = change_route, .options = routes};
const kind_ops vkt610b_mask_ops = {.fill = fill_mask, .changed = commit_filter, .blur = leave_filter};
const kind_ops vkt610b_filter_ops = {.fill = fill_filter, .changed = commit_filter, .blur = leave_filter};
const kind_ops vkt610b_version_ops = {.fill = fill_version};
const kind_ops vkt610b_calculator_ops[2] = {{.click = open_calculator<1>}, {.click = open_calculator<2>}};
const kind_ops vkt610b_assistant_ops = {.click = open_assistant};
