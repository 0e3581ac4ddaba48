// When a field that is switched off counts, in the user's words.
#pragma once

#include "fields/page_binder.h"

/// "仅自定义协议转换时有效", "仅启用接收滤波时有效", and "扩展帧滤波时无效" where one choice of several switches
/// off: from the row's enable rule and the choices (or the label) of the field that it names; empty without a rule.
/// Any thread.
std::string rule_text(const page_row& row);
