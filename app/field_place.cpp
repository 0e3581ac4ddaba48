#include "app/field_place.h"

#include "app/model_switch.h"

namespace {

const page_row* row_of(const page_table& table, std::string_view key) {
    for (const page_row& row : table.rows)
        if (row.what->key != nullptr && key == row.what->key && row.kind != row_kind::caption) return &row;
    return nullptr;
}

} // namespace

const page_tab* field_tab_of(const family_pages& pages, const page_table& table) {
    const std::string_view page = table.inside.page == nullptr ? table.name : table.inside.page;
    for (const page_tab& tab : pages.tabs)
        if (page == tab.page) return &tab;
    return nullptr;
}

ret_t field_go_to(widget* home, const family_pages& pages, std::string_view key) {
    const refused_kept where_it_leads;
    for (const page_table* table : pages.tables) {
        const page_row* row = row_of(*table, key);
        const page_tab* tab = row == nullptr ? nullptr : field_tab_of(pages, *table);
        if (tab == nullptr) continue;
        model_tab_show(home, pages, *tab);
        if (table->inside.page != nullptr) {
            widget* page = widget_lookup(home, table->inside.page);
            widget_set_value_int(widget_lookup(page, table->inside.button), 1);
            pages_set_active_by_name(widget_lookup(page, table->inside.page_set), table->name);
        }
        return widget_set_focused(widget_lookup(widget_lookup(home, table->name), row->name));
    }
    return RET_FAIL;
}
