// The message window.
#pragma once

#include "toolkit/ravel/widget.h"

#include <string>

/// Init routine of "err_display": shows `context`, the message (UTF-8, zero-ended), and binds "ok". RET_BAD_PARAMS
/// for a missing window. GUI thread.
ret_t err_display_init(widget* win, const void* context);

/// Opens the message now; returns when the user has closed it. GUI thread, no lock held.
ret_t err_display_show(const char* message);
/// Opens the message from the GUI thread's queue. Any thread.
ret_t err_display_post(const std::string& message);

/// What a command answers that needs a connected module.
inline constexpr const char* text_connect_first = "请先连接设备";
/// The working directory cannot be written.
inline constexpr const char* text_no_permission = "无权限，请使用管理员权限运行程序";
