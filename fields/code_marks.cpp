#include "fields/code_marks.h"

#include "profile/compare.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <tuple>

namespace {

constexpr std::size_t register_bits = 32;
constexpr std::size_t digits = 2; ///< of a byte

bool overlap(image_bits one, image_bits other) {
    if (one.count == 0 || other.count == 0) return false;
    return one.at < other.at + other.count && other.at < one.at + one.count;
}

std::size_t first_byte(image_bits bits) { return bits.at / 8; }
std::size_t last_byte(image_bits bits) { return (bits.at + bits.count - 1) / 8; }

/// Where the text has each byte of the image; npos for one that it does not show.
std::vector<std::size_t> places_of_bytes(const code_shown& shown, std::size_t image_size) {
    std::vector<std::size_t> places(image_size, std::string::npos);
    for (const code_span& span : shown.spans)
        for (std::size_t i = 0; i < span.count && span.image_at + i < image_size; ++i)
            places[span.image_at + i] = span.text_at + digits * i;
    return places;
}

text_mark mark_of(std::size_t from, std::size_t end, text_mark_kind kind) {
    return {static_cast<int32_t>(from), static_cast<int32_t>(end - from), kind};
}

/// The line around a place, without its end.
std::pair<std::size_t, std::size_t> line_around(const std::string& text, std::size_t at) {
    const std::size_t before = at == 0 ? std::string::npos : text.rfind('\n', at - 1);
    return {before == std::string::npos ? 0 : before + 1, std::min(text.find('\n', at), text.size())};
}

/// The bytes in which an edit differs.
std::vector<bool> edited_bytes(const dev_obj& dev, std::span<const uint8_t> reference) {
    std::vector<bool> edited(dev.image.size());
    if (reference.size() != dev.image.size() || std::ranges::equal(reference, dev.image)) return edited;
    for (const image_difference& one : image_differences(dev.of, reference, dev.image)) {
        const image_bits bits = bits_of_field(dev.of, *one.what);
        if (one.always_same) continue;
        for (std::size_t i = first_byte(bits); i <= last_byte(bits); ++i)
            if (reference[i] != dev.image[i]) edited[i] = true;
    }
    return edited;
}

void mark_edits(const dev_obj& dev, const std::vector<bool>& edited, const code_shown& shown,
                const std::vector<std::size_t>& places, std::vector<text_mark>* out) {
    for (std::size_t i = 0; i < edited.size(); ++i) {
        if (!edited[i] || places[i] == std::string::npos) continue;
        auto [from, end] = std::pair(places[i], places[i] + digits);
        if (dev.of.of_registers) std::tie(from, end) = line_around(shown.text, from);
        const text_mark mark = mark_of(from, end, text_mark_kind::differs);
        if (out->empty() || out->back() != mark) out->push_back(mark);
    }
}

// ---- words

std::string place_told(const family_descriptor& of, image_bits bits) {
    const auto span = [](const char* what, std::size_t first, std::size_t count) {
        return count == 1 ? tk_format("%s %zu", what, first)
                          : tk_format("%s %zu–%zu", what, first, first + count - 1);
    };
    if (!of.of_registers) return span("字节", bits.at / 8, bits.count / 8);
    const std::string reg = tk_format("寄存器 %02zX", bits.at / register_bits); // as the text numbers them
    return bits.count == register_bits ? reg : reg + " " + span("位", bits.at % register_bits, bits.count);
}

/// The bits as hex digits, in the order in which a person reads a number.
std::string digits_of(const dev_obj& dev, image_bits bits) {
    std::string text;
    if (!dev.of.of_registers) {
        for (std::size_t i = first_byte(bits); i <= last_byte(bits); ++i)
            text += tk_format(text.empty() ? "%02X" : " %02X", dev.image[i]);
        return text;
    }
    uint64_t value = 0;
    for (std::size_t i = last_byte(bits) + 1; i-- > first_byte(bits);) value = value << 8 | dev.image[i];
    value = value >> bits.at % 8 & ((uint64_t{1} << bits.count) - 1);
    return tk_format("%0*llX", static_cast<int>((bits.count + 3) / 4), static_cast<unsigned long long>(value));
}

std::string field_told(const dev_obj& dev, const field& row) {
    const image_bits bits = bits_of_field(dev.of, row);
    const std::string page = row.shown.page < dev.of.pages.size() ? dev.of.pages[row.shown.page] : "";
    const std::string number = digits_of(dev, bits);
    const std::string text =
        page + (page.empty() ? "" : " · ") + row.label + "　" + place_told(dev.of, bits) + "　" + number;
    const std::optional<field_value> value = value_in_image(dev.of, row, dev.image);
    const std::string meaning = value ? value_with_unit(row, *value) : "";
    // Digits that mean themselves are said once.
    const bool as_it_stands = meaning == number || meaning == "0x" + number || std::string_view(row.unit) == "Hex";
    return as_it_stands ? text : text + " = " + meaning;
}

} // namespace

