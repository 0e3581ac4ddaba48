// The way from the home page to the data page: read the module's configuration first, then check the UART rates.
#pragma once

#include "toolkit/ravel/widget.h"

#include <cstdint>

/// The press of "button_data": a message when the chosen family is not connected; for a family with a data page the
/// read whose finish opens it; nothing more for the others. GUI thread.
ret_t data_monitor_pressed(widget* home);

enum class monitor_answer : uint8_t {
    home,    ///< nobody asked for the data page
    open,    ///< it may be opened
    refused, ///< a UART rate is one that the evaluation board cannot use
};
/// What "ok" of the finished progress window leads to; takes the request back. GUI thread.
monitor_answer data_monitor_finish();
/// Takes the request back: another run begins, or its window was left otherwise. GUI thread.
void data_monitor_forget();
/// Opens the message of a refusal. GUI thread.
ret_t data_monitor_show_refusal();
