// The serial send assistant's dialog. GUI thread.
#pragma once

#include "assistant/serial_assistant.h"
#include "toolkit/ravel/widget.h"

#include <functional>
#include <string>

/// The module that the dialog is about.
struct assistant_device {
    device_session* session = nullptr; ///< whose port it uses, until the program ends; null: there is none yet
    std::string name;                  ///< model and port as shown; empty while it is not connected
};
/// What the dialog asks for when it opens. Before it is opened.
void serial_send_serve(std::function<assistant_device()> device);

/// Init routine of "serial_send": starts the assistant's threads, if they do not run yet, and binds the dialog.
/// RET_BAD_PARAMS for a missing window; RET_FAIL without threads (the dialog can be closed then).
ret_t serial_send_init(widget* win, const void* context);

/// Test aid: the assistant, which is made when it is asked for first and lives until the program ends.
serial_assistant& serial_send_assistant();
/// Test aid: ends the assistant and forgets it; the dialog must be closed.
void serial_send_forget();
