// Widgets: found by name, read and set through handles. GUI thread only; a call from any other thread is logged as
// an error and, in debug builds, aborts the program.
//
// Setting anything from code never fires a handler. What the user does (click, type, pick, step, scroll) always
// does.
#pragma once

#include "toolkit/core/result.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// A widget or window. Handles stay valid until the widget is destroyed. One of a destroyed widget is never given
/// to another: functions log it as an error that names them, and answer as for a widget that is missing.
struct widget;

enum class event_type : uint8_t {
    click,          ///< pressed and released inside, or pressed by key
    value_changed,  ///< the user changed the value: combo (picked or, if editable, typed and left), check, switch,
                    ///< tab button (also the one going off), scroll bar, edit (left or Enter after a change)
    value_changing, ///< every keystroke of an edit, every keystroke or step of a spin box
    focus,          ///< got the keyboard focus; runs before the text is selected
    blur,           ///< lost the keyboard focus to another widget of the program
    pointer_down,
    pointer_up,
    pointer_enter, ///< the pointer came onto it, also onto one that is disabled
    pointer_leave,
    text_hover, ///< another character of a mledit is under the pointer, or none
    text_click, ///< a mledit was clicked at a character, once and without a drag
    wheel,
    move,          ///< moved inside its parent
    resize,        ///< width or height changed
    request_close, ///< to a window: somebody asks it to close
    long_press, ///< the left button was held on it for its time (widget_set_long_press_ms): once a press, not after
                ///< the pointer left it; the click comes all the same when it is released
    drop,       ///< to the top window: a file was dropped somewhere on the program's window
};

struct event {
    event_type type = event_type::click;
    widget* target = nullptr;
    int32_t delta = 0;   ///< wheel: positive when turned away from the user
    int32_t offset = -1; ///< text_hover, text_click: the character as a byte of the text's UTF-8 form; -1: none
    const char* path = nullptr; ///< drop: the file's whole path, UTF-8; for as long as the handler runs
};
/// Answers RET_OK to let the toolkit go on. A request_close handler that does not answer RET_OK keeps the window
/// open.
using event_handler = std::function<ret_t(const event&)>;

// Looking builds nothing: a page of a page set that has its content from another file is empty until it is shown
// or built (widget_build), and names in it are not found before.

/// First widget named `name` below `root` (not root itself), breadth first; null when there is none or root is
/// null.
widget* widget_lookup(widget* root, const char* name);
/// The same for a widget that must be there. A missing one is logged as an error, with its name and the window's,
/// and ends a debug build; a release build goes on with null. Not for names that a layout may leave out.
widget* widget_need(widget* root, const char* name);
/// For tests: what is called, with the line that was logged, instead of ending a debug build. Empty restores that.
void widget_need_set_hook(std::function<void(const std::string& text)> hook);
/// Builds `w`, if it is a page that was never shown, and all in it that will show when `w` does. pages_set_active
/// and widget_set_visible do it for what comes on screen. RET_BAD_PARAMS without a widget.
ret_t widget_build(widget* w);
/// Direct child named `name`; null when there is none. On the window manager: the topmost window of that name.
widget* widget_child(widget* parent, const char* name);
/// Calls `visit` for every named widget below `root`, parents before children, in layout order, until it answers
/// other than RET_OK; returns that answer.
ret_t widget_foreach(widget* root, const std::function<ret_t(widget*)>& visit);
/// The name from the layout, empty when it has none. Type: "combo_box", "check_button", "edit", ...
/// (docs/driving.md).
std::string widget_name(const widget* w);
std::string widget_type(const widget* w);
/// The window (or dialog) that the widget stands in; itself for a window.
widget* widget_get_window(widget* w);

/// Attaches a handler; handlers run in the order of attaching. Returns an id above 0, 0 for bad parameters.
uint32_t widget_on(widget* w, event_type type, event_handler handler);
ret_t widget_off(widget* w, uint32_t id);
/// How long the pointer is held on `w` until its long_press handlers run: 1 to 60000 ms; 1000 at first.
/// RET_BAD_PARAMS for another time.
ret_t widget_set_long_press_ms(widget* w, uint32_t ms);
/// Runs the handlers of an event that no user caused (for example request_close).
ret_t widget_dispatch_simple_event(widget* w, event_type type);

// Text. A combo box's text is that of its selected option, or what was typed into an editable one; a spin box's the
// digits shown; a button's its label without the mnemonic mark.
ret_t widget_set_text_utf8(widget* w, const char* text);
std::string widget_get_text_utf8(const widget* w);
// Value. Combo box: value of the selected option (setting one that no option has selects nothing and shows nothing;
// reading then gives -1). Check button, switch, tab button: 0 or 1 (setting a tab button to 1 takes its siblings
// off). Spin box, scroll bar, progress bar, edit: the number. Pages: index of the shown page.
ret_t widget_set_value_int(widget* w, int32_t value);
int32_t widget_get_value_int(const widget* w);
ret_t widget_set_visible(widget* w, bool visible);
/// Whether it shows on screen: it and all around it are visible.
bool widget_get_visible(const widget* w);
/// Own flag only; a disabled widget is greyed and cannot be reached by Tab.
ret_t widget_set_enable(widget* w, bool enable);
/// Whether it reacts: it and all around it are enabled.
bool widget_get_enable(const widget* w);
ret_t widget_set_focused(widget* w);
bool widget_get_focused(const widget* w);
/// Marks a field as refused (red frame, `why` as its tooltip) until called with null. `line` stands in small
/// letters below the field, over what is there: what should have come; null: nothing.
ret_t widget_set_refused(widget* w, const char* why, const char* line = nullptr);
bool widget_get_refused(const widget* w);
std::string widget_get_refused_line(const widget* w);
/// Switches a state of the style sheet on or off, for example "failed" (an attribute selector [state="failed"]).
/// Empty text removes it.
ret_t widget_set_style_state(widget* w, const char* state);
/// Marks a field (combo box, edit, spin box, check button, switch) by a quiet edge at its left, and a tab button by
/// a dot, whether or not it is enabled or refused; nothing moves at that. RET_BAD_PARAMS for what can carry none.
ret_t widget_set_marked(widget* w, bool marked);
bool widget_get_marked(const widget* w);
ret_t widget_set_tooltip(widget* w, const char* text);
/// Who adds lines to a tooltip; they stand in this order.
enum class tooltip_part : uint8_t {
    value, ///< what is to be said of the value
    rule,  ///< when it counts
};
/// Lines below the layout's tooltip, or below why the value was refused, until called with null or an empty text
/// for the same part.
ret_t widget_set_tooltip_more(widget* w, const char* text, tooltip_part part = tooltip_part::value);

