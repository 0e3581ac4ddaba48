#include "tests/toolkit/ravel/stage.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class edits : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        open(ui_window(
            ui_widget("QLineEdit", "edit", "10 10 200 30") + ui_widget("QLineEdit", "next", "10 50 200 30") +
            ui_widget("QSpinBox", "spin", "10 90 100 30", ui_number("minimum", 0) + ui_number("maximum", 255)) +
            ui_widget("QLabel", "label", "10 130 100 30")));
    }
};

TEST_F(edits, each_keystroke_is_told_and_leaving_tells_the_change_once) {
    told.hear(at("edit"), event_type::value_changing);
    told.hear(at("edit"), event_type::value_changed);
    told.hear(at("edit"), event_type::blur);
    click(at("edit"));
    type("1a");
    EXPECT_THAT(told.take(), ElementsAre("edit:value_changing", "edit:value_changing"));
    key("Tab");
    EXPECT_THAT(told.take(), ElementsAre("edit:value_changed", "edit:blur"));
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "1a");
    EXPECT_TRUE(widget_get_focused(at("next")));
}

TEST_F(edits, enter_tells_the_change_and_leaving_does_not_repeat_it) {
    told.hear(at("edit"), event_type::value_changed);
    click(at("edit"));
    type("7");
    key("Enter");
    EXPECT_THAT(told.take(), SizeIs(1));
    key("Enter");
    key("Tab");
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(edits, text_typed_and_taken_back_is_no_change) {
    told.hear(at("edit"), event_type::value_changed);
    click(at("edit"));
    type("7");
    key("Backspace");
    key("Tab");
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(edits, paste_cut_and_drop_of_text_are_keystrokes_too) {
    told.hear(at("edit"), event_type::value_changing);
    clip_board_set_text("12 34");
    EXPECT_EQ(QApplication::clipboard()->text(), "12 34");
    click(at("edit"));
    key("Ctrl+v");
    EXPECT_THAT(told.take(), SizeIs(1));
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "12 34");
    key("Ctrl+a");
    key("Ctrl+x");
    EXPECT_THAT(told.take(), SizeIs(1));
    key("Ctrl+z");
    EXPECT_THAT(told.take(), SizeIs(1));
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "12 34");
}

TEST_F(edits, text_set_from_code_tells_nothing) {
    for (const event_type type : {event_type::value_changing, event_type::value_changed})
        told.hear(at("edit"), type);
    click(at("edit"));
    widget_set_text_utf8(at("edit"), "FF");
    widget_set_value_int(at("edit"), 42);
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "42");
    EXPECT_EQ(widget_get_value_int(at("edit")), 42);
    key("Tab");
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(edits, focus_handlers_run_before_the_text_is_selected) {
    widget_set_text_utf8(at("edit"), "00 00 01 A2");
    widget_on(at("edit"), event_type::focus, [this](const event& e) {
        EXPECT_FALSE(static_cast<QLineEdit*>(qwidget_of(e.target))->hasSelectedText());
        return widget_set_text_utf8(at("edit"), "000001A2");
    });
    click(at("next"));
    key("Shift+Tab");
    EXPECT_EQ(static_cast<QLineEdit*>(qwidget_of(at("edit")))->selectedText(), "000001A2");
    type("FF");
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "FF") << "typing replaces the selection";
}

TEST_F(edits, what_a_focus_handler_shows_is_no_change_of_the_user) {
    widget_on(at("edit"), event_type::focus,
              [this](const event&) { return widget_set_text_utf8(at("edit"), "raw"); });
    told.hear(at("edit"), event_type::value_changed);
    click(at("edit"));
    key("Tab");
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(edits, blur_and_focus_follow_the_keyboard_focus_in_order) {
    for (const char* name : {"edit", "next"})
        for (const event_type type : {event_type::focus, event_type::blur}) told.hear(at(name), type);
    click(at("edit"));
    click(at("next"));
    key("Shift+Tab");
    EXPECT_THAT(told.take(), ElementsAre("edit:focus", "edit:blur", "next:focus", "next:blur", "edit:focus"));
}

TEST_F(edits, a_dialog_on_top_takes_the_focus_and_gives_it_back) {
    for (const event_type type : {event_type::focus, event_type::blur}) told.hear(at("edit"), type);
    click(at("edit"));
    widget* below = win;
    widget* card = open(ui_dialog(ui_widget("QLineEdit", "inner", "10 10 90 30")), "card");
    EXPECT_THAT(told.take(), ElementsAre("edit:focus", "edit:blur"));
    EXPECT_TRUE(widget_get_focused(at("inner")));
    dialog_quit(card, 0);
    settle();
    EXPECT_TRUE(widget_get_focused(widget_lookup(below, "edit")));
    EXPECT_THAT(told.take(), ElementsAre("edit:focus"));
}

TEST_F(edits, limit_holds_for_typing_and_pasting) {
    EXPECT_EQ(edit_set_text_limit(at("edit"), 0, 11), RET_OK);
    click(at("edit"));
    type("12345678901234");
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "12345678901");
    clip_board_set_text("abcdefghijklmnop");
    key("Ctrl+a");
    key("Ctrl+v");
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "abcdefghijk");
    EXPECT_EQ(edit_set_text_limit(at("label"), 0, 11), RET_BAD_PARAMS);
    EXPECT_EQ(edit_set_text_limit(at("edit"), 5, 4), RET_BAD_PARAMS);
    EXPECT_EQ(edit_set_text_limit(nullptr, 0, 4), RET_BAD_PARAMS);
}

