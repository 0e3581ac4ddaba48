#include "monitor/record.h"

#include "monitor/names.h"
#include "toolkit/core/text.h"

#include <algorithm>

namespace {

constexpr std::size_t cell_bytes = 32; ///< from here on a cell's text is cut
constexpr std::size_t cell_characters = 62;

uint8_t small(std::size_t value) { return static_cast<uint8_t>(std::min<std::size_t>(value, 255)); }

void take_data(traffic_record* record, std::span<const uint8_t> data) {
    const auto kept = data.first(std::min(data.size(), record->data.size()));
    record->length = small(kept.size());
    std::ranges::copy(kept, record->data.begin());
}

} // namespace

traffic_record record_received(const traffic_parsed& frame, const time_stamp& at) {
    traffic_record record{.at = at, .identifier = frame.identifier, .direction = traffic_direction::rx};
    if (frame.channel >= 1 && frame.channel <= traffic_channels) record.channel = small(frame.channel - 1u);
    record.format = frame.extended();
    record.protocol = frame.fd();
    take_data(&record, frame.data);
    return record;
}

traffic_record record_sent(const traffic_request& request, const time_stamp& at) {
    traffic_record record{.at = at, .identifier = request.identifier};
    record.channel = small(request.channel);
    record.format = small(request.format);
    record.protocol = small(request.protocol);
    take_data(&record, request.bytes());
    return record;
}

std::string record_time_text(const traffic_record& record) { return time_stamp_text(record.at.local_us); }

const char* record_channel_text(const traffic_record& record) { return name_of(channel_names, record.channel); }

std::string record_id_text(const traffic_record& record) { return tk_format("0x%02x", record.identifier); }

std::string record_type_text(const traffic_record& record) {
    return std::string(name_of(format_names, record.format)) + "-" + name_of(protocol_names, record.protocol);
}

const char* record_direction_text(const traffic_record& record) {
    return name_of(direction_names, static_cast<uint32_t>(record.direction));
}

std::string record_data_text(const traffic_record& record) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(record.length * std::size_t{3});
    for (const uint8_t byte : record.bytes()) {
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
        text += ' ';
    }
    return text;
}

std::string record_data_cell(const traffic_record& record) {
    std::string text = record_data_text(record);
    if (record.length < cell_bytes) return text;
    text.resize(cell_characters);
    return text + "..";
}
