#include "config/pages/page_binder.h"

#include "config/pages/row_kinds.h"
#include "config/pages/scroll.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <utility>

namespace {

// Longest text of a hex edit: four pairs and three blanks.
constexpr uint32_t hex_edit_chars = 11;

bool is_hex_word(row_kind kind) { return kind == row_kind::hex_text || kind == row_kind::hex_word; }

void apply_rule(const bound_row& at) {
    const enable_rule& rule = at.row.enabled_when;
    if (rule.key == nullptr) return;
    const page_row* decider = nullptr;
    for (const auto& row : at.table.rows)
        if (row.key != nullptr && std::string_view(row.key) == rule.key) decider = &row;
    if (decider == nullptr) return;
    const int32_t value = row_number({at.table, *decider, at.page, nullptr});
    const bool on = rule.value == switched_on ? value != 0 : value == rule.value || value == rule.or_value;
    widget_set_enable(at.w, on);
    if (at.row.hidden_when_disabled) widget_set_visible(at.w, on);
}

void apply_rules_of(const page_table& table, widget* page, std::string_view key) {
    for (const auto& row : table.rows)
        if (row.enabled_when.key != nullptr && key == row.enabled_when.key)
            if (widget* w = widget_lookup(page, row.name)) apply_rule({table, row, page, w});
}

void fill(const bound_row& at) {
    widget_set_refused(at.w, nullptr);
    const kind_ops& ops = kind_ops_of(at.row);
    if (ops.fill != nullptr) ops.fill(at);
    apply_rule(at);
}

/// What shows on other rows after a change of this one.
void follow(const page_table& table, const page_row& changed, widget* page) {
    if (changed.key != nullptr) apply_rules_of(table, page, changed.key);
    if (changed.refreshes == nullptr) return;
    for (const auto& row : table.rows) {
        if (std::string_view(row.name) != changed.refreshes) continue;
        if (widget* w = widget_lookup(page, row.name)) fill({table, row, page, w});
        if (row.key != nullptr) apply_rules_of(table, page, row.key);
    }
}

void attach(const bound_row& at) {
    for (const auto& option : at.row.options) combo_box_append_option(at.w, option.value, option.text);
    if (is_hex_word(at.row.kind)) edit_set_text_limit(at.w, 0, hex_edit_chars);
    const kind_ops& ops = kind_ops_of(at.row);
    const std::pair<event_type, bool> wanted[] = {{event_type::value_changed, ops.changed != nullptr},
                                                  {event_type::value_changing, ops.changing != nullptr},
                                                  {event_type::focus, ops.focus != nullptr},
                                                  {event_type::blur, ops.blur != nullptr},
                                                  {event_type::click, ops.click != nullptr}};
    for (const auto& [type, used] : wanted)
        if (used)
            widget_on(at.w, type, [table = &at.table, row = &at.row, page = at.page](const event& what) {
                return page_event(*table, *row, page, what);
            });
}

/// An event without its widget: nothing can be read.
ret_t report_lost(const page_row& row, event_type type) {
    if (row.failed_condition != nullptr) log_condition_failed(row.failed_condition, row.handler, __LINE__);
    const kind_ops& ops = kind_ops_of(row);
    const char* said = type == event_type::value_changing ? ops.changing_lost
                       : type == event_type::focus        ? ops.focus_lost
                       : type == event_type::blur         ? ops.blur_lost
                                                          : nullptr;
    if (said != nullptr) log_console(said);
    return RET_BAD_PARAMS;
}

} // namespace

ret_t page_event(const page_table& table, const page_row& row, widget* page, const event& what) {
    if (what.target == nullptr) return report_lost(row, what.type);
    const kind_ops& ops = kind_ops_of(row);
    const bound_row at{table, row, page, what.target};
    ret_t result = RET_OK;
    switch (what.type) {
    case event_type::value_changed:
        result = ops.changed(at);
        break;
    case event_type::value_changing:
        result = ops.changing(at);
        break;
    case event_type::focus:
        result = ops.focus(at);
        break;
    case event_type::blur:
        result = ops.blur(at);
        break;
    case event_type::click:
        return ops.click(at);
    default:
        return RET_OK;
    }
    // A value that was refused has followed the rules all the same; after a store that failed nothing more happens.
    // With the lock released: greying the edit that has the focus makes it lose the focus, and its blur handler
    // locks.
    if (result == RET_OK) follow(table, row, page);
    return result;
}

ret_t page_init(const page_table& table, widget* page) {
    RETURN_IF_NOT(page != nullptr, "win != NULL", table.init, RET_BAD_PARAMS);
    widget_build(page);
    // Kept with the widget, so that a page that is made anew is attached anew.
    const bool attached = widget_get_prop_bool(page, "attached", false);
    for (const auto& row : table.rows) {
        widget* w = widget_lookup(page, row.name);
        if (w == nullptr) continue;
        const bound_row at{table, row, page, w};
        if (!attached) attach(at);
        fill(at);
    }
    if (attached) return RET_OK;
    for (const auto& name : page_missing(table, page))
        log_write(LOG_LEVEL_WARN, tk_format("%s: no widget \"%s\"\n", table.init, name.c_str()));
    if (table.scroll_view != nullptr) scroll_attach(page, table.scroll_view, table.scroll_bar);
    return widget_set_prop_bool(page, "attached", true);
}

std::vector<std::string> page_missing(const page_table& table, widget* page) {
    std::vector<std::string> missing;
    const auto look = [&](const char* name) {
        if (name != nullptr && widget_lookup(page, name) == nullptr) missing.emplace_back(name);
    };
    for (const auto& row : table.rows) look(row.name);
    look(table.scroll_view);
    look(table.scroll_bar);
    return missing;
}
