#include "toolkit/core/hex_text.h"

#include "toolkit/core/text.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t edit_digits = 8;

std::string join_pairs(std::span<const uint8_t> bytes, const char* format, const char* between) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i++) text += (i == 0 ? "" : between) + tk_format(format, bytes[i]);
    return text;
}

bool is_hex_digit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

/// Whether a byte of UTF-8 goes on with a character rather than starting one.
bool inside_character(char c) { return (static_cast<uint8_t>(c) & 0xC0) == 0x80; }

} // namespace

void hex_pairs_to_bytes(std::string_view text, std::span<uint8_t> out) {
    for (std::size_t i = 0; i < out.size(); i++) {
        std::array<char, 3> pair{};
        for (std::size_t k = 0; k < 2; k++)
            if (3 * i + k < text.size()) pair[k] = text[3 * i + k];
        out[i] = static_cast<uint8_t>(tk_strtoll(pair.data(), nullptr, 16));
    }
}

std::string hex_pairs_from_bytes(std::span<const uint8_t> bytes, bool upper) {
    return join_pairs(bytes, upper ? "%02X" : "%02x", " ");
}

std::string hex_digits_from_bytes(std::span<const uint8_t> bytes) { return join_pairs(bytes, "%02X", ""); }

std::string hex_pairs_from_word(uint32_t word) {
    const std::array bytes{static_cast<uint8_t>(word >> 24), static_cast<uint8_t>(word >> 16),
                           static_cast<uint8_t>(word >> 8), static_cast<uint8_t>(word)};
    return hex_pairs_from_bytes(bytes);
}

std::string hex_edit_form(const std::string& typed) {
    if (typed.size() > 2 && typed[2] == ' ') return typed;
    std::string digits(edit_digits, '0');
    const std::size_t count = std::min(typed.size(), edit_digits);
    std::copy_n(typed.begin(), count, digits.end() - static_cast<std::ptrdiff_t>(count));
    for (std::size_t at : {6U, 4U, 2U}) digits.insert(at, 1, ' ');
    return digits;
}

std::string hex_edit_strip(const std::string& typed) {
    std::string kept;
    std::size_t characters = 0;
    for (char c : typed) {
        if (c == ' ') continue;
        if (!inside_character(c) && ++characters > edit_digits) break;
        kept += c;
    }
    return kept;
}

std::string hex_edit_filter(const std::string& typed) {
    std::string kept = hex_edit_strip(typed);
    if (kept.empty() || is_hex_digit(kept.back())) return kept;
    while (kept.size() > 1 && inside_character(kept.back())) kept.pop_back();
    kept.pop_back();
    return kept;
}

bool hex_scan(const std::string& text, uint32_t* out) {
    const char* end = text.c_str();
    const int64_t value = tk_strtoll(text.c_str(), &end, 16);
    if (end == text.c_str()) return false;
    *out = static_cast<uint32_t>(value);
    return true;
}