TEST_F(edits, a_handler_may_correct_what_is_typed) {
    widget_on(at("edit"), event_type::value_changing, [this](const event&) {
        std::string text = widget_get_text_utf8(at("edit"));
        if (!text.empty() && text.back() == 'g') text.pop_back();
        return widget_set_text_utf8(at("edit"), text.c_str());
    });
    told.hear(at("edit"), event_type::value_changed);
    click(at("edit"));
    type("1g2");
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "12");
    key("Tab");
    EXPECT_THAT(told.take(), SizeIs(1));
}

TEST_F(edits, spin_box_tells_each_keystroke_and_gives_what_is_typed_now) {
    std::vector<std::string> texts;
    widget_on(at("spin"), event_type::value_changing, [&](const event&) {
        texts.push_back(widget_get_text_utf8(at("spin")));
        return RET_OK;
    });
    click(at("spin"));
    key("Ctrl+a");
    type("12");
    EXPECT_THAT(texts, ElementsAre("1", "12"));
    texts.clear();
    key("Up");
    key("Down");
    EXPECT_THAT(texts, ElementsAre("13", "12"));
    EXPECT_EQ(widget_get_value_int(at("spin")), 12);
}

TEST_F(edits, spin_box_left_empty_shows_its_number_again_and_tells_so) {
    widget_set_value_int(at("spin"), 9);
    std::vector<std::string> texts;
    widget_on(at("spin"), event_type::value_changing, [&](const event&) {
        texts.push_back(widget_get_text_utf8(at("spin")));
        return RET_OK;
    });
    click(at("spin"));
    key("Ctrl+a");
    key("Delete");
    EXPECT_THAT(texts, ElementsAre(""));
    click(at("edit"));
    EXPECT_EQ(widget_get_text_utf8(at("spin")), "9");
    EXPECT_EQ(texts.back(), "9");
}

TEST_F(edits, spin_box_keeps_typing_to_its_range_and_code_tells_nothing) {
    told.hear(at("spin"), event_type::value_changing);
    widget_set_value_int(at("spin"), 300);
    EXPECT_EQ(widget_get_value_int(at("spin")), 300) << "what the program shows is shown as it is";
    widget_set_text_utf8(at("spin"), "17");
    EXPECT_EQ(widget_get_value_int(at("spin")), 17);
    widget_set_range(at("spin"), 1, 8);
    EXPECT_EQ(widget_get_value_int(at("spin")), 8);
    EXPECT_EQ(widget_get_text_utf8(at("spin")), "8");
    EXPECT_THAT(told.take(), IsEmpty());
    click(at("spin"));
    key("Up");
    EXPECT_THAT(told.take(), IsEmpty()) << "nothing changed at the upper end";
    key("Ctrl+a");
    type("9");
    EXPECT_EQ(widget_get_text_utf8(at("spin")), "8") << "what cannot become a number of the range is not taken";
    EXPECT_EQ(widget_set_range(at("spin"), 3, 2), RET_BAD_PARAMS);
    EXPECT_EQ(widget_set_range(at("label"), 1, 2), RET_BAD_PARAMS);
}

TEST_F(edits, wheel_over_a_field_without_the_focus_never_changes_it) {
    widget_set_value_int(at("spin"), 9);
    told.hear(at("spin"), event_type::value_changing);
    wheel(at("spin"), 120);
    EXPECT_EQ(widget_get_value_int(at("spin")), 9);
    EXPECT_FALSE(widget_get_focused(at("spin")));
    click(at("spin"));
    wheel(at("spin"), 120);
    EXPECT_EQ(widget_get_value_int(at("spin")), 10);
    EXPECT_THAT(told.take(), ElementsAre("spin:value_changing"));
}

