// The functions of table_view.h.
#include "toolkit/ravel/qt/layout_reader.h"
#include "toolkit/table_view/qt/table_widget.h"

#include <utility>

namespace {

QWidget* make_table(QWidget* parent) { return new table_widget(parent); }

/// The table of a row widget, null when it is none.
const table_widget* table_of(const widget_state* row) {
    return row == nullptr || row->parent == nullptr ? nullptr : dynamic_cast<const table_widget*>(row->parent->w);
}

} // namespace

ret_t table_view_register() {
    register_layout_class("table_client", "table_client", make_table);
    return RET_OK;
}

ret_t table_client_set_rows(widget* table, uint32_t rows) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->set_rows(rows);
    return RET_OK;
}

uint32_t table_client_get_rows(const widget* table) {
    const auto* t = live_as<table_widget>(table);
    return t == nullptr ? 0 : t->rows();
}

ret_t table_client_rows_inserted(widget* table, uint32_t count, uint32_t at_most) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->rows_inserted(count, at_most);
    return RET_OK;
}

uint32_t table_client_first_row(const widget* table) {
    const auto* t = live_as<table_widget>(table);
    return t == nullptr ? 0 : t->first_row();
}

ret_t table_client_show_row(widget* table, uint32_t index) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->show_row(index);
    return RET_OK;
}

ret_t table_client_fill(widget* table) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    return t->fill() ? RET_OK : RET_FAIL;
}

ret_t table_client_set_on_load_data(widget* table, table_row_handler handler) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->load = std::move(handler);
    return RET_OK;
}

ret_t table_client_set_on_create_row(widget* table, table_row_handler handler) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->create = std::move(handler);
    return RET_OK;
}

ret_t table_client_set_choice(widget* table, table_choice what) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->set_choice(what);
    return RET_OK;
}

ret_t table_client_choose(widget* table, std::optional<table_rows> rows) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->choose(rows);
    return RET_OK;
}

std::optional<table_rows> table_client_chosen(const widget* table) {
    const auto* t = live_as<table_widget>(table);
    return t == nullptr ? std::nullopt : t->chosen();
}

ret_t table_client_set_on_take(widget* table, std::function<ret_t(uint32_t)> handler) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->take = std::move(handler);
    return RET_OK;
}

ret_t table_client_set_on_copy(widget* table, std::function<ret_t(table_rows)> handler) {
    auto* t = live_as<table_widget>(table);
    if (t == nullptr) return RET_BAD_PARAMS;
    t->copy = std::move(handler);
    return RET_OK;
}

widget* table_row_cast(widget* w) {
    for (widget_state* state = live(w); state != nullptr; state = state->parent)
        if (state->parent != nullptr && dynamic_cast<table_widget*>(state->parent->w) != nullptr)
            return handle_of(state);
    return nullptr;
}

int64_t table_row_index(const widget* row) {
    const table_widget* t = table_of(live(row));
    return t == nullptr ? -1 : t->index_of(live(row));
}

bool table_row_chosen(const widget* row) {
    const table_widget* t = table_of(live(row));
    const auto chosen = t == nullptr ? std::nullopt : t->chosen();
    const int64_t index = table_row_index(row);
    return chosen && index >= chosen->first && index <= chosen->last;
}
