// What a field carries beside its value: the mark, and what its tooltip says below the layout's own text.
#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/qt/assets.h"
#include "toolkit/ravel/qt/drive_widgets.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QImage>
#include <QPixmap>
#include <QPushButton>

using testing::HasSubstr;
using testing::Not;

namespace {

constexpr const char* fields[] = {"combo", "typed", "edit", "spin", "check", "switch"};

class field_marks : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        const std::string tip = ui_text("toolTip", "the layout's");
        open(ui_window(ui_widget("QComboBox", "combo", "10 10 200 32", tip) +
                       ui_widget("QComboBox", "typed", "10 50 200 32", ui_flag("editable", true)) +
                       ui_widget("QLineEdit", "edit", "10 90 200 32", tip) +
                       ui_widget("QSpinBox", "spin", "10 130 200 32") +
                       ui_widget("QCheckBox", "check", "10 170 200 32") +
                       ui_widget("QCheckBox", "switch", "10 210 200 32", ui_dynamic("class", "switch")) +
                       ui_widget("QPushButton", "tab", "10 250 100 34",
                                 ui_text("text", "Tab") + ui_dynamic("class", "tab_button")) +
                       ui_widget("QPushButton", "other", "210 250 100 34", ui_dynamic("class", "tab_button")) +
                       ui_widget("QLabel", "label", "10 290 100 32")));
    }
    void TearDown() override {
        theme_set_dark(false);
        stage::TearDown();
    }

    QImage picture(const char* name) const {
        const QWidget* w = qwidget_of(at(name));
        return native_window()->grab(QRect(w->mapTo(native_window(), QPoint(0, 0)), w->size())).toImage();
    }
    /// Whether the edge shows in all its width and nothing of it beside that.
    void expect_edge(const char* name, const QImage& without, bool shown) const {
        const QImage with = picture(name);
        const int mid = with.height() / 2;
        for (const int x : {0, 1, 2})
            EXPECT_EQ(with.pixelColor(x, mid) == style_color("accent"), shown) << name << " at " << x;
        for (int x = 3; x < with.width(); x++)
            ASSERT_EQ(with.pixelColor(x, mid), without.pixelColor(x, mid)) << name << " at " << x;
    }
};

TEST_F(field_marks, are_an_edge_of_three_pixels_in_both_themes) {
    for (const bool dark : {false, true}) {
        theme_set_dark(dark);
        settle();
        for (const char* name : fields) {
            const QImage without = picture(name);
            ASSERT_EQ(widget_set_marked(at(name), true), RET_OK) << name;
            EXPECT_TRUE(widget_get_marked(at(name)));
            expect_edge(name, without, true);
            widget_set_marked(at(name), false);
            EXPECT_FALSE(widget_get_marked(at(name)));
            EXPECT_EQ(picture(name), without) << name;
        }
    }
}

TEST_F(field_marks, show_on_fields_that_are_switched_off_or_refused) {
    for (const char* name : fields) {
        widget_set_enable(at(name), false);
        const QImage off = picture(name);
        widget_set_marked(at(name), true);
        expect_edge(name, off, true);
        widget_set_enable(at(name), true);
        widget_set_marked(at(name), false);
        widget_set_refused(at(name), "why");
        const QImage refused = picture(name);
        widget_set_marked(at(name), true);
        expect_edge(name, refused, true);
    }
}

TEST_F(field_marks, move_nothing_and_follow_the_size) {
    const QSize hint = qwidget_of(at("spin"))->sizeHint();
    widget_set_marked(at("spin"), true);
    EXPECT_EQ(qwidget_of(at("spin"))->sizeHint(), hint);
    widget_set_prop_int(at("spin"), "h", 60);
    settle();
    EXPECT_EQ(picture("spin").pixelColor(1, 50), style_color("accent"));
}

TEST_F(field_marks, take_no_pointer) {
    widget_set_marked(at("check"), true);
    click_at(at("check"), 1, 16);
    EXPECT_TRUE(widget_get_focused(at("check")));
    EXPECT_EQ(named_children(at("check")).size(), 0U);
}

