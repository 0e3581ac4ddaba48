// The B family's option lists; an option's value is its place in the list.
#pragma once

#include "session/field.h"

#include <array>

namespace vkt610b_options {

template <std::size_t N>
constexpr std::array<choice_option, N> listed(const char* const (&texts)[N]) {
    std::array<choice_option, N> out{};
    for (std::size_t i = 0; i < N; ++i) out[i] = {static_cast<int32_t>(i), texts[i]};
    return out;
}

inline constexpr auto modes = listed({"自定义转换", "自定义带校验转换"});
inline constexpr auto protocols = listed({"UART1", "UART1和UART2", "SPI"});
inline constexpr auto uart_rates =
    listed({"300",   "600",    "1.2k", "2.4k", "4.8k",   "9.6k",   "14.4k", "19.2k", "38.4k",
            "57.6k", "115.2k", "128k", "256k", "460.8k", "921.6k", "1M",    "1.5M",  "2M",
            "2.5M",  "3M",     "3.5M", "4M",   "5M",     "6M",     "7M"});
inline constexpr auto nominal_rates =
    listed({"40k", "50k", "80k", "100k", "125k", "200k", "250k", "400k", "500k", "800k", "1M"});
inline constexpr auto data_rates = listed({"400k", "500k", "800k", "1M", "2M", "4M", "5M"});
inline constexpr auto bus_modes = listed({"CAN模式", "CAN FD模式", "CAN+CAN FD 模式"});
inline constexpr auto filter_modes = listed({"标准帧滤波", "扩展帧滤波", "标准帧、扩展帧滤波"});

static_assert(uart_rates.size() == 25 && nominal_rates.size() == 11 && data_rates.size() == 7);

/// Filter modes that the pages' enable rules name.
inline constexpr int32_t filter_standard = 0;
inline constexpr int32_t filter_extended = 1;
inline constexpr int32_t filter_both = 2;

} // namespace vkt610b_options

/// The pages, in the order of their tabs; two of each channel, and the values that the calculator of both stores.
namespace vkt610b_page {
enum : uint8_t { change, spi, uart, canfd = uart + 2, timing = canfd + 2 };
inline constexpr const char* names[] = {"转换参数", "SPI", "UART1", "UART2", "CAN FD1", "CAN FD2", "自定义位定时"};
} // namespace vkt610b_page
