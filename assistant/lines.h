// What rows and frames of the transcript look like. Any thread.
#pragma once

#include "assistant/transcript.h"

#include <string>

/// How received and sent bytes are shown.
enum class byte_form : uint8_t {
    hex,   ///< "AA 07 03"
    chars, ///< as ASCII; what cannot be printed is a dot
};

std::string bytes_text(std::span<const uint8_t> bytes, byte_form form);
/// "13:05:09.123"
std::string line_time_text(int64_t local_us);
/// "tx", "rx"
const char* row_direction_text(const transcript_row& row);
/// "2025-09-29 13:05:09.123 rx AA 07 03\n"
std::string row_line(const transcript_row& row, byte_form form);

/// "UART1_TO_CANFD1"
const char* frame_channel_text(const transcript_frame& frame);
/// "0x123"
std::string frame_identifier_text(const transcript_frame& frame);
/// "标准帧-canfd", as records of traffic name it.
std::string frame_type_text(const transcript_frame& frame);
/// All data bytes; `most` (0: no limit) of more bytes than that, and "..".
std::string frame_data_text(const transcript_frame& frame, std::size_t most = 0);
/// Time, channel, identifier, type, length and data with tab stops between them.
std::string frame_line(const transcript_frame& frame);
