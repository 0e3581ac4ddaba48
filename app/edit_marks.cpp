#include "app/edit_marks.h"

#include "app/field_place.h"

#include <algorithm>
#include <map>

namespace {

struct shown_field {
    const field* what;
    widget* w;
};
/// The widgets of one page; they are looked up once, as an edit shows all of them.
struct shown_page {
    widget* page = nullptr;
    std::vector<shown_field> fields{};
};

const std::vector<shown_field>& fields_of(widget* home, const page_table& table) {
    static auto& pages = *new std::map<const page_table*, shown_page>;
    shown_page& known = pages[&table];
    widget* page = widget_lookup(home, table.name);
    if (page == known.page && !known.fields.empty()) return known.fields;
    known = {page};
    // A page that was never shown has no widgets yet.
    if (page == nullptr || !widget_get_prop_bool(page, "attached", false)) return known.fields;
    for (const page_row& row : table.rows)
        if (row.what->key != nullptr && row.kind != row_kind::caption)
            if (widget* w = widget_lookup(page, row.name)) known.fields.push_back({row.what, w});
    return known.fields;
}

} // namespace

std::vector<const field*> marks_refused(widget* home, const family_pages& pages) {
    std::vector<const field*> found;
    for (const page_table* table : pages.tables)
        for (const shown_field& one : fields_of(home, *table))
            if (widget_get_refused(one.w)) found.push_back(one.what);
    return found;
}
