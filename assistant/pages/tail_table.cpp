#include "assistant/pages/tail_table.h"

#include <algorithm>

namespace {

constexpr uint32_t hold_ms = 500;

ret_t fill_row(const std::vector<tail_cell>& cells, uint32_t index, widget* row) {
    if (cells.empty()) return RET_FAIL;
    for (const tail_cell& cell : cells) {
        widget* w = widget_child(row, cell.name);
        widget_set_text_utf8(w, cell.text.c_str());
        widget_set_style_state(w, cell.state);
    }
    const bool odd = index % 2 != 0;
    if (table_row_chosen(row)) return widget_set_style_state(row, odd ? "odd chosen" : "even chosen");
    return widget_set_style_state(row, odd ? "odd" : "even");
}

} // namespace

tail_table::tail_table(widget* table, fill cells, std::function<ret_t(table_rows rows)> copy) : table_(table) {
    table_client_set_on_load_data(table_, [cells = std::move(cells)](uint32_t index, widget* row) {
        return fill_row(cells(index), index, row);
    });
    table_client_set_choice(table_, table_choice::range);
    table_client_set_on_copy(table_, std::move(copy));
}

void tail_table::on_hold(const char* cell, std::function<ret_t(uint32_t index)> held) {
    table_client_set_on_create_row(table_, [cell, held = std::move(held)](uint32_t, widget* row) {
        widget* w = widget_child(row, cell);
        widget_set_long_press_ms(w, hold_ms);
        widget_on(w, event_type::long_press, [row, held](const event&) {
            const int64_t index = table_row_index(row);
            return index >= 0 ? held(static_cast<uint32_t>(index)) : RET_FAIL;
        });
        return RET_OK;
    });
}

void tail_table::show(std::size_t rows) {
    const uint32_t before = table_client_get_rows(table_);
    const uint32_t now = static_cast<uint32_t>(std::min<std::size_t>(rows, UINT32_MAX));
    if (now == before) return;
    const bool at_end = table_client_first_row(table_) >= before - std::min(seen_, before);
    table_client_set_rows(table_, now);
    if (!at_end || now == 0) return;
    table_client_show_row(table_, now - 1);
    seen_ = now - table_client_first_row(table_);
}

void tail_table::clear() {
    table_client_choose(table_, std::nullopt);
    table_client_set_rows(table_, 0);
}