TEST_F(field_marks, are_a_dot_on_a_tab) {
    for (const int on : {0, 1}) {
        widget_set_value_int(at("tab"), on);
        const QImage without = picture("tab");
        ASSERT_EQ(widget_set_marked(at("tab"), true), RET_OK);
        const QImage with = picture("tab");
        EXPECT_EQ(with.pixelColor(with.width() - 7, 8), style_color("accent"));
        EXPECT_NE(without.pixelColor(with.width() - 7, 8), style_color("accent"));
        EXPECT_EQ(with.copy(0, 0, 80, 34), without.copy(0, 0, 80, 34)) << "its text";
        widget_set_marked(at("tab"), false);
        EXPECT_EQ(picture("tab"), without);
    }
}

TEST_F(field_marks, are_for_fields_and_tabs_alone) {
    EXPECT_EQ(widget_set_marked(at("label"), true), RET_BAD_PARAMS);
    EXPECT_EQ(widget_set_marked(win, true), RET_BAD_PARAMS);
    EXPECT_FALSE(widget_get_marked(at("label")));
}

TEST_F(field_marks, are_told_to_scripts) {
    widget_set_marked(at("edit"), true);
    EXPECT_EQ(drive_property(live(at("edit")), "marked"), "1");
    EXPECT_EQ(drive_property(live(at("spin")), "marked"), "0");
    EXPECT_THAT(drive_dump(), HasSubstr("win/edit edit \"\" value=0 enabled visible marked 10,90 200x32\n"));
    EXPECT_THAT(drive_dump(), HasSubstr("win/spin spin_box \"0\" value=0 enabled visible 10,130 200x32\n"));
}

// ---- tooltips

class tooltips : public field_marks {
  protected:
    std::string tip(const char* name) const { return qwidget_of(at(name))->toolTip().toStdString(); }
};

TEST_F(tooltips, lines_are_added_to_the_layouts_until_they_are_taken_back) {
    ASSERT_EQ(widget_set_tooltip_more(at("edit"), "in the module: 5\ndefault: 4"), RET_OK);
    EXPECT_EQ(tip("edit"), "the layout's\nin the module: 5\ndefault: 4");
    widget_set_tooltip_more(at("edit"), "in the module: 6");
    EXPECT_EQ(tip("edit"), "the layout's\nin the module: 6");
    widget_set_tooltip_more(at("edit"), nullptr);
    EXPECT_EQ(tip("edit"), "the layout's");
    widget_set_tooltip_more(at("spin"), "alone");
    EXPECT_EQ(tip("spin"), "alone");
    widget_set_tooltip_more(at("spin"), "");
    EXPECT_EQ(tip("spin"), "");
}

TEST_F(tooltips, each_part_has_its_own_lines_in_one_order) {
    widget_set_tooltip_more(at("edit"), "counts when", tooltip_part::rule);
    widget_set_tooltip_more(at("edit"), "value", tooltip_part::value);
    EXPECT_EQ(tip("edit"), "the layout's\nvalue\ncounts when");
    widget_set_tooltip_more(at("edit"), nullptr);
    EXPECT_EQ(tip("edit"), "the layout's\ncounts when");
    widget_set_tooltip_more(at("edit"), nullptr, tooltip_part::rule);
    EXPECT_EQ(tip("edit"), "the layout's");
}

TEST_F(tooltips, lines_stand_below_why_a_value_was_refused) {
    widget_set_tooltip_more(at("edit"), "more");
    widget_set_refused(at("edit"), "too long");
    EXPECT_EQ(tip("edit"), "too long\nmore");
    widget_set_tooltip_more(at("edit"), nullptr);
    EXPECT_EQ(tip("edit"), "too long");
    widget_set_tooltip_more(at("edit"), "other");
    widget_set_refused(at("edit"), nullptr);
    EXPECT_EQ(tip("edit"), "the layout's\nother");
    widget_set_refused(at("combo"), "no");
    widget_set_tooltip_more(at("combo"), "more");
    widget_set_refused(at("combo"), nullptr);
    EXPECT_EQ(tip("combo"), "the layout's\nmore");
}

TEST_F(tooltips, a_text_set_by_code_keeps_the_lines) {
    widget_set_tooltip_more(at("edit"), "more");
    widget_set_tooltip(at("edit"), "new");
    EXPECT_EQ(tip("edit"), "new\nmore");
    widget_set_tooltip(at("spin"), "new");
    widget_set_tooltip_more(at("spin"), "more");
    widget_set_tooltip_more(at("spin"), nullptr);
    EXPECT_EQ(tip("spin"), "new");
}

} // namespace
