// From what stands in the send form to a frame. Any thread.
#pragma once

#include "serial/traffic_frame.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// What the selectors of the send form say.
struct send_parameters {
    uint32_t channel = 0;  ///< 0 to 4
    uint32_t format = 0;   ///< 0 standard, 1 extended
    uint32_t protocol = 0; ///< 0 CAN, 1 CAN FD
    uint32_t length = 0;   ///< data bytes, 0 to 64
    bool check = false;    ///< with a check value
};

inline constexpr std::size_t send_text_max = 200; ///< bytes of a text that are read

inline constexpr const char* text_bad_extended = "当前can类型为扩展帧，id不能超过0x1FFFFFFF";
inline constexpr const char* text_bad_standard = "当前can类型为标准帧，id不能超过0x7FF";
inline constexpr const char* text_bad_data = "数据有误，请检查数据格式和范围。支持格式：1、aabb 2、aa bb";

/// Fills `request` from the parameters, the identifier (hexadecimal; "0x" and blanks around it are allowed) and the
/// data: the first `length` bytes, written "aabb" or "aa bb". Null, or what the user is told; `request` is
/// untouched then.
const char* compose_request(const send_parameters& with, std::string_view identifier, std::string_view data,
                            traffic_request* request);

/// Identifier of a text; false when it is no hexadecimal number of at most 32 bits.
bool compose_identifier(std::string_view text, uint32_t* identifier);
/// The first `data.size()` bytes of a text in one of the two forms; what stands behind them does not matter. False
/// when there are fewer.
bool compose_data(std::string_view text, std::span<uint8_t> data);
/// How many bytes a text holds in the form that gives more of them: as many as compose_data finds, 64 at most.
std::size_t compose_data_size(std::string_view text);

/// What is said beside the data while one types: how many bytes there are, and whether `length` of them can be
/// sent.
std::string compose_hint(std::string_view data, std::size_t length);

/// Data lengths that a protocol offers.
std::span<const uint32_t> compose_lengths(uint32_t protocol);