image_bits bits_of_field(const family_descriptor& of, const field& row) {
    const std::size_t at = of.of_registers ? register_bits * row.place.at + row.place.bit : 8u * row.place.at;
    return {at, row.place.bits};
}

image_bits bits_at_text(const family_descriptor& of, const code_shown& shown, int32_t offset) {
    if (offset < 0) return {};
    const auto at = static_cast<std::size_t>(offset);
    for (const code_span& span : shown.spans) {
        if (at >= span.text_at && at < span.text_at + digits * span.count)
            return {8 * (span.image_at + (at - span.text_at) / digits), 8};
        if (!of.of_registers) continue;
        const auto [from, end] = line_around(shown.text, span.text_at);
        if (at >= from && at < end) return {8 * span.image_at, 8 * span.count};
    }
    return {};
}

image_bits bits_of_digit(const code_shown& shown, int32_t offset) {
    const auto at = static_cast<std::size_t>(offset);
    for (const code_span& span : shown.spans)
        if (offset >= 0 && at >= span.text_at && at < span.text_at + digits * span.count) {
            const std::size_t digit = at - span.text_at;
            return {8 * (span.image_at + digit / digits) + (digit % digits == 0 ? 4 : 0), 4};
        }
    return {};
}

std::vector<const field*> fields_among(const family_descriptor& of, image_bits bits) {
    std::vector<const field*> out;
    for (const field& row : of.fields)
        if (row.key != nullptr && overlap(bits_of_field(of, row), bits)) out.push_back(&row);
    std::ranges::sort(out, {}, [&](const field* row) { return bits_of_field(of, *row).at; });
    return out;
}

std::vector<text_mark> code_marks(const dev_obj& dev, std::span<const uint8_t> reference, const code_shown& shown,
                                  std::span<const field* const> at_hand) {
    std::vector<text_mark> out;
    const std::vector<std::size_t> places = places_of_bytes(shown, dev.image.size());
    mark_edits(dev, edited_bytes(dev, reference), shown, places, &out);
    for (const field* row : at_hand) {
        const image_bits bits = bits_of_field(dev.of, *row);
        if (bits.count == 0 || last_byte(bits) >= places.size()) continue;
        const std::size_t from = places[first_byte(bits)];
        const std::size_t last = places[last_byte(bits)];
        if (from == std::string::npos || last == std::string::npos) continue;
        out.push_back(mark_of(from, last + digits, text_mark_kind::at_hand));
    }
    return out;
}

std::string bits_told(const dev_obj& dev, image_bits bits) {
    std::string text;
    const auto add = [&text](const std::string& line) { text += (text.empty() ? "" : "\n") + line; };
    std::size_t next = bits.at;
    const auto keep_back = [&](std::size_t end) {
        if (end > next) add(place_told(dev.of, {next, end - next}) + "　保留");
    };
    for (const field* row : fields_among(dev.of, bits)) {
        const image_bits own = bits_of_field(dev.of, *row);
        keep_back(own.at);
        add(field_told(dev, *row));
        next = std::max(next, own.at + own.count);
    }
    keep_back(bits.at + bits.count);
    return text;
}
