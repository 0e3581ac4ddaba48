// A table that grows at its end. GUI thread.
#pragma once

#include "toolkit/table_view/table_view.h"

#include <functional>
#include <string>
#include <vector>

/// A cell of a row and its text.
struct tail_cell {
    const char* name;
    std::string text;
    const char* state = ""; ///< of the style sheet
};

/// Scrolled to its end it shows what comes; scrolled away from it, it holds its place.
class tail_table {
  public:
    using fill = std::function<std::vector<tail_cell>(uint32_t index)>;
    /// Binds the table; `cells` answers what stands in a row, nothing for a row that is gone.
    tail_table(widget* table, fill cells, std::function<ret_t(table_rows rows)> copy);

    /// Has `held` run when the cell of a row is held down for half a second.
    void on_hold(const char* cell, std::function<ret_t(uint32_t index)> held);

    /// There are so many rows now.
    void show(std::size_t rows);
    /// What rows show has changed.
    void refill() { table_client_set_rows(table_, table_client_get_rows(table_)); }
    /// Forgets the rows and what was chosen.
    void clear();
    std::optional<table_rows> chosen() const { return table_client_chosen(table_); }

  private:
    widget* const table_;
    uint32_t seen_ = 0; ///< rows below the first one that shows, when the end showed last
};
