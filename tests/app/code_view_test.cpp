// The code view of the home page: its two forms, what it shows after an edit, and restoring the defaults.
#include "app/model_switch.h"
#include "dev_a/pages/vkt510a_pages.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "dev_generic/family.h"
#include "dev_generic/pages/generic_pages.h"
#include "f7/f7_exchanges.h"
#include "tests/support/app_fixture.h"
#include "tests/support/user.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class code_view : public app_test {
  protected:
    static std::string code() { return text(home(), "mledit"); }
    static std::string listing(const family_pages& of, bool list, listing_blanks blanks = listing_blanks::show) {
        return f7_listing(f7_image_of(device(of)), list, blanks);
    }
    static void set(const family_pages& of, const char* key, uint32_t value) {
        tk_object_set_prop_uint32(device(of).props.get(), key, value);
    }
    static uint32_t value(const family_pages& of, const char* key) {
        return tk_object_get_prop_uint32(device(of).props.get(), key, 0xDEAD);
    }
};

struct form_case {
    const char* model;
    const char* form;  ///< the switch
    const char* combo; ///< on the first page
    const char* option;
    const char* plain; ///< how the code begins or ends: with the defaults, and after the edit
    const char* plain_edited;
    const char* other;
    const char* other_edited;
};

class code_forms : public code_view, public testing::WithParamInterface<form_case> {};

TEST_P(code_forms, follow_the_switch_at_a_click_and_at_every_edit) {
    const form_case& row = GetParam();
    if (text(home(), "combo_box_ex_dev") != row.model) pick("combo_box_ex_dev", row.model);
    EXPECT_THAT(code(), HasSubstr(row.plain));
    click(home(), row.form);
    EXPECT_THAT(code(), HasSubstr(row.other));
    pick(row.combo, row.option);
    EXPECT_THAT(code(), HasSubstr(row.other_edited));
    click(home(), row.form);
    EXPECT_THAT(code(), HasSubstr(row.plain_edited));
}

// The conversion mode is byte 42 of the image, and register 0 of the B family.
INSTANTIATE_TEST_SUITE_P(
    families, code_forms,
    testing::Values(
        form_case{"VKT531A", "code_mode", "page_change/combo_box_ex", "自定义协议转换", " 00 00 02 00 02 ",
                  " 00 00 03 00 02 ", " 0x00, 0x00, 0x02, 0x00, 0x02, ", " 0x00, 0x00, 0x03, 0x00, 0x02, "},
        form_case{"VKT510A", "code_mode_vkt510a", "combo_box_ex_vkt510a", "自定义协议转换", " 00 00 02 00 02 ",
                  " 00 00 03 00 02 ", " 0x00, 0x00, 0x02, 0x00, 0x02, ", " 0x00, 0x00, 0x03, 0x00, 0x02, "},
        form_case{"VKT610B", "code_mode_vkt610b", "combo_box_ex_1_vkt610b", "自定义转换",
                  "寄存器 00 的配置指令: AA0702FF00010000001D2C\n", "寄存器 00 的配置指令: AA0702FF0000000000",
                  "寄存器 00 的配置指令: AC0702FF0001000000", "寄存器 00 的配置指令: AC0702FF0000000000"}),
    [](const auto& one) { return std::string(one.param.model); });

TEST_F(code_view, an_image_as_a_list) {
    dev_obj& dev = device(generic_pages);
    dev.image = {1, 2, 3};
    dev.image.resize(60);
    click(home(), "code_mode");
    EXPECT_THAT(code(), StartsWith("{0xF7, 0xF8, 0x01, 0x3C, 0x01, 0x02, 0x03, 0x00, "));
    click(home(), "code_mode");
    EXPECT_THAT(code(), StartsWith("F7 F8 01 3C 01 02 03 00 "));
}

TEST_F(code_view, that_is_not_there_is_said_and_passed_over) {
    for (const family_pages* of : {&generic_pages, &vkt510a_pages, &vkt610b_pages})
        pick("combo_box_ex_dev", of->of->models.back().name);
    navigator_close("home_page");
    said_clear();
    for (const family_pages* of : {&vkt510a_pages, &vkt610b_pages}) {
        dev_show(device(*of));
        EXPECT_EQ(said(), "set mledit_text failed!\n");
        said_clear();
    }
    dev_show(device(generic_pages));
    EXPECT_EQ(said(), "");
}

// ---- defaults

