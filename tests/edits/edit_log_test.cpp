#include "edits/edit_log.h"

#include "dev_a/family.h"
#include "dev_b/family.h"
#include "dev_generic/family.h"

#include <gtest/gtest.h>

namespace {

constexpr const family_descriptor* families[] = {&vkt510a_family, &generic_family, &vkt610b_family};

struct EditLog : testing::Test {
    std::unique_ptr<dev_obj> dev = dev_open(families, "VKT531A");
    edit_log log{*dev};

    /// One edit as a page makes it.
    void edit(const char* key, uint8_t value, bool typing = false) {
        tk_object_set_prop_uint8(dev->props.get(), key, value);
        static_cast<void>(dev_encode(*dev, key));
        log.note({.what = field_find(dev->of.fields, key), .typing = typing}, false);
    }
    uint8_t stored(const char* key) const { return tk_object_get_prop_uint8(dev->props.get(), key, 99); }
    std::string code() const { return dev->of.code_text(*dev, {}, nullptr); }
};

TEST_F(EditLog, a_new_one_has_nothing_to_take_back_and_nothing_to_do_again) {
    EXPECT_EQ(log.undoable(), nullptr);
    EXPECT_EQ(log.redoable(), nullptr);
    EXPECT_EQ(log.undo(), nullptr);
    EXPECT_EQ(log.redo(), nullptr);
}

TEST_F(EditLog, a_step_is_taken_back_and_done_again_byte_for_byte) {
    const std::string before = code();
    edit("change_mode", 1);
    const std::string after = code();
    ASSERT_NE(before, after);
    ASSERT_NE(log.undoable(), nullptr);
    EXPECT_EQ(log.undoable()->name, "转换模式");
    ASSERT_EQ(log.undoable()->values.size(), 1U);
    EXPECT_EQ(log.undoable()->bytes.size(), 1U);

    EXPECT_EQ(log.undo()->name, "转换模式");
    EXPECT_EQ(code(), before);
    EXPECT_EQ(stored("change_mode"), 2);
    EXPECT_EQ(log.undoable(), nullptr);
    ASSERT_NE(log.redoable(), nullptr);

    EXPECT_EQ(log.redo()->name, "转换模式");
    EXPECT_EQ(code(), after);
    EXPECT_EQ(stored("change_mode"), 1);
    EXPECT_EQ(log.redoable(), nullptr);
}

TEST_F(EditLog, what_changes_nothing_is_no_step) {
    log.note({.name = "恢复默认"}, true);
    EXPECT_EQ(log.undoable(), nullptr);
}

TEST_F(EditLog, strokes_at_one_field_are_one_step_until_it_is_left) {
    edit("spi_ff_time", 1, true);
    edit("spi_ff_time", 12, true);
    log.note({.what = field_find(dev->of.fields, "spi_ff_time")}, false); // left
    edit("spi_ff_time", 3, true);
    log.undo();
    EXPECT_EQ(stored("spi_ff_time"), 12);
    log.undo();
    EXPECT_EQ(stored("spi_ff_time"), 5);
    EXPECT_EQ(log.undo(), nullptr);
}

TEST_F(EditLog, strokes_that_come_back_to_the_beginning_leave_no_step) {
    const uint8_t first = stored("spi_ff_time");
    edit("spi_ff_time", 1, true);
    edit("spi_ff_time", first, true);
    EXPECT_EQ(log.undoable(), nullptr);
}

TEST_F(EditLog, strokes_at_a_field_that_is_in_no_byte_of_the_image_are_one_step_too) {
    edit("spi_data_len", 7, true);
    edit("spi_data_len", 6, true);
    log.undo();
    EXPECT_EQ(stored("spi_data_len"), 8);
    EXPECT_EQ(log.undo(), nullptr);
    log.redo();
    EXPECT_EQ(stored("spi_data_len"), 6);
}

TEST_F(EditLog, what_a_later_stroke_changes_beside_its_field_belongs_to_the_step) {
    const std::vector<uint8_t> before = dev->image;
    edit("spi_ff_time", 1, true);
    tk_object_set_prop_uint8(dev->props.get(), "change_mode", 1);
    static_cast<void>(dev_encode(*dev, "change_mode"));
    edit("spi_ff_time", 12, true);
    log.undo();
    EXPECT_EQ(dev->image, before);
    EXPECT_EQ(stored("change_mode"), 2);
    EXPECT_EQ(log.undo(), nullptr);
}

TEST_F(EditLog, the_first_and_the_last_of_the_fields_and_bytes_are_taken_back_too) {
    const std::vector<uint8_t> before = dev->image;
    const field* ends[] = {&dev->of.fields.front(), &dev->of.fields.back()};
    std::vector<field_value> values;
    for (const field* one : ends) {
        values.push_back(value_of(*one, dev->props.get()));
        value_store(*one, {1, values.back().text}, dev->props.get());
        if (value_of(*one, dev->props.get()) == values.back()) value_store(*one, {2, "否"}, dev->props.get());
    }
    dev->image.front() ^= 0xFF;
    dev->image.back() ^= 0xFF;
    log.note({}, false);
    log.undo();
    EXPECT_EQ(dev->image, before);
    for (std::size_t i = 0; i < 2; ++i) EXPECT_EQ(value_of(*ends[i], dev->props.get()), values[i]) << i;
}

TEST_F(EditLog, strokes_at_two_fields_are_two_steps) {
    edit("spi_ff_time", 1, true);
    edit("change_star", 4, true);
    edit("spi_ff_time", 5, true);
    log.undo();
    EXPECT_EQ(stored("spi_ff_time"), 1);
    EXPECT_EQ(stored("change_star"), 4);
    log.undo();
    EXPECT_EQ(stored("spi_ff_time"), 1);
    log.undo();
    EXPECT_EQ(log.undoable(), nullptr);
}

TEST_F(EditLog, a_stroke_after_a_step_was_taken_back_is_a_step_of_its_own) {
    edit("spi_ff_time", 1, true);
    edit("change_star", 4, true);
    log.undo();
    edit("spi_ff_time", 2, true);
    log.undo();
    EXPECT_EQ(stored("spi_ff_time"), 1);
}

TEST_F(EditLog, a_new_step_forgets_those_that_were_taken_back) {
    edit("change_mode", 1);
    edit("change_mode", 3);
    log.undo();
    edit("change_dir", 1);
    EXPECT_EQ(log.redoable(), nullptr);
    log.undo();
    EXPECT_EQ(stored("change_mode"), 1);
    log.undo();
    EXPECT_EQ(stored("change_mode"), 2);
    EXPECT_EQ(log.undoable(), nullptr);
}

TEST_F(EditLog, the_form_of_the_code_goes_with_the_steps) {
    edit("change_mode", 1);
    dev_restore(*dev);
    log.note({.name = "恢复默认"}, true);
    edit("change_mode", 3);
    EXPECT_TRUE(log.undoable()->restored_before);
    log.undo();
    edit("change_mode", 1);
    EXPECT_TRUE(log.undoable()->restored_before);
}

TEST_F(EditLog, a_cause_without_a_label_is_named_after_what_it_changed) {
    tk_object_set_prop_uint8(dev->props.get(), "change_mode", 1);
    log.note({.what = &no_field}, false);
    EXPECT_EQ(log.undoable()->name, "转换模式");
}

TEST_F(EditLog, what_has_many_causes_is_named_after_them) {
    dev_restore(*dev);
    edit("change_mode", 1);
    dev_restore(*dev);
    log.note({.name = "恢复默认"}, true);
    EXPECT_EQ(log.undoable()->name, "恢复默认");
    EXPECT_TRUE(log.undoable()->restored_after);
    EXPECT_FALSE(log.undoable()->restored_before);
}

TEST_F(EditLog, a_step_starts_from_the_form_that_the_code_was_last_shown_in) {
    edit("change_mode", 1);
    dev_restore(*dev);
    log.shown(true); // shown before it is noted
    log.note({.name = "恢复默认"}, true);
    EXPECT_FALSE(log.undoable()->restored_before);
    log.shown(false); // as by another form of the code
    edit("change_mode", 3);
    EXPECT_FALSE(log.undoable()->restored_before);
    log.undo();
    log.shown(true);
    tk_object_set_prop_uint8(dev->props.get(), "spi_data_len", 7); // in no byte of the image
    log.shown(false);
    log.note({}, false);
    EXPECT_TRUE(log.undoable()->restored_before);
    dev->image[6] ^= 1; // no field's
    log.shown(true);
    log.note({}, true);
    EXPECT_FALSE(log.undoable()->restored_before);
}

TEST_F(EditLog, a_reply_is_taken_back_with_the_bytes_that_no_field_holds) {
    std::vector<uint8_t> reply(60);
    for (std::size_t i = 0; i < reply.size(); ++i) reply[i] = static_cast<uint8_t>(i);
    const std::vector<uint8_t> before = dev->image;
    dev_accept(*dev, reply);
    log.note({.name = "读取配置"}, false);
    const std::vector<uint8_t> after = dev->image;
    log.undo();
    EXPECT_EQ(dev->image, before);
    log.redo();
    EXPECT_EQ(dev->image, after);
    EXPECT_EQ(dev->image[6], 6) << "no field's";
}

TEST_F(EditLog, five_hundred_steps_are_kept) {
    for (int i = 0; i < 501; ++i) edit("spi_ff_time", static_cast<uint8_t>(i % 200 + 1));
    std::size_t undone = 0;
    while (log.undo() != nullptr) ++undone;
    EXPECT_EQ(undone, 500U);
    EXPECT_EQ(stored("spi_ff_time"), 1) << "the first of them cannot be taken back any more";
}

// Whatever is done in whatever order: taking all back and doing all again leads through the same states.
TEST(edit_log, goes_back_and_forth_through_the_same_states_in_every_family) {
    for (const char* model : {"VKT531A", "VKT510A", "VKT610B"}) {
        const auto dev = dev_open(families, model);
        edit_log log(*dev);
        std::vector<std::vector<uint8_t>> images{dev->image};
        uint32_t random = 1;
        const auto next = [&random] { return (random = random * 1664525 + 1013904223) >> 16; };
        while (images.size() < 100) {
            const field& row = dev->of.fields[next() % dev->of.fields.size()];
            if (next() % 10 == 0) {
                std::vector<uint8_t> reply(dev->image.size());
                for (uint8_t& byte : reply) byte = static_cast<uint8_t>(next());
                dev_accept(*dev, reply);
            } else if (row.key != nullptr && !value_is_text(row)) {
                value_store(row, {next() % 3}, dev->props.get());
                static_cast<void>(dev_encode(*dev, row.key));
            }
            if (dev->image == images.back()) continue;
            log.note({.what = &row}, false);
            images.push_back(dev->image);
        }
        for (std::size_t i = images.size() - 1; i-- > 0;) {
            // An edit of what the image does not hold is a step too.
            while (dev->image != images[i]) ASSERT_NE(log.undo(), nullptr) << model << i;
        }
        for (std::size_t i = 1; i < images.size(); ++i)
            while (dev->image != images[i]) ASSERT_NE(log.redo(), nullptr) << model << i;
    }
}

} // namespace
