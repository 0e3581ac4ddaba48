// Choices that families with a 60-byte image share: values are the module's own codes.
#pragma once

#include "session/field.h"

namespace options {

// Not in the order of the codes: 1 is 115200 and codes fall as rates rise up to there.
inline constexpr choice_option uart_rates[] = {
    {11, "300"},    {10, "600"},    {9, "1200"},  {8, "2400"},   {7, "4800"},    {6, "9600"},    {5, "14400"},
    {4, "19200"},   {3, "38400"},   {2, "57600"}, {1, "115200"}, {12, "128000"}, {13, "230400"}, {14, "256000"},
    {15, "460800"}, {16, "921600"}, {17, "1M"},   {18, "1.5M"},  {19, "2M"},
};
inline constexpr choice_option modes[] = {{1, "透明转换"}, {2, "透明带标识转换"}, {3, "自定义协议转换"}};
inline constexpr choice_option directions[] = {{0, "双向"}, {1, "仅 SPI/UART 转 CAN"}, {2, "仅 CAN 转 SPI/UART"}};
inline constexpr choice_option uart_parities[] = {{0, "无校验"}};
inline constexpr choice_option uart_controls[] = {{0, "无"}};
inline constexpr choice_option bit_orders[] = {{0, "MSB"}};

/// Conversion modes that the pages' enable rules name.
inline constexpr int32_t mode_transparent = 1;
inline constexpr int32_t mode_with_id = 2;
inline constexpr int32_t mode_custom = 3;

} // namespace options

/// The pages of these families, in the order of their tabs.
namespace f7_page {
enum : uint8_t { change, spi, uart, can };
inline constexpr const char* names[] = {"转换参数", "SPI", "UART", "CAN"};
} // namespace f7_page
