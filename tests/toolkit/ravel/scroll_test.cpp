#include "tests/toolkit/ravel/stage.h"

#include "toolkit/ravel/qt/window_stack.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class scrolling : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        open(ui_window(ui_widget("QScrollArea", "view", "10 10 300 200",
                                 ui_dynamic("scroll_bar", "bar") +
                                     ui_widget("QWidget", "content", "0 0 300 200",
                                               ui_widget("QLabel", "label", "10 10 100 30") +
                                                   ui_widget("QSpinBox", "spin", "10 50 100 30") +
                                                   ui_widget("QLineEdit", "last", "10 350 100 30"))) +
                       ui_widget("QScrollBar", "bar", "320 10 12 200",
                                 "<property name=\"orientation\"><enum>Qt::Vertical</enum></property>" +
                                     ui_number("maximum", 500) + ui_number("singleStep", 10))));
        view = at("view");
        scroll_view_set_virtual_h(view, 383);
        for (const event_type type : {event_type::wheel, event_type::value_changed}) {
            told.hear(view, type);
            told.hear(at("bar"), type);
        }
    }
    widget* view = nullptr;
};

TEST_F(scrolling, offset_is_held_to_what_the_content_allows) {
    scroll_view_set_offset(view, 0, 100);
    EXPECT_EQ(scroll_view_get_offset_y(view), 100);
    scroll_view_set_offset(view, 50, 1000);
    EXPECT_EQ(scroll_view_get_offset_y(view), 183);
    EXPECT_EQ(scroll_view_get_offset_x(view), 0) << "as wide as the view: nothing to move";
    scroll_view_set_offset(view, -5, -5);
    EXPECT_EQ(scroll_view_get_offset_y(view), 0);
    EXPECT_EQ(scroll_view_set_offset(nullptr, 0, 0), RET_BAD_PARAMS);
    EXPECT_EQ(scroll_view_get_offset_y(at("bar")), 0);
}

TEST_F(scrolling, virtual_width_is_never_narrower_than_the_view) {
    scroll_view_set_virtual_w(view, 1000);
    EXPECT_EQ(widget_get_prop_int(at("content"), "w", 0), 1000);
    scroll_view_set_offset(view, 2000, 0);
    EXPECT_EQ(scroll_view_get_offset_x(view), 700);
    scroll_view_set_virtual_w(view, 100);
    settle();
    EXPECT_EQ(widget_get_prop_int(at("content"), "w", 0), 300);
    EXPECT_EQ(scroll_view_get_offset_x(view), 0);
    EXPECT_EQ(scroll_view_set_virtual_w(at("bar"), 100), RET_BAD_PARAMS);
    EXPECT_EQ(scroll_view_set_virtual_h(view, -1), RET_BAD_PARAMS);
}

TEST_F(scrolling, wheel_over_its_children_goes_to_its_handlers_and_moves_nothing_by_itself) {
    int delta = 0;
    widget_on(view, event_type::wheel, [&delta](const event& e) {
        delta = e.delta;
        return RET_OK;
    });
    wheel(at("label"), -120);
    EXPECT_EQ(delta, -120);
    wheel(at("spin"), 240);
    EXPECT_EQ(delta, 240);
    EXPECT_EQ(widget_get_value_int(at("spin")), 0);
    widget_set_enable(at("spin"), false);
    wheel(at("spin"), 120);
    EXPECT_EQ(delta, 120);
    EXPECT_THAT(told.take(), ElementsAre("view:wheel", "view:wheel", "view:wheel"));
    EXPECT_EQ(scroll_view_get_offset_y(view), 0);
}

