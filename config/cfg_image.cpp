#include "config/cfg_image.h"

#include "config/dev_obj.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <atomic>
#include <mutex>

namespace {

using enum value_form;
constexpr auto constant = encode_rule::constant;
constexpr auto always = decode_rule::constant;
constexpr const char* zeros = "00 00 00 00";

// The fallbacks differ from the store's defaults on purpose: they only matter for a key that is missing. Data bits,
// stop bits, polarity and phase are read from a reply but always written with the one value that the modules
// support.
constexpr reg_field generic_rows[] = {
    {.place = layout::uart_rate, .key = "uart_baud_rate", .fallback = 0},
    {.place = layout::uart_bits, .key = "uart_bit_num", .fallback = 8, .encode = constant},
    {.place = layout::uart_stop, .key = "uart_stop", .fallback = 1, .encode = constant},
    {.place = layout::uart_parity, .key = "uart_check", .encode = constant, .decode = always, .text = "无校验"},
    {.place = layout::none, .key = "uart_control", .encode = constant, .decode = always, .text = "无"},
    {.place = layout::can_rate, .key = "can_baud_rate", .fallback = 8},
    {.place = layout::check_byte, .key = "change_err_check", .form = yes_no},
    fixed_bytes(layout::spare, 0),
    {.place = layout::filter_on, .key = "can_check", .form = flag, .fallback = 0},
    {.place = layout::filter_frame, .key = "can_filtration", .fallback = 8},
    {.place = layout::mask, .key = "can_scherm", .form = hex_text},
    {.place = layout::code0, .key = "can_check0", .form = hex_text},
    {.place = layout::code1, .key = "can_check1", .form = hex_text, .decode = always, .text = zeros},
    fixed_bytes(layout::gap, 0),
    {.place = layout::code2, .key = "can_check2", .form = hex_text, .decode = always, .text = zeros},
    {.place = layout::code3, .key = "can_check3", .form = hex_text, .decode = always, .text = zeros},
    {.place = layout::code4, .key = "can_check4", .form = hex_text, .decode = always, .text = zeros},
    {.place = layout::code5, .key = "can_check5", .form = hex_text, .decode = always, .text = zeros},
    {.place = layout::mode, .key = "change_mode", .fallback = 4},
    {.place = layout::direction, .key = "change_dir", .fallback = 0},
    {.place = layout::uart_interval, .key = "uart_f_distance", .fallback = 2},
    {.place = layout::can_to_serial, .key = "change_can_serial", .form = flag, .fallback = 0},
    {.place = layout::id_to_serial, .key = "change_id_serial", .form = flag, .fallback = 0},
    {.place = layout::send_frame, .key = "can_sendf_kind", .fallback = 0},
    {.place = layout::send_id, .key = "can_sendf_flage", .form = hex_text, .decode = always, .text = zeros},
    {.place = layout::length, .key = "change_len", .fallback = 1},
    {.place = layout::start, .key = "change_star", .fallback = 0},
    {.place = layout::frame_head, .key = "change_fh", .form = hex_text},
    {.place = layout::frame_end, .key = "change_fe", .form = hex_text},
    {.place = layout::spi_count, .key = "spi_ff_fnum", .fallback = 8},
    {.place = layout::spi_time, .key = "spi_ff_time", .fallback = 1},
    {.place = layout::none, .key = "spi_data_len", .encode = constant, .decode = always, .number = 8},
    {.place = layout::none, .key = "spi_bit_tran", .encode = constant, .decode = always, .text = "MSB"},
    {.place = layout::spi_polarity, .key = "spi_cpol", .fallback = 1, .encode = constant},
    {.place = layout::spi_phase, .key = "spi_cpha", .fallback = 1, .encode = constant},
};
static_assert(map_covers_image(generic_rows) && map_keys_unique(generic_rows) && map_widths_fit(generic_rows));

struct image_slot {
    std::mutex mutex;
    image_bytes image{};
};
image_slot& slot_of(family of) {
    static image_slot generic;
    static image_slot a;
    return of == family::a ? a : generic;
}

std::atomic<bool> code_mode{false};

constexpr std::array<uint8_t, 4> frame_head = {0xF7, 0xF8, 0x01, 0x3C};

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

const char* separator(const listing_style& style, std::size_t item) {
    if (item == image_frame_size) return style.close;
    if (item == 4) return style.after_head;
    return item % 10 == 4 ? style.after_group : style.between;
}

} // namespace

image_bytes cfg_image_get(family of) {
    image_slot& slot = slot_of(of);
    const std::lock_guard hold(slot.mutex);
    return slot.image;
}

void cfg_image_set(family of, const image_bytes& image) {
    image_slot& slot = slot_of(of);
    const std::lock_guard hold(slot.mutex);
    slot.image = image;
}

void cfg_image_change(family of, const std::function<void(image_bytes&)>& change) {
    image_slot& slot = slot_of(of);
    const std::lock_guard hold(slot.mutex);
    change(slot.image);
}

std::span<const reg_field> generic_map() { return generic_rows; }

void cfg_image_from_props() {
    cfg_image_change(family::generic, [](image_bytes& image) { map_encode(generic_rows, config_store(), image); });
}

void cfg_image_to_props() { map_decode(generic_rows, config_store(), cfg_image_get(family::generic)); }

ret_t cfg_image_refresh(const char* key) {
    const reg_field* row = map_find(generic_rows, key);
    if (row == nullptr) return RET_FAIL;
    cfg_image_change(family::generic, [row](image_bytes& image) { field_encode(*row, config_store(), image); });
    return RET_OK;
}

bool cfg_code_mode() { return code_mode; }
void cfg_code_mode_set(bool on) { code_mode = on; }

image_frame_bytes image_frame(const image_bytes& image) {
    image_frame_bytes frame{};
    std::copy(frame_head.begin(), frame_head.end(), frame.begin());
    std::copy(image.begin(), image.end(), frame.begin() + frame_head.size());
    frame.back() = image_check(image);
    return frame;
}

uint8_t image_check(const image_bytes& image) {
    uint8_t check = 0x32; // F7 ^ F8 ^ 01 ^ 3C
    for (uint8_t b : image) check = static_cast<uint8_t>(check ^ b);
    return check;
}

std::string image_listing(const image_bytes& image, bool list, listing_blanks blanks) {
    const listing_style& style = styles[blanks == listing_blanks::restore][list];
    const image_frame_bytes frame = image_frame(image);
    std::string text = style.open;
    for (std::size_t i = 0; i < frame.size(); i++) {
        text += tk_format(style.item, frame[i]);
        text += separator(style, i + 1);
    }
    return text;
}
