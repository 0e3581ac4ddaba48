// Names of what CAN traffic consists of: a value is a name's place in its table.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

using name_table = std::span<const char* const>;

inline constexpr const char* channel_names[] = {"uart1-can1", "uart1-can2", "uart2-can2", "spi1-can1", "spi1-can2"};
inline constexpr const char* format_names[] = {"标准帧", "扩展帧"};
inline constexpr const char* protocol_names[] = {"can", "canfd"};      ///< in records
inline constexpr const char* protocol_page_names[] = {"CAN", "CANFD"}; ///< where one is chosen
inline constexpr const char* direction_names[] = {"tx", "rx"};
inline constexpr const char* check_names[] = {"不带校验", "带校验"};

inline constexpr const char* unknown_name = "未知";

/// The name of a value; unknown_name for one that has none. Any thread.
const char* name_of(name_table table, uint32_t value);
/// The value of a name, which is compared as it stands; -1 for a text that is none. Any thread.
int32_t value_of(name_table table, std::string_view name);