TEST_F(scrolling, bar_tells_the_user_only) {
    widget_set_value_int(at("bar"), 250);
    EXPECT_EQ(widget_get_value_int(at("bar")), 250);
    widget_set_value_int(at("bar"), 9999);
    EXPECT_EQ(widget_get_value_int(at("bar")), 500);
    widget_set_range(at("bar"), 0, 100);
    EXPECT_EQ(widget_get_value_int(at("bar")), 100);
    EXPECT_THAT(told.take(), IsEmpty());
    wheel(at("bar"), 120);
    EXPECT_LT(widget_get_value_int(at("bar")), 100);
    EXPECT_THAT(told.take(), testing::Contains("bar:value_changed"));
}

TEST_F(scrolling, tab_to_a_hidden_field_steps_the_bar_until_it_shows) {
    widget_on(at("bar"), event_type::value_changed, [this](const event&) {
        return scroll_view_set_offset(view, 0, static_cast<int>(widget_get_value_int(at("bar")) * 0.366));
    });
    click(at("spin"));
    key("Tab");
    ASSERT_TRUE(widget_get_focused(at("last")));
    EXPECT_EQ(scroll_view_get_offset_y(view), static_cast<int>(widget_get_value_int(at("bar")) * 0.366));
    EXPECT_FALSE(covered_at(qwidget_of(at("last")), QPoint(5, 5)));
    key("Shift+Tab");
    ASSERT_TRUE(widget_get_focused(at("spin")));
    EXPECT_FALSE(covered_at(qwidget_of(at("spin")), QPoint(5, 5)));
}

TEST_F(scrolling, tab_to_a_hidden_field_shows_it_without_a_bar_too) {
    widget_set_prop_str(view, "scroll_bar", "");
    click(at("spin"));
    key("Tab");
    EXPECT_FALSE(covered_at(qwidget_of(at("last")), QPoint(5, 5)));
    EXPECT_GT(scroll_view_get_offset_y(view), 0);
}

/// A scroll view whose bar shows when needed, inside another one.
class nested_scrolling : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        const std::string bar = "<property name=\"orientation\"><enum>Qt::Vertical</enum></property>" +
                                ui_number("maximum", 500) + ui_number("singleStep", 10);
        open(ui_window(
            ui_widget("QScrollArea", "outer", "10 10 400 200",
                      ui_widget("QWidget", "page", "0 0 400 400",
                                ui_widget("QScrollArea", "inner", "10 10 300 180",
                                          ui_dynamic("scroll_bar", "bar") + ui_flag_dynamic("bar_when_needed") +
                                              ui_widget("QWidget", "content", "0 0 300 100",
                                                        ui_widget("QLabel", "label", "10 10 100 30") +
                                                            ui_widget("QLineEdit", "last", "10 150 100 30"))) +
                                    ui_widget("QScrollBar", "bar", "320 10 12 180", bar)))));
        scroll_view_set_virtual_h(at("outer"), 400);
        settle();
        told.hear(at("inner"), event_type::wheel);
        told.hear(at("outer"), event_type::wheel);
        told.hear(at("bar"), event_type::value_changed);
    }
    static std::string ui_flag_dynamic(const std::string& property) {
        return "<property name=\"" + property + "\" stdset=\"0\"><bool>true</bool></property>\n";
    }
};

TEST_F(nested_scrolling, the_bar_shows_only_while_something_overflows) {
    EXPECT_FALSE(widget_get_visible(at("bar")));
    scroll_view_set_virtual_h(at("inner"), 363);
    settle();
    EXPECT_TRUE(widget_get_visible(at("bar")));
    EXPECT_EQ(widget_get_prop_int(at("content"), "h", 0), 363) << "the content keeps its own height";
    EXPECT_EQ(widget_get_prop_int(at("inner"), "h", 0), 180) << "the view shows a part of it";
    widget_set_value_int(at("bar"), 200);
    scroll_view_set_offset(at("inner"), 0, 73);
    widget_set_prop_int(at("inner"), "h", 400);
    settle();
    EXPECT_FALSE(widget_get_visible(at("bar")));
    EXPECT_EQ(scroll_view_get_offset_y(at("inner")), 0);
    EXPECT_EQ(widget_get_value_int(at("bar")), 0) << "bar and view stay together";
    EXPECT_THAT(told.take(), IsEmpty()) << "nobody turned it";
}

