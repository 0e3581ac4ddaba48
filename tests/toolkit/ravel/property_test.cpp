#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/qt/widget_class.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QEvent>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class properties : public stage {};

TEST_F(properties, own_visibility_and_that_of_what_stands_around) {
    open(ui_window(ui_widget("QWidget", "box", "0 0 90 90", ui_widget("QLabel", "deep", "0 0 9 9"))));
    EXPECT_TRUE(widget_get_visible(at("deep")));
    widget_set_visible(at("box"), false);
    EXPECT_FALSE(widget_get_visible(at("deep")));
    widget_set_visible(at("box"), true);
    EXPECT_TRUE(widget_get_visible(at("deep")));
    EXPECT_FALSE(widget_get_visible(nullptr));
    EXPECT_EQ(widget_set_visible(nullptr, true), RET_BAD_PARAMS);
}

TEST_F(properties, own_enable_flag_survives_that_of_what_stands_around) {
    open(ui_window(ui_widget("QWidget", "box", "0 0 90 90", ui_widget("QLineEdit", "deep", "0 0 9 9"))));
    widget_set_enable(at("deep"), false);
    widget_set_enable(at("box"), false);
    widget_set_enable(at("box"), true);
    EXPECT_FALSE(widget_get_enable(at("deep")));
    widget_set_enable(at("deep"), true);
    widget_set_enable(at("box"), false);
    EXPECT_FALSE(widget_get_enable(at("deep")));
    EXPECT_EQ(widget_set_focused(at("deep")), RET_FAIL);
}

TEST_F(properties, places_and_layout_properties_by_name) {
    open(ui_window(
        ui_widget("QLabel", "label", "11 22 33 44", ui_dynamic("clock", "12") + ui_dynamic("quick", "false"))));
    widget* label = at("label");
    EXPECT_EQ(widget_get_prop_int(label, "x", 0), 11);
    EXPECT_EQ(widget_get_prop_int(label, "y", 0), 22);
    EXPECT_EQ(widget_get_prop_int(label, "w", 0), 33);
    EXPECT_EQ(widget_get_prop_int(label, "h", 0), 44);
    EXPECT_EQ(widget_get_prop_int(label, "clock", 0), 12);
    EXPECT_FALSE(widget_get_prop_bool(label, "quick", true));
    EXPECT_TRUE(widget_get_prop_bool(label, "slow", true));
    EXPECT_EQ(widget_get_prop_int(label, "none", -5), -5);
    EXPECT_EQ(widget_get_prop_str(label, "none", "fallback"), "fallback");
    EXPECT_EQ(widget_get_prop_str(nullptr, "x", nullptr), "");
    told.hear(label, event_type::move);
    told.hear(label, event_type::resize);
    settle();
    told.take();
    widget_set_prop_int(label, "x", 5);
    widget_set_prop_int(label, "h", 6);
    widget_set_prop_bool(label, "mine", true);
    widget_set_prop_str(label, "tips", "1-2-3");
    EXPECT_EQ(widget_get_prop_int(label, "x", 0), 5);
    EXPECT_EQ(widget_get_prop_int(label, "h", 0), 6);
    EXPECT_TRUE(widget_get_prop_bool(label, "mine", false));
    EXPECT_EQ(widget_get_prop_str(label, "tips", ""), "1-2-3");
    widget_set_prop_bool(label, "enable", false);
    widget_set_prop_bool(label, "visible", false);
    EXPECT_FALSE(widget_get_enable(label));
    EXPECT_FALSE(widget_get_visible(label));
    EXPECT_EQ(widget_set_prop_int(label, "", 1), RET_BAD_PARAMS);
    settle();
    EXPECT_THAT(told.take(), IsEmpty()) << "moved by code";
}

TEST_F(properties, move_and_resize_come_once_after_the_layout_and_then_with_each_change) {
    open(ui_window("<layout class=\"QVBoxLayout\"><item>" + ui_widget("QLabel", "top", "0 0 9 9") +
                   "</item><item>" + ui_widget("QLabel", "foot", "0 0 9 9") + "</item></layout>"));
    told.hear(at("foot"), event_type::resize);
    settle();
    EXPECT_THAT(told.take(), ElementsAre("foot:resize"));
    told.hear(at("foot"), event_type::move);
    settle();
    told.take();
    native_window()->resize(800, 500);
    settle();
    EXPECT_THAT(told.take(), testing::UnorderedElementsAre("foot:resize", "foot:move"));
    native_window()->resize(1000, 600);
    settle();
}

