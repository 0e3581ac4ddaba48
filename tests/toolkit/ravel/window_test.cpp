#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/qt/window_stack.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string ok_button =
    ui_widget("QPushButton", "ok", "10 200 90 30", ui_text("text", "确定(&amp;O)") + ui_flag("default", true));

class windows : public stage {
  protected:
    static std::vector<std::string> open_windows() {
        std::vector<std::string> names;
        for (widget* w : named_children(window_manager())) names.push_back(widget_name(w));
        return names;
    }
    /// Opens a dialog and runs it; `act` happens once it is up.
    uint32_t run_modal_dialog(const std::string& name, const std::function<void()>& act,
                              const std::string& more = "") {
        write_layout(name, ui_dialog(more + ok_button));
        win = window_open(name.c_str());
        EXPECT_NE(win, nullptr) << window_open_error();
        idle_queue([act] {
            act();
            return RET_OK;
        });
        return dialog_modal(win);
    }
};

TEST_F(windows, stack_top_and_main) {
    widget* home = open(ui_window(""), "home");
    widget* card = open(ui_dialog(ok_button), "card");
    EXPECT_TRUE(widget_is_dialog(card));
    EXPECT_FALSE(widget_is_dialog(home));
    EXPECT_FALSE(widget_is_dialog(nullptr));
    EXPECT_EQ(window_manager_get_top_window(window_manager()), card);
    EXPECT_EQ(window_manager_get_top_main_window(window_manager()), home);
    EXPECT_EQ(widget_type(card), "dialog");
    EXPECT_EQ(window_manager_back(window_manager()), RET_OK);
    EXPECT_EQ(window_manager_get_top_window(window_manager()), home);
    EXPECT_EQ(window_manager_back(window_manager()), RET_FAIL) << "the first main window stays";
    EXPECT_THAT(open_windows(), ElementsAre("home"));
}

TEST_F(windows, back_to_home_closes_everything_above_the_first_main_window) {
    open(ui_window(""), "home");
    open(ui_window(""), "data");
    open(ui_dialog(""), "info");
    EXPECT_EQ(window_manager_back_to_home(window_manager()), RET_OK);
    EXPECT_THAT(open_windows(), ElementsAre("home"));
}

TEST_F(windows, open_and_close_replaces_in_one_step) {
    widget* first = open(ui_window(""), "first");
    write_layout("second", ui_window(""));
    widget* second = window_open_and_close("second", first);
    EXPECT_THAT(open_windows(), ElementsAre("second"));
    EXPECT_EQ(window_manager_get_top_window(window_manager()), second);
}

TEST_F(windows, switch_to_brings_forward_and_closes_the_current_one_if_wanted) {
    widget* home = open(ui_window(""), "home");
    widget* progress = open(ui_dialog(ok_button), "progress");
    EXPECT_EQ(window_manager_switch_to(window_manager(), progress, home, false), RET_OK);
    EXPECT_THAT(open_windows(), ElementsAre("home", "progress"));
    EXPECT_EQ(window_manager_switch_to(window_manager(), home, progress, false), RET_OK);
    EXPECT_THAT(open_windows(), ElementsAre("progress", "home"));
    EXPECT_FALSE(covered_at(qwidget_of(at("ok")), QPoint(5, 5)));
    EXPECT_EQ(window_manager_switch_to(window_manager(), progress, home, true), RET_OK);
    EXPECT_THAT(open_windows(), ElementsAre("home"));
    EXPECT_EQ(window_manager_switch_to(window_manager(), home, home, true), RET_OK);
    EXPECT_THAT(open_windows(), ElementsAre("home")) << "a window does not close for itself";
    EXPECT_EQ(window_manager_switch_to(window_manager(), home, progress, true), RET_BAD_PARAMS);
    EXPECT_EQ(window_manager_switch_to(window_manager(), nullptr, nullptr, true), RET_BAD_PARAMS);
}

