#include "monitor/pages/data_table.h"

#include "shell/navigator.h"
#include "toolkit/core/text.h"
#include "toolkit/table_view/table_view.h"

#include <algorithm>
#include <utility>

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

copied_words data_copied_words(uint32_t copied, uint32_t chosen) {
    if (copied == chosen) return {tk_format("已复制 %u 行", copied), "ok"};
    return {tk_format("只复制前 %u 行，共选 %u 行", copied, chosen), "warning"};
}

data_table::data_table(traffic& from, widget* table, std::function<void(uint32_t, uint32_t)> copied)
    : traffic_(from), table_(table), copied_(std::move(copied)) {
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
    std::string style = index % 2 != 0 ? "odd" : "even";
    if (sent) style += " tx";
    if (table_row_chosen(row)) style += " chosen";
    return widget_set_style_state(row, style.c_str());
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
    const uint32_t end = last - first < data_copy_max ? last + 1 : first + data_copy_max;
    uint32_t index = first;
    for (; index < end && record_at(index, &record); ++index) text += line_of(index, record);
    const ret_t ret = clip_board_set_text(text.c_str());
    if (ret == RET_OK && copied_) copied_(index - first, last - first + 1);
    return ret;
}
