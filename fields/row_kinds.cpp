#include "fields/row_kinds.h"

#include "fields/rule_text.h"
#include "profile/value.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/ravel.h"

#include <array>
#include <optional>

namespace {

// ---- choices ----

void fill_number(const bound_row& at) { widget_set_value_int(at.w, row_number(at) + at.what().shown_above); }

void fill_choice_text(const bound_row& at) {
    const std::string text = row_text(at);
    int32_t value = at.what().choices.front().value;
    for (const auto& option : at.what().choices)
        if (text == option.text) value = option.value;
    widget_set_value_int(at.w, value);
}

void fill_still_choice(const bound_row& at) { widget_set_value_int(at.w, at.what().choices.front().value); }

void fill_check(const bound_row& at) { widget_set_value_int(at.w, row_number(at) != 0 ? 1 : 0); }

void fill_caption(const bound_row& at) {
    locale_info_change("zh", "CN");
    widget_set_text_utf8(at.w, locale_info_tr(at.row.text).c_str());
}

void fill_rule_hint(const bound_row& at) { widget_set_text_utf8(at.w, rule_text(at.row.enabled_when).c_str()); }

// ---- one change handler for everything that is a number ----

bool is_bounded_box(const bound_row& at) { return at.table.rules.boxes_bounded && at.row.kind == row_kind::number; }

/// The lowest number that is refused, as stored.
int64_t refused_from(const bound_row& at) {
    return at.table.rules.bounded || is_bounded_box(at) ? int64_t{field_highest(at.what())} + 1 : 256;
}

std::string bound_text(const bound_row& at, int32_t shown) {
    const int32_t lowest = at.what().shown_above;
    if (shown < lowest) return "取值须大于 " + std::to_string(lowest - 1);
    return "取值须小于 " + std::to_string(refused_from(at) + at.what().shown_above);
}

/// For the line below the field.
std::string wanted_text(const bound_row& at) {
    return "应为" + (at.row.kind == row_kind::number ? " " + value_range(at.what()) : "列表中的一项");
}

void refuse(const bound_row& at, int32_t shown) {
    const char* name = at.row.refused_as == nullptr ? at.what().key : at.row.refused_as;
    if (at.table.rules.bounded) log_console(tk_format("%s is error\n", name));
    widget_set_refused(at.w, ("未采用：" + bound_text(at, shown)).c_str(), wanted_text(at).c_str());
}

/// What is stored for a value on show; nothing when it is refused.
std::optional<uint8_t> accepted(const bound_row& at, int32_t shown) {
    int64_t value = int64_t{shown} - at.what().shown_above;
    if (at.table.rules.raised_to_0 && value < 0) value = 0;
    if (!at.table.rules.whole_values && !is_bounded_box(at)) value &= 255;
    if (value < 0 || value >= refused_from(at)) return std::nullopt;
    return static_cast<uint8_t>(value);
}

ret_t store_companion(const bound_row& at, uint8_t low) {
    const companion& also = at.row.also;
    if (also.what == nullptr || low != also.when) return RET_OK;
    const char* key = also.what->key;
    if (tk_object_set_prop_uint8(at.props(), key, also.value) == RET_OK) return dev_encode(at.dev, key);
    log_console(tk_format("set %s failed!\n", key));
    return RET_FAIL;
}

ret_t store_low_byte(const bound_row& at, uint8_t low) {
    if (at.row.before_store != nullptr) at.row.before_store(at);
    const bool flag = at.what().form == value_form::flag;
    const auto store = [low, flag](tk_object* props, const char* key) {
        return flag ? tk_object_set_prop_bool(props, key, low != 0) : tk_object_set_prop_uint8(props, key, low);
    };
    const ret_t result = row_store(at, store, "\n");
    if (result != RET_OK) return result;
    widget_set_refused(at.w, nullptr);
    return store_companion(at, low);
}

int32_t number_on_show(const bound_row& at) {
    const bool by_text = at.row.kind == row_kind::number && at.table.rules.numbers_by_text;
    return by_text ? tk_atoi(widget_get_text_utf8(at.w).c_str()) : widget_get_value_int(at.w);
}

ret_t change_number(const bound_row& at) {
    const int32_t value = number_on_show(at);
    const auto low = accepted(at, value);
    if (!low)
        refuse(at, value);
    else if (store_low_byte(at, *low) != RET_OK)
        return RET_FAIL;
    else if (const int32_t stored = *low + at.what().shown_above;
             stored != value && at.row.kind == row_kind::number)
        widget_set_refused(at.w, ("实际保存的是 " + std::to_string(stored)).c_str(), wanted_text(at).c_str());
    return row_show(at);
}

/// What stays on show is what will be sent; the mark goes on saying what was not taken.
ret_t leave_number(const bound_row& at) {
    const int32_t typed = number_on_show(at);
    const int32_t stored = row_number(at) + at.what().shown_above;
    if (!widget_get_refused(at.w) || typed == stored) return RET_OK;
    const std::string bound = accepted(at, typed) ? "" : bound_text(at, typed) + "，";
    fill_number(at);
    return widget_set_refused(at.w, tk_format("未采用 %d：%s实际保存的是 %d", typed, bound.c_str(), stored).c_str(),
                              wanted_text(at).c_str());
}

ret_t change_choice_text(const bound_row& at) { return row_store_text(at, widget_get_text_utf8(at.w)); }

} // namespace

