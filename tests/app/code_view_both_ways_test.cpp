// The code view lives both ways: marks of edits, marks of the field at hand, what a byte says, and where a click
// leads.
#include "app/code_view.h"
#include "dev_a/pages/vkt510a_pages.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "dev_generic/pages/generic_pages.h"
#include "tests/support/app_fixture.h"
#include "tests/support/user.h"

namespace {

class both_ways : public app_test {
  protected:
    static void does(const std::string& script) { EXPECT_EQ(user_does(script), ""); }
    /// As after a good read of what is edited now.
    static void module_holds_it(const family_pages& of) {
        dev_obj& dev = device(of);
        dev_module_holds(dev, std::vector<uint8_t>(dev.image));
        code_view_refresh(home(), of);
    }
};

TEST_F(both_ways, nothing_is_marked_before_the_module_is_known) {
    does("pick page_change/combo_box_ex 自定义协议转换\nhover button_copy\nclick button_copy\n"
         "expect mledit marks \"\"\n");
}

TEST_F(both_ways, edits_are_marked_until_they_are_taken_back) {
    module_holds_it(generic_pages);
    does("pick page_change/combo_box_ex 自定义协议转换\nclick button_copy\nexpect mledit marks \"differs 138+2\"\n"
         "click code_mode\nclick button_copy\nexpect mledit marks \"differs 275+2\"\nclick code_mode\n"
         "pick page_change/combo_box_ex 透明带标识转换\nclick button_copy\nexpect mledit marks \"\"\n");
    does("pick page_change/combo_box_ex 自定义协议转换\nclick button_copy\n");
    module_holds_it(generic_pages);
    does("expect mledit marks \"\"\n");
}

TEST_F(both_ways, resting_on_a_field_marks_its_bytes_and_the_keyboard_does) {
    does("hover page_change/combo_box_ex1\nexpect mledit marks \"at_hand 141+2\"\n"
         "hover button_copy\nexpect mledit marks \"\"\n"
         "click page_change/combo_box_ex1\nkey Esc\nhover button_copy\nexpect mledit marks \"at_hand 141+2\"\n"
         "hover page_change/edit\nexpect mledit marks \"at_hand 174+2\"\n" // disabled
         "hover button_copy\nexpect mledit marks \"at_hand 141+2\"\n"
         "click button_copy\nexpect mledit marks \"\"\n");
}

TEST_F(both_ways, a_byte_says_its_field_and_the_layouts_text_comes_back) {
    does("expect mledit tooltip \"写入时发送的字节，与各页同步\"\n"
         "hover-at mledit 138\nexpect mledit tooltip \"转换参数 · 转换模式　字节 42　02 = 透明带标识转换\"\n"
         "expect mledit marks \"at_hand 138+2\"\nexpect mledit hovered 138\n"
         "hover button_copy\nexpect mledit tooltip \"写入时发送的字节，与各页同步\"\nexpect mledit marks \"\"\n");
}

TEST_F(both_ways, a_click_on_a_byte_goes_to_its_field) {
    does("click table_button_can\nclick-at mledit 138\n"
         "expect page_change visible 1\nexpect table_button_change value 1\nexpect page_change/combo_box_ex "
         "focused 1\n"
         "click-at mledit 45\nexpect page_can visible 1\n"); // the mask, which does not count: its page is shown
    does("pick combo_box_ex_dev VKT610B\n"
         // The bus mode of channel 2: register 6, byte 2, low half.
         "click-at mledit 363\nexpect vkt610b_tab_button_canfd value 1\nexpect tab_button_canfd2 value 1\n"
         "expect page_vkt610b_canfd_2 visible 1\nexpect combo_box_ex_mode_vkt610b_canfd2 focused 1\n"
         // The mode, from anywhere on its line.
         "click-at mledit 0\nexpect page_vkt610b_change visible 1\nexpect combo_box_ex_1_vkt610b focused 1\n");
}

TEST_F(both_ways, copying_gives_the_text_alone) {
    module_holds_it(generic_pages);
    does("pick page_change/combo_box_ex 自定义协议转换\nhover-at mledit 138\nclick button_copy\n");
    const dev_obj& dev = device(generic_pages);
    EXPECT_EQ(clip_board_get_text(), dev.of.code_text(dev, {}, nullptr));
}

TEST_F(both_ways, another_form_under_a_resting_pointer_says_what_stands_there_now) {
    does("hover-at mledit 138\nexpect mledit tooltip \"转换参数 · 转换模式　字节 42　02 = 透明带标识转换\"\n");
    widget* form = widget_lookup(home(), "code_mode");
    widget_set_value_int(form, 1);
    widget_dispatch_simple_event(form, event_type::value_changed);
    widget_dispatch_simple_event(form, event_type::click);
    const std::string now = user_tries("expect home_page/mledit tooltip nothing\n");
    does("hover button_copy\nhover-at mledit 138\n");
    EXPECT_EQ(user_tries("expect home_page/mledit tooltip nothing\n"), now);
    EXPECT_THAT(now, testing::Not(testing::HasSubstr("转换模式")));
}

TEST_F(both_ways, another_model_has_its_own_marks) {
    module_holds_it(generic_pages);
    does("pick page_change/combo_box_ex 自定义协议转换\npick combo_box_ex_dev VKT510A\nclick button_copy\n"
         "expect mledit marks \"\"\n");
    module_holds_it(vkt510a_pages);
    does("pick combo_box_ex_vkt510a 透明转换\nclick button_copy\nexpect mledit marks \"differs 138+2\"\n");
    code_view_refresh(home(), generic_pages); // not on show
    does("expect mledit marks \"differs 138+2\"\n");
}

} // namespace
