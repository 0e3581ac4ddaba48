#include "toolkit/core/text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <limits>

namespace {

constexpr char32_t replacement = 0xFFFD;

bool is_blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool is_continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

/// Value of a digit of any base up to 36; 99 for any other character.
int digit_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'z') return c - 'a' + 10;
    if (c >= 'A' && c <= 'Z') return c - 'A' + 10;
    return 99;
}

void append_utf8(std::string* out, char32_t code) {
    const auto put = [out](char32_t byte) { out->push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0U | (code >> 6U));
        put(0x80U | (code & 0x3FU));
    } else if (code < 0x10000) {
        put(0xE0U | (code >> 12U));
        put(0x80U | ((code >> 6U) & 0x3FU));
        put(0x80U | (code & 0x3FU));
    } else {
        put(0xF0U | (code >> 18U));
        put(0x80U | ((code >> 12U) & 0x3FU));
        put(0x80U | ((code >> 6U) & 0x3FU));
        put(0x80U | (code & 0x3FU));
    }
}

/// The character that starts at `*at` (RFC 3629: no over-long forms, no surrogates); moves `*at` past it. What is
/// no character gives U+FFFD, and `*at` moves past the bytes that could have begun one.
char32_t next_utf8(const std::string& text, std::size_t* at) {
    const auto lead = static_cast<unsigned char>(text[(*at)++]);
    if (lead < 0x80) return lead;
    const int more = lead >= 0xF0 && lead <= 0xF4 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4) return replacement;
    char32_t code = lead & (0x3FU >> static_cast<unsigned>(more));
    for (int i = 0; i < more; i++) {
        if (*at >= text.size() || !is_continuation(text[*at])) return replacement;
        const auto byte = static_cast<unsigned char>(text[*at]);
        if (i == 0 && ((lead == 0xE0 && byte < 0xA0) || (lead == 0xED && byte > 0x9F) ||
                       (lead == 0xF0 && byte < 0x90) || (lead == 0xF4 && byte > 0x8F))) {
            return replacement;
        }
        code = (code << 6U) | (byte & 0x3FU);
        (*at)++;
    }
    return code;
}

/// The character that starts at `*at` in UTF-16 or UTF-32, whichever wchar_t holds; moves `*at` past it.
char32_t next_wide(const std::wstring& text, std::size_t* at) {
    const auto code = static_cast<char32_t>(text[(*at)++]);
    if (code > 0x10FFFF || (code >= 0xDC00 && code <= 0xDFFF)) return replacement;
    if (code < 0xD800 || code > 0xDBFF) return code;
    if (sizeof(wchar_t) != 2 || *at >= text.size()) return replacement;
    const auto low = static_cast<char32_t>(text[*at]);
    if (low < 0xDC00 || low > 0xDFFF) return replacement;
    (*at)++;
    return 0x10000 + ((code - 0xD800) << 10U) + (low - 0xDC00);
}

} // namespace

int64_t tk_strtoll(const char* text, const char** end, int base) {
    if (end != nullptr) *end = text;
    if (text == nullptr || base < 2 || base > 36) return 0;
    const char* at = text;
    while (is_blank(*at)) at++;
    const bool negative = *at == '-';
    if (*at == '-' || *at == '+') at++;
    if (base == 16 && at[0] == '0' && (at[1] == 'x' || at[1] == 'X') && digit_value(at[2]) < 16) at += 2;
    if (digit_value(*at) >= base) return 0;

    const uint64_t limit = static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) + (negative ? 1U : 0U);
    const auto radix = static_cast<uint64_t>(base);
    uint64_t value = 0;
    for (; digit_value(*at) < base; at++) {
        const auto digit = static_cast<uint64_t>(digit_value(*at));
        value = value > (limit - digit) / radix ? limit : value * radix + digit;
    }
    if (end != nullptr) *end = at;
    return static_cast<int64_t>(negative ? ~value + 1U : value);
}

int32_t tk_atoi(const char* text) {
    const int64_t value = tk_strtoll(text, nullptr, 10);
    const int64_t low = std::numeric_limits<int32_t>::min();
    const int64_t high = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::clamp(value, low, high));
}

bool tk_atob(const char* text) {
    if (text == nullptr) return false;
    return *text == 't' || *text == 'T' || *text == 'y' || *text == 'Y' || *text == '1';
}

std::string str_from_wstr(const std::wstring& wide) {
    std::string utf8;
    for (std::size_t at = 0; at < wide.size();) append_utf8(&utf8, next_wide(wide, &at));
    return utf8;
}

std::wstring wstr_from_str(const std::string& utf8) {
    std::wstring wide;
    for (std::size_t at = 0; at < utf8.size();) {
        char32_t code = next_utf8(utf8, &at);
        if (sizeof(wchar_t) == 2 && code >= 0x10000) {
            code -= 0x10000;
            wide.push_back(static_cast<wchar_t>(0xD800 + (code >> 10U)));
            wide.push_back(static_cast<wchar_t>(0xDC00 + (code & 0x3FFU)));
        } else {
            wide.push_back(static_cast<wchar_t>(code));
        }
    }
    return wide;
}

std::string tk_format(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int size = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text;
    if (size > 0) {
        text.resize(static_cast<std::size_t>(size));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

std::string tk_utf8_cut(const std::string& utf8, std::size_t max_bytes) {
    if (utf8.size() <= max_bytes) return utf8;
    std::size_t end = max_bytes;
    // A character has at most three continuation bytes: more than that is no UTF-8, and is cut where it stands.
    for (int i = 0; i < 3 && end > 0 && is_continuation(utf8[end]); i++) end--;
    if (is_continuation(utf8[end])) end = max_bytes;
    return utf8.substr(0, end);
}

std::string tk_utf8_heads(std::string_view utf8) {
    std::string heads;
    for (std::size_t i = 0; i < utf8.size(); ++i)
        if (i == 0 || !is_continuation(utf8[i])) heads += utf8[i];
    return heads;
}

std::string tk_utf8_first(std::string_view utf8, std::size_t max) {
    std::size_t end = 0;
    for (std::size_t count = 0; count < max && end < utf8.size(); ++count)
        for (++end; end < utf8.size() && is_continuation(utf8[end]);) ++end;
    return std::string(utf8.substr(0, end));
}
