// Pages as tables: one row per widget, one function that attaches and fills a page, one that handles what the user
// does. All families share it; what differs between them is a column. GUI thread only.
#pragma once

#include "fields/rule_text.h"
#include "session/dev_obj.h"
#include "toolkit/ravel/widget.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

enum class row_kind : uint8_t {
    choice,       ///< combo box; the option's value is stored
    choice_text,  ///< combo box; the option's text is stored (a yes/no text)
    still_choice, ///< combo box with nothing to choose and nothing to store
    check,        ///< check box
    number,       ///< spin box
    hex_text,     ///< edit of four hex pairs, stored as text and formed when it is left
    hex_pair,     ///< edit of one hex pair, stored as text
    hex_word,     ///< edit of four hex pairs, stored as a number and filtered while one types
    hex_number,   ///< edit of one hex pair, stored as a number and filtered while one types
    caption,      ///< label that shows the translation of `text`
    rule_hint,    ///< label that says when its card counts, while the row's rule does not hold
    custom,       ///< what `own` says
};
inline constexpr int row_kind_count = 12;

/// A property that is stored along when the row's own becomes `when`.
struct companion {
    const field* what = nullptr;
    int32_t when = 0;
    uint8_t value = 0;
};

/// What a row shows while its property is missing.
enum class missing_value : uint8_t {
    as_default,
    as_packed, ///< the field's fallback
    as_zero,
};

struct kind_ops;
struct bound_row;

struct page_row {
    const char* name; ///< of the widget
    const field* what = &no_field;
    row_kind kind = row_kind::choice;
    enable_rule enabled_when{};
    bool hidden_when_disabled = false;
    const char* refused_as = nullptr; ///< name in the console line of a refused value; null: the key
    missing_value missing = missing_value::as_default;
    companion also{};
    const field* refreshes = nullptr; ///< its row is filled again after this one was changed
    void (*before_store)(const bound_row& at) = nullptr;
    const char* text = nullptr;    ///< of a caption
    const kind_ops* own = nullptr; ///< of a custom row
};

/// What the console says when an event comes without its widget, which nothing in the program brings about.
struct lost_line {
    const char* page;
    const char* widget;
    event_type what;
    const char* text;
    const char* handler = nullptr; ///< with a routine's name, `text` is the condition that failed in it
};

/// How a page's numbers are read and judged, and what goes wrong on it.
struct page_rules {
    bool numbers_by_text = false; ///< spin boxes are read by their text, else by their value
    bool bounded = false;         ///< a number above its field's highest is refused, and the console says so
    bool boxes_bounded = false;   ///< the same for spin boxes alone, by the value as it stands and without a line
    bool whole_values = false;    ///< bounds hold for a value as it stands, else for its low byte
    bool raised_to_0 = false;     ///< a value below 0 is stored as 0 rather than refused
    bool names_widgets = false;   ///< the console names a store that failed after the widget, else after the key
    std::span<const lost_line> lost{};
};

/// Where a page stands that is one of several within a tab's page.
struct page_inside {
    const char* page = nullptr;     ///< the tab's page; null: this one is it
    const char* page_set = nullptr; ///< in it
    const char* button = nullptr;   ///< its tab button there
};

struct page_table {
    const char* name; ///< of the page widget; with "_init" behind it, of its init routine in console lines
    std::span<const page_row> rows;
    page_rules rules{};
    const char* scroll_view = nullptr; ///< see scroll_attach
    const char* scroll_bar = nullptr;
    page_inside inside{};
};

/// While one lives, filling a page and coming to a field leave what was refused and why as it stands, unless
/// another value has come into its place: the user is being led there.
class refused_kept {
  public:
    refused_kept();
    ~refused_kept();
    refused_kept(const refused_kept&) = delete;
    refused_kept& operator=(const refused_kept&) = delete;
};

/// Called when the user comes to a field or leaves it, by the pointer or by the keyboard. One for the program; a
/// null function: nobody.
using field_pointed = std::function<void(dev_obj& dev, const field& what, event_type how)>;
void page_on_pointed(field_pointed to);

/// Attaches options and handlers on the first call for a page widget, and fills it from the device on every call.
/// The device must outlive the page. A missing page gives the console line of its init routine and RET_BAD_PARAMS.
ret_t page_init(const page_table& table, widget* page, dev_obj& dev);
/// The same as a function of its own, for a page's tab.
template <const page_table& Table>
ret_t page_init_of(widget* page, dev_obj& dev) {
    return page_init(Table, page, dev);
}
/// Names of rows (and scroll parts) whose widget is not on the page.
std::vector<std::string> page_missing(const page_table& table, widget* page);
/// Handles an event of a row's widget; page_init attaches it.
ret_t page_event(const page_table& table, const page_row& row, widget* page, dev_obj& dev, const event& what);