TEST_F(code_view, generic_defaults_are_shown_in_the_restore_form) {
    click(home(), "table_button_uart");
    pick("page_uart/combo_box_ex_bps", "300");
    click(home(), "button_default");
    EXPECT_EQ(value(generic_pages, "uart_baud_rate"), 1U);
    EXPECT_EQ(code(), listing(generic_pages, false, listing_blanks::restore));
    EXPECT_THAT(code(), StartsWith("  F7 F8 01 3C   01 08 "));
    EXPECT_EQ(text(at("page_uart"), "combo_box_ex_bps"), "115200");
    click(home(), "code_mode");
    pick("page_uart/combo_box_ex_bps", "300");
    click(home(), "button_default");
    EXPECT_EQ(code(), listing(generic_pages, true, listing_blanks::restore));
    EXPECT_THAT(code(), StartsWith("{  0xF7, 0xF8, 0x01, 0x3C,   0x01, 0x08, "));
    click(home(), "code_mode"); // the usual form comes back with the next showing
    EXPECT_THAT(code(), StartsWith("F7 F8 01 3C 01 08 "));
}

TEST_F(code_view, restoring_appends_neither_options_nor_handlers_twice) {
    click(home(), "table_button_can");
    click(home(), "button_default");
    EXPECT_EQ(combo_box_count_options(widget_lookup(at("page_can"), "combo_box_ex_bps")), 16);
    said_clear();
    pick("page_can/combo_box_ex_Fkind", "标准帧");
    EXPECT_EQ(said(), "1231546548789\n"); // one line for one change
}

TEST_F(code_view, a_defaults_use_the_show_form_and_keep_the_last_replys_bytes) {
    pick("combo_box_ex_dev", "VKT510A");
    click(home(), "vkt510a_tab_button_uart");
    dev_obj& dev = device(vkt510a_pages);
    dev.image.assign(60, 0x11);
    pick("page_vkt510a_uart/combo_box_ex_bps_vkt510a", "300");
    click(home(), "code_mode_vkt510a");
    click(home(), "button_default");
    EXPECT_EQ(value(vkt510a_pages, "uart_bps_vkt510a"), 1U);
    EXPECT_EQ(dev.image[0], 1);
    for (const std::size_t at : {5U, 6U, 7U, 22U, 25U}) EXPECT_EQ(dev.image[at], 0x11);
    EXPECT_EQ(code(), listing(vkt510a_pages, true));
    EXPECT_THAT(code(), StartsWith("{0xF7, 0xF8, 0x01, 0x3C, 0x01, 0x08, "));
    widget* rates = widget_lookup(at("page_vkt510a_uart"), "combo_box_ex_bps_vkt510a");
    EXPECT_EQ(widget_get_text_utf8(rates), "115200");
    EXPECT_EQ(combo_box_count_options(rates), 16);
}

TEST_F(code_view, b_defaults_leave_the_version_and_restore_both_channels) {
    pick("combo_box_ex_dev", "VKT610B");
    for (const char* key : {"canfd1_speed_zc_vkt610b", "canfd2_speed_zc_vkt610b", "uart1_bps_vkt610b"})
        set(vkt610b_pages, key, 3);
    set(vkt610b_pages, "canfd_bps_do_div_vkt610b", 2);
    set(vkt610b_pages, "canfd2_check3_e_vkt610b", 7);
    set(vkt610b_pages, "version", 0x0A182101);
    click(home(), "button_default");
    EXPECT_EQ(value(vkt610b_pages, "canfd1_speed_zc_vkt610b"), 10U);
    EXPECT_EQ(value(vkt610b_pages, "canfd2_speed_zc_vkt610b"), 10U);
    EXPECT_EQ(value(vkt610b_pages, "uart1_bps_vkt610b"), 10U);
    EXPECT_EQ(value(vkt610b_pages, "canfd_bps_do_div_vkt610b"), 0x40004U);
    EXPECT_EQ(value(vkt610b_pages, "canfd2_check3_e_vkt610b"), 0U);
    EXPECT_EQ(value(vkt610b_pages, "version"), 0x0A182101U);
    EXPECT_THAT(code(), HasSubstr("寄存器 1B 的配置指令: AA0702FF1B04000400"));
    EXPECT_EQ(text(at("page_vkt610b_change"), "change_label_4_2_vkt610b"), "V1.1.2 24年10月");
}

} // namespace