TEST_F(windows, a_dialog_is_a_centred_card_grown_to_its_content) {
    open(ui_window(""), "home");
    open(ui_dialog("<layout class=\"QVBoxLayout\"><item>" +
                   ui_widget("QLabel", "text", "", ui_flag("wordWrap", true)) + "</item></layout>"),
         "card");
    const QWidget* card = qwidget_of(win);
    EXPECT_EQ(card->size(), QSize(400, 300));
    EXPECT_EQ(card->mapTo(native_window(), QPoint(0, 0)), QPoint(300, 150));
    std::string lines;
    for (int i = 0; i < 20; ++i) lines += "line\n";
    widget_set_text_utf8(at("text"), lines.c_str());
    settle();
    EXPECT_GT(card->height(), 300);
    EXPECT_EQ(card->width(), 400);
    for (int i = 0; i < 100; ++i) lines += "line\n";
    widget_set_text_utf8(at("text"), lines.c_str());
    settle();
    EXPECT_LE(card->height(), 600) << "never larger than the native window";
    EXPECT_NEAR(card->mapTo(native_window(), QPoint(0, 0)).y(), (600 - card->height()) / 2, 1);
}

TEST_F(windows, request_close_can_be_refused) {
    open(ui_window(""), "home");
    widget* second = open(ui_window(""), "second");
    ret_t answer = RET_FAIL;
    widget_on(second, event_type::request_close, [&answer](const event&) { return answer; });
    EXPECT_EQ(window_manager_back(window_manager()), RET_FAIL);
    EXPECT_EQ(widget_dispatch_simple_event(second, event_type::request_close), RET_FAIL);
    EXPECT_THAT(open_windows(), ElementsAre("second", "home"));
    answer = RET_OK;
    EXPECT_EQ(widget_dispatch_simple_event(second, event_type::request_close), RET_OK);
    EXPECT_THAT(open_windows(), ElementsAre("home"));
}

TEST_F(windows, close_by_force_does_not_ask) {
    open(ui_window(""), "home");
    widget* second = open(ui_window(""), "second");
    told.hear(second, event_type::request_close);
    EXPECT_EQ(window_manager_close_window_force(window_manager(), second), RET_OK);
    EXPECT_THAT(told.take(), IsEmpty());
    EXPECT_EQ(window_manager_close_window_force(window_manager(), second), RET_BAD_PARAMS) << "closed already";
    EXPECT_EQ(window_manager_close_window_force(nullptr, nullptr), RET_BAD_PARAMS);
}

TEST_F(windows, modal_dialog_answers_its_quit_code) {
    open(ui_window(""), "home");
    EXPECT_EQ(run_modal_dialog("ask", [this] { dialog_quit(win, 7); }), 7u);
    EXPECT_THAT(open_windows(), ElementsAre("home"));
}

// Its parents would hand the key back to it without end.
TEST_F(windows, a_key_for_a_dialog_that_cannot_take_it_ends_there) {
    open(ui_window(ui_widget("QLineEdit", "field", "10 10 90 30")), "home");
    told.hear(at("field"), event_type::value_changing);
    open(ui_dialog(ok_button), "ask");
    told.hear(at("ok"), event_type::click);
    widget_set_visible(win, false);
    for (const char* name : {"7", "Enter", "Tab"}) key(name);
    EXPECT_THAT(told.take(), IsEmpty());
    widget_set_visible(win, true);
    key("Enter");
    EXPECT_THAT(told.take(), ElementsAre("ok:click"));
}

TEST_F(windows, modal_dialog_closed_otherwise_answers_0) {
    open(ui_window(""), "home");
    EXPECT_EQ(run_modal_dialog("ask", [this] { window_manager_close_window_force(window_manager(), win); }), 0u);
    EXPECT_EQ(run_modal_dialog("ask", [] { window_manager_back(window_manager()); }), 0u);
    EXPECT_EQ(run_modal_dialog("ask", [] { key("Esc"); }), 0u);
    EXPECT_EQ(run_modal_dialog("ask", [] { window_manager_back_to_home(window_manager()); }), 0u);
    EXPECT_THAT(open_windows(), ElementsAre("home"));
}

TEST_F(windows, dialog_quit_before_it_ran_keeps_its_code) {
    open(ui_window(""), "home");
    open(ui_dialog(ok_button), "ask");
    dialog_quit(win, 5);
    EXPECT_EQ(dialog_modal(win), 5u);
    EXPECT_EQ(dialog_quit(win, 6), RET_FAIL);
    EXPECT_EQ(dialog_modal(nullptr), 0u);
}

