// The table of records: newest on top, rows to be chosen, copied and held. GUI thread.
#pragma once

#include "monitor/traffic.h"
#include "toolkit/ravel/widget.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

/// The table of one opening of the page; it must not outlive the traffic.
class data_table {
  public:
    /// Binds the table widget of a page; `copied` is called when rows have been copied, with how many of the chosen
    /// ones (data_copy_max at most).
    data_table(traffic& from, widget* table, std::function<void(uint32_t copied, uint32_t chosen)> copied);
    data_table(const data_table&) = delete;
    data_table& operator=(const data_table&) = delete;

    /// Something was recorded: the table has as many rows as there are records. Scrolled away from its top it goes
    /// on showing the records that it shows.
    void refresh();
    /// Drops all records.
    void clear();

  private:
    bool record_at(uint32_t index, traffic_record* into) const { return traffic_.numbered(shown_ - index, into); }
    ret_t fill(uint32_t index, widget* row);
    ret_t bind_row(widget* row);
    ret_t copy(uint32_t first, uint32_t last);

    traffic& traffic_;
    widget* table_;
    std::function<void(uint32_t, uint32_t)> copied_;
    uint64_t shown_ = 0;                           ///< the newest record when the table was refreshed last
    std::map<const widget*, traffic_record> rows_; ///< what each row shows
    traffic_record held_;                          ///< under the pointer when it went down
};

/// Rows that are copied at most: a text of about 3 MB.
inline constexpr uint32_t data_copy_max = 20000;
/// What the page says for a while when rows were copied.
struct copied_words {
    std::string text;
    const char* style; ///< state of the style sheet
};
/// `copied` of `chosen` rows went to the clipboard. Any thread.
copied_words data_copied_words(uint32_t copied, uint32_t chosen);
