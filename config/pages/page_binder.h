// Pages as tables: one row per widget, one function that attaches and fills a page, one that handles what the user
// does. All families share it; what differs between them is a column or stands in page_scheme.
// GUI thread only.
#pragma once

#include "config/models.h"
#include "config/register_map.h"
#include "toolkit/core/object.h"
#include "toolkit/core/thread.h"
#include "toolkit/ravel/widget.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

struct choice_option {
    int32_t value;
    const char* text;
};

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
    caption,      ///< label that shows the translation of `key`
    custom,       ///< what `own` says
};
inline constexpr int row_kind_count = 11;

inline constexpr int32_t no_value = -2; ///< equals no property

/// The widget is enabled while the property `key` has one of two values; without a key always.
struct enable_rule {
    const char* key = nullptr;
    int32_t value = 0;
    int32_t or_value = no_value;
};
inline constexpr int32_t switched_on = -1; ///< as a rule's value: anything but 0

inline constexpr uint32_t never_refused = 256;
inline constexpr int32_t own_default = -1; ///< as a row's fallback: the default of its key

/// A property that is stored along when the row's own becomes `when`.
struct companion {
    const char* key = nullptr;
    int32_t when = 0;
    uint8_t value = 0;
};

struct kind_ops;

struct page_row {
    const char* name; ///< of the widget
    const char* key = nullptr;
    row_kind kind = row_kind::choice;
    std::span<const choice_option> options{};
    enable_rule enabled_when{};
    uint32_t refused_from = never_refused;  ///< the low byte of a value is refused from here on
    const char* refused_message = nullptr;  ///< console line for it
    const char* handler = nullptr;          ///< name in the console line when the widget cannot be read
    const char* failed_condition = nullptr; ///< the condition in that line
    void (*before_store)(widget* combo) = nullptr;
    int32_t fallback = own_default;    ///< shown while the property is missing
    int32_t shown_above = 0;           ///< the widget shows the property's value plus this
    bool raised_to_0 = false;          ///< a value below 0 is stored as 0 rather than refused
    const char* failed_name = nullptr; ///< in the console line of a store that fails; null: the key
    companion also{};
    const char* refreshes = nullptr; ///< row that is filled again after this one was changed
    bool hidden_when_disabled = false;
    const kind_ops* own = nullptr; ///< of a custom row
};

/// How a family's handlers work.
struct page_scheme {
    family of;
    std::span<const reg_field> (*map)();
    tk_object* (*props)();
    tk_mutex* (*lock)();                ///< held around a change; null: this family stores without a lock
    ret_t (*stored)(const char* key);   ///< brings the image up to date after a change; null: show_code encodes
    ret_t (*show_code)(widget* window); ///< refreshes the code view; called with the lock held
    bool numbers_by_text;               ///< spin boxes are read by their text, else by their value
    bool whole_values = false;          ///< bounds hold for a value as it stands, else for its low byte
};

struct page_table {
    const char* name; ///< of the page widget
    const char* init; ///< of the init routine, for console lines
    std::span<const page_row> rows;
    const page_scheme* scheme;
    const char* scroll_view = nullptr; ///< see scroll_attach
    const char* scroll_bar = nullptr;
};

/// Attaches options and handlers on the first call for a page widget, and fills it from the store on every call. A
/// missing page gives the console line of its init routine and RET_BAD_PARAMS.
ret_t page_init(const page_table& table, widget* page);
/// Names of rows (and scroll parts) whose widget is not on the page.
std::vector<std::string> page_missing(const page_table& table, widget* page);
/// Handles an event of a row's widget; page_init attaches it.
ret_t page_event(const page_table& table, const page_row& row, widget* page, const event& what);
