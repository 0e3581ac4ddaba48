#include "platform/posix/command_line.h"

#include <cstdint>
#include <string_view>

namespace {

constexpr wchar_t replacement = L'\xFFFD';

/// How many bytes follow a first byte, and the bits it carries itself; -1 for a byte that cannot be the first.
int following_bytes(uint8_t first, uint32_t* bits) {
    if (first < 0x80) return *bits = first, 0;
    if (first >= 0xC2 && first < 0xE0) return *bits = first & 0x1FU, 1;
    if (first >= 0xE0 && first < 0xF0) return *bits = first & 0x0FU, 2;
    if (first >= 0xF0 && first < 0xF5) return *bits = first & 0x07U, 3;
    return -1;
}

bool character_allowed(uint32_t c, int following) {
    constexpr uint32_t least[] = {0, 0x80, 0x800, 0x10000};
    return c >= least[following] && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
}

/// UTF-8 as RFC 3629 defines it.
void append_wide(std::string_view utf8, std::wstring* out) {
    for (std::size_t i = 0; i < utf8.size();) {
        uint32_t c = 0;
        const int following = following_bytes(static_cast<uint8_t>(utf8[i++]), &c);
        int seen = 0;
        while (seen < following && i < utf8.size() && (static_cast<uint8_t>(utf8[i]) & 0xC0U) == 0x80U) {
            c = (c << 6U) | (static_cast<uint8_t>(utf8[i++]) & 0x3FU);
            seen++;
        }
        const bool good = following >= 0 && seen == following && character_allowed(c, following);
        out->push_back(good ? static_cast<wchar_t>(c) : replacement);
    }
}

} // namespace

std::wstring command_line_join(int count, const char* const* arguments) {
    std::wstring line;
    for (int i = 0; i < count; i++) {
        const std::string_view text = arguments[i];
        const bool quote = text.empty() || (text.front() != '"' && text.find_first_of(" \t") != text.npos);
        if (i > 0) line.push_back(L' ');
        if (quote) line.push_back(L'"');
        append_wide(text, &line);
        if (quote) line.push_back(L'"');
    }
    return line;
}
