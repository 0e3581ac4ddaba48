// CAN frames as texts: those of the common log format ("123#1122"), lines to read, and times.
#pragma once

#include "monitor/record.h"

#include <optional>
#include <string>

/// Reads "123#1122" (three digits: a standard identifier), "00000123#" (eight: an extended one), "123##01122" (CAN
/// FD; the digit behind the signs are flags, which modules do not take). Why it cannot, or an empty text. The
/// channel is left as it is. Any thread.
std::string can_request(const std::string& text, traffic_request* request);

/// A line of the log format: "(1758891909.123456) can0 123#1122\n". The interface's number is the channel's, from
/// 0.
std::string can_log_line(const traffic_record& record);
/// "2025-09-29 13:05:09 uart1-can1 rx 0x123 标准帧-can 2 11 22\n"
std::string can_line(const traffic_record& record);
/// The same as a JSON object on one line.
std::string can_json_line(const traffic_record& record);

/// "10ms", "1s", "0.5s" or a number of milliseconds; nothing for what is no time, or longer than a day.
std::optional<int64_t> duration_ms(const std::string& text);
