#include "app/edit_marks.h"

#include "app/field_place.h"
#include "app/home_parts.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

namespace {

struct shown_field {
    const field* what;
    widget* w;
};
/// The widgets of one page; they are looked up once, as an edit shows all of them.
struct shown_page {
    widget* page = nullptr;
    std::vector<shown_field> fields{};
    bool told = false;             ///< the tooltips are those of `module`
    std::vector<uint8_t> module{}; ///< empty: not known
};

shown_page& page_of(widget* home, const page_table& table) {
    static auto& pages = *new std::map<const page_table*, shown_page>;
    shown_page& known = pages[&table];
    widget* page = home_part(home, table.name);
    if (page == known.page && !known.fields.empty()) return known;
    known = {page};
    // A page that was never shown has no widgets yet.
    if (page == nullptr || !widget_get_prop_bool(page, "attached", false)) return known;
    for (const page_row& row : table.rows)
        if (row.what->key != nullptr && row.kind != row_kind::caption)
            if (widget* w = widget_lookup(page, row.name)) known.fields.push_back({row.what, w});
    return known;
}

} // namespace

namespace {

/// By key: a page's row and the family's table have a field each.
using key_set = std::set<std::string_view>;

key_set keys_of(const std::vector<image_difference>& unwritten) {
    key_set keys;
    for (const image_difference& one : unwritten) keys.insert(one.what->key);
    return keys;
}
bool differs(const key_set& keys, const field& what) { return what.key != nullptr && keys.contains(what.key); }

std::string value_in(const dev_obj& dev, const field& what, std::span<const uint8_t> image) {
    const auto value = value_in_image(dev.of, what, image);
    return value ? value_with_unit(what, *value) : "";
}

/// "模块中: 125K  默认: 125K"; of an unknown module the default alone.
std::string tooltip_of(const dev_obj& dev, const field& what) {
    std::string text = "默认: " + value_in(dev, what, image_of_defaults(dev.of));
    if (dev.in_module) text = "模块中: " + value_in(dev, what, dev.in_module->bytes) + "  " + text;
    return text;
}

/// Once for each module.
void tell(shown_page& page, const dev_obj& dev) {
    static const std::vector<uint8_t> unknown;
    const std::vector<uint8_t>& module = dev.in_module ? dev.in_module->bytes : unknown;
    if (page.fields.empty() || (page.told && page.module == module)) return;
    for (const shown_field& one : page.fields)
        if (one.what->place.bits != 0 && !is_modules_own(dev.of, *one.what))
            widget_set_tooltip_more(one.w, tooltip_of(dev, *one.what).c_str());
    page.told = true;
    page.module = module;
}

void mark_tabs(widget* home, const family_pages& pages, const key_set& keys) {
    const auto has = [&keys](const page_table& table) {
        return std::ranges::any_of(table.rows, [&](const page_row& row) { return differs(keys, *row.what); });
    };
    for (const page_tab& tab : pages.tabs)
        widget_set_marked(home_part(home, tab.button), std::ranges::any_of(pages.tables, [&](const page_table* t) {
                              return field_tab_of(pages, *t) == &tab && has(*t);
                          }));
    for (const page_table* table : pages.tables)
        if (table->inside.button != nullptr)
            if (widget* button = home_part(home, table->inside.button)) widget_set_marked(button, has(*table));
}

} // namespace

void marks_show(widget* home, const family_pages& pages, const dev_obj& dev,
                const std::vector<image_difference>& unwritten) {
    const key_set keys = keys_of(unwritten);
    for (const page_table* table : pages.tables) {
        shown_page& page = page_of(home, *table);
        for (const shown_field& one : page.fields) widget_set_marked(one.w, differs(keys, *one.what));
        tell(page, dev);
    }
    mark_tabs(home, pages, keys);
}

std::vector<const field*> marks_refused(widget* home, const family_pages& pages) {
    std::vector<const field*> found;
    for (const page_table* table : pages.tables)
        for (const shown_field& one : page_of(home, *table).fields)
            if (widget_get_refused(one.w)) found.push_back(one.what);
    return found;
}
