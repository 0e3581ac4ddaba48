#include "dev_b/pages/twin_table.h"

twin_table::twin_table(const page_table& first, std::initializer_list<twin_name> names)
    : names_(names), table_(first) {
    for (const char** text : {&table_.name, &table_.init, &table_.scroll_view, &table_.scroll_bar})
        *text = renamed(*text);
    for (const page_row& row : first.rows) rows_.push_back(renamed(row));
    table_.rows = rows_;
}

const char* twin_table::renamed(const char* text) {
    if (text == nullptr) return nullptr;
    std::string& out = texts_.emplace_back(text);
    for (const twin_name& name : names_) {
        const std::size_t at = out.find(name.from);
        if (at != std::string::npos) out.replace(at, name.from.size(), name.to);
    }
    return out.c_str();
}

page_row twin_table::renamed(page_row row) {
    for (const char** text : {&row.name, &row.key, &row.enabled_when.key, &row.refused_message, &row.failed_name,
                              &row.also.key, &row.refreshes})
        *text = renamed(*text);
    return row;
}
