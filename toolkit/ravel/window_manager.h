// Windows and dialogs. There is one native window; a window covers it, a dialog is a card over a dimmed backdrop,
// and only the top one gets input. GUI thread only.
#pragma once

#include "toolkit/ravel/widget.h"

/// The root of all windows. Never null after tk_init.
widget* window_manager();

/// Opens the window whose layout is ui/NAME.ui of the theme, on top, and closes `to_close` (null: none) in the same
/// step. Null when the layout is missing or broken; the log then names file, line and reason.
widget* window_open_and_close(const char* name, widget* to_close);
/// The same without closing anything.
widget* window_open(const char* name);

/// Begins to read a layout, a window's or an included one's, on a thread of its own, while the caller does
/// something else; what opens or includes it takes what was read.
void window_read_ahead(const char* name);

/// Why the last window_open failed, with file and line; empty after success.
std::string window_open_error();

/// Closes at once, without asking. Ends the loop of a modal dialog with its quit code.
ret_t window_manager_close_window_force(widget* wm, widget* win);
/// Closes the top window (asks it first: request_close). RET_FAIL when only the first main window is left.
ret_t window_manager_back(widget* wm);
/// Closes everything above the first main window.
ret_t window_manager_back_to_home(widget* wm);
/// Brings `target` to the top; closes `current` when `close_current`.
ret_t window_manager_switch_to(widget* wm, widget* current, widget* target, bool close_current);
/// The top window or dialog; null when none is open.
widget* window_manager_get_top_window(widget* wm);
/// The topmost window that is not a dialog; null when none is open.
widget* window_manager_get_top_main_window(widget* wm);
/// The native window's title, as the system shows it. RET_BAD_PARAMS without a text.
ret_t window_manager_set_title(widget* wm, const char* title);
/// Empty without a window.
std::string window_manager_get_title(widget* wm);
ret_t window_manager_set_cursor(widget* wm, const char* name);

bool widget_is_dialog(const widget* w);
/// Runs a dialog until it quits or is closed; returns its quit code (0 when it was closed otherwise). The only
/// nested event loop there is.
uint32_t dialog_modal(widget* dialog);
/// Ends a dialog with `code`: a modal one's dialog_modal returns it, and the card is closed and destroyed.
ret_t dialog_quit(widget* dialog, uint32_t code);
/// Whether Esc may close a dialog (starts true when the layout's "esc_closes" is not false).
ret_t dialog_set_esc_closes(widget* dialog, bool closes);
