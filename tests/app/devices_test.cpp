// The devices that the program works on: one per family, made when a model is chosen first, kept from then on.
#include "app/devices.h"

#include "dev_a/pages/vkt510a_pages.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "dev_generic/pages/generic_pages.h"
#include "tests/support/app_fixture.h"

namespace {

using testing::HasSubstr;
using testing::UnorderedElementsAre;

class made_devices : public app_test {
  protected:
    static void choose(const char* model) { pick("combo_box_ex_dev", model); }
    static void reopen() {
        ASSERT_EQ(navigator_replace("home_page"), RET_OK);
        settle();
    }
};

TEST_F(made_devices, are_made_when_a_model_of_their_family_is_chosen_first) {
    EXPECT_THAT(devices(), UnorderedElementsAre(device_of(generic_pages)));
    EXPECT_EQ(device_of(vkt510a_pages), nullptr);
    choose("VKT631B");
    ASSERT_NE(device_of(vkt610b_pages), nullptr);
    EXPECT_EQ(&device_of(vkt610b_pages)->of, vkt610b_pages.of);
    EXPECT_THAT(devices(), UnorderedElementsAre(device_of(generic_pages), device_of(vkt610b_pages)));
}

struct choice_case {
    const family_pages& of;
    std::vector<const char*> models;
    const char* elsewhere;
};

class one_device : public made_devices, public testing::WithParamInterface<choice_case> {};

TEST_P(one_device, serves_every_model_of_its_family) {
    const auto& [of, models, elsewhere] = GetParam();
    choose(elsewhere);
    choose(models.front());
    dev_obj* made = device_of(of);
    ASSERT_NE(made, nullptr);
    const std::size_t all = devices().size();
    for (const char* model : models) {
        choose(elsewhere);
        EXPECT_NE(current_device(), made);
        choose(model);
        EXPECT_EQ(current_model(), model);
        EXPECT_EQ(current_pages(), &of);
        EXPECT_EQ(current_device(), made);
        EXPECT_EQ(device_make(of), made);
    }
    EXPECT_EQ(devices().size(), all);
}

INSTANTIATE_TEST_SUITE_P(families, one_device,
                         testing::Values(choice_case{generic_pages, {"VKT530A", "VKT531A"}, "VKT510A"},
                                         choice_case{vkt510a_pages, {"VKT510A"}, "VKT610B"},
                                         choice_case{vkt610b_pages, {"VKT610B", "VKT630B", "VKT631B"}, "VKT530A"}),
                         [](const auto& one) { return std::string(one.param.of.of->device); });

TEST_F(made_devices, keep_what_was_edited_while_another_model_is_chosen) {
    pick("page_change/combo_box_ex", "自定义协议转换");
    choose("VKT610B");
    pick("combo_box_ex_1_vkt610b", "自定义转换");
    choose("VKT530A");
    EXPECT_EQ(text(at("page_change"), "combo_box_ex"), "自定义协议转换");
    EXPECT_THAT(text(home(), "mledit"), HasSubstr(" 00 00 03 00 02 "));
    choose("VKT630B");
    EXPECT_EQ(text(at("page_vkt610b_change"), "combo_box_ex_1_vkt610b"), "自定义转换");
    EXPECT_THAT(text(home(), "mledit"), HasSubstr("寄存器 00 的配置指令: AA0702FF0000000000"));
}

TEST_F(made_devices, keep_their_values_when_the_home_page_is_opened_anew) {
    pick("page_change/combo_box_ex", "自定义协议转换");
    choose("VKT510A");
    pick("combo_box_ex_vkt510a", "透明转换");
    const std::vector<dev_obj*> before = devices();
    reopen();
    EXPECT_EQ(devices(), before);
    EXPECT_EQ(current_model(), "VKT531A");
    EXPECT_EQ(text(at("page_change"), "combo_box_ex"), "自定义协议转换");
    EXPECT_THAT(text(home(), "mledit"), HasSubstr(" 00 00 03 00 02 "));
    choose("VKT510A");
    EXPECT_EQ(devices(), before);
    EXPECT_EQ(text(at("page_vkt510a_change"), "combo_box_ex_vkt510a"), "透明转换");
    EXPECT_THAT(text(home(), "mledit"), HasSubstr(" 00 00 01 00 02 "));
    // The page of the new window is bound to the same device.
    pick("combo_box_ex_vkt510a", "自定义协议转换");
    EXPECT_EQ(device(vkt510a_pages).image[42], 3);
    EXPECT_THAT(text(home(), "mledit"), HasSubstr(" 00 00 03 00 02 "));
}

TEST_F(made_devices, what_a_reply_held_beside_the_values_goes_when_the_home_page_is_opened_anew) {
    const std::string shown = text(home(), "mledit");
    device(generic_pages).image.assign(60, 0x11);
    reopen();
    EXPECT_EQ(text(home(), "mledit"), shown);
}

TEST_F(made_devices, that_were_forgotten_begin_anew) {
    choose("VKT510A");
    pick("combo_box_ex_vkt510a", "透明转换");
    choose("VKT531A");
    device_forget(vkt510a_pages);
    EXPECT_THAT(devices(), UnorderedElementsAre(device_of(generic_pages)));
    reopen(); // no page knows the old one
    choose("VKT510A");
    EXPECT_EQ(text(at("page_vkt510a_change"), "combo_box_ex_vkt510a"), "透明带标识转换");
}

TEST_F(made_devices, the_current_one_is_that_of_the_current_model) {
    EXPECT_EQ(current_model(), "VKT531A");
    EXPECT_EQ(current_device(), device_of(generic_pages));
    set_current_model("VKT999");
    EXPECT_EQ(current_pages(), nullptr);
    EXPECT_EQ(current_device(), nullptr);
    set_current_model("VKT510A"); // a model that was never chosen
    EXPECT_EQ(current_pages(), &vkt510a_pages);
    EXPECT_EQ(current_device(), nullptr);
    set_current_model(std::string(98, 'x') + "型");
    EXPECT_EQ(current_model(), std::string(98, 'x')); // no half character
}

TEST_F(made_devices, say_whether_any_session_runs) {
    plug("VKT531A");
    EXPECT_FALSE(session_any_running());
    module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
    click(home(), "button");
    EXPECT_TRUE(session_any_running());
    EXPECT_TRUE(device(generic_pages).session.running());
    com::abort_all();
    EXPECT_TRUE(wait([] { return !session_any_running(); }));
}

} // namespace
