// The data page: CAN traffic of a module in transfer mode, live, and frames of one's own. GUI thread.
#pragma once

#include "monitor/traffic.h"
#include "toolkit/ravel/widget.h"

#include <functional>
#include <string>

/// The module that the page is about.
struct monitored_device {
    device_session* session = nullptr; ///< it must live until the program ends
    std::string name;                  ///< model and port as shown
};
/// What the page asks for when it opens, and reports when it has been left: `lost` says that the module has
/// vanished meanwhile. Before the page is opened.
void data_page_serve(std::function<monitored_device()> device, std::function<void(bool lost)> left);

/// Init routine of "data_page": starts the traffic and binds the page. RET_BAD_PARAMS for a missing window. Where
/// the traffic cannot be started the page says that it is not connected, and can be left.
ret_t data_page_init(widget* win, const void* context);

/// How long leaving takes: the module needs its time to be back in configuration mode. Tests shorten it.
uint32_t& data_page_leave_ms();
/// How long the page says that rows have been copied. Tests shorten it.
uint32_t& data_copied_ms();
/// Test aid: the traffic of the page; it is made when it is asked for first.
traffic& data_page_traffic();
/// Test aid: ends the traffic and forgets it; the page must be closed.
void data_page_forget();
