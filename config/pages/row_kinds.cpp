#include "config/pages/row_kinds.h"

#include "config/cfg_image.h"
#include "config/defaults.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/ravel.h"

#include <array>

namespace {

// ---- choices
// -----------------------------------------------------------------------------------------------------

void fill_number(const bound_row& at) { widget_set_value_int(at.w, row_number(at)); }

void fill_choice_text(const bound_row& at) {
    const std::string text = row_text(at);
    int32_t value = at.row.options.front().value;
    for (const auto& option : at.row.options)
        if (text == option.text) value = option.value;
    widget_set_value_int(at.w, value);
}

void fill_still_choice(const bound_row& at) { widget_set_value_int(at.w, at.row.options.front().value); }

void fill_check(const bound_row& at) { widget_set_value_int(at.w, row_number(at) != 0 ? 1 : 0); }

void fill_caption(const bound_row& at) {
    locale_info_change("zh", "CN");
    widget_set_text_utf8(at.w, locale_info_tr(at.row.key).c_str());
}

// ---- one change handler for everything that is a number
// -----------------------------------------------------------

void refuse(const bound_row& at) {
    log_console(at.row.refused_message);
    widget_set_refused(at.w, tk_format("未采用：取值须小于 %u", at.row.refused_from).c_str());
}

ret_t store_low_byte(const bound_row& at, uint8_t low) {
    if (at.row.before_store != nullptr) at.row.before_store(at.w);
    const reg_field* field = map_find(at.scheme().map(), at.row.key);
    const bool flag = field != nullptr && field->form == value_form::flag;
    const auto store = [low, flag](tk_object* props, const char* key) {
        return flag ? tk_object_set_prop_bool(props, key, low != 0) : tk_object_set_prop_uint8(props, key, low);
    };
    const ret_t result = row_store(at, store, "\n");
    if (result == RET_OK) widget_set_refused(at.w, nullptr);
    return result;
}

ret_t change_number(const bound_row& at) {
    const bool by_text = at.row.kind == row_kind::number && at.scheme().numbers_by_text;
    const int32_t value = by_text ? tk_atoi(widget_get_text_utf8(at.w).c_str()) : widget_get_value_int(at.w);
    const auto low = static_cast<uint8_t>(value & 255);
    const scheme_lock hold(at.scheme());
    if (low >= at.row.refused_from)
        refuse(at);
    else if (store_low_byte(at, low) != RET_OK)
        return RET_FAIL;
    return at.scheme().show_code(widget_get_window(at.page));
}

ret_t change_choice_text(const bound_row& at) { return row_store_text(at, widget_get_text_utf8(at.w)); }

} // namespace

scheme_lock::scheme_lock(const page_scheme& scheme) {
    tk_mutex* mutex = scheme.lock == nullptr ? nullptr : scheme.lock();
    if (mutex != nullptr) lock_.emplace(mutex);
}

uint8_t row_number(const bound_row& at) {
    const auto fallback = static_cast<uint8_t>(default_number(at.scheme().of, at.row.key));
    return tk_object_get_prop_uint8(at.props(), at.row.key, fallback);
}

std::string row_text(const bound_row& at) {
    return tk_object_get_prop_str(at.props(), at.row.key, default_text(at.scheme().of, at.row.key));
}

std::vector<uint8_t> row_image_bytes(const bound_row& at) {
    const reg_field* field = map_find(at.scheme().map(), at.row.key);
    if (field == nullptr) return {};
    const image_bytes image = cfg_image_get(at.scheme().of);
    return {image.begin() + field->place.at, image.begin() + field->place.at + field->place.bytes};
}

ret_t row_store(const bound_row& at, const std::function<ret_t(tk_object*, const char* key)>& store,
                const char* line_end) {
    if (store(at.props(), at.row.key) != RET_OK) {
        log_console(tk_format("set %s failed!%s", at.row.key, line_end));
        return RET_FAIL;
    }
    return at.scheme().stored == nullptr ? RET_OK : at.scheme().stored(at.row.key);
}

ret_t row_store_text(const bound_row& at, const std::string& text) {
    const scheme_lock hold(at.scheme());
    const auto store = [&text](tk_object* props, const char* key) {
        return tk_object_set_prop_str(props, key, text.c_str());
    };
    const ret_t result = row_store(at, store, "\n");
    return result == RET_OK ? at.scheme().show_code(widget_get_window(at.page)) : result;
}

const kind_ops& kind_ops_of(row_kind kind) {
    static const std::array<kind_ops, row_kind_count> kinds = {{
        {.fill = fill_number, .changed = change_number},           // choice
        {.fill = fill_choice_text, .changed = change_choice_text}, // choice_text
        {.fill = fill_still_choice},                               // still_choice
        {.fill = fill_check, .changed = change_number},            // check
        {.fill = fill_number, .changing = change_number},          // number
        hex_text_ops,
        hex_pair_ops,
        hex_word_ops,
        hex_number_ops,
        {.fill = fill_caption}, // caption
    }};
    return kinds[static_cast<std::size_t>(kind)];
}