uint8_t row_number(const bound_row& at) {
    const field& what = at.what();
    const uint32_t missing = at.row.missing == missing_value::as_default  ? what.number
                             : at.row.missing == missing_value::as_packed ? what.fallback
                                                                          : 0;
    return tk_object_get_prop_uint8(at.props(), what.key, static_cast<uint8_t>(missing));
}

std::string row_text(const bound_row& at) { return field_text(at.what(), at.props()); }

std::vector<uint8_t> row_image_bytes(const bound_row& at) {
    const field_place& place = at.what().place;
    const auto start = at.dev.image.begin() + place.at;
    return {start, start + static_cast<std::ptrdiff_t>(place.bytes())};
}

ret_t row_show(const bound_row& at) {
    dev_show(at.dev);
    return RET_OK;
}

ret_t row_store(const bound_row& at, const std::function<ret_t(tk_object*, const char* key)>& store,
                const char* line_end) {
    const char* key = at.what().key;
    if (store(at.props(), key) == RET_OK) return dev_encode(at.dev, key);
    log_console(tk_format("set %s failed!%s", at.table.rules.names_widgets ? at.row.name : key, line_end));
    return RET_FAIL;
}

ret_t row_store_text(const bound_row& at, const std::string& text) {
    const auto store = [&text](tk_object* props, const char* key) {
        return tk_object_set_prop_str(props, key, text.c_str());
    };
    const ret_t result = row_store(at, store, "\n");
    return result == RET_OK ? row_show(at) : result;
}

const kind_ops& kind_ops_of(const page_row& row) {
    if (row.own != nullptr) return *row.own;
    static const std::array<kind_ops, row_kind_count> kinds = {{
        {.fill = fill_number, .changed = change_number},                        // choice
        {.fill = fill_choice_text, .changed = change_choice_text},              // choice_text
        {.fill = fill_still_choice},                                            // still_choice
        {.fill = fill_check, .changed = change_number},                         // check
        {.fill = fill_number, .changing = change_number, .blur = leave_number}, // number
        hex_text_ops,
        hex_pair_ops,
        hex_word_ops,
        hex_number_ops,
        {.fill = fill_caption},   // caption
        {.fill = fill_rule_hint}, // rule_hint
        {},                       // custom, of a row that brings nothing
    }};
    return kinds[static_cast<std::size_t>(row.kind)];
}

std::span<const choice_option> row_options(const page_row& row) {
    const kind_ops& ops = kind_ops_of(row);
    return ops.options.empty() ? row.what->choices : ops.options;
}
