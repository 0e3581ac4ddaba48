// When a widget counts, and the same in the user's words.
#pragma once

#include "session/field.h"

#include <cstdint>
#include <string>

inline constexpr int32_t no_value = -2; ///< equals no property

/// The widget is enabled while the property of a field that stands on the page has one of two values; without a
/// field always.
struct enable_rule {
    const field* what = nullptr;
    int32_t value = 0;
    int32_t or_value = no_value;
};
inline constexpr int32_t switched_on = -1; ///< as a rule's value: anything but 0

/// "仅自定义协议转换时有效", "仅启用接收滤波时有效", and "扩展帧滤波时无效" where one choice of several switches
/// off: from the rule and the choices (or the label) of the field that it names; empty without a field. Any thread.
std::string rule_text(const enable_rule& rule);
