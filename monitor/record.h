// A record: one frame that was received or sent, and the texts that show it.
#pragma once

#include "serial/traffic_frame.h"
#include "toolkit/core/date_time.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>

enum class traffic_direction : uint8_t { tx = 0, rx = 1 };

/// Kept by the million, so the data stand in it and every value is as small as it can be; 255 stands for a value
/// that has no name.
struct traffic_record {
    time_stamp at;
    uint32_t identifier = 0;
    uint8_t channel = 0;  ///< 0 to 4, see channel_names
    uint8_t format = 0;   ///< see format_names
    uint8_t protocol = 0; ///< see protocol_names
    traffic_direction direction = traffic_direction::tx;
    uint8_t length = 0; ///< data bytes, 0 to 64
    std::array<uint8_t, traffic_data_max> data{};

    std::span<const uint8_t> bytes() const { return std::span(data).first(length); }
};
static_assert(sizeof(traffic_record) <= 96);

/// A received frame. A channel number that is none of 1 to 5 counts as the first. Any thread.
traffic_record record_received(const traffic_parsed& frame, const time_stamp& at);
/// A frame to be sent; of more than 64 data bytes the first. Any thread.
traffic_record record_sent(const traffic_request& request, const time_stamp& at);

// Texts. Any thread.

/// "2025-09-29 13:05:09"
std::string record_time_text(const traffic_record& record);
const char* record_channel_text(const traffic_record& record);
/// "0x7ff": at least two digits.
std::string record_id_text(const traffic_record& record);
/// "标准帧-can"
std::string record_type_text(const traffic_record& record);
/// "tx", "rx"
const char* record_direction_text(const traffic_record& record);
/// Every data byte as "5A ", the last too.
std::string record_data_text(const traffic_record& record);
/// The same as a row has room for it: of 32 bytes and more the first 62 characters and "..".
std::string record_data_cell(const traffic_record& record);
