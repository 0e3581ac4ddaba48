#include "assistant/send_frame.h"

#include "toolkit/core/text.h"

#include <algorithm>

namespace {

/// Value of a hex digit; -1 for another character.
int digit_of(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool is_digit(char c) { return digit_of(c) >= 0; }

/// What counts of the typed text, a byte for each character; only those of ASCII can be digits.
std::string characters_read(std::string_view data) { return tk_utf8_heads(data).substr(0, assistant_text_read); }

uint8_t byte_at(std::string_view text, std::size_t at) {
    const auto digit = [&](std::size_t i) { return i < text.size() ? std::max(digit_of(text[i]), 0) : 0; };
    return static_cast<uint8_t>(16 * digit(at) + digit(at + 1));
}

} // namespace

const char* assistant_option_text(std::span<const assistant_option> options, uint32_t value) {
    for (const assistant_option& option : options)
        if (option.value == value) return option.text;
    return "未知";
}

traffic_wire assistant_frame(const assistant_form& form) {
    const std::string text = characters_read(form.data);
    traffic_request request{.channel = form.channel - 1, // 0 becomes too large
                            .identifier = form.identifier,
                            .format = form.format != 0,
                            .protocol = form.speed != 0,
                            .length = static_cast<uint32_t>(text.size())};
    for (std::size_t i = 0; i < assistant_text_read / 2; ++i) request.data[i] = byte_at(text, 2 * i);
    return traffic_frame_build(request, true);
}

std::string assistant_hint(std::string_view data) {
    if (data.empty()) return "";
    const std::string text = characters_read(data);
    const std::size_t typed = (text.size() + 1) / 2;
    std::string hint = tk_format("长度 %zu：数据 %zu 字节", text.size(), typed);
    if (text.size() > typed) hint += tk_format("，补 %zu 个 00", text.size() - typed);
    if (!std::ranges::all_of(text, is_digit)) hint += "；非十六进制字符为 0";
    if (tk_utf8_heads(data).size() > text.size()) hint += tk_format("；只取前 %zu 个字符", text.size());
    return hint;
}
