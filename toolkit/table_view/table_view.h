// The table widget: any number of rows, of which only the visible ones exist. GUI thread only.
//
// In a layout it is a custom widget of class "table_client" whose property "row_layout" names the layout of one row
// (ui/NAME.ui, root a QWidget; its height is the row's). Rows are reused as the table scrolls. For what changes
// with every filling a row has labels with the style class "cell" (toolkit/ravel/layouts.md).
//
// Its property "header" names a widget with the columns' captions, in a box of its own above the table. Such a
// table has rows as wide as their longest content: a cell without a maximum width (the last one) is as wide as the
// longest text that was seen in it since the table was empty, and what does not fit scrolls sideways, the header
// with it, by the bar, the wheel with Shift, and Left and Right. Without that property a row is as wide as the
// view.
//
// Whatever asks for a refresh (new rows, another place, another size) asks for one filling of the visible rows. The
// first one after a quiet time comes with the next turn of the event loop; the next ones keep at least
// table_rows_pace_ms where rows came or changed, so that however often they do, the table costs the same, and
// table_fill_pace_ms where the user moved something.
#pragma once

#include "toolkit/ravel/widget.h"

#include <cstdint>
#include <functional>
#include <optional>

/// Shortest time between two fillings: as fast as the eye follows.
constexpr int table_fill_pace_ms = 34;
/// And for new content, which nobody reads faster.
constexpr int table_rows_pace_ms = 66;

/// Fills row `index` (from 0 at the top) into the row widget; its children are found by name.
using table_row_handler = std::function<ret_t(uint32_t index, widget* row)>;

/// Makes the class known to layouts. A second call does nothing. Before the first layout that uses it is opened.
ret_t table_view_register();

/// How many rows there are, and that any of them may have changed. The place that is shown stays.
/// RET_BAD_PARAMS when `table` is no table.
ret_t table_client_set_rows(widget* table, uint32_t rows);
uint32_t table_client_get_rows(const widget* table);
/// `count` rows were inserted above all others, so there are as many more, up to `at_most`: beyond that the last
/// ones went. What is shown stays in its place, under
/// other indexes; a table that is scrolled to its top stays there and shows the new rows. RET_BAD_PARAMS when
/// `table` is no table.
ret_t table_client_rows_inserted(widget* table, uint32_t count, uint32_t at_most = UINT32_MAX);
/// The row at the top of what is shown (after the filling that is asked for); 0 without rows or when `table` is no
/// table.
uint32_t table_client_first_row(const widget* table);
/// Brings row `index` to the top with the next filling, as far as there are rows below it. RET_BAD_PARAMS when
/// `table` is no table.
ret_t table_client_show_row(widget* table, uint32_t index);
/// Fills the visible rows now, whatever the pace. RET_FAIL while the table is not on screen: it fills itself when
/// it comes there. RET_BAD_PARAMS when `table` is no table.
ret_t table_client_fill(widget* table);

/// What fills a row that is visible. RET_BAD_PARAMS when `table` is no table.
ret_t table_client_set_on_load_data(widget* table, table_row_handler handler);

/// What is called once for each row widget that is made. The index is the one it is made for; ask table_row_index
/// later on, as row widgets are reused. RET_BAD_PARAMS when `table` is no table.
ret_t table_client_set_on_create_row(widget* table, table_row_handler handler);

/// Which rows can be chosen.
enum class table_choice : uint8_t { none, one, range };
/// Rows `first` to `last`, both included.
struct table_rows {
    uint32_t first;
    uint32_t last;
    bool operator==(const table_rows&) const = default;
};

/// What can be chosen from now on; none is chosen then. Pointer, arrows, PageUp, PageDown, Home and End choose and
/// show a row; with Shift, and while the pointer is dragged, a range grows; Ctrl+A chooses all of a range's rows. A
/// table without rows refuses the focus then, and one with rows marks its first visible row when the keyboard comes
/// to it. Which rows are chosen is for the row filler to show (table_row_chosen); it runs again when that changes
/// and when the focus comes or goes. Chosen rows keep their content when rows are inserted above them, and are cut
/// with the table. RET_BAD_PARAMS when `table` is no table.
ret_t table_client_set_choice(widget* table, table_choice what);
/// Chooses rows, as far as there are any; nothing: none. The place that is shown stays. RET_BAD_PARAMS when `table`
/// is no table.
ret_t table_client_choose(widget* table, std::optional<table_rows> rows);
std::optional<table_rows> table_client_chosen(const widget* table);
/// Called with the row that the arrows moved last when Enter is pressed or it is clicked twice. RET_BAD_PARAMS when
/// `table` is no table.
ret_t table_client_set_on_take(widget* table, std::function<ret_t(uint32_t index)> handler);
/// Called with what is chosen at Ctrl+C. RET_BAD_PARAMS when `table` is no table.
ret_t table_client_set_on_copy(widget* table, std::function<ret_t(table_rows rows)> handler);

/// The row widget that `w` is or stands in; null when it stands in none.
widget* table_row_cast(widget* w);
/// Which row a row widget shows now; -1 when it is none.
int64_t table_row_index(const widget* row);
/// Whether the row that a row widget shows now is chosen.
bool table_row_chosen(const widget* row);