TEST_F(nested_scrolling, the_wheel_is_for_the_innermost_that_overflows) {
    wheel(at("label"), -120);
    EXPECT_THAT(told.take(), ElementsAre("outer:wheel"));
    scroll_view_set_virtual_h(at("inner"), 363);
    settle();
    wheel(at("label"), -120);
    EXPECT_THAT(told.take(), ElementsAre("inner:wheel"));
}

TEST_F(nested_scrolling, without_being_asked_for_a_bar_is_left_alone) {
    open(ui_window(ui_widget("QScrollArea", "view", "10 10 300 180",
                             ui_dynamic("scroll_bar", "always") + ui_widget("QWidget", "content", "0 0 300 100")) +
                   ui_widget("QScrollBar", "always", "320 10 12 180")),
         "other");
    EXPECT_TRUE(widget_get_visible(at("always")));
}

/// A scroll view with a row on top that stays, a column that stays whole, and a field under them.
class staying : public stage {
  protected:
    void SetUp() override {
        stage::SetUp();
        const std::string bars = ui_widget("QScrollBar", "bar", "320 10 12 200",
                                           "<property name=\"orientation\"><enum>Qt::Vertical</enum></property>" +
                                               ui_number("maximum", 300) + ui_number("singleStep", 10)) +
                                 ui_widget("QScrollBar", "bar_h", "10 220 300 12",
                                           ui_number("maximum", 500) + ui_number("singleStep", 10));
        open(ui_window(
            ui_widget(
                "QScrollArea", "view", "10 10 300 200",
                ui_dynamic("scroll_bar", "bar") + ui_dynamic("scroll_bar_h", "bar_h") +
                    ui_widget("QWidget", "content", "0 0 300 200",
                              ui_widget("QWidget", "tabs", "0 0 150 40",
                                        ui_dynamic("stays", "top") + ui_widget("QPushButton", "tab", "0 0 60 30")) +
                                  ui_widget("QWidget", "column", "200 10 90 480", ui_dynamic("stays", "whole")) +
                                  ui_widget("QLineEdit", "first", "10 50 100 30") +
                                  ui_widget("QLineEdit", "last", "10 450 100 30") +
                                  ui_widget("QLineEdit", "right", "650 450 100 30") +
                                  ui_widget("QLineEdit", "beside", "151 60 40 30"))) +
            bars));
        scroll_view_set_virtual_h(at("view"), 500);
        scroll_view_set_virtual_w(at("view"), 800);
        widget_on(at("bar"), event_type::value_changed, [this](const event&) { return follow(); });
        widget_on(at("bar_h"), event_type::value_changed, [this](const event&) { return follow(); });
        settle();
    }
    ret_t follow() {
        return scroll_view_set_offset(at("view"), widget_get_value_int(at("bar_h")),
                                      widget_get_value_int(at("bar")));
    }
    int place(const char* name, const char* property) const { return widget_get_prop_int(at(name), property, -1); }
};

TEST_F(staying, what_stays_keeps_its_place_while_the_rest_moves) {
    EXPECT_EQ(place("tabs", "window_y"), 10);
    EXPECT_EQ(place("column", "window_y"), 20);
    EXPECT_EQ(place("column", "h"), 180) << "what the view leaves of 480";
    for (const int y : {300, 120, 0, 77}) {
        scroll_view_set_offset(at("view"), 0, y);
        EXPECT_EQ(place("tabs", "window_y"), 10) << y;
        EXPECT_EQ(place("column", "window_y"), 20) << y;
        EXPECT_EQ(place("column", "h"), 180) << y;
        EXPECT_EQ(place("first", "window_y"), 60 - y) << y;
    }
}