class numbers : public edits {
  protected:
    /// What stands in the edit after it was typed into an empty one.
    std::string typed(const std::string& text) {
        widget_set_text_utf8(at("edit"), "");
        click(at("edit"));
        type(text);
        return widget_get_text_utf8(at("edit"));
    }
    /// The same after it was left.
    std::string left(const std::string& text) {
        typed(text);
        key("Tab");
        return widget_get_text_utf8(at("edit"));
    }
};

TEST_F(numbers, only_what_can_become_one_of_the_range_can_be_typed) {
    ASSERT_EQ(edit_set_int_limit(at("edit"), 10, 500, 1), RET_OK);
    EXPECT_EQ(typed("abc"), "");
    EXPECT_EQ(typed("-5"), "5");
    EXPECT_EQ(typed("1x2 "), "12");
    EXPECT_EQ(typed("500"), "500");
    EXPECT_EQ(typed("501"), "50");
    EXPECT_EQ(typed("999"), "99");
    EXPECT_EQ(typed("0500"), "0500");
    EXPECT_EQ(typed("4294967297"), "429");
    EXPECT_EQ(edit_get_int(at("edit")), 429);
}

TEST_F(numbers, negative_ones_and_the_whole_range) {
    ASSERT_EQ(edit_set_int_limit(at("edit"), -20, -3, 1), RET_OK);
    EXPECT_EQ(typed("5"), "");
    EXPECT_EQ(typed("-5"), "-5");
    EXPECT_EQ(typed("--5"), "-5");
    EXPECT_EQ(typed("-21"), "-2");
    EXPECT_EQ(typed("-20"), "-20");
    EXPECT_EQ(edit_get_int(at("edit")), -20);
    ASSERT_EQ(edit_set_int_limit(at("edit"), INT32_MIN, INT32_MAX, 1), RET_OK);
    EXPECT_EQ(typed("2147483648"), "214748364");
    EXPECT_EQ(typed("-2147483648"), "-2147483648");
}

TEST_F(numbers, an_unfinished_one_becomes_the_nearest_when_the_edit_is_left) {
    ASSERT_EQ(edit_set_int_limit(at("edit"), 10, 500, 1), RET_OK);
    told.hear(at("edit"), event_type::value_changed);
    EXPECT_EQ(left("1"), "10");
    EXPECT_THAT(told.take(), ElementsAre("edit:value_changed"));
    EXPECT_EQ(left("77"), "77");
    told.take();
    click(at("edit"));
    key("Ctrl+a");
    key("Delete");
    key("Tab");
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "77") << "what stood there before";
    EXPECT_THAT(told.take(), IsEmpty());
    typed("2");
    key("Enter");
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "10");
}

TEST_F(numbers, what_the_program_shows_is_shown) {
    ASSERT_EQ(edit_set_int_limit(at("edit"), 10, 500, 1), RET_OK);
    widget_set_value_int(at("edit"), 7);
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "7");
    click(at("edit"));
    key("Tab");
    EXPECT_EQ(widget_get_text_utf8(at("edit")), "7") << "nobody has typed";
}

TEST_F(numbers, up_and_down_step_within_the_range) {
    ASSERT_EQ(edit_set_int_limit(at("edit"), 10, 500, 25), RET_OK);
    told.hear(at("edit"), event_type::value_changing);
    told.hear(at("edit"), event_type::value_changed);
    widget_set_value_int(at("edit"), 450);
    click(at("edit"));
    key("Up");
    EXPECT_EQ(edit_get_int(at("edit")), 475);
    key("Up");
    key("Up");
    EXPECT_EQ(edit_get_int(at("edit")), 500);
    key("Down");
    EXPECT_EQ(edit_get_int(at("edit")), 475);
    EXPECT_THAT(told.take(), testing::AllOf(SizeIs(3), Each("edit:value_changing")))
        << "the last Up changed nothing";
    key("Tab");
    EXPECT_THAT(told.take(), ElementsAre("edit:value_changed"));
    ASSERT_EQ(edit_set_int_limit(at("edit"), 10, 500, 0), RET_OK);
    click(at("edit"));
    key("Up");
    EXPECT_EQ(edit_get_int(at("edit")), 475);
}

TEST_F(numbers, bad_limits_are_refused) {
    EXPECT_EQ(edit_set_int_limit(at("edit"), 2, 1, 1), RET_BAD_PARAMS);
    EXPECT_EQ(edit_set_int_limit(at("edit"), 1, 2, -1), RET_BAD_PARAMS);
    EXPECT_EQ(edit_set_int_limit(at("label"), 1, 2, 1), RET_BAD_PARAMS);
    EXPECT_EQ(edit_get_int(at("label")), 0);
    EXPECT_EQ(edit_get_int(nullptr), 0);
}

} // namespace
