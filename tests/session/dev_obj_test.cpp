#include "session/dev_obj.h"

#include "dev_a/family.h"
#include "dev_b/family.h"
#include "dev_generic/family.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

using testing::Each;
using testing::ElementsAre;

namespace {

constexpr const family_descriptor* families[] = {&vkt510a_family, &generic_family, &vkt610b_family};

std::unique_ptr<dev_obj> opened(const char* model) { return dev_open(families, model); }

TEST(dev_open, vkt510a_gives_the_a_object_with_its_properties) {
    const auto dev = opened("VKT510A");
    ASSERT_NE(dev, nullptr);
    EXPECT_EQ(&dev->of, &vkt510a_family);
    EXPECT_STREQ(dev->of.device, "VKT510A");
    EXPECT_EQ(tk_object_get_prop_uint8(dev->props.get(), "change_f_h_vkt510a", 0), 64);
    EXPECT_FALSE(tk_object_has_prop(dev->props.get(), "change_mode_vkt610b"));
    EXPECT_FALSE(dev->session.port_open());
    EXPECT_FALSE(dev->session.connected());
    EXPECT_FALSE(dev->session.running());
    EXPECT_EQ(dev->session.operation(), session_kind::none);
    EXPECT_EQ(dev->session.last_run(), 0U);
}

TEST(dev_open, all_three_b_models_give_the_b_object) {
    for (const char* model : {"VKT610B", "VKT630B", "VKT631B"}) {
        const auto dev = opened(model);
        ASSERT_NE(dev, nullptr) << model;
        EXPECT_STREQ(dev->of.device, "VKT610B") << model;
        EXPECT_EQ(tk_object_get_prop_uint32(dev->props.get(), "canfd_bps_do_tseg1_z_vkt610b", 0), 0x200020U);
    }
}

TEST(dev_open, both_generic_models_give_the_generic_object) {
    for (const char* model : {"VKT531A", "VKT530A"}) {
        const auto dev = opened(model);
        ASSERT_NE(dev, nullptr) << model;
        EXPECT_STREQ(dev->of.device, "VKT531A") << model;
        EXPECT_EQ(tk_object_get_prop_uint8(dev->props.get(), "spi_ff_fnum", 0), 15);
    }
}

TEST(dev_open, any_other_text_gives_none) {
    for (const char* model : {"", "vkt510a", "VKT510A ", "VKT51", static_cast<const char*>(nullptr)})
        EXPECT_EQ(opened(model), nullptr);
    constexpr const family_descriptor* one[] = {&vkt510a_family};
    EXPECT_EQ(dev_open(one, "VKT610B"), nullptr) << "of a family that is not in the list";
}

TEST(dev_open, a_new_object_is_encoded) {
    EXPECT_EQ(opened("VKT531A")->image[57], 5);
    EXPECT_EQ(opened("VKT510A")->image[54], 0x40);
    EXPECT_EQ(opened("VKT610B")->image[20], 0x0A);
}

TEST(dev_open, objects_have_values_and_images_of_their_own) {
    const auto one = opened("VKT531A"), other = opened("VKT531A");
    tk_object_set_prop_uint8(one->props.get(), "uart_baud_rate", 6);
    ASSERT_EQ(dev_encode(*one, "uart_baud_rate"), RET_OK);
    EXPECT_EQ(one->image[0], 6);
    EXPECT_EQ(other->image[0], 1);
    EXPECT_EQ(tk_object_get_prop_uint8(other->props.get(), "uart_baud_rate", 0), 1);
}

TEST(dev_encode, brings_one_key_or_all_up_to_date) {
    const auto dev = opened("VKT531A");
    std::ranges::fill(dev->image, uint8_t{0x5A});
    EXPECT_EQ(dev_encode(*dev, "no_such_key"), RET_FAIL);
    EXPECT_THAT(dev->image, Each(0x5A));
    ASSERT_EQ(dev_encode(*dev, "spi_ff_time"), RET_OK);
    EXPECT_EQ(dev->image[57], 5);
    EXPECT_EQ(dev->image[56], 0x5A);
    ASSERT_EQ(dev_encode(*dev), RET_OK);
    EXPECT_EQ(dev->image[56], 15);
    for (const char* whole : {"VKT510A", "VKT610B"}) { // for these families a whole encode is as good
        const auto other = opened(whole);
        const auto fresh = other->image;
        std::ranges::fill(other->image, uint8_t{0});
        EXPECT_EQ(dev_encode(*other, "any"), RET_OK);
        EXPECT_EQ(other->image, fresh);
    }
}

TEST(dev_accept, takes_an_image_of_the_right_size_over) {
    const auto dev = opened("VKT531A");
    std::vector<uint8_t> image(60);
    for (std::size_t i = 0; i < image.size(); i++) image[i] = static_cast<uint8_t>(i);
    dev_accept(*dev, image);
    EXPECT_EQ(dev->image, image) << "with the bytes that no property holds";
    EXPECT_EQ(tk_object_get_prop_uint8(dev->props.get(), "uart_f_distance", 0), 44);
}

TEST(dev_accept, without_an_image_the_old_one_is_decoded_again) {
    for (const std::size_t size : {0U, 59U, 61U}) {
        const auto dev = opened("VKT531A");
        const auto before = dev->image;
        tk_object_set_prop_uint8(dev->props.get(), "uart_f_distance", 99);
        dev_accept(*dev, std::vector<uint8_t>(size, 0x11));
        EXPECT_EQ(dev->image, before) << size;
        EXPECT_EQ(tk_object_get_prop_uint8(dev->props.get(), "uart_f_distance", 0), 2) << size;
    }
}

TEST(dev_restore, writes_the_defaults_and_encodes_them) {
    const auto dev = opened("VKT531A");
    const auto fresh = dev->image;
    tk_object_set_prop_uint8(dev->props.get(), "uart_baud_rate", 6);
    std::ranges::fill(dev->image, uint8_t{0x11});
    dev_restore(*dev);
    EXPECT_EQ(dev->image, fresh);
    EXPECT_EQ(tk_object_get_prop_uint8(dev->props.get(), "uart_baud_rate", 0), 1);
}

TEST(dev_restore, keeps_what_is_the_modules_own) {
    const auto dev = opened("VKT610B");
    tk_object_set_prop_uint32(dev->props.get(), "version", 0x0A182101);
    tk_object_set_prop_uint8(dev->props.get(), "change_mode_vkt610b", 0);
    dev_restore(*dev);
    EXPECT_EQ(tk_object_get_prop_uint32(dev->props.get(), "version", 0), 0x0A182101U);
    EXPECT_EQ(tk_object_get_prop_uint8(dev->props.get(), "change_mode_vkt610b", 9), 1);
    EXPECT_THAT(std::span(dev->image).last(4), ElementsAre(0x01, 0x21, 0x18, 0x0A));
}

TEST(dev_show, asks_whoever_shows_the_code) {
    const auto dev = opened("VKT531A");
    dev_show(*dev);
    int shown = 0;
    dev->shown = [&shown] { ++shown; };
    dev_show(*dev);
    EXPECT_EQ(shown, 1);
}

TEST(dev_session_input, holds_what_is_sent_beside_the_fixed_requests) {
    const auto generic = opened("VKT531A"), b = opened("VKT610B");
    EXPECT_TRUE(dev_session_input(*generic, session_kind::connect, false).requests.empty());
    EXPECT_TRUE(dev_session_input(*generic, session_kind::read, false).requests.empty());
    const auto write = dev_session_input(*generic, session_kind::write, false).requests;
    ASSERT_EQ(write.size(), 1u);
    EXPECT_EQ(write[0].size(), 65u);
    EXPECT_TRUE(dev_session_input(*b, session_kind::connect, false).requests.empty());
    EXPECT_EQ(dev_session_input(*b, session_kind::read, false).requests.size(), 1u);
    EXPECT_EQ(dev_session_input(*b, session_kind::write, true).requests.size(), 34u);
}

TEST(models, stand_in_the_selectors_order_with_their_values) {
    const std::pair<const char*, int> expected[] = {{"VKT510A", 3}, {"VKT531A", 1}, {"VKT530A", 6},
                                                    {"VKT610B", 2}, {"VKT630B", 4}, {"VKT631B", 5}};
    std::vector<std::pair<std::string, int>> found;
    for (const family_descriptor* of : families)
        for (const family_model& row : of->models) found.emplace_back(row.name, row.selector_value);
    EXPECT_THAT(found, testing::ElementsAreArray(expected));
    EXPECT_EQ(family_of_model(families, "VKT999"), nullptr);
    EXPECT_EQ(family_of_model(families, "VKT630B"), &vkt610b_family);
}

} // namespace
