// Hex digits in edits and texts, and the text conversions under them. Input: a base, a length, the text.
#include "toolkit/core/hex_text.h"

#include "dev_generic/family.h"
#include "dev_generic/fields.h"
#include "fuzz/fuzz.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>

namespace {

bool continues(char c) { return (static_cast<uint8_t>(c) & 0xC0) == 0x80; }
std::size_t characters(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return !continues(c); }));
}
bool starts(const std::string& text, const std::string& with) { return text.compare(0, with.size(), with) == 0; }

void check_edit_rules(const std::string& typed) {
    const std::string stripped = hex_edit_strip(typed);
    must(stripped.find(' ') == std::string::npos && characters(stripped) <= 8, "a stripped text has 8 characters");
    must(hex_edit_strip(stripped) == stripped, "a stripped text stays");
    const std::string kept = hex_edit_filter(typed);
    must(starts(stripped, kept) && characters(stripped) <= characters(kept) + 1, "a filter drops one character");
    must(kept.empty() || kept == stripped || !continues(stripped[kept.size()]), "and the whole of it");
    must(stripped.empty() || (std::isxdigit(static_cast<uint8_t>(stripped.back())) != 0) == (kept == stripped),
         "a filter drops what is no hex digit");

    const std::string formed = hex_edit_form(typed);
    must(hex_edit_form(formed) == formed, "a formed text stays");
    if (typed.size() > 2 && typed[2] == ' ') {
        must(formed == typed, "what is formed already stays");
        return;
    }
    must(formed.size() == 11 && formed[2] == ' ' && formed[5] == ' ' && formed[8] == ' ', "a form is four pairs");
    const std::string digits =
        formed.substr(0, 2) + formed.substr(3, 2) + formed.substr(6, 2) + formed.substr(9, 2);
    const std::string head = typed.substr(0, 8);
    must(digits == std::string(8 - head.size(), '0') + head, "a form holds what was typed, to the right");
}

void check_pairs(std::span<const uint8_t> bytes) {
    for (const bool upper : {false, true}) {
        const std::string text = hex_pairs_from_bytes(bytes, upper);
        must(text.size() == (bytes.empty() ? 0 : 3 * bytes.size() - 1), "pairs have their size");
        std::vector<uint8_t> back(bytes.size());
        hex_pairs_to_bytes(text, back);
        must(std::equal(bytes.begin(), bytes.end(), back.begin()), "pairs read as their bytes");
    }
    must(hex_digits_from_bytes(bytes).size() == 2 * bytes.size(), "digits have their size");
}

void check_numbers(const std::string& text, int base) {
    const char* end = nullptr;
    char* wanted_end = nullptr;
    const int64_t value = tk_strtoll(text.c_str(), &end, base);
    must(value == std::strtoll(text.c_str(), &wanted_end, base), "numbers read as the C library's");
    must(end == wanted_end, "and end where they do");
    uint32_t word = 0x5A5A5A5A;
    const int64_t hex = std::strtoll(text.c_str(), &wanted_end, 16);
    const bool any = wanted_end != text.c_str();
    must(hex_scan(text, &word) == any && word == (any ? static_cast<uint32_t>(hex) : 0x5A5A5A5A),
         "a scan gives the low 32 bits or nothing");
    uint32_t again = 0;
    must(hex_scan(
             hex_digits_from_bytes(std::array{static_cast<uint8_t>(word >> 24), static_cast<uint8_t>(word >> 16),
                                              static_cast<uint8_t>(word >> 8), static_cast<uint8_t>(word)}),
             &again) &&
             again == word,
         "a word's digits scan as the word");
    std::array<uint8_t, 4> bytes{};
    hex_pairs_to_bytes(hex_pairs_from_word(word), bytes);
    must((static_cast<uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3]) == word,
         "a word's pairs read as its bytes");
}

constexpr const family_descriptor* families[] = {&generic_family};

/// Any text may stand in the store.
void check_store(const std::string& text) {
    static const auto dev = dev_open(families, "VKT531A");
    for (const field& row : generic_fields)
        if (row.key != nullptr) tk_object_set_prop_str(dev->props.get(), row.key, text.c_str());
    cfg_image_from_props(*dev);
    cfg_image_to_props(*dev);
    cfg_image_from_props(*dev);
    const std::vector<uint8_t> image = dev->image;
    cfg_image_to_props(*dev);
    cfg_image_from_props(*dev);
    must(dev->image == image, "what the store took reads back the same");
}

void check_utf8(const std::string& text, std::size_t length) {
    const std::string cut = tk_utf8_cut(text, length);
    must(starts(text, cut) && cut.size() <= length, "a cut text is the start of the text");
    must(cut.size() + 3 >= std::min(length, text.size()), "no more than a character is lost");
    const std::string clean = str_from_wstr(wstr_from_str(text));
    must(str_from_wstr(wstr_from_str(clean)) == clean, "a converted text stays");
    must(clean.size() <= 3 * text.size(), "a conversion is limited");
    const std::string clean_cut = tk_utf8_cut(clean, length);
    must(str_from_wstr(wstr_from_str(clean_cut)) == clean_cut, "a cut goes between characters");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz_input in(data, size);
    const int base = static_cast<int>(in.below(35)) + 2;
    const std::size_t length = in.byte();
    const std::string text = in.text();
    check_edit_rules(text);
    check_pairs(std::vector<uint8_t>(text.begin(), text.end()));
    check_numbers(text, base);
    check_store(text);
    check_utf8(text, length);
    must(family_of_model(families, text) == nullptr || text == "VKT531A" || text == "VKT530A", "a model is known");
    return 0;
}
