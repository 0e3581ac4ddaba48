// The line below a refused field: where it lies, and when it goes.
#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/qt/assets.h"
#include "toolkit/ravel/qt/refused_line.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QImage>
#include <QPixmap>

namespace {

class refused_lines : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        const std::string inside = ui_widget("QSpinBox", "first", "10 10 90 32") +
                                   ui_widget("QSpinBox", "second", "10 50 90 32") +
                                   ui_widget("QSpinBox", "last", "150 90 40 32");
        open(ui_window(ui_widget("QFrame", "card", "20 20 200 130", ui_dynamic("class", "card") + inside)));
    }
    static std::vector<refused_line*> lines() {
        std::vector<refused_line*> all;
        for (QWidget* w : native_window()->findChildren<QWidget*>())
            if (auto* one = dynamic_cast<refused_line*>(w)) all.push_back(one);
        return all;
    }
    static refused_line* line() { return lines().empty() ? nullptr : lines().front(); }
    QRect place() const {
        return line() == nullptr ? QRect() : QRect(line()->mapTo(native_window(), QPoint(0, 0)), line()->size());
    }
    QRect place_of(const char* name) const {
        const QWidget* w = qwidget_of(at(name));
        return {w->mapTo(native_window(), QPoint(0, 0)), w->size()};
    }
};

TEST_F(refused_lines, stand_below_the_field_in_the_error_colour) {
    for (const bool dark : {false, true}) {
        theme_set_dark(dark);
        ASSERT_EQ(widget_set_refused(at("first"), "too large", "应为 0–255"), RET_OK);
        settle();
        ASSERT_NE(line(), nullptr);
        EXPECT_TRUE(line()->isVisible());
        EXPECT_EQ(widget_get_refused_line(at("first")), "应为 0–255");
        EXPECT_EQ(qwidget_of(at("first"))->toolTip().toStdString(), "too large");
        EXPECT_EQ(place().topLeft(), place_of("first").bottomLeft() + QPoint(0, 1));
        EXPECT_LE(place().bottom(), place_of("second").center().y() - 8) << "the next field's text stays uncovered";
        EXPECT_EQ(line()->font().pixelSize(), 12);
        const QImage shown = native_window()->grab(place()).toImage();
        EXPECT_EQ(shown.pixelColor(2, 7), style_color("error-soft"));
        bool inked = false;
        for (int x = 0; x < shown.width() && !inked; x++)
            for (int y = 0; y < shown.height(); y++) inked |= shown.pixelColor(x, y) == style_color("error");
        EXPECT_TRUE(inked);
        widget_set_refused(at("first"), nullptr);
        EXPECT_EQ(line(), nullptr);
        EXPECT_EQ(widget_get_refused_line(at("first")), "");
    }
    theme_set_dark(false);
}

TEST_F(refused_lines, move_nothing) {
    const QRect first = place_of("first");
    const QRect second = place_of("second");
    widget_set_refused(at("first"), "no", "应为 0–255");
    settle();
    EXPECT_EQ(place_of("first"), first);
    EXPECT_EQ(place_of("second"), second);
    click(at("second"));
    EXPECT_TRUE(widget_get_focused(at("second")));
}

TEST_F(refused_lines, are_replaced_by_another_and_go_without_one) {
    widget_set_refused(at("first"), "no", "one");
    widget_set_refused(at("first"), "no", "another");
    EXPECT_EQ(lines().size(), 1U);
    EXPECT_EQ(widget_get_refused_line(at("first")), "another");
    widget_set_refused(at("first"), "no");
    EXPECT_EQ(line(), nullptr);
    EXPECT_TRUE(widget_get_refused(at("first")));
}

TEST_F(refused_lines, follow_the_field) {
    widget_set_refused(at("first"), "no", "应为 0–255");
    widget_set_prop_int(at("card"), "x", 100);
    widget_set_prop_int(at("first"), "x", 40);
    settle();
    EXPECT_EQ(place().left(), place_of("first").left());
    widget_set_visible(at("first"), false);
    EXPECT_FALSE(line()->isVisible());
    widget_set_visible(at("first"), true);
    EXPECT_TRUE(line()->isVisible());
    widget_set_visible(at("card"), false);
    EXPECT_FALSE(line()->isVisible());
}

TEST_F(refused_lines, of_a_field_at_the_edge_are_not_cut) {
    widget_set_refused(at("last"), "no", "应为 0–255，或者别的什么");
    settle();
    EXPECT_TRUE(native_window()->rect().contains(place()));
    EXPECT_EQ(place().left(), place_of("last").left()) << "beyond its card";
    EXPECT_GT(place().right(), place_of("card").right());
    widget_set_prop_int(at("card"), "x", 790);
    settle();
    EXPECT_LE(place().right(), native_window()->rect().right()) << "moved to the left where the window ends";
}

TEST_F(refused_lines, go_with_their_window) {
    widget_set_refused(at("first"), "no", "one");
    close_window(live(win), 0);
    settle();
    EXPECT_EQ(line(), nullptr);
}

} // namespace
