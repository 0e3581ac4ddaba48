#include "f7/frame.h"

#include "toolkit/core/text.h"

namespace {

/// Blanks and commas of a listing. Items count from 1: four of the head, six groups of ten, the check byte.
struct listing_style {
    const char* open;
    const char* item;
    const char* after_head;  ///< after item 4
    const char* after_group; ///< after items 14, 24, 34, 44, 54 and 64: no comma in any form
    const char* between;
    const char* close;
};
constexpr listing_style styles[2][2] = {
    {{"", "%02X", " ", " ", " ", ""}, {"{", "0x%02X", ", ", " ", ", ", "}"}},
    {{"  ", "%02X", "   ", "   ", " ", ""}, {"{  ", "0x%02X", ",   ", "   ", ", ", "}"}},
};

constexpr std::size_t digits = 2; ///< at the end of an item

const char* separator(const listing_style& style, std::size_t item) {
    if (item == f7_image_frame_size) return style.close;
    if (item == f7_head_size) return style.after_head;
    return item % 10 == 4 ? style.after_group : style.between;
}

} // namespace

f7_image_frame f7_write_frame(f7_image_view image) { return f7_frame(f7_command_write, image); }

bool f7_check_is_good(std::span<const uint8_t> reply, std::size_t at) {
    return at + 1 < reply.size() && f7_check(reply.first(at)) == reply[at] && reply[at + 1] == 0;
}

bool f7_starts_with(std::span<const uint8_t> reply, uint8_t command, std::optional<uint8_t> length) {
    return reply.size() >= f7_head_size && reply[0] == 0xF7 && reply[1] == 0xF8 && reply[2] == command &&
           (!length || reply[3] == *length);
}

std::string f7_listing(f7_image_view image, bool list, listing_blanks blanks, code_spans* spans) {
    const listing_style& style = styles[blanks == listing_blanks::restore][list];
    const f7_image_frame frame = f7_write_frame(image);
    std::string text = style.open;
    for (std::size_t i = 0; i < frame.size(); i++) {
        text += tk_format(style.item, frame[i]);
        const bool of_image = i >= f7_head_size && i < f7_head_size + f7_image_size;
        if (of_image && spans != nullptr)
            spans->push_back({.text_at = text.size() - digits, .image_at = i - f7_head_size});
        text += separator(style, i + 1);
    }
    return text;
}