TEST_F(staying, it_moves_from_side_to_side_with_the_rest) {
    scroll_view_set_offset(at("view"), 50, 100);
    EXPECT_EQ(place("tabs", "window_x"), 10 - 50);
    EXPECT_EQ(place("column", "window_x"), 210 - 50);
}

TEST_F(staying, a_new_place_from_outside_is_its_place_from_then_on) {
    scroll_view_set_offset(at("view"), 0, 100);
    widget_set_prop_int(at("tabs"), "y", 5);
    EXPECT_EQ(place("tabs", "window_y"), 15);
    widget_set_prop_int(at("column"), "h", 490);
    EXPECT_EQ(place("column", "h"), 190);
    scroll_view_set_offset(at("view"), 0, 0);
    EXPECT_EQ(place("tabs", "window_y"), 15);
}

TEST_F(staying, what_was_hidden_while_it_scrolled_is_at_its_place_when_it_shows) {
    scroll_view_set_offset(at("view"), 0, 100);
    widget_set_visible(at("tabs"), false);
    scroll_view_set_offset(at("view"), 0, 200);
    widget_set_visible(at("tabs"), true);
    EXPECT_EQ(place("tabs", "window_y"), 10);
}

TEST_F(staying, a_larger_view_leaves_more_room) {
    widget_set_prop_int(at("view"), "h", 300);
    settle();
    EXPECT_EQ(place("column", "h"), 280);
    scroll_view_set_offset(at("view"), 0, 200);
    EXPECT_EQ(place("column", "h"), 280);
}

TEST_F(staying, it_lies_over_what_moves_under_it_and_takes_the_clicks) {
    told.hear(at("tab"), event_type::click);
    scroll_view_set_offset(at("view"), 0, 50);
    EXPECT_TRUE(covered_at(qwidget_of(at("first")), QPoint(5, 5)));
    click(at("tab"));
    EXPECT_THAT(told.take(), ElementsAre("tab:click"));
}

TEST_F(staying, tab_brings_a_field_out_from_under_it) {
    click(at("first"));
    key("Tab");
    ASSERT_TRUE(widget_get_focused(at("last")));
    EXPECT_EQ(scroll_view_get_offset_y(at("view")), 290) << "its 32 pixels from 450 on";
    key("Shift+Tab");
    ASSERT_TRUE(widget_get_focused(at("first")));
    EXPECT_EQ(scroll_view_get_offset_y(at("view")), 10) << "its top at the lower edge of what stays";
    EXPECT_FALSE(covered_at(qwidget_of(at("first")), QPoint(5, 1)));
}

TEST_F(staying, what_stays_takes_the_keyboard_where_it_is) {
    click(at("first"));
    widget_set_value_int(at("bar"), 100);
    follow();
    key("Shift+Tab");
    ASSERT_TRUE(widget_get_focused(at("tab")));
    EXPECT_EQ(scroll_view_get_offset_y(at("view")), 100);
}

TEST_F(staying, what_stands_beside_it_is_not_under_it) {
    click(at("first"));
    widget_set_value_int(at("bar"), 50);
    follow();
    key("Shift+Tab");
    key("Shift+Tab");
    ASSERT_TRUE(widget_get_focused(at("beside")));
    EXPECT_EQ(scroll_view_get_offset_y(at("view")), 50);
    EXPECT_EQ(place("beside", "window_y"), 20);
}

TEST_F(staying, tab_steps_the_other_bar_from_side_to_side) {
    click(at("first"));
    key("Tab");
    key("Tab");
    ASSERT_TRUE(widget_get_focused(at("right")));
    EXPECT_EQ(widget_get_value_int(at("bar_h")), 450);
    EXPECT_EQ(scroll_view_get_offset_x(at("view")), 450);
    key("Shift+Tab");
    ASSERT_TRUE(widget_get_focused(at("last")));
    EXPECT_EQ(scroll_view_get_offset_x(at("view")), 10);
}

} // namespace
