#include "assistant/lines.h"

#include "assistant/send_frame.h"
#include "toolkit/core/hex_text.h"
#include "toolkit/core/text.h"

namespace {

constexpr std::size_t date_size = 11; ///< of "2025-09-29 13:05:09", with the blank

std::string whole_time_text(int64_t local_us) {
    return time_stamp_text(local_us) + tk_format(".%03d", static_cast<int>(local_us / 1000 % 1000));
}

} // namespace

std::string bytes_text(std::span<const uint8_t> bytes, byte_form form) {
    if (form == byte_form::hex) return hex_pairs_from_bytes(bytes);
    std::string text;
    for (const uint8_t byte : bytes) text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
    return text;
}

std::string line_time_text(int64_t local_us) { return whole_time_text(local_us).substr(date_size); }

const char* row_direction_text(const transcript_row& row) { return row.sent ? "tx" : "rx"; }

std::string row_line(const transcript_row& row, byte_form form) {
    return whole_time_text(row.local_us) + " " + row_direction_text(row) + " " + bytes_text(row.bytes(), form) +
           "\n";
}

const char* frame_channel_text(const transcript_frame& frame) {
    return assistant_option_text(assistant_channels, frame.channel);
}

std::string frame_identifier_text(const transcript_frame& frame) { return tk_format("0x%02X", frame.identifier); }

// What a frame on a bus is called; the form's words are about the way to it.
std::string frame_type_text(const transcript_frame& frame) {
    return std::string(assistant_option_text(assistant_formats, frame.type & traffic_type_extended)) +
           ((frame.type & traffic_type_fd) != 0 ? "-canfd" : "-can");
}

std::string frame_data_text(const transcript_frame& frame, std::size_t most) {
    if (most == 0 || frame.size <= most) return bytes_text(frame.data(), byte_form::hex);
    return bytes_text(frame.data().first(most), byte_form::hex) + " ..";
}

std::string frame_line(const transcript_frame& frame) {
    return whole_time_text(frame.local_us) + "\t" + frame_channel_text(frame) + "\t" +
           frame_identifier_text(frame) + "\t" + frame_type_text(frame) + "\t" + std::to_string(frame.size) + "\t" +
           frame_data_text(frame) + "\n";
}
