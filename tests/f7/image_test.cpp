// The 60-byte image: what the tables' checks find, and what each form and rule of a row does.
#include "f7/image.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::Each;
using testing::ElementsAre;

namespace {

using image_bytes = std::array<uint8_t, f7_image_size>;

constexpr field one(const char* key, field_place place, value_form form = value_form::number) {
    return {.key = key, .place = place, .form = form};
}

TEST(f7_tables, checks_find_what_is_wrong) {
    using f7_place::bytes;
    static constexpr field beyond[] = {one("x", bytes(59, 4))};
    static constexpr field twice[] = {one("x", bytes(0, 2)), one("x", bytes(1, 1))};
    static constexpr field narrow[] = {one("x", bytes(0, 2), value_form::word)};
    static constexpr field wide[] = {one("x", bytes(0, 2))};
    static constexpr field whole[] = {f7_kept(bytes(0, 30)), f7_kept(bytes(30, 29)), one("x", bytes(59, 1))};
    static constexpr field hole[] = {f7_kept(bytes(0, 30)), f7_kept(bytes(30, 28)), one("x", bytes(59, 1))};
    static_assert(!f7_covers_image(beyond) && !f7_covers_image(twice) && f7_covers_image(whole));
    static_assert(!f7_covers_image(hole));
    static_assert(!field_keys_unique(twice) && field_keys_unique(whole));
    static_assert(!f7_widths_fit(narrow) && !f7_widths_fit(wide) && f7_widths_fit(whole));
    static_assert(field_find(whole, "x") == &whole[2] && field_find(whole, "y") == nullptr);
    EXPECT_EQ(f7_place::code2.at, 26);
    EXPECT_EQ(f7_place::code2.bit, 0);
    EXPECT_EQ(f7_place::code2.bits, 32);
}

/// A row's bytes after encoding into an image of 0x5A bytes; the bytes beside them must not change.
std::vector<uint8_t> encoded(const field& row, const tk_object_ptr& props) {
    image_bytes image;
    image.fill(0x5A);
    f7_encode_field(row, props.get(), image);
    const auto from = image.begin() + row.place.at, to = from + static_cast<long>(row.place.bytes());
    EXPECT_THAT(std::vector<uint8_t>(image.begin(), from), Each(0x5A));
    EXPECT_THAT(std::vector<uint8_t>(to, image.end()), Each(0x5A));
    return {from, to};
}

class f7_row : public testing::Test {
  protected:
    /// What decoding leaves in the store under "x".
    void decode(const field& row, std::initializer_list<uint8_t> bytes) {
        image_bytes image{};
        std::ranges::copy(bytes, image.begin() + row.place.at);
        f7_decode(std::span(&row, 1), props.get(), image);
    }
    std::string text() const { return tk_object_get_prop_str(props.get(), "x", "?"); }

    const tk_object_ptr props{object_default_create()};
};

TEST_F(f7_row, number) {
    const field row = {.key = "x", .place = f7_place::bytes(7, 1), .fallback = 9, .number = 3};
    EXPECT_THAT(encoded(row, props), ElementsAre(9)) << "the fallback, not the default";
    tk_object_set_prop_uint8(props.get(), "x", 200);
    EXPECT_THAT(encoded(row, props), ElementsAre(200));
    decode(row, {17});
    EXPECT_EQ(text(), "17");
}

TEST_F(f7_row, flag) {
    const field row = {.key = "x", .place = f7_place::bytes(0, 1), .form = value_form::flag, .fallback = 1};
    EXPECT_THAT(encoded(row, props), ElementsAre(1));
    tk_object_set_prop_bool(props.get(), "x", false);
    EXPECT_THAT(encoded(row, props), ElementsAre(0));
    decode(row, {0x80});
    EXPECT_TRUE(tk_object_get_prop_bool(props.get(), "x", false));
}

TEST_F(f7_row, yes_no) {
    const field row = {.key = "x", .place = f7_place::bytes(0, 1), .form = value_form::yes_no};
    EXPECT_THAT(encoded(row, props), ElementsAre(0));
    tk_object_set_prop_str(props.get(), "x", "是");
    EXPECT_THAT(encoded(row, props), ElementsAre(1));
    decode(row, {0});
    EXPECT_EQ(text(), "否");
    decode(row, {2});
    EXPECT_EQ(text(), "是");
}

TEST_F(f7_row, hex_text) {
    const field row = {.key = "x", .place = f7_place::bytes(56, 4), .form = value_form::hex_text};
    EXPECT_THAT(encoded(row, props), ElementsAre(0, 0, 0, 0));
    tk_object_set_prop_str(props.get(), "x", "12 aB");
    EXPECT_THAT(encoded(row, props), ElementsAre(0x12, 0xAB, 0, 0));
    decode(row, {0xFF, 0x00, 0x0A, 0xB0});
    EXPECT_EQ(text(), "ff 00 0a b0");
}

TEST_F(f7_row, word) {
    const field row = {
        .key = "x", .place = f7_place::bytes(10, 4), .form = value_form::word, .fallback = 0xFFFFFFFE};
    EXPECT_THAT(encoded(row, props), ElementsAre(0xFF, 0xFF, 0xFF, 0xFE));
    tk_object_set_prop_uint32(props.get(), "x", 0x12345678);
    EXPECT_THAT(encoded(row, props), ElementsAre(0x12, 0x34, 0x56, 0x78));
    decode(row, {0x87, 0x65, 0x43, 0x21});
    EXPECT_EQ(tk_object_get_prop_uint32(props.get(), "x", 0), 0x87654321u);
}

TEST_F(f7_row, rules_differ_for_encoding_and_decoding) {
    const field fixed = f7_fixed(f7_place::bytes(6, 2), 0xA5);
    EXPECT_THAT(encoded(fixed, props), ElementsAre(0xA5, 0xA5));
    EXPECT_THAT(encoded(f7_kept(f7_place::bytes(6, 2)), props), ElementsAre(0x5A, 0x5A));
    decode(fixed, {1, 2});
    EXPECT_TRUE(tk_object_keys(props.get()).empty());

    const field always = {.key = "x",
                          .place = f7_place::bytes(3, 1),
                          .fallback = 4,
                          .number = 8,
                          .encode = encode_rule::constant,
                          .decode = decode_rule::to_default};
    tk_object_set_prop_uint8(props.get(), "x", 99);
    EXPECT_THAT(encoded(always, props), ElementsAre(4));
    decode(always, {55});
    EXPECT_EQ(text(), "8");
}

TEST_F(f7_row, without_a_place_nothing_is_packed) {
    const field row = {.key = "x", .form = value_form::text, .text = "MSB", .decode = decode_rule::to_default};
    EXPECT_THAT(encoded(row, props), ElementsAre());
    decode(row, {});
    EXPECT_EQ(text(), "MSB");
}

TEST_F(f7_row, a_store_without_an_object_packs_the_fallbacks) {
    const field row = {.key = "x", .place = f7_place::bytes(7, 1), .fallback = 9};
    EXPECT_THAT(encoded(row, tk_object_ptr()), ElementsAre(9));
}

} // namespace
