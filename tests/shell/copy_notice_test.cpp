#include "shell/copy_notice.h"

#include "tests/support/app_fixture.h"
#include "toolkit/core/date_time.h"

namespace {

class copy_notice : public app_test {
  protected:
    static constexpr const char* first = "button_copy";
    static constexpr const char* second = "button_default";
    void SetUp() override {
        app_test::SetUp();
        first_label = label(first);
        second_label = label(second);
        ASSERT_NE(first_label, second_label);
    }
    static std::string label(const char* button) { return text(home(), button); }
    static bool copied(const char* button) { return label(button) == text_copied; }
    std::string first_label, second_label;
};

TEST_F(copy_notice, stands_for_its_time_and_gives_the_label_back) {
    const int64_t pressed = time_now_ms();
    ASSERT_EQ(copy_with_notice(at(first), "one"), RET_OK);
    EXPECT_EQ(clip_board_get_text(), "one");
    EXPECT_TRUE(copied(first));
    ASSERT_TRUE(wait([] { return !copied(first); }));
    EXPECT_GE(time_now_ms() - pressed, copy_notice_ms);
    EXPECT_EQ(label(first), first_label);
}

TEST_F(copy_notice, pressed_once_more_the_time_begins_anew) {
    const int64_t pressed = time_now_ms();
    ASSERT_EQ(copy_with_notice(at(first), "one"), RET_OK);
    ASSERT_TRUE(wait([pressed] { return time_now_ms() - pressed >= copy_notice_ms / 4; }));
    const int64_t again = time_now_ms();
    ASSERT_EQ(copy_with_notice(at(first), "two"), RET_OK);
    EXPECT_EQ(clip_board_get_text(), "two");
    EXPECT_TRUE(copied(first));
    ASSERT_TRUE(wait([] { return !copied(first); }));
    EXPECT_GE(time_now_ms() - again, copy_notice_ms);
    EXPECT_EQ(label(first), first_label) << "its own, not the notice's";
}

TEST_F(copy_notice, another_button_takes_it_over) {
    ASSERT_EQ(copy_with_notice(at(first), "one"), RET_OK);
    ASSERT_EQ(copy_with_notice(at(second), "two"), RET_OK);
    EXPECT_EQ(label(first), first_label);
    EXPECT_TRUE(copied(second));
    ASSERT_TRUE(wait([] { return !copied(second); }));
    EXPECT_EQ(label(second), second_label);
    EXPECT_EQ(label(first), first_label);
}

TEST_F(copy_notice, a_window_that_has_gone_meanwhile_is_left_alone) {
    add_layout("with_copy",
               "  <widget class=\"QPushButton\" name=\"copy\">\n   <property name=\"text\"><string>own</string>"
               "</property>\n  </widget>\n",
               false);
    ASSERT_EQ(navigator_to("with_copy"), RET_OK);
    ASSERT_EQ(copy_with_notice(widget_lookup(navigator_find("with_copy"), "copy"), "one"), RET_OK);
    ASSERT_EQ(navigator_close("with_copy"), RET_OK);
    settle();
    ASSERT_EQ(copy_with_notice(at(first), "two"), RET_OK);
    EXPECT_TRUE(copied(first));
    EXPECT_TRUE(wait([] { return !copied(first); }));
    EXPECT_EQ(label(first), first_label);
}

TEST_F(copy_notice, without_a_button_or_a_text_nothing_is_copied) {
    ASSERT_EQ(clip_board_set_text("before"), RET_OK);
    EXPECT_EQ(copy_with_notice(nullptr, "one"), RET_BAD_PARAMS);
    EXPECT_EQ(copy_with_notice(at(first), nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(clip_board_get_text(), "before");
    EXPECT_EQ(label(first), first_label);
}

} // namespace