TEST_F(properties, refused_mark_shows_and_gives_the_tooltip_back) {
    open(ui_window(ui_widget("QLineEdit", "edit", "0 0 90 30", ui_text("toolTip", "0 to 7"))));
    EXPECT_FALSE(widget_get_refused(at("edit")));
    widget_set_refused(at("edit"), "too large");
    EXPECT_TRUE(widget_get_refused(at("edit")));
    EXPECT_EQ(qwidget_of(at("edit"))->toolTip(), "too large");
    const QColor marked = qwidget_of(at("edit"))->grab().toImage().pixelColor(0, 15);
    widget_set_tooltip(at("edit"), "0 to 9");
    EXPECT_EQ(qwidget_of(at("edit"))->toolTip(), "too large");
    widget_set_refused(at("edit"), nullptr);
    EXPECT_FALSE(widget_get_refused(at("edit")));
    EXPECT_EQ(qwidget_of(at("edit"))->toolTip(), "0 to 9");
    const QColor plain = qwidget_of(at("edit"))->grab().toImage().pixelColor(0, 15);
    EXPECT_GT(marked.red(), plain.red());
    EXPECT_LT(marked.green(), plain.green());
    EXPECT_EQ(widget_set_refused(nullptr, "x"), RET_BAD_PARAMS);
}

TEST_F(properties, style_state_changes_the_look) {
    open(ui_window(ui_widget("QLabel", "dot", "0 0 10 10", ui_dynamic("class", "status_dot"))));
    const auto middle = [this] { return qwidget_of(at("dot"))->grab().toImage().pixelColor(5, 5); };
    const QColor idle = middle();
    widget_set_style_state(at("dot"), "failed");
    const QColor failed = middle();
    EXPECT_NE(failed, idle);
    EXPECT_GT(failed.red(), failed.green());
    widget_set_style_state(at("dot"), "");
    EXPECT_EQ(middle(), idle);
}

TEST_F(properties, the_sheet_finds_its_pictures_in_a_folder_with_blanks_and_brackets) {
    ASSERT_THAT(layout_folder(), testing::HasSubstr(" ("));
    open(ui_window(ui_widget("QCheckBox", "switch", "0 0 60 30", ui_dynamic("class", "switch"))));
    const auto knob_side = [this](int x) { return qwidget_of(at("switch"))->grab().toImage().pixelColor(x, 15); };
    const QColor left_off = knob_side(13);
    EXPECT_EQ(left_off, QColor(Qt::white)) << "the knob";
    widget_set_value_int(at("switch"), 1);
    EXPECT_NE(knob_side(13), left_off);
}

TEST_F(properties, pages_turn_by_index_and_by_name_in_silence) {
    open(ui_window(ui_widget("QStackedWidget", "pages", "0 0 90 90",
                             ui_widget("QWidget", "p0", "") + ui_widget("QWidget", "p1", ""))));
    widget* pages = at("pages");
    EXPECT_EQ(widget_get_value_int(pages), 0);
    EXPECT_EQ(pages_set_active(pages, 1), RET_OK);
    EXPECT_TRUE(widget_get_visible(at("p1")));
    EXPECT_FALSE(widget_get_visible(at("p0")));
    EXPECT_EQ(pages_set_active(pages, 2), RET_FAIL);
    EXPECT_EQ(pages_set_active_by_name(pages, "p0"), RET_OK);
    EXPECT_EQ(widget_get_value_int(pages), 0);
    EXPECT_EQ(pages_set_active_by_name(pages, "p7"), RET_FAIL);
    EXPECT_EQ(widget_set_value_int(pages, 1), RET_OK);
    EXPECT_EQ(widget_get_value_int(pages), 1);
    EXPECT_EQ(widget_set_value_int(pages, -1), RET_FAIL);
    EXPECT_EQ(pages_set_active(win, 0), RET_BAD_PARAMS);
}

