// The stack of windows inside the one native window. For toolkit/ravel only. GUI thread only.
#pragma once

#include "toolkit/ravel/qt/detail.h"

#include <QEventLoop>

/// A dialog that dialog_modal waits for.
struct modal_run {
    QEventLoop loop;
    uint32_t code = 0;
};

/// Makes the native window, hidden, `width` by `height` pixels large. Destroyed by destroy_native_window.
void create_native_window(int width, int height, const QString& title);
void destroy_native_window();
/// The native window; null before tk_init and after tk_exit.
QWidget* native_window();
/// Whether the native window has been painted since it was made.
bool native_window_painted();
void show_native_window();

std::vector<widget_state*> stacked_windows_topmost_first();
/// Makes an empty, hidden root inside the native window for a layout to fill. Destroying its shell_of_root undoes
/// it.
QWidget* make_root(bool dialog);
QWidget* shell_of_root(QWidget* root);
/// Puts a window or dialog that was just built on top of the stack and shows it.
void push_window(widget_state* state);
/// Takes a window off the stack; a modal dialog's loop ends with `code`. It is destroyed once nothing can be using
/// it.
void close_window(widget_state* state, uint32_t code);
/// Asks the window's handlers; closes it when none objects (the last main window: ends the main loop). RET_FAIL
/// when it stays.
ret_t request_close_window(widget_state* state);
/// Ends all modal dialogs (each with 0) and the main loop.
void end_all_loops();
/// True from end_all_loops until the next create_native_window.
bool loops_ended();
/// Brings a window of the stack to the top.
void raise_window(widget_state* state);
/// Waits until a dialog of the stack is closed; answers its quit code.
uint32_t run_modal(widget_state* state);
/// What covers the stack below a dialog (its backdrop), or the window itself.
QWidget* shell_of(const widget_state* state);
