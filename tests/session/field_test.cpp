// Rows of a field table: what they store, what they give for a missing key, and what the tables' checks find.
#include "session/field.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

using testing::ElementsAre;

namespace {

constexpr field rows[] = {
    {.key = "n", .form = value_form::number, .fallback = 3, .number = 7},
    {.key = "f", .form = value_form::flag, .fallback = 0, .number = 1},
    {.key = "w", .form = value_form::word, .fallback = 3, .number = 0xFEDCBA98},
    {.key = "y", .form = value_form::yes_no, .text = "是"},
    {.key = "h", .form = value_form::hex_text, .text = "12 34"},
    {.key = "t", .form = value_form::text, .text = "MSB"},
    {.place = {3, 0, 8}, .fallback = 1}, // bits without a property
};

TEST(field_table, keys_are_found_and_unique) {
    static_assert(field_find(rows, "w") == &rows[2] && field_find(rows, "x") == nullptr);
    static_assert(field_find(rows, "") == nullptr && field_find({}, "w") == nullptr);
    static_assert(field_keys_unique(rows) && field_keys_unique({}));
    static constexpr field twice[] = {{.key = "a"}, {.key = "b"}, {.key = "a"}};
    static constexpr field nameless[] = {{.key = nullptr}, {.key = nullptr}};
    static_assert(!field_keys_unique(twice) && field_keys_unique(nameless));
    // Equal by their characters, wherever these stand.
    static constexpr char here[] = "same", there[] = "same";
    static constexpr field same[] = {{.key = here}, {.key = there}};
    static_assert(!field_keys_unique(same));
    EXPECT_EQ(field_find(rows, std::string("w")), &rows[2]);
}

TEST(field_table, a_place_counts_whole_bytes) {
    static_assert(field_place{.at = 10, .bit = 0, .bits = 32}.bytes() == 4);
    static_assert(field_place{.at = 5, .bit = 20, .bits = 1}.bytes() == 0 && field_place{}.bytes() == 0);
    EXPECT_EQ((field_place{1, 0, 8}.bytes()), 1u);
}

TEST(field_highest, is_what_is_said_else_of_the_choices_else_of_the_form) {
    static constexpr choice_option choices[] = {{9, "a"}, {3, "b"}};
    EXPECT_EQ(field_highest({.highest = 5, .choices = choices}), 5U);
    EXPECT_EQ(field_highest({.choices = choices}), 9U);
    EXPECT_EQ(field_highest({.form = value_form::flag}), 1U);
    EXPECT_EQ(field_highest({.form = value_form::word}), 0xFFFFFFFFU);
    EXPECT_EQ(field_highest({.form = value_form::text}), 0U);
    EXPECT_EQ(field_highest({.place = {0, 20, 1}}), 1U);
    EXPECT_EQ(field_highest({.place = {0, 0, 8}}), 255U);
    EXPECT_EQ(field_highest(no_field), 255U);
}

TEST(field_defaults, each_form_is_stored_as_its_own_type) {
    const tk_object_ptr props(object_default_create());
    for (const field& row : field_rows(rows).first(6)) EXPECT_EQ(field_set_default(row, props.get()), RET_OK);
    EXPECT_THAT(tk_object_keys(props.get()), ElementsAre("n", "f", "w", "y", "h", "t"));
    EXPECT_EQ(tk_object_get_prop_int(props.get(), "n", -1), 7);
    EXPECT_TRUE(tk_object_get_prop_bool(props.get(), "f", false));
    EXPECT_EQ(tk_object_get_prop_uint32(props.get(), "w", 0), 0xFEDCBA98u);
    EXPECT_EQ(tk_object_get_prop_str(props.get(), "y", ""), "是");
    EXPECT_EQ(tk_object_get_prop_str(props.get(), "h", ""), "12 34");
    EXPECT_EQ(tk_object_get_prop_str(props.get(), "t", ""), "MSB");
}

TEST(field_defaults, numbers_keep_their_low_byte) {
    const tk_object_ptr props(object_default_create());
    constexpr field row = {.key = "n", .number = 0x1FF};
    ASSERT_EQ(field_set_default(row, props.get()), RET_OK);
    EXPECT_EQ(tk_object_get_prop_int(props.get(), "n", -1), 0xFF);
}

TEST(field_defaults, replace_what_is_there) {
    const tk_object_ptr props(object_default_create());
    for (const field& row : field_rows(rows).first(6)) tk_object_set_prop_str(props.get(), row.key, "other");
    tk_object_set_prop_uint8(props.get(), "foreign", 5);
    fields_set_defaults(rows, props.get());
    EXPECT_EQ(tk_object_get_prop_int(props.get(), "n", -1), 7);
    EXPECT_EQ(tk_object_get_prop_str(props.get(), "t", ""), "MSB");
    EXPECT_EQ(tk_object_get_prop_int(props.get(), "foreign", -1), 5);
    EXPECT_EQ(tk_object_keys(props.get()).size(), 7u) << "rows without a key store nothing";
}

TEST(field_defaults, one_key_can_be_left_out) {
    const tk_object_ptr props(object_default_create());
    fields_set_defaults(rows, props.get(), "w");
    EXPECT_THAT(tk_object_keys(props.get()), ElementsAre("n", "f", "y", "h", "t"));
}

TEST(field_defaults, a_store_that_refuses_a_key_says_so_and_takes_the_others) {
    for (const field& row : field_rows(rows).first(6)) {
        const tk_object_ptr props(object_default_create());
        tk_object_refuse(props.get(), row.key);
        EXPECT_EQ(field_set_default(row, props.get()), RET_FAIL) << row.key;
        fields_set_defaults(rows, props.get());
        EXPECT_FALSE(tk_object_has_prop(props.get(), row.key));
        EXPECT_EQ(tk_object_keys(props.get()).size(), 5u) << row.key;
    }
    EXPECT_EQ(field_set_default(rows[0], nullptr), RET_BAD_PARAMS);
}

TEST(field_values, are_the_stored_ones) {
    const tk_object_ptr props(object_default_create());
    tk_object_set_prop_uint8(props.get(), "n", 200);
    tk_object_set_prop_bool(props.get(), "f", false);
    tk_object_set_prop_uint32(props.get(), "w", 0x12345678);
    tk_object_set_prop_str(props.get(), "t", "LSB");
    EXPECT_EQ(field_byte(rows[0], props.get()), 200);
    EXPECT_EQ(field_byte(rows[1], props.get()), 0);
    EXPECT_EQ(field_word(rows[2], props.get()), 0x12345678u);
    EXPECT_EQ(field_byte(rows[2], props.get()), 0x78);
    EXPECT_EQ(field_text(rows[5], props.get()), "LSB");
    tk_object_set_prop_bool(props.get(), "f", true);
    EXPECT_EQ(field_byte(rows[1], props.get()), 1);
}

// The default, not what the codec packs for a missing key.
TEST(field_values, of_missing_keys_are_the_defaults) {
    const tk_object_ptr empty(object_default_create());
    for (const tk_object* props :
         {static_cast<const tk_object*>(empty.get()), static_cast<const tk_object*>(nullptr)}) {
        EXPECT_EQ(field_byte(rows[0], props), 7);
        EXPECT_EQ(field_byte(rows[1], props), 1);
        EXPECT_EQ(field_word(rows[2], props), 0xFEDCBA98u);
        EXPECT_EQ(field_byte(rows[2], props), 0x98);
        EXPECT_EQ(field_text(rows[3], props), "是");
        EXPECT_EQ(field_text(rows[5], props), "MSB");
    }
}

} // namespace
