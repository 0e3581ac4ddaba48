#include "app/home_scroll.h"

#include "tests/support/app_fixture.h"
#include "tests/support/user.h"

namespace {

class home_scroll : public app_test {
  protected:
    void TearDown() override {
        user_window_size(1280, 750);
        app_test::TearDown();
    }
    static void size(int w, int h) {
        user_window_size(w, h);
        settle();
    }
    static int x() { return scroll_view_get_offset_x(at("scroll_view_home")); }
    static int y() { return scroll_view_get_offset_y(at("scroll_view_home")); }
    static int prop(const char* name, const char* key) { return widget_get_prop_int(at(name), key, -1); }
    // Turns the wheel over a bar until it stands at its end.
    static void to_end(const char* bar) {
        for (int before = -1; before != widget_get_value_int(at(bar));) {
            before = widget_get_value_int(at(bar));
            EXPECT_EQ(user_does(tk_format("wheel home_page/%s -1200", bar)), "");
        }
    }
};

TEST_F(home_scroll, at_the_default_size_nothing_scrolls) {
    EXPECT_EQ(prop("view", "y"), 720);
    EXPECT_EQ(prop("view1", "w"), 1280);
    EXPECT_FALSE(visible("scroll_bar_d_home"));
    EXPECT_FALSE(visible("scroll_bar_d_home_c"));
    EXPECT_EQ(x(), 0);
    EXPECT_EQ(y(), 0);
}

TEST_F(home_scroll, a_low_window_scrolls_by_what_is_missing) {
    size(1024, 600);
    EXPECT_EQ(prop("view", "y"), 570);
    EXPECT_TRUE(visible("scroll_bar_d_home"));
    EXPECT_FALSE(visible("scroll_bar_d_home_c"));
    to_end("scroll_bar_d_home");
    EXPECT_EQ(widget_get_value_int(at("scroll_bar_d_home")), 640);
    EXPECT_EQ(y(), 150);
    EXPECT_EQ(x(), 0);
}

TEST_F(home_scroll, a_narrow_window_scrolls_by_what_is_missing) {
    size(800, 750);
    EXPECT_TRUE(visible("scroll_bar_d_home_c"));
    to_end("scroll_bar_d_home_c");
    EXPECT_EQ(widget_get_value_int(at("scroll_bar_d_home_c")), 1000);
    EXPECT_EQ(x(), 200);
}

TEST_F(home_scroll, a_position_between_is_cut_down_to_whole_pixels) {
    size(1024, 601); // 149 pixels are missing
    EXPECT_EQ(user_does("wheel home_page/scroll_bar_d_home -120"), "");
    const int value = widget_get_value_int(at("scroll_bar_d_home"));
    ASSERT_GT(value, 0);
    EXPECT_EQ(y(), value * 149 / 640);
}

TEST_F(home_scroll, the_wheel_over_the_page_area_moves_the_bar) {
    size(1024, 600);
    EXPECT_EQ(user_does("wheel home_page/scroll_view_home -120"), "");
    EXPECT_EQ(widget_get_value_int(at("scroll_bar_d_home")), 100);
    EXPECT_EQ(y(), 23);
    EXPECT_EQ(user_does("wheel home_page/scroll_view_home 120"), "");
    EXPECT_EQ(y(), 0);
}

TEST_F(home_scroll, resizing_starts_at_the_top_again) {
    size(1024, 600);
    to_end("scroll_bar_d_home");
    size(1024, 620);
    EXPECT_EQ(widget_get_value_int(at("scroll_bar_d_home")), 0);
    EXPECT_EQ(y(), 0);
    size(1280, 750);
    EXPECT_FALSE(visible("scroll_bar_d_home"));
}

TEST_F(home_scroll, a_model_chosen_first_while_scrolled_starts_at_the_top) {
    size(1024, 600);
    for (const char* model : {"VKT510A", "VKT610B"}) {
        to_end("scroll_bar_d_home");
        ASSERT_EQ(y(), 150);
        pick("combo_box_ex_dev", model);
        EXPECT_EQ(widget_get_value_int(at("scroll_bar_d_home")), 0) << model;
        EXPECT_EQ(y(), 0) << model;
    }
    // A family whose pages stand already is shown where the bar is.
    to_end("scroll_bar_d_home");
    pick("combo_box_ex_dev", "VKT510A");
    EXPECT_EQ(widget_get_value_int(at("scroll_bar_d_home")), 640);
    EXPECT_EQ(y(), 150);
}

TEST_F(home_scroll, a_taller_window_does_not_scroll) {
    size(1280, 900);
    EXPECT_EQ(prop("view", "y"), 870);
    EXPECT_FALSE(visible("scroll_bar_d_home"));
    EXPECT_EQ(y(), 0);
}

TEST_F(home_scroll, the_top_bar_stays_whole_in_a_small_window) {
    size(1024, 600);
    widget_set_visible(at("button_data_lock"), true); // the widest bar there is
    settle();
    for (const char* name : {"button", "button2", "button_read", "button_write", "button_default", "button_data",
                             "progress_button", "state_word", "combo_box_ex_dev", "combo_box_ex_serial"})
        EXPECT_TRUE(visible(name)) << name;
    EXPECT_LE(prop("state_word", "x") + prop("state_word", "w"), 1024);
    EXPECT_GE(prop("combo_box_ex_dev", "w"), 110);
}

} // namespace