TEST_F(windows, modal_dialogs_nest_and_end_inside_out) {
    open(ui_window(""), "home");
    std::vector<uint32_t> codes;
    const uint32_t outer = run_modal_dialog("outer", [&] {
        widget* first = win;
        codes.push_back(run_modal_dialog("inner", [this] { dialog_quit(win, 2); }));
        dialog_quit(first, 1);
    });
    codes.push_back(outer);
    EXPECT_THAT(codes, ElementsAre(2, 1));
    EXPECT_THAT(open_windows(), ElementsAre("home"));
}

TEST_F(windows, idle_work_and_timers_go_on_inside_a_modal_dialog) {
    open(ui_window(""), "home");
    int ticks = 0;
    // Posted by the same dispatch that opens the dialog: they were waiting behind it.
    uint32_t code = 0;
    bool after = false;
    idle_queue([&] {
        code = run_modal_dialog("ask", [&] {
            timer_add(
                [&] {
                    if (++ticks < 3) return RET_REPEAT;
                    dialog_quit(win, 9);
                    return RET_REMOVE;
                },
                5);
        });
        return RET_OK;
    });
    idle_queue([&] {
        after = code == 0;
        return RET_OK;
    });
    EXPECT_TRUE(wait_until([&] { return code == 9; }));
    EXPECT_TRUE(after) << "ran while the dialog was open";
    EXPECT_EQ(ticks, 3);
}

TEST_F(windows, enter_presses_the_default_button_and_esc_closes_what_may_be_closed) {
    open(ui_window(""), "home");
    open(ui_dialog(ui_widget("QLineEdit", "edit", "10 10 90 30") + ok_button +
                   ui_widget("QPushButton", "other", "110 200 90 30")),
         "card");
    told.hear(at("ok"), event_type::click);
    told.hear(at("other"), event_type::click);
    click(at("edit"));
    key("Enter");
    EXPECT_THAT(told.take(), ElementsAre("ok:click"));
    key("Tab");
    key("Tab");
    ASSERT_TRUE(widget_get_focused(at("other")));
    key("Enter");
    EXPECT_THAT(told.take(), ElementsAre("other:click")) << "a button that has the focus is meant itself";
    dialog_set_esc_closes(win, false);
    key("Esc");
    EXPECT_THAT(open_windows(), ElementsAre("card", "home"));
    dialog_set_esc_closes(win, true);
    key("Esc");
    EXPECT_THAT(open_windows(), ElementsAre("home"));
    key("Esc");
    EXPECT_THAT(open_windows(), ElementsAre("home")) << "a window is no dialog";
    EXPECT_EQ(dialog_set_esc_closes(widget_child(window_manager(), "home"), true), RET_BAD_PARAMS);
}

TEST_F(windows, enter_takes_what_was_typed_before_it_presses_the_default_button) {
    open(ui_window(""), "home");
    open(ui_dialog(ui_widget("QLineEdit", "edit", "10 10 90 30") + ok_button), "card");
    told.hear(at("ok"), event_type::click);
    told.hear(at("edit"), event_type::value_changed);
    click(at("edit"));
    type("7");
    key("Enter");
    EXPECT_THAT(told.take(), ElementsAre("edit:value_changed"));
    key("Enter");
    EXPECT_THAT(told.take(), ElementsAre("ok:click"));
}

TEST_F(windows, hidden_default_button_is_not_pressed) {
    open(ui_window(""), "home");
    open(ui_dialog(ok_button), "card");
    told.hear(at("ok"), event_type::click);
    widget_set_visible(at("ok"), false);
    key("Enter");
    widget_set_visible(at("ok"), true);
    widget_set_enable(at("ok"), false);
    key("Enter");
    EXPECT_THAT(told.take(), IsEmpty());
    widget_set_enable(at("ok"), true);
    key("Enter");
    EXPECT_THAT(told.take(), ElementsAre("ok:click"));
}

TEST_F(windows, layout_may_forbid_esc) {
    open(ui_window(""), "home");
    open(ui_dialog(ui_dynamic("esc_closes", "false") + ok_button), "card");
    key("Esc");
    EXPECT_THAT(open_windows(), ElementsAre("card", "home"));
}

// ---- only the top window gets input

