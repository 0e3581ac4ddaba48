// The table widget: any number of rows, of which only the visible ones exist. GUI thread only.
//
// In a layout it is a custom widget of class "table_client" whose property "row_layout" names the layout of one row
// (ui/NAME.ui, root a QWidget; its height is the row's). Rows are reused as the table scrolls.
#pragma once

#include "toolkit/ravel/widget.h"

#include <cstdint>
#include <functional>

/// Fills row `index` (from 0 at the top) into the row widget; its children are found by name.
using table_row_handler = std::function<ret_t(uint32_t index, widget* row)>;

/// Makes the class known to layouts. A second call does nothing. Before the first layout that uses it is opened.
ret_t table_view_register();

/// How many rows there are. The place that is shown stays; several calls before the next paint fill rows once.
/// RET_BAD_PARAMS when `table` is no table.
ret_t table_client_set_rows(widget* table, uint32_t rows);
uint32_t table_client_get_rows(const widget* table);
/// Brings row `index` to the top with the next paint, as far as there are rows below it. RET_BAD_PARAMS when
/// `table` is no table.
ret_t table_client_show_row(widget* table, uint32_t index);

/// What fills a row that comes into view. RET_BAD_PARAMS when `table` is no table.
ret_t table_client_set_on_load_data(widget* table, table_row_handler handler);

/// What is called once for each row widget that is made. The index is the one it is made for; ask table_row_index
/// later on, as row widgets are reused. RET_BAD_PARAMS when `table` is no table.
ret_t table_client_set_on_create_row(widget* table, table_row_handler handler);

/// The row widget that `w` is or stands in; null when it stands in none.
widget* table_row_cast(widget* w);
/// Which row a row widget shows now; -1 when it is none.
int64_t table_row_index(const widget* row);
