#include "tests/toolkit/ravel/stage.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string tab = ui_dynamic("class", "tab_button");

class buttons : public stage {};

TEST_F(buttons, click_by_pointer_and_by_key) {
    open(ui_window(ui_widget("QPushButton", "go", "10 10 90 30", ui_text("text", "连接(&amp;C)"))));
    told.hear(at("go"), event_type::click);
    click(at("go"));
    EXPECT_THAT(told.take(), ElementsAre("go:click"));
    key("Space");
    EXPECT_THAT(told.take(), ElementsAre("go:click"));
    key("Alt+c");
    wait_until([this] { return told.count() > 0; }); // the button shows the press for a moment
    EXPECT_THAT(told.take(), ElementsAre("go:click"));
    EXPECT_EQ(widget_get_text_utf8(at("go")), "连接");
}

TEST_F(buttons, another_label_leaves_the_shortcut) {
    open(ui_window(
        ui_widget("QPushButton", "go", "10 10 90 30", ui_text("text", "复制") + ui_text("shortcut", "Alt+Y")) +
        ui_widget("QPushButton", "marked", "10 60 90 30", ui_text("text", "连接(&amp;C)"))));
    told.hear(at("go"), event_type::click);
    told.hear(at("marked"), event_type::click);
    widget_set_text_utf8(at("go"), "已复制");
    key("Alt+y");
    EXPECT_TRUE(wait_until([this] { return told.count() == 1; }));
    widget_set_text_utf8(at("marked"), "断开(&D)");
    key("Alt+c");
    key("Alt+d");
    EXPECT_TRUE(wait_until([this] { return told.count() == 2; }));
    EXPECT_THAT(told.take(), ElementsAre("go:click", "marked:click"));
    widget_set_text_utf8(at("marked"), "断开");
    key("Alt+d");
    key("Alt+y");
    EXPECT_TRUE(wait_until([this] { return told.count() == 1; }));
    EXPECT_THAT(told.take(), ElementsAre("go:click"));
}

TEST_F(buttons, every_stroke_of_a_shortcut_is_a_click_while_the_button_is_there_to_be_clicked) {
    open(ui_window(
        ui_widget("QPushButton", "go", "10 10 90 30", ui_text("text", "撤销") + ui_text("shortcut", "Ctrl+Z")) +
        ui_widget("QPushButton", "tab", "10 60 90 30", tab + ui_text("text", "页(&amp;P)"))));
    told.hear(at("go"), event_type::click);
    told.hear(at("tab"), event_type::value_changed);
    for (int stroke = 0; stroke < 4; ++stroke) key("Ctrl+z");
    settle();
    EXPECT_THAT(told.take(), ElementsAre("go:click", "go:click", "go:click", "go:click"));
    widget_set_enable(at("go"), false);
    key("Ctrl+z");
    settle();
    EXPECT_THAT(told.take(), IsEmpty());
    key("Alt+p");
    settle();
    EXPECT_THAT(told.take(), ElementsAre("tab:value_changed"));
    EXPECT_TRUE(widget_get_focused(at("tab")));
}

TEST_F(buttons, released_outside_is_no_click) {
    open(ui_window(ui_widget("QPushButton", "go", "10 10 90 30")));
    for (const event_type type : {event_type::click, event_type::pointer_down, event_type::pointer_up})
        told.hear(at("go"), type);
    press(at("go"));
    EXPECT_THAT(told.take(), ElementsAre("go:pointer_down"));
    click_at(win, 300, 200);
    EXPECT_THAT(told.take(), testing::Not(testing::Contains("go:click")));
}

