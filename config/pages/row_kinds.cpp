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

void fill_number(const bound_row& at) { widget_set_value_int(at.w, row_number(at) + at.row.shown_above); }

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
    const int64_t bound = int64_t{at.row.refused_from} + at.row.shown_above;
    widget_set_refused(at.w, ("未采用：取值须小于 " + std::to_string(bound)).c_str());
}

/// What is stored for a value on show; nothing when it is refused.
std::optional<uint8_t> accepted(const bound_row& at, int32_t shown) {
    int64_t value = int64_t{shown} - at.row.shown_above;
    if (at.row.raised_to_0 && value < 0) value = 0;
    if (!at.scheme().whole_values) value &= 255;
    if (value < 0 || value >= int64_t{at.row.refused_from}) return std::nullopt;
    return static_cast<uint8_t>(value);
}

ret_t store_companion(const bound_row& at, uint8_t low) {
    const companion& also = at.row.also;
    if (also.key == nullptr || low != also.when) return RET_OK;
    if (tk_object_set_prop_uint8(at.props(), also.key, also.value) == RET_OK) return RET_OK;
    log_console(tk_format("set %s failed!\n", also.key));
    return RET_FAIL;
}

ret_t store_low_byte(const bound_row& at, uint8_t low) {
    if (at.row.before_store != nullptr) at.row.before_store(at.w);
    const reg_field* field = map_find(at.scheme().map(), at.row.key);
    const bool flag = field != nullptr && field->form == value_form::flag;
    const auto store = [low, flag](tk_object* props, const char* key) {
        return flag ? tk_object_set_prop_bool(props, key, low != 0) : tk_object_set_prop_uint8(props, key, low);
    };
    const ret_t result = row_store(at, store, "\n");
    if (result != RET_OK) return result;
    widget_set_refused(at.w, nullptr);
    return store_companion(at, low);
}

ret_t change_number(const bound_row& at) {
    const bool by_text = at.row.kind == row_kind::number && at.scheme().numbers_by_text;
    const int32_t value = by_text ? tk_atoi(widget_get_text_utf8(at.w).c_str()) : widget_get_value_int(at.w);
    const auto low = accepted(at, value);
    const scheme_lock hold(at.scheme());
    if (!low)
        refuse(at);
    else if (store_low_byte(at, *low) != RET_OK)
        return RET_FAIL;
    else if (const int32_t stored = *low + at.row.shown_above; stored != value && at.row.kind == row_kind::number)
        widget_set_refused(at.w, ("实际保存的是 " + std::to_string(stored)).c_str());
    return at.scheme().show_code(widget_get_window(at.page));
}

ret_t change_choice_text(const bound_row& at) { return row_store_text(at, widget_get_text_utf8(at.w)); }

} // namespace

scheme_lock::scheme_lock(const page_scheme& scheme) {
    tk_mutex* mutex = scheme.lock == nullptr ? nullptr : scheme.lock();
    if (mutex != nullptr) lock_.emplace(mutex);
}

uint8_t row_number(const bound_row& at) {
    const uint32_t fallback = at.row.fallback == own_default ? default_number(at.scheme().of, at.row.key)
                                                             : static_cast<uint32_t>(at.row.fallback);
    return tk_object_get_prop_uint8(at.props(), at.row.key, static_cast<uint8_t>(fallback));
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
        const char* name = at.row.failed_name == nullptr ? at.row.key : at.row.failed_name;
        log_console(tk_format("set %s failed!%s", name, line_end));
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

const kind_ops& kind_ops_of(const page_row& row) {
    if (row.own != nullptr) return *row.own;
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
        {},                     // custom, of a row that brings nothing
    }};
    return kinds[static_cast<std::size_t>(row.kind)];
}
