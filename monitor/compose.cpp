#include "monitor/compose.h"

#include "toolkit/core/text.h"

#include <algorithm>
#include <array>

namespace {

constexpr uint32_t standard_max = 0x7FF;
constexpr uint32_t extended_max = 0x1FFFFFFF;
constexpr std::size_t identifier_digits = 8;

constexpr std::array<uint32_t, 16> lengths_fd = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};

int digit_of(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string_view without_blanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

/// Bytes at the start of a text: two digits each, and between two of them a blank where `spaced`.
std::size_t read_bytes(std::string_view text, bool spaced, std::span<uint8_t> into) {
    std::size_t count = 0;
    for (std::size_t at = 0; count < into.size(); at += 2) {
        if (spaced && count > 0 && (at >= text.size() || text[at++] != ' ')) break;
        if (at + 1 >= text.size()) break;
        const int high = digit_of(text[at]);
        const int low = digit_of(text[at + 1]);
        if (high < 0 || low < 0) break;
        into[count++] = static_cast<uint8_t>(high << 4 | low);
    }
    return count;
}

} // namespace

bool compose_identifier(std::string_view text, uint32_t* identifier) {
    text = without_blanks(text.substr(0, send_text_max));
    if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
    if (text.empty()) return false;
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    if (text.size() > identifier_digits) return false;
    uint32_t value = 0;
    for (const char c : text) {
        if (digit_of(c) < 0) return false;
        value = value << 4 | static_cast<uint32_t>(digit_of(c));
    }
    *identifier = value;
    return true;
}

bool compose_data(std::string_view text, std::span<uint8_t> data) {
    text = text.substr(0, send_text_max);
    return read_bytes(text, false, data) == data.size() || read_bytes(text, true, data) == data.size();
}

std::size_t compose_data_size(std::string_view text) {
    text = text.substr(0, send_text_max);
    std::array<uint8_t, traffic_data_max> room{};
    return std::max(read_bytes(text, false, room), read_bytes(text, true, room));
}

const char* compose_request(const send_parameters& with, std::string_view identifier, std::string_view data,
                            traffic_request* request) {
    traffic_request made{
        .channel = with.channel, .format = with.format, .protocol = with.protocol, .length = with.length};
    const bool parsed = compose_identifier(identifier, &made.identifier);
    if (with.format == 1 && (!parsed || made.identifier > extended_max)) return text_bad_extended;
    if (with.format == 0 && (!parsed || made.identifier > standard_max)) return text_bad_standard;
    const std::size_t length = std::min<std::size_t>(with.length, traffic_data_max);
    if (!compose_data(data, std::span(made.data).first(length))) return text_bad_data;
    *request = made;
    return nullptr;
}

std::string compose_hint(std::string_view data, std::size_t length) {
    const std::size_t size = compose_data_size(data);
    if (size >= length) return tk_format("共 %zu 字节，发送前 %zu 字节", size, length);
    return tk_format("只有 %zu 字节，长度为 %zu：格式 aabb 或 aa bb", size, length);
}

std::span<const uint32_t> compose_lengths(uint32_t protocol) {
    return protocol == 1 ? std::span<const uint32_t>(lengths_fd) : std::span<const uint32_t>(lengths_fd).first(9);
}
