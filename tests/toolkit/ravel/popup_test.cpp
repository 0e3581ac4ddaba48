// Lists and menus that are open when something comes over them.
#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/qt/drive_input.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QWindow>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Opens a list with the pointer.
void open_list(widget* combo) {
    const QPoint at = drive_list_spot(state_of(qwidget_of(combo)));
    drive_press(qwidget_of(combo), at);
    drive_release(qwidget_of(combo), at);
}

/// Asks for a menu as the right button does. Some menus run a loop of their own until they are closed.
void open_menu(widget* w) {
    QWidget* on = qwidget_of(w);
    QWidget* hit = on->childAt(on->rect().center());
    if (hit == nullptr) hit = on;
    const QPoint at = hit->rect().center();
    QContextMenuEvent asked(QContextMenuEvent::Mouse, at, hit->mapToGlobal(at));
    QCoreApplication::sendEvent(hit, &asked);
}

struct popup_kind {
    const char* label;
    const char* on;
    void (*open)(widget*);
};
void PrintTo(const popup_kind& kind, std::ostream* out) { *out << kind.label; }

class popups : public stage, public testing::WithParamInterface<popup_kind> {
  protected:
    void SetUp() override {
        stage::SetUp();
        home = open(home_layout(), "home");
        for (int i = 0; i < 20; ++i) {
            combo_box_append_option(at("fixed"), i, std::to_string(i).c_str());
            combo_box_append_option(at("port"), i, std::to_string(i).c_str());
        }
        on = at(GetParam().on);
        field = at("field");
        told.hear(at("go"), event_type::click);
        told.hear(field, event_type::value_changing);
        write_layout("message", ui_dialog(ui_widget("QLineEdit", "note", "10 10 90 30") + ok_button()));
        write_layout("page", ui_window(ui_widget("QLineEdit", "note", "10 10 90 30") + ok_button()));
    }

    static std::string home_layout() {
        return ui_window(
            ui_widget("QPushButton", "go", "10 10 90 30") + ui_widget("QLineEdit", "field", "10 50 90 30") +
            ui_widget("QComboBox", "fixed", "10 90 200 32") +
            ui_widget("QComboBox", "port", "10 130 200 32", ui_flag("editable", true)) +
            ui_widget("QSpinBox", "spin", "10 170 200 32") + ui_widget("QPlainTextEdit", "text", "10 210 200 60") +
            ui_widget("QScrollBar", "bar", "230 10 12 200",
                      "<property name=\"orientation\"><enum>Qt::Vertical</enum></property>"));
    }
    static std::string ok_button() {
        return ui_widget("QPushButton", "ok", "10 200 90 30", ui_text("text", "OK") + ui_flag("default", true));
    }

    static bool popup_is_open() { return QApplication::activePopupWidget() != nullptr; }

    /// Opens the popup; `act` happens once it is up.
    void with_popup(const std::function<void()>& act) {
        bool done = false;
        timer_add(
            [&done, &act] {
                if (!popup_is_open()) return RET_REPEAT;
                act();
                done = true;
                return RET_REMOVE;
            },
            1);
        GetParam().open(on);
        EXPECT_TRUE(wait_until([&done] { return done; })) << "no popup came";
        settle();
    }

    /// A display without a window manager may leave nobody active once a popup has gone.
    static void activate() {
        const auto active = [] {
            return QApplication::activeWindow() == native_window() &&
                   QGuiApplication::focusWindow() == native_window()->windowHandle();
        };
        settle();
        if (!active()) native_window()->activateWindow();
        EXPECT_TRUE(wait_until(active));
    }

    void cover(const std::string& name) {
        win = window_open(name.c_str());
        ASSERT_NE(win, nullptr) << window_open_error();
        told.hear(at("ok"), event_type::click);
    }

    /// What lies on top takes the pointer and the keys.
    void expect_top_goes_on() {
        EXPECT_FALSE(popup_is_open());
        activate();
        click(at("ok"));
        EXPECT_THAT(told.take(), ElementsAre("ok:click"));
        click(at("note"));
        type("ab");
        EXPECT_EQ(widget_get_text_utf8(at("note")), "ab");
        key("Tab");
        EXPECT_TRUE(widget_get_focused(at("ok")));
        key("Space");
        EXPECT_THAT(told.take(), ElementsAre("ok:click"));
    }

    void expect_home_goes_on() {
        EXPECT_FALSE(popup_is_open());
        activate();
        click(at_home("go"));
        EXPECT_THAT(told.take(), ElementsAre("go:click"));
        click(field);
        type("x");
        EXPECT_THAT(told.take(), ElementsAre("field:value_changing"));
        with_popup([] { key("Esc"); });
        EXPECT_TRUE(wait_until([] { return !popup_is_open(); })) << "the popup opens again and closes by itself";
        EXPECT_THAT(told.take(), IsEmpty());
    }
    widget* at_home(const char* name) const { return widget_lookup(home, name); }

    widget* home = nullptr;
    widget* on = nullptr;
    widget* field = nullptr;
};

TEST_P(popups, closes_when_a_dialog_comes_over_it) {
    with_popup([this] { cover("message"); });
    expect_top_goes_on();
    dialog_quit(win, 0);
    settle();
    expect_home_goes_on();
}

TEST_P(popups, closes_when_a_modal_dialog_comes_over_it) {
    uint32_t code = 0;
    with_popup([this, &code] {
        cover("message");
        idle_queue([this] {
            expect_top_goes_on();
            dialog_quit(win, 4);
            return RET_OK;
        });
        code = dialog_modal(win);
    });
    EXPECT_EQ(code, 4u);
    expect_home_goes_on();
}

TEST_P(popups, closes_when_a_window_comes_over_it) {
    with_popup([this] { cover("page"); });
    expect_top_goes_on();
    window_manager_back(window_manager());
    settle();
    expect_home_goes_on();
}

TEST_P(popups, closes_when_another_window_is_brought_forward) {
    cover("page");
    window_manager_switch_to(window_manager(), win, home, false);
    settle();
    with_popup([this] { window_manager_switch_to(window_manager(), home, win, false); });
    expect_top_goes_on();
    window_manager_back(window_manager());
    settle();
    expect_home_goes_on();
}

TEST_P(popups, closes_with_its_window) {
    widget* below = home;
    home = open(home_layout(), "second");
    combo_box_append_option(at("fixed"), 1, "1");
    combo_box_append_option(at("port"), 1, "1");
    on = at(GetParam().on);
    with_popup([this] { window_manager_close_window_force(window_manager(), home); });
    home = below;
    on = at_home(GetParam().on);
    expect_home_goes_on();
}

INSTANTIATE_TEST_SUITE_P(of_each_kind, popups,
                         testing::Values(popup_kind{"list", "fixed", open_list},
                                         popup_kind{"list_of_an_editable_one", "port", open_list},
                                         popup_kind{"menu_of_an_edit", "field", open_menu},
                                         popup_kind{"menu_of_an_editable_list", "port", open_menu},
                                         popup_kind{"menu_of_a_spin_box", "spin", open_menu},
                                         popup_kind{"menu_of_a_text", "text", open_menu},
                                         popup_kind{"menu_of_a_bar", "bar", open_menu}),
                         [](const auto& test) { return std::string(test.param.label); });

} // namespace
