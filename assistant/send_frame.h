// From what stands in the assistant's form to a frame. Any thread.
#pragma once

#include "serial/traffic_frame.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// A value that can be chosen.
struct assistant_option {
    uint32_t value;
    const char* text;
    bool operator==(const assistant_option&) const = default;
};
inline constexpr assistant_option assistant_channels[] = {{1, "UART1_TO_CANFD1"},
                                                          {2, "UART1_TO_CANFD2"},
                                                          {3, "UART2_TO_CANFD2"},
                                                          {4, "SPI1_TO_CANFD1"},
                                                          {5, "SPI2_TO_CANFD2"}};
inline constexpr assistant_option assistant_formats[] = {{0, "标准帧"}, {traffic_type_extended, "扩展帧"}};
inline constexpr assistant_option assistant_speeds[] = {{0, "CANFD不加速"}, {traffic_type_fd, "CANFD加速"}};
/// The text of a value; "未知" for one that cannot be chosen.
const char* assistant_option_text(std::span<const assistant_option> options, uint32_t value);

/// What stands in the form.
struct assistant_form {
    uint32_t channel = 1;    ///< see assistant_channels
    uint32_t format = 0;     ///< see assistant_formats
    uint32_t speed = 0;      ///< see assistant_speeds
    uint32_t identifier = 0; ///< 0 to assistant_identifier_max
    std::string data;        ///< as it was typed, UTF-8
    bool operator==(const assistant_form&) const = default;
};

inline constexpr std::size_t assistant_text_read = 64; ///< characters of the data that count

/// Highest identifier that a format takes. These are this program's bounds, not those of a bus.
constexpr uint32_t assistant_identifier_max(uint32_t format) { return format == 0 ? 4096 : 0x40000000; }
/// How many characters of data a speed takes, however many bytes they have.
constexpr uint32_t assistant_text_max(uint32_t speed) { return speed == 0 ? 16 : 128; }

/// The frame with its check value. Of the text the first 64 characters (of UTF-8) count: as many data bytes as
/// characters, the first of them made of pairs of hex digits, the others 0. A character that is no hex digit counts
/// as 0, and so does the second one of a pair that is not there. Empty for a channel that cannot be chosen.
traffic_wire assistant_frame(const assistant_form& form);

/// What is said beside the data while one types; empty when there is nothing to say.
std::string assistant_hint(std::string_view data);
