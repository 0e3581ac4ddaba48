// Text conversions.
#pragma once

#include "platform/printf_format.h"

#include <cstdint>
#include <string>

/// Decimal integer at the start of `text` (leading blanks and a sign allowed); 0 when there is none or for null;
/// held to the range of int32_t.
int32_t tk_atoi(const char* text);

/// True for "true", "yes", "1" (and any text that starts with t, T, y, Y or 1), false for everything else and null.
bool tk_atob(const char* text);

/// Integer in `base` (2 to 36) at the start of `text`, as far as digits go; leading blanks, a sign and, for base
/// 16, "0x" are allowed. 0 when there is none. `end`, if given, receives the first character not used. Never fails.
int64_t tk_strtoll(const char* text, const char** end, int base);

/// UTF-8 from the system's wide characters (UTF-16 or UTF-32); what cannot be converted becomes U+FFFD.
std::string str_from_wstr(const std::wstring& wide);
/// The opposite.
std::wstring wstr_from_str(const std::string& utf8);

/// printf into a text of the needed length.
std::string tk_format(const char* format, ...) PLATFORM_PRINTF(1, 2);

/// The first `max_bytes` bytes of a UTF-8 text, cut between characters.
std::string tk_utf8_cut(const std::string& utf8, std::size_t max_bytes);
/// The first byte of each character of a UTF-8 text: as many bytes as it has characters, ASCII ones as they are. A
/// continuation byte that follows nothing counts as one.
std::string tk_utf8_heads(std::string_view utf8);
/// The first `max` characters of a UTF-8 text.
std::string tk_utf8_first(std::string_view utf8, std::size_t max);