class traps : public windows {
  protected:
    void SetUp() override {
        windows::SetUp();
        home = open(ui_window(ui_widget("QPushButton", "go", "10 10 90 30", ui_text("text", "&amp;Go")) +
                              ui_widget("QLineEdit", "field", "10 50 90 30")),
                    "home");
        told.hear(at("go"), event_type::click);
        told.hear(at("go"), event_type::pointer_down);
        told.hear(at("field"), event_type::value_changing);
        told.hear(at("field"), event_type::wheel);
        go = at("go");
        field = at("field");
        click(field);
        open(ui_dialog(ui_widget("QLineEdit", "inner", "10 10 90 30") +
                       ui_widget("QPushButton", "also_go", "10 50 90 30", ui_text("text", "&amp;Go"))),
             "card");
        told.hear(at("also_go"), event_type::click);
    }
    widget* home = nullptr;
    widget* go = nullptr;
    widget* field = nullptr;
};

TEST_F(traps, pointer_and_wheel_do_not_reach_what_is_below) {
    click(go);
    click(field);
    wheel(field, 120);
    EXPECT_THAT(told.take(), IsEmpty());
    EXPECT_TRUE(covered_at(qwidget_of(go), QPoint(5, 5)));
    EXPECT_FALSE(gets_input(qwidget_of(go)));
    EXPECT_TRUE(gets_input(qwidget_of(at("inner"))));
    EXPECT_TRUE(widget_get_enable(go)) << "it is covered, not disabled";
}

TEST_F(traps, events_aimed_straight_at_what_is_below_are_dropped) {
    QKeyEvent key_down(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, "x");
    QCoreApplication::sendEvent(qwidget_of(field), &key_down);
    QMouseEvent mouse_down(QEvent::MouseButtonPress, QPointF(5, 5), QPointF(5, 5), Qt::LeftButton, Qt::LeftButton,
                           Qt::NoModifier);
    QCoreApplication::sendEvent(qwidget_of(go), &mouse_down);
    EXPECT_THAT(told.take(), IsEmpty());
    EXPECT_EQ(widget_get_text_utf8(field), "");
    EXPECT_EQ(widget_set_focused(field), RET_FAIL);
}

TEST_F(traps, keys_stay_in_the_top_window_and_tab_goes_round_in_it) {
    type("abc");
    EXPECT_EQ(widget_get_text_utf8(field), "");
    EXPECT_EQ(widget_get_text_utf8(at("inner")), "abc");
    key("Tab");
    EXPECT_TRUE(widget_get_focused(at("also_go")));
    key("Tab");
    EXPECT_TRUE(widget_get_focused(at("inner")));
    key("Shift+Tab");
    EXPECT_TRUE(widget_get_focused(at("also_go")));
}

TEST_F(traps, the_same_mnemonic_below_does_not_count) {
    key("Alt+g");
    wait_until([this] { return told.count() > 0; }); // the button shows the press for a moment
    EXPECT_THAT(told.take(), ElementsAre("also_go:click"));
    dialog_quit(win, 0);
    settle();
    key("Alt+g");
    wait_until([this] { return told.count() > 0; }); // the button shows the press for a moment
    EXPECT_THAT(told.take(), ElementsAre("go:click"));
}

TEST_F(traps, a_card_without_fields_still_keeps_the_keys_to_itself) {
    open(ui_dialog(ui_widget("QLabel", "text", "10 10 90 30")), "notice");
    type("abc");
    key("Tab");
    type("abc");
    EXPECT_EQ(widget_get_text_utf8(field), "");
    key("Esc");
    EXPECT_THAT(open_windows(), ElementsAre("card", "home"));
}

TEST_F(traps, a_button_held_down_when_something_comes_over_it_makes_no_click) {
    dialog_quit(win, 0);
    settle();
    told.take();
    press(go);
    open(ui_dialog(ok_button), "notice");
    release(go);
    EXPECT_THAT(told.take(), ElementsAre("go:pointer_down"));
    dialog_quit(win, 0);
    settle();
    click(go);
    EXPECT_THAT(told.take(), ElementsAre("go:pointer_down", "go:click"));
}

TEST_F(traps, lists_of_the_top_window_work) {
    open(ui_dialog(ui_widget("QComboBox", "combo", "10 10 200 32")), "choose");
    combo_box_append_option(at("combo"), 0, "a");
    combo_box_append_option(at("combo"), 1, "b");
    click(at("combo"));
    ASSERT_TRUE(wait_until([] { return QApplication::activePopupWidget() != nullptr; }));
    key("Down");
    key("Enter");
    EXPECT_EQ(widget_get_value_int(at("combo")), 1);
    EXPECT_THAT(open_windows(), ElementsAre("choose", "card", "home"));
}

} // namespace
