// Hex digits in edits and texts: what the pages and the codecs of both families do with them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// Bytes from pairs of hex digits at the positions 0-1, 3-4, 6-7, ... of `text`, as far as `out` goes. Nothing is
/// checked: a pair parses as far as tk_strtoll goes, a missing one gives 0.
void hex_pairs_to_bytes(std::string_view text, std::span<uint8_t> out);
/// "12 34 56 78", or "ab cd" when `upper` is false.
std::string hex_pairs_from_bytes(std::span<const uint8_t> bytes, bool upper = true);
/// "12345678"
std::string hex_digits_from_bytes(std::span<const uint8_t> bytes);
/// A word as pairs, most significant first.
std::string hex_pairs_from_word(uint32_t word);

/// What was typed, brought into the form "00 00 00 00": at most the first 8 characters (bytes), right-aligned. A
/// text whose third character is a blank is formed already and comes back as it is.
std::string hex_edit_form(const std::string& typed);
/// A text without its blanks, cut to 8 characters.
std::string hex_edit_strip(const std::string& typed);
/// What a filtering edit keeps of its text after a keystroke: the stripped text without a last character that is
/// not a hex digit.
std::string hex_edit_filter(const std::string& typed);

/// Hex number at the start of `text` (blanks, sign and "0x" allowed), its low 32 bits. False when there is none.
bool hex_scan(const std::string& text, uint32_t* out);
