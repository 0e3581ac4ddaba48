// A configuration as it is written in the code view, and the fields whose bits stand there: which parts differ from
// another image, which belong to a field, and what is to be said of a part. GUI thread only.
#pragma once

#include "profile/value.h"
#include "session/dev_obj.h"
#include "toolkit/ravel/widget.h"

/// What the code view shows.
struct code_shown {
    std::string text;
    code_spans spans;
};

/// Bits of an image, counted from its first byte's lowest. Of an image of registers bit 32 is the second register's
/// lowest.
struct image_bits {
    std::size_t at = 0;
    std::size_t count = 0; ///< 0: none
    bool operator==(const image_bits&) const = default;
};

/// Where a field has its bits; none for one without a place.
image_bits bits_of_field(const family_descriptor& of, const field& row);
/// What a character of the text is about, by its offset in bytes: a byte of the image; of an image of registers,
/// beside a value's digits, the register of the line.
image_bits bits_at_text(const family_descriptor& of, const code_shown& shown, int32_t offset);
/// The four bits of the hex digit there; none beside the digits.
image_bits bits_of_digit(const code_shown& shown, int32_t offset);
/// The fields that have bits among them, lowest first.
std::vector<const field*> fields_among(const family_descriptor& of, image_bits bits);

/// Grounds for the text: the bytes (or the lines, of an image of registers) in which edits differ from `reference`
/// (empty: none), and those of the fields at hand. What means the same, or what no write changes, is no difference.
std::vector<text_mark> code_marks(const dev_obj& dev, std::span<const uint8_t> reference, const code_shown& shown,
                                  std::span<const field* const> at_hand);

/// One line for each field that has bits there, in the user's words: its page, name, place, bits and what they
/// mean. Bits that no field names are told as kept back. Empty without bits.
std::string bits_told(const dev_obj& dev, image_bits bits);
