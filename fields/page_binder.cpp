#include "fields/page_binder.h"

#include "fields/row_kinds.h"
#include "fields/scroll.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <string>
#include <utility>
#include <vector>

namespace {

// Longest text of a hex edit: four pairs and three blanks.
constexpr uint32_t hex_edit_chars = 11;

bool is_hex_word(row_kind kind) { return kind == row_kind::hex_text || kind == row_kind::hex_word; }

const page_row* row_of(const page_table& table, const field* what) {
    for (const auto& row : table.rows)
        if (row.what == what) return &row;
    return nullptr;
}

void apply_rule(const bound_row& at) {
    const enable_rule& rule = at.row.enabled_when;
    const page_row* decider = rule.what == nullptr ? nullptr : row_of(at.table, rule.what);
    if (decider == nullptr) return;
    const int32_t value = row_number({at.table, *decider, at.page, nullptr, at.dev});
    const bool on = rule.value == switched_on ? value != 0 : value == rule.value || value == rule.or_value;
    if (at.row.kind == row_kind::rule_hint) {
        widget_set_visible(at.w, !on);
        return;
    }
    widget_set_enable(at.w, on);
    widget_set_tooltip_more(at.w, on ? nullptr : rule_text(at.row.enabled_when).c_str(), tooltip_part::rule);
    if (at.row.hidden_when_disabled) widget_set_visible(at.w, on);
}

void apply_rules_of(const page_table& table, widget* page, dev_obj& dev, const field* what) {
    for (const auto& row : table.rows)
        if (row.enabled_when.what == what)
            if (widget* w = widget_lookup(page, row.name)) apply_rule({table, row, page, w, dev});
}

int refused_keepers = 0;

bool keeps_refused(const bound_row& at) { return refused_keepers > 0 && widget_get_refused(at.w); }

/// A number on show is what is sent, beside the reason; where that has changed the reason is of yesterday.
void fill_refused(const bound_row& at) {
    const kind_ops& ops = kind_ops_of(at.row);
    if (ops.mark != nullptr) return ops.mark(at);
    if (ops.fill == nullptr || widget_get_focused(at.w)) return;
    const std::string before = widget_get_text_utf8(at.w);
    ops.fill(at);
    if (widget_get_text_utf8(at.w) != before) widget_set_refused(at.w, nullptr);
}

void fill(const bound_row& at) {
    const kind_ops& ops = kind_ops_of(at.row);
    if (keeps_refused(at)) {
        fill_refused(at);
    } else {
        widget_set_refused(at.w, nullptr);
        if (ops.fill != nullptr) ops.fill(at);
    }
    apply_rule(at);
}

/// What shows on other rows after a change of this one.
void follow(const page_table& table, const page_row& changed, widget* page, dev_obj& dev) {
    apply_rules_of(table, page, dev, changed.what);
    const page_row* next = changed.refreshes == nullptr ? nullptr : row_of(table, changed.refreshes);
    if (next == nullptr) return;
    if (widget* w = widget_lookup(page, next->name)) fill({table, *next, page, w, dev});
    apply_rules_of(table, page, dev, next->what);
}

field_pointed& told_pointed() {
    static auto& to = *new field_pointed;
    return to;
}

void attach_pointed(const bound_row& at) {
    if (at.what().key == nullptr) return;
    for (const event_type type :
         {event_type::pointer_enter, event_type::pointer_leave, event_type::focus, event_type::blur})
        widget_on(at.w, type, [row = &at.row, dev = &at.dev](const event& what) {
            if (told_pointed()) told_pointed()(*dev, *row->what, what.type);
            return RET_OK;
        });
}

void attach(const bound_row& at) {
    std::vector<std::pair<int32_t, std::string>> options;
    for (const auto& option : row_options(at.row)) options.emplace_back(option.value, option.text);
    if (!options.empty()) combo_box_set_options(at.w, options);
    if (is_hex_word(at.row.kind)) edit_set_text_limit(at.w, 0, hex_edit_chars);
    attach_pointed(at);
    const kind_ops& ops = kind_ops_of(at.row);
    const std::pair<event_type, bool> wanted[] = {{event_type::value_changed, ops.changed != nullptr},
                                                  {event_type::value_changing, ops.changing != nullptr},
                                                  {event_type::focus, ops.focus != nullptr},
                                                  {event_type::blur, ops.blur != nullptr},
                                                  {event_type::click, ops.click != nullptr}};
    for (const auto& [type, used] : wanted)
        if (used)
            widget_on(at.w, type,
                      [table = &at.table, row = &at.row, page = at.page, dev = &at.dev](const event& what) {
                          return page_event(*table, *row, page, *dev, what);
                      });
}

/// An event without its widget: nothing can be read.
ret_t report_lost(const page_table& table, std::string_view name, event_type type) {
    for (const lost_line& line : table.rules.lost) {
        if (line.what != type || name != line.widget || std::string_view(table.name) != line.page) continue;
        if (line.handler != nullptr)
            log_condition_failed(line.text, line.handler, __LINE__);
        else
            log_console(line.text);
    }
    return RET_BAD_PARAMS;
}

} // namespace

refused_kept::refused_kept() { ++refused_keepers; }
refused_kept::~refused_kept() { --refused_keepers; }

void page_on_pointed(field_pointed to) { told_pointed() = std::move(to); }

ret_t page_event(const page_table& table, const page_row& row, widget* page, dev_obj& dev, const event& what) {
    if (what.target == nullptr) return report_lost(table, row.name, what.type);
    const kind_ops& ops = kind_ops_of(row);
    const bound_row at{table, row, page, what.target, dev};
    ret_t result = RET_OK;
    switch (what.type) {
    case event_type::value_changed:
        result = ops.changed(at);
        break;
    case event_type::value_changing:
        result = ops.changing(at);
        break;
    case event_type::focus:
        if (keeps_refused(at)) return RET_OK;
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
    if (result == RET_OK) follow(table, row, page, dev);
    if (what.type != event_type::focus)
        dev_edited(dev, {.what = row.what, .typing = what.type == event_type::value_changing});
    return result;
}

ret_t page_init(const page_table& table, widget* page, dev_obj& dev) {
    const std::string init = std::string(table.name) + "_init";
    RETURN_IF_NOT(page != nullptr, "win != NULL", init.c_str(), RET_BAD_PARAMS);
    widget_build(page);
    // Kept with the widget, so that a page that is made anew is attached anew.
    const bool attached = widget_get_prop_bool(page, "attached", false);
    for (const auto& row : table.rows) {
        widget* w = widget_lookup(page, row.name);
        if (w == nullptr) continue;
        const bound_row at{table, row, page, w, dev};
        if (!attached) attach(at);
        fill(at);
    }
    if (attached) return RET_OK;
    for (const auto& name : page_missing(table, page))
        log_write(LOG_LEVEL_WARN, tk_format("%s: no widget \"%s\"\n", init.c_str(), name.c_str()));
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