TEST_F(properties, labels_bars_and_long_texts_show_what_they_are_given) {
    open(ui_window(ui_widget("QLabel", "label", "0 0 90 30") + ui_widget("QProgressBar", "bar", "0 40 90 20") +
                   ui_widget("QPlainTextEdit", "code", "0 70 200 100") +
                   ui_widget("QLabel", "moving", "0 200 90 30", ui_dynamic("class", "hscroll_label"))));
    widget_set_text_utf8(at("label"), "   读取配置状态");
    EXPECT_EQ(widget_get_text_utf8(at("label")), "   读取配置状态");
    widget_set_value_int(at("bar"), 40);
    EXPECT_EQ(widget_get_value_int(at("bar")), 40);
    widget_set_value_int(at("bar"), 400);
    EXPECT_EQ(widget_get_value_int(at("bar")), 100);
    widget_set_text_utf8(at("code"), "F7 F8 01\n02");
    EXPECT_EQ(widget_get_text_utf8(at("code")), "F7 F8 01\n02");
    click(at("code"));
    type("x");
    EXPECT_EQ(widget_get_text_utf8(at("code")), "F7 F8 01\n02") << "read-only";
    EXPECT_EQ(widget_set_value_int(at("code"), 1), RET_BAD_PARAMS);
    EXPECT_EQ(widget_set_text_utf8(at("label"), nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(widget_set_text_utf8(nullptr, "x"), RET_BAD_PARAMS);
}

/// Counts how often a widget is painted.
class paint_count final : public QObject {
  public:
    explicit paint_count(widget* w) { qwidget_of(w)->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint) ++painted;
        return false;
    }
    int painted = 0;
};

TEST_F(properties, what_shows_something_else_is_painted_anew) {
    open(ui_window(ui_widget("QLabel", "cell", "0 0 90 30", ui_dynamic("class", "cell")) +
                   ui_widget("QLabel", "label", "0 40 90 30") + ui_widget("QProgressBar", "bar", "0 80 90 30")));
    for (const char* name : {"cell", "label", "bar"}) {
        paint_count count(at(name));
        qwidget_of(at(name))->repaint();
        settle(); // nothing is left to come of the opening
        count.painted = 0;
        const auto change = [&](int to) {
            return name == std::string("bar") ? widget_set_value_int(at(name), to)
                                              : widget_set_text_utf8(at(name), std::to_string(to).c_str());
        };
        change(7);
        EXPECT_TRUE(wait_until([&] { return count.painted > 0; })) << name;
    }
}

// The window itself shows no focus: nothing in it changes its look.
TEST_F(properties, a_window_that_gets_or_loses_the_keyboard_is_not_painted_anew) {
    open(ui_window(ui_widget("QLabel", "label", "0 40 90 30") + ui_widget("QLineEdit", "field", "0 80 90 30")));
    ASSERT_TRUE(widget_get_focused(win));
    qwidget_of(win)->repaint();
    settle();
    paint_count count(at("label"));
    widget_set_focused(at("field"));
    settle();
    widget_set_focused(win);
    settle();
    EXPECT_TRUE(widget_get_focused(win));
    EXPECT_EQ(count.painted, 0);
    qwidget_of(win)->repaint();
    EXPECT_EQ(count.painted, 1) << "it counts";
}

TEST_F(properties, moving_label_moves_only_while_it_can_be_seen) {
    open(ui_window(ui_widget("QWidget", "box", "0 0 300 50",
                             ui_widget("QLabel", "moving", "0 0 200 30", ui_dynamic("class", "hscroll_label")))));
    auto* moving = static_cast<hscroll_widget*>(qwidget_of(at("moving")));
    EXPECT_TRUE(moving->is_moving());
    const QImage first = moving->grab().toImage();
    EXPECT_TRUE(wait_until([&] { return moving->grab().toImage() != first; }));
    widget_set_visible(at("box"), false);
    EXPECT_FALSE(moving->is_moving());
    widget_set_visible(at("box"), true);
    EXPECT_TRUE(moving->is_moving());
}

TEST_F(properties, mnemonic_marks_are_no_text) {
    EXPECT_EQ(without_mnemonic("&Open"), "Open");
    EXPECT_EQ(without_mnemonic("连接(&C)"), "连接");
    EXPECT_EQ(without_mnemonic("a && b"), "a & b");
    EXPECT_EQ(without_mnemonic("(C)"), "(C)");
    EXPECT_EQ(without_mnemonic("end&"), "end&");
}

} // namespace
