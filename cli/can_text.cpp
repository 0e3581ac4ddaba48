#include "cli/can_text.h"

#include "cli/context.h"
#include "monitor/compose.h"
#include "toolkit/core/hex_text.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <charconv>
#include <chrono>

namespace {

constexpr std::size_t standard_digits = 3;
constexpr std::size_t extended_digits = 8;
constexpr uint32_t standard_highest = 0x7FF;
constexpr uint32_t extended_highest = 0x1FFFFFFF;

bool is_hex(std::string_view text) {
    return text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

/// Of a moment on the steady clock, in microseconds since 1970 UTC.
int64_t epoch_us(int64_t steady_us) {
    using namespace std::chrono;
    const auto now = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    return now - (time_stamp_now().steady_us - steady_us);
}

bool extended(const traffic_record& record) { return record.format == 1; }
bool fd(const traffic_record& record) { return record.protocol == 1; }

} // namespace

std::string can_request(const std::string& text, traffic_request* request) {
    const std::size_t at = text.find('#');
    if (at == std::string::npos || !is_hex(text.substr(0, at))) return "not of the form ID#DATA";
    if (at != standard_digits && at != extended_digits) return "an identifier has 3 or 8 digits";
    traffic_request out = *request;
    out.format = at == extended_digits ? 1 : 0;
    out.identifier = static_cast<uint32_t>(tk_strtoll(text.substr(0, at).c_str(), nullptr, 16));
    if (out.identifier > (out.format == 1 ? extended_highest : standard_highest))
        return tk_format("the identifier is above %X", out.format == 1 ? extended_highest : standard_highest);
    std::string data = text.substr(at + 1);
    out.protocol = data.starts_with('#') ? 1 : 0;
    if (out.protocol == 1) {
        if (data.size() < 2 || !is_hex(data.substr(1, 1))) return "a digit of flags stands behind ##";
        data.erase(0, 2);
    }
    std::erase(data, '.');
    if (!is_hex(data) || data.size() % 2 != 0) return "the data are no pairs of hex digits";
    out.length = static_cast<uint32_t>(data.size() / 2);
    const auto lengths = compose_lengths(out.protocol);
    if (std::find(lengths.begin(), lengths.end(), out.length) == lengths.end())
        return tk_format("no frame has %u data bytes", out.length);
    for (std::size_t i = 0; i < out.length; ++i)
        out.data[i] = static_cast<uint8_t>(tk_strtoll(data.substr(2 * i, 2).c_str(), nullptr, 16));
    *request = out;
    return "";
}

std::string can_log_line(const traffic_record& record) {
    const int64_t us = epoch_us(record.at.steady_us);
    const std::string identifier = tk_format(extended(record) ? "%08X" : "%03X", record.identifier);
    return tk_format("(%lld.%06d) can%u %s%s%s\n", static_cast<long long>(us / 1000000),
                     static_cast<int>(us % 1000000), record.channel, identifier.c_str(), fd(record) ? "##0" : "#",
                     hex_digits_from_bytes(record.bytes()).c_str());
}

std::string can_line(const traffic_record& record) {
    std::string line = record_time_text(record) + " " + record_channel_text(record) + " " +
                       record_direction_text(record) + " " + record_id_text(record) + " " +
                       record_type_text(record) + " " + std::to_string(record.length);
    if (record.length > 0) line += " " + hex_pairs_from_bytes(record.bytes());
    return line + "\n";
}

std::string can_json_line(const traffic_record& record) {
    json_object line;
    line.add("time_us", epoch_us(record.at.steady_us)).add("channel", record_channel_text(record));
    line.add("direction", record_direction_text(record)).add("id", record.identifier);
    line.add_json("extended", extended(record) ? "true" : "false").add_json("fd", fd(record) ? "true" : "false");
    return line.add("data", hex_digits_from_bytes(record.bytes())).text() + "\n";
}

std::optional<int64_t> duration_ms(const std::string& text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, failure] = std::from_chars(text.data(), end, number);
    const std::string_view unit(rest, static_cast<std::size_t>(end - rest));
    const double ms = unit == "s" ? number * 1000 : number;
    constexpr double day_ms = 24.0 * 3600 * 1000;
    if (failure != std::errc() || (unit != "" && unit != "ms" && unit != "s") || !(ms >= 0 && ms <= day_ms))
        return std::nullopt;
    return static_cast<int64_t>(ms);
}
