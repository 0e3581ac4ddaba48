#include "monitor/pages/data_table.h"

#include "shell/navigator.h"
#include "toolkit/core/text.h"
#include "toolkit/table_view/table_view.h"

#include <algorithm>
#include <vector>

namespace {

constexpr uint32_t hold_ms = 500;

struct cell {
    const char* name;
    std::string (*text)(const traffic_record& record);
};
constexpr cell cells[] = {
    {"time", record_time_text},
    {"channel", [](const traffic_record& r) -> std::string { return record_channel_text(r); }},
    {"id", [](const traffic_record& r) { return record_id_text(r) + " "; }},
    {"can_type", record_type_text},
    {"direction", [](const traffic_record& r) -> std::string { return record_direction_text(r); }},
    {"length", [](const traffic_record& r) { return std::to_string(r.length); }},
    {"data", record_data_cell},
};

/// A record as a line of a spreadsheet, with all its data.
std::string line_of(uint32_t index, const traffic_record& record) {
    std::string line = std::to_string(index + 1);
    for (const cell& one : cells) {
        std::string text = one.text == record_data_cell ? record_data_text(record) : one.text(record);
        while (text.ends_with(' ')) text.pop_back();
        line += "\t" + text;
    }
    return line + "\n";
}

} // namespace

data_table::data_table(traffic& from, widget* table) : traffic_(from), table_(table) {
    table_client_set_on_load_data(table_, [this](uint32_t index, widget* row) { return fill(index, row); });
    refresh();
    table_client_set_on_create_row(table_, [this](uint32_t, widget* row) { return bind_row(row); });
    table_client_set_choice(table_, table_choice::range);
    table_client_set_on_copy(table_, [this](table_rows rows) { return copy(rows.first, rows.last); });
}

void data_table::refresh() {
    const record_queue::look now = traffic_.rows(0, {});
    const auto rows = static_cast<uint32_t>(now.size);
    const auto came = static_cast<uint32_t>(std::min<uint64_t>(now.appended - shown_, UINT32_MAX));
    table_client_rows_inserted(table_, came, rows);
    table_client_set_rows(table_, rows);
    shown_ = now.appended;
}

void data_table::clear() {
    traffic_.clear();
    shown_ = traffic_.rows(0, {}).appended;
    table_client_choose(table_, std::nullopt);
    table_client_set_rows(table_, static_cast<uint32_t>(traffic_.size()));
}

ret_t data_table::fill(uint32_t index, widget* row) {
    traffic_record record;
    if (!record_at(index, &record)) return RET_FAIL;
    rows_[row] = record;
    widget_set_text_utf8(widget_child(row, "index"), tk_format("%u", index + 1).c_str());
    for (const cell& one : cells) widget_set_text_utf8(widget_child(row, one.name), one.text(record).c_str());
    const bool sent = record.direction == traffic_direction::tx;
    widget_set_style_state(widget_child(row, "direction"), sent ? "tx" : "");
    const bool odd = index % 2 != 0;
    if (table_row_chosen(row)) return widget_set_style_state(row, odd ? "odd chosen" : "even chosen");
    return widget_set_style_state(row, odd ? "odd" : "even");
}

// What is held is what was seen when the pointer went down, however many records come meanwhile.
ret_t data_table::bind_row(widget* row) {
    widget* data = widget_child(row, "data");
    widget_set_long_press_ms(data, hold_ms);
    widget_on(data, event_type::pointer_down, [this, row](const event&) {
        held_ = rows_[row];
        return RET_OK;
    });
    widget_on(data, event_type::long_press, [this](const event&) {
        return navigator_to_with_context("data_info", record_data_text(held_).c_str());
    });
    return RET_OK;
}

ret_t data_table::copy(uint32_t first, uint32_t last) {
    std::string text;
    traffic_record record;
    const uint32_t end = std::min(last, first + (data_copy_max - 1));
    for (uint32_t index = first; index <= end && record_at(index, &record); ++index) text += line_of(index, record);
    return clip_board_set_text(text.c_str());
}