// Properties by name: "x", "y", "w", "h" (pixels in the parent), "window_x", "window_y" (pixels in the native
// window; read only), "text_w" (pixels that a label's text needs; read only), "value", "enable", "visible", and any
// dynamic property of the layout ("single_instance", "to_modal", "clock", ...). Getters answer `fallback` when
// there is none.
int32_t widget_get_prop_int(const widget* w, const char* name, int32_t fallback);
bool widget_get_prop_bool(const widget* w, const char* name, bool fallback);
std::string widget_get_prop_str(const widget* w, const char* name, const char* fallback);
ret_t widget_set_prop_int(widget* w, const char* name, int32_t value);
ret_t widget_set_prop_bool(widget* w, const char* name, bool value);
ret_t widget_set_prop_str(widget* w, const char* name, const char* value);

// Combo boxes. Options keep their order, values may be in any. None is chosen by itself. An open popup stays open.
ret_t combo_box_append_option(widget* combo, int32_t value, const char* text);
/// Removes all options and the selection. An editable combo keeps its text.
ret_t combo_box_reset_options(widget* combo);
/// Replaces all options in one step: the chosen text stays chosen while it is still among them (an editable combo
/// keeps its text in any case), and a popup that is open shows the new list without closing.
ret_t combo_box_set_options(widget* combo, const std::vector<std::pair<int32_t, std::string>>& options);
int32_t combo_box_count_options(const widget* combo);
bool combo_box_has_option_text(const widget* combo, const char* text);

/// A ground behind a part of a mledit's text.
enum class text_mark_kind : uint8_t {
    differs, ///< it is not what it is compared with
    at_hand, ///< it belongs to what the user points at
};
struct text_mark {
    int32_t offset = 0; ///< bytes of the text's UTF-8 form, as widget_get_text_utf8 gives it
    int32_t length = 0; ///< likewise
    text_mark_kind kind = text_mark_kind::differs;
    bool operator==(const text_mark&) const = default;
};
/// Replaces all marks; a later one covers an earlier one, and what is beyond the text is cut off. Text, selection
/// and scroll place stay as they are; another text takes the marks away. RET_BAD_PARAMS for what is no mledit, and
/// for an offset or a length below 0.
ret_t mledit_set_marks(widget* mledit, const std::vector<text_mark>& marks);
std::vector<text_mark> mledit_get_marks(const widget* mledit);
/// The character under the pointer, as a byte of the text; -1: none.
int32_t mledit_get_hovered(const widget* mledit);

/// Limits the length of an edit's text, in characters. `min` is kept for the layout's hint only.
ret_t edit_set_text_limit(widget* edit, uint32_t min, uint32_t max);
/// Makes an edit one of whole numbers: what cannot become a number from `min` to `max` by typing on cannot be
/// typed, the Up and Down keys change it by `step` (0: not at all), and when the edit is left, or at Enter, an
/// unfinished text becomes the nearest number, an empty one what stood there before. What the program sets is shown
/// as it is. RET_BAD_PARAMS when `min` > `max`, `step` < 0, or `edit` is none.
ret_t edit_set_int_limit(widget* edit, int32_t min, int32_t max, int32_t step);
/// The number that an edit shows; 0 when it shows none.
int32_t edit_get_int(const widget* edit);
/// Lowest and highest value of a spin box or scroll bar.
ret_t widget_set_range(widget* w, int32_t min, int32_t max);

/// Shows page `index` (from 0) of a page set, or the page of a name; builds it when the page set is on screen.
/// RET_FAIL when there is no such page.
ret_t pages_set_active(widget* pages, uint32_t index);
ret_t pages_set_active_by_name(widget* pages, const char* name);

/// Moves a scroll view's content to `x`, `y` pixels (held to what the content allows).
ret_t scroll_view_set_offset(widget* scroll_view, int32_t x, int32_t y);
int32_t scroll_view_get_offset_x(const widget* scroll_view);
int32_t scroll_view_get_offset_y(const widget* scroll_view);
/// The content's width (or height) in pixels; it is never narrower than the view itself.
ret_t scroll_view_set_virtual_w(widget* scroll_view, int32_t w);
ret_t scroll_view_set_virtual_h(widget* scroll_view, int32_t h);

/// Puts text on the system's clipboard.
ret_t clip_board_set_text(const char* text);
/// Text on the system's clipboard, empty when there is none.
std::string clip_board_get_text();
