#include "edits/put_back.h"

#include "dev_a/family.h"
#include "dev_b/family.h"
#include "dev_generic/family.h"

#include <gtest/gtest.h>

namespace {

constexpr const family_descriptor* families[] = {&vkt510a_family, &generic_family, &vkt610b_family};

const field& row_of(const dev_obj& dev, const char* key) { return *field_find(dev.of.fields, key); }

void store(dev_obj& dev, const char* key, uint32_t number) {
    value_store(row_of(dev, key), {number}, dev.props.get());
    static_cast<void>(dev_encode(dev, key));
}

TEST(dev_unwritten, counts_against_the_defaults_before_the_module_is_known) {
    const auto dev = dev_open(families, "VKT531A");
    EXPECT_TRUE(dev_unwritten(*dev).empty());
    store(*dev, "change_mode", 3);
    const auto found = dev_unwritten(*dev);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_STREQ(found[0].what->key, "change_mode");
    EXPECT_EQ(found[0].left.number, 2U);
    EXPECT_EQ(found[0].right.number, 3U);
    EXPECT_FALSE(found[0].always_same);
}

TEST(dev_unwritten, counts_against_the_module_once_it_is_known_and_no_longer_when_it_was_left) {
    const auto dev = dev_open(families, "VKT510A");
    std::vector<uint8_t> reply = dev->image;
    reply[42] = 1; // conversion mode
    const date_time_t then{.hour = 14, .minute = 32, .second = 5, .year = 2025, .month = 3, .day = 4};
    date_time_set_test_clock(&then);
    dev_module_holds(*dev, reply);
    date_time_set_test_clock(nullptr);
    ASSERT_TRUE(dev->in_module);
    EXPECT_EQ(dev->in_module->at.minute, 32);
    ASSERT_EQ(dev_unwritten(*dev).size(), 1U);
    EXPECT_EQ(dev_unwritten(*dev)[0].left.number, 1U);
    EXPECT_EQ(dev_unwritten(*dev)[0].right.number, 2U);
    dev_module_unknown(*dev);
    EXPECT_FALSE(dev->in_module);
    EXPECT_TRUE(dev_unwritten(*dev).empty());
}

TEST(dev_unwritten, an_image_of_another_size_says_nothing_of_the_module) {
    const auto dev = dev_open(families, "VKT510A");
    dev_module_holds(*dev, std::vector<uint8_t>(59));
    EXPECT_FALSE(dev->in_module);
}

TEST(dev_unwritten, an_accepted_reply_is_what_the_module_holds) {
    for (const char* model : {"VKT531A", "VKT510A", "VKT610B"}) {
        const auto dev = dev_open(families, model);
        std::vector<uint8_t> reply = dev->image;
        dev_accept(*dev, reply);
        ASSERT_TRUE(dev->in_module) << model;
        EXPECT_EQ(dev->in_module->bytes, reply) << model;
        EXPECT_TRUE(dev_unwritten(*dev).empty()) << model;
        dev_accept(*dev, {});
        EXPECT_TRUE(dev->in_module) << model << ": the old one stands";
    }
}

TEST(dev_unwritten, what_the_program_always_writes_the_same_way_is_no_edit) {
    const auto dev = dev_open(families, "VKT531A");
    std::vector<uint8_t> module = dev->image;
    module[1] = 7; // data bits: 8 is written
    module[5] = 9; // check byte, a yes or no: 9 means the same as 1
    store(*dev, "spi_ff_time", 9);
    tk_object_set_prop_str(dev->props.get(), "change_err_check", "是");
    static_cast<void>(dev_encode(*dev, "change_err_check"));
    dev_module_holds(*dev, module);
    const auto edits = dev_unwritten(*dev);
    ASSERT_EQ(edits.size(), 1U);
    EXPECT_STREQ(edits[0].what->key, "spi_ff_time");
    const auto all = image_differences(dev->of, module, dev->image);
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(std::count_if(all.begin(), all.end(), [](const auto& one) { return one.always_same; }), 2);
}

TEST(edit_put_back, brings_the_modules_value_or_the_default) {
    const auto dev = dev_open(families, "VKT610B");
    const std::vector<uint8_t> defaults = dev->image;
    store(*dev, "change_mode_vkt610b", 1);
    const std::vector<uint8_t> module = dev->image;
    dev_module_holds(*dev, module);
    store(*dev, "change_mode_vkt610b", 2);
    ASSERT_NE(dev->image, module);
    const field& mode = row_of(*dev, "change_mode_vkt610b");
    EXPECT_EQ(edit_put_back(*dev, mode, put_back_to::module), RET_OK);
    EXPECT_EQ(dev->image, module);
    EXPECT_EQ(edit_put_back(*dev, mode, put_back_to::defaults), RET_OK);
    EXPECT_EQ(dev->image, defaults);
    dev_module_unknown(*dev);
    store(*dev, "change_mode_vkt610b", 2);
    EXPECT_EQ(edit_put_back(*dev, mode, put_back_to::module), RET_OK);
    EXPECT_EQ(dev->image, defaults) << "of a module that is not known";
}

TEST(edit_put_back, leaves_the_bytes_that_other_fields_hold) {
    const auto dev = dev_open(families, "VKT531A");
    std::vector<uint8_t> module = dev->image;
    for (std::size_t i = 26; i < 42; ++i)
        module[i] = static_cast<uint8_t>(i); // codes that a reply shows as defaults
    dev_accept(*dev, module);
    store(*dev, "change_mode", 3);
    EXPECT_EQ(edit_put_back(*dev, row_of(*dev, "change_mode"), put_back_to::module), RET_OK);
    EXPECT_EQ(dev->image, module);
}

TEST(edit_put_back, refuses_what_has_no_place) {
    const auto dev = dev_open(families, "VKT531A");
    EXPECT_EQ(edit_put_back(*dev, no_field, put_back_to::module), RET_BAD_PARAMS);
    EXPECT_EQ(edit_put_back(*dev, row_of(*dev, "spi_data_len"), put_back_to::module), RET_BAD_PARAMS);
}

TEST(edit_put_all_back, brings_all_of_the_module_or_of_the_defaults) {
    for (const char* model : {"VKT531A", "VKT510A", "VKT610B"}) {
        const auto dev = dev_open(families, model);
        const std::vector<uint8_t> defaults = dev->image;
        uint32_t number = 0;
        for (const field* what : fields_by_page(dev->of))
            if (!value_is_text(*what) && value_refusal(*what, {number % 2}).empty())
                value_store(*what, {number++ % 2}, dev->props.get());
        static_cast<void>(dev_encode(*dev));
        const std::vector<uint8_t> module = dev->image;
        ASSERT_NE(module, defaults);
        dev_accept(*dev, module);
        dev_restore(*dev);
        const std::size_t wanted = dev_unwritten(*dev).size();
        EXPECT_GT(wanted, 5U);
        EXPECT_EQ(edit_put_all_back(*dev, put_back_to::module), wanted) << model;
        EXPECT_EQ(dev->image, module) << model;
        EXPECT_GT(edit_put_all_back(*dev, put_back_to::defaults), 0U);
        EXPECT_TRUE(image_differences(dev->of, defaults, dev->image).empty()) << model;
        EXPECT_EQ(edit_put_all_back(*dev, put_back_to::defaults), 0U) << model;
    }
}

} // namespace
