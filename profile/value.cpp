#include "profile/value.h"

#include "toolkit/core/hex_text.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace {

constexpr const char* yes = "是";
constexpr const char* no = "否";

bool is_hex(const field& row) { return std::string_view(row.unit) == "Hex"; }

/// Bytes of a hex text, or of a number that is shown in hex digits.
std::size_t hex_bytes(const field& row) {
    if (row.form == value_form::word) return 4;
    return std::max<std::size_t>(row.place.bytes(), 1);
}

std::string hex_formed(const std::string& text, std::size_t count) {
    std::vector<uint8_t> bytes(count);
    hex_pairs_to_bytes(text, bytes);
    return hex_pairs_from_bytes(bytes);
}

/// "00 1A": pairs of hex digits with one blank between them, in either case.
bool is_hex_text(const std::string& text, std::size_t count) {
    if (text.size() != 3 * count - 1) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool fits = i % 3 == 2 ? text[i] == ' ' : std::isxdigit(static_cast<unsigned char>(text[i])) != 0;
        if (!fits) return false;
    }
    return true;
}

const choice_option* choice_of(const field& row, uint32_t number) {
    for (const choice_option& choice : row.choices)
        if (static_cast<uint32_t>(choice.value) == number) return &choice;
    return nullptr;
}

std::string lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

/// By its text, the exact one first.
const choice_option* choice_named(const field& row, const std::string& text) {
    for (const choice_option& choice : row.choices)
        if (text == choice.text) return &choice;
    for (const choice_option& choice : row.choices)
        if (lower(text) == lower(choice.text)) return &choice;
    return nullptr;
}

/// The number that all of `text` is.
std::optional<uint64_t> number_of(std::string_view text, int base) {
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, failure] = std::from_chars(text.data(), end, number, base);
    if (text.empty() || failure != std::errc() || rest != end) return std::nullopt;
    return number;
}

std::string choices_text(const field& row) {
    std::string text;
    for (const choice_option& choice : row.choices) text += (text.empty() ? "" : " | ") + std::string(choice.text);
    return text;
}

/// Without the number's own check.
std::optional<uint64_t> typed_number(const field& row, const std::string& typed) {
    if (const choice_option* choice = choice_named(row, typed)) return static_cast<uint64_t>(choice->value);
    if (row.form == value_form::flag) {
        static constexpr std::pair<const char*, uint64_t> words[] = {{yes, 1},     {no, 0},   {"true", 1},
                                                                     {"false", 0}, {"on", 1}, {"off", 0}};
        for (const auto& [word, value] : words)
            if (lower(typed) == word) return value;
    }
    if (is_hex(row)) {
        std::string digits;
        std::copy_if(typed.begin(), typed.end(), std::back_inserter(digits), [](char c) { return c != ' '; });
        return number_of(digits, 16);
    }
    const std::optional<uint64_t> number = number_of(typed, 10);
    if (!number || row.shown_above == 0 || !row.choices.empty()) return number;
    const auto above = static_cast<uint64_t>(row.shown_above);
    return *number < above ? std::nullopt : std::optional(*number - above);
}

} // namespace

bool value_is_text(const field& row) {
    return row.form == value_form::yes_no || row.form == value_form::hex_text || row.form == value_form::text;
}

field_value value_default(const field& row) {
    return value_is_text(row) ? field_value{0, row.text} : field_value{row.number};
}

field_value value_of(const field& row, const tk_object* props) {
    if (row.form == value_form::word) return {field_word(row, props)};
    if (row.form == value_form::flag) return {tk_object_get_prop_bool(props, row.key, row.number != 0) ? 1u : 0u};
    if (!value_is_text(row)) return {field_byte(row, props)};
    const std::string text = field_text(row, props);
    if (row.form == value_form::yes_no) return {0, text == yes ? yes : no};
    if (row.form == value_form::hex_text && !is_hex_text(text, hex_bytes(row)))
        return {0, hex_formed(text, hex_bytes(row))};
    return {0, text};
}

ret_t value_store(const field& row, const field_value& value, tk_object* props) {
    switch (row.form) {
    case value_form::number:
        return tk_object_set_prop_uint8(props, row.key, static_cast<uint8_t>(value.number));
    case value_form::flag:
        return tk_object_set_prop_bool(props, row.key, value.number != 0);
    case value_form::word:
        return tk_object_set_prop_uint32(props, row.key, value.number);
    case value_form::yes_no:
    case value_form::hex_text:
    case value_form::text:
        return tk_object_set_prop_str(props, row.key, value.text.c_str());
    }
    return RET_FAIL;
}

std::optional<uint64_t> place_bits(const family_descriptor& of, const field& row, std::span<const uint8_t> image) {
    const field_place& place = row.place;
    uint64_t number = 0;
    if (place.bits == 0) return std::nullopt;
    if (of.of_registers) {
        if (image.size() < 4u * place.at + 4) return std::nullopt;
        for (std::size_t i = 4; i-- > 0;) number = number << 8 | image[4u * place.at + i];
        return number >> place.bit & ((uint64_t{1} << place.bits) - 1);
    }
    if (image.size() < place.at + place.bytes()) return std::nullopt;
    for (const uint8_t byte : image.subspan(place.at, place.bytes())) number = number << 8 | byte;
    return number;
}

