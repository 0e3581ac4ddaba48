// Windows by name: opened, replaced, switched to and closed over the toolkit's window manager. GUI thread only.
//
// All operations answer a result code: RET_BAD_PARAMS for a missing or empty name, RET_FAIL for a window that
// cannot be made or is not there. Never call one that opens a window while holding a lock: a modal dialog runs the
// event loop.
#pragma once

#include "toolkit/ravel/widget.h"

/// Binds a window's widgets right after it was created; `context` is what the opener passed (null: nothing).
using window_init = ret_t (*)(widget* win, const void* context);

/// Makes a window known by its layout's name, with its init routine; one that is known already gets this routine.
/// A window that is not known opens with no bindings. RET_BAD_PARAMS for null. Before the window is opened first.
ret_t navigator_register_window(const char* name, window_init init);

/// Opens `target` on top. A dialog runs modally unless its "to_modal" property is false.
ret_t navigator_to(const char* target);
/// The same, with a context for the init routine. Returns the init routine's result, for a modal dialog its quit
/// code.
ret_t navigator_to_with_context(const char* target, const void* context);
/// Opens `target` and closes the current top main window in the same step.
ret_t navigator_replace(const char* target);
/// Brings `target` forward, closing the current top window if `close_current`; opens it when there is none.
ret_t navigator_switch_to(const char* target, bool close_current);
/// Closes the top window.
ret_t navigator_back();
/// Closes everything above the first main window.
ret_t navigator_back_to_home();
/// Closes `target` at once.
ret_t navigator_close(const char* target);
/// Asks `target` to close; its own handler decides.
ret_t navigator_request_close(const char* target);
/// Attaches a handler to the window manager. Always RET_OK.
ret_t navigator_on(event_type type, event_handler handler);
/// The worker under all of the above: a shown single-instance window of that name is closed first, `to_close`
/// (null: none) is closed in the same step.
ret_t navigator_window_open_and_close(const char* target, widget* to_close, const void* context);

/// The topmost window of that name, null when there is none.
widget* navigator_find(const char* target);