TEST_F(buttons, disabled_and_hidden_ones_do_not_react) {
    open(ui_window(ui_widget("QPushButton", "go", "10 10 90 30")));
    told.hear(at("go"), event_type::click);
    told.hear(at("go"), event_type::pointer_down);
    widget_set_enable(at("go"), false);
    click(at("go"));
    widget_set_enable(at("go"), true);
    widget_set_visible(at("go"), false);
    click_at(win, 20, 20);
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(buttons, check_buttons_and_switches_tell_the_users_change_only) {
    open(ui_window(ui_widget("QCheckBox", "check", "10 10 200 30", ui_text("text", "on &amp;off")) +
                   ui_widget("QCheckBox", "switch", "10 50 200 30", ui_dynamic("class", "switch"))));
    for (const char* name : {"check", "switch"}) {
        widget* w = at(name);
        widget_set_value_int(w, 1);
        EXPECT_EQ(widget_get_value_int(w), 1);
        widget_set_value_int(w, 0);
        told.hear(w, event_type::value_changed);
        told.hear(w, event_type::click);
        widget_set_value_int(w, 7);
        EXPECT_EQ(widget_get_value_int(w), 1) << "any number but 0 is on";
        EXPECT_THAT(told.take(), IsEmpty());
        click(w);
        EXPECT_EQ(widget_get_value_int(w), 0);
        EXPECT_THAT(told.take(), ElementsAre(std::string(name) + ":value_changed", std::string(name) + ":click"));
        key("Space");
        EXPECT_EQ(widget_get_value_int(w), 1);
        told.take();
    }
    EXPECT_EQ(widget_get_text_utf8(at("check")), "on off");
}

class tabs : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        open(ui_window(
            ui_widget("QPushButton", "a", "10 10 90 30", tab) + ui_widget("QPushButton", "b", "110 10 90 30", tab) +
            ui_widget("QWidget", "box", "10 60 300 50", ui_widget("QPushButton", "other", "0 0 90 30", tab))));
        widget_set_value_int(at("a"), 1);
        for (const char* name : {"a", "b", "other"}) {
            told.hear(at(name), event_type::value_changed);
            told.hear(at(name), event_type::click);
        }
    }
    std::vector<int> values() const {
        return {widget_get_value_int(at("a")), widget_get_value_int(at("b")), widget_get_value_int(at("other"))};
    }
};

TEST_F(tabs, click_switches_and_tells_both_sides_after_both_states_changed) {
    std::vector<std::vector<int>> seen;
    for (const char* name : {"a", "b"})
        widget_on(at(name), event_type::value_changed, [&](const event&) {
            seen.push_back(values());
            return RET_OK;
        });
    click(at("b"));
    EXPECT_THAT(values(), ElementsAre(0, 1, 0));
    EXPECT_THAT(told.take(), ElementsAre("a:value_changed", "b:value_changed", "b:click"));
    EXPECT_THAT(seen, ElementsAre(ElementsAre(0, 1, 0), ElementsAre(0, 1, 0)));
}

TEST_F(tabs, click_on_the_one_that_is_on_tells_nothing) {
    click(at("a"));
    EXPECT_THAT(values(), ElementsAre(1, 0, 0));
    EXPECT_THAT(told.take(), IsEmpty());
}

TEST_F(tabs, groups_are_the_children_of_one_parent) {
    click(at("other"));
    EXPECT_THAT(values(), ElementsAre(1, 0, 1));
    EXPECT_THAT(told.take(), ElementsAre("other:value_changed", "other:click"));
}

TEST_F(tabs, set_from_code_takes_siblings_off_in_silence_and_can_switch_all_off) {
    widget_set_value_int(at("b"), 1);
    EXPECT_THAT(values(), ElementsAre(0, 1, 0));
    widget_set_value_int(at("b"), 0);
    EXPECT_THAT(values(), ElementsAre(0, 0, 0));
    EXPECT_THAT(told.take(), IsEmpty());
    click(at("a"));
    EXPECT_THAT(told.take(), ElementsAre("a:value_changed", "a:click"));
}

TEST_F(tabs, arrow_keys_move_the_choice) {
    click(at("b"));
    told.take();
    key("Left");
    EXPECT_THAT(values(), ElementsAre(1, 0, 0));
    EXPECT_THAT(told.take(), ElementsAre("b:value_changed", "a:value_changed", "a:click"));
}

} // namespace