std::optional<field_value> value_in_image(const family_descriptor& of, const field& row,
                                          std::span<const uint8_t> image) {
    const std::optional<uint64_t> number = place_bits(of, row, image);
    if (!number) return std::nullopt;
    const auto low = static_cast<uint32_t>(*number);
    if (of.of_registers) return field_value{low};
    if (row.form == value_form::hex_text)
        return field_value{0, hex_pairs_from_bytes(image.subspan(row.place.at, row.place.bytes()))};
    if (row.form == value_form::yes_no) return field_value{0, low != 0 ? yes : no};
    if (row.form == value_form::text) {
        const choice_option* choice = choice_of(row, low);
        return field_value{0, choice == nullptr ? std::to_string(low) : choice->text};
    }
    return field_value{low};
}

std::string value_shown(const field& row, const field_value& value) {
    if (value_is_text(row)) return value.text;
    if (const choice_option* choice = choice_of(row, value.number)) return choice->text;
    if (row.form == value_form::flag) return value.number != 0 ? yes : no;
    if (is_hex(row))
        return row.form == value_form::word ? hex_pairs_from_word(value.number) : tk_format("%02X", value.number);
    if (row.form == value_form::word) return tk_format("0x%08X", value.number);
    return std::to_string(static_cast<int64_t>(value.number) + (row.choices.empty() ? row.shown_above : 0));
}

std::string value_with_unit(const field& row, const field_value& value) {
    const std::string shown = value_shown(row, value);
    return row.unit[0] == '\0' || is_hex(row) ? shown : shown + " " + row.unit;
}

std::string value_range(const field& row) {
    if (!row.choices.empty() && (row.highest == 0 || value_is_text(row))) return choices_text(row);
    if (row.form == value_form::flag) return std::string(no) + " | " + yes;
    if (row.form == value_form::hex_text) return tk_format("%zu 字节", hex_bytes(row));
    const std::string range = value_shown(row, {row.lowest}) + "–" + value_shown(row, {field_highest(row)});
    if (row.choices.empty()) return range;
    return choices_text(row) + tk_format(" (%u–%u)", row.lowest, field_highest(row));
}

std::string value_refusal(const field& row, const field_value& value) {
    if (row.form == value_form::hex_text)
        return is_hex_text(value.text, hex_bytes(row))
                   ? ""
                   : tk_format("应为 %zu 个字节的十六进制数，如 %s", hex_bytes(row),
                               hex_formed("", hex_bytes(row)).c_str());
    const bool any_number = row.choices.empty() || row.highest != 0;
    bool good = false;
    if (value_is_text(row))
        good = std::any_of(row.choices.begin(), row.choices.end(),
                           [&](const choice_option& choice) { return value.text == choice.text; });
    else if (any_number)
        good = row.lowest <= value.number && value.number <= field_highest(row);
    else
        good = choice_of(row, value.number) != nullptr;
    return good ? "" : "超出范围，应为 " + value_range(row);
}

std::optional<field_value> value_typed(const field& row, const std::string& typed, std::string* why) {
    field_value value;
    const std::optional<uint64_t> number = typed_number(row, typed);
    if (row.form == value_form::hex_text) {
        const bool fits = number && (hex_bytes(row) == 8 || *number >> (8 * hex_bytes(row)) == 0);
        if (fits) {
            std::vector<uint8_t> bytes(hex_bytes(row));
            for (std::size_t i = bytes.size(), rest = *number; i-- > 0; rest >>= 8)
                bytes[i] = static_cast<uint8_t>(rest);
            value.text = hex_pairs_from_bytes(bytes);
        }
    } else if (value_is_text(row)) {
        const choice_option* choice = number ? choice_of(row, static_cast<uint32_t>(*number)) : nullptr;
        if (choice != nullptr) value.text = choice->text;
    } else if (!number || *number > UINT32_MAX) {
        *why = "超出范围，应为 " + value_range(row);
        return std::nullopt;
    } else {
        value.number = static_cast<uint32_t>(*number);
    }
    *why = value_refusal(row, value);
    return why->empty() ? std::optional(value) : std::nullopt;
}

std::string value_place(const family_descriptor& of, const field& row) {
    const field_place& place = row.place;
    if (place.bits == 0) return "";
    const auto span = [](const char* one, const char* many, unsigned first, std::size_t count) {
        const auto last = static_cast<unsigned>(first + count - 1);
        return count == 1 ? tk_format("%s %u", one, first) : tk_format("%s %u-%u", many, first, last);
    };
    if (!of.of_registers) return span("byte", "bytes", place.at, place.bytes());
    const std::string reg = tk_format("register %u", place.at);
    return place.bits == 32 ? reg : reg + ", " + span("bit", "bits", place.bit, place.bits);
}

std::vector<const field*> fields_by_page(const family_descriptor& of) {
    std::vector<const field*> out;
    for (const field& row : of.fields)
        if (row.key != nullptr && !is_modules_own(of, row)) out.push_back(&row);
    const auto rank = [](const field* row) { // what is not shown has the highest rank of its page
        return std::pair(row->shown.page, static_cast<uint8_t>(row->shown.row - 1));
    };
    std::stable_sort(out.begin(), out.end(), [&](const field* a, const field* b) { return rank(a) < rank(b); });
    return out;
}
