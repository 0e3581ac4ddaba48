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
    for (const char* bar : {"scroll_bar_d_home", "scroll_bar_d_home_c"})
        EXPECT_EQ(widget_get_value_int(at(bar)), 0) << bar;
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

TEST_F(home_scroll, the_wheel_over_a_page_that_is_all_in_view_moves_the_page_area) {
    size(1024, 600);
    EXPECT_EQ(user_does("click home_page/table_button_can\nwheel home_page/page_can -120"), "");
    EXPECT_EQ(y(), 23);
    EXPECT_EQ(user_does("wheel home_page/page_can 120"), "");
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

struct family_look {
    const char* model;
    const char* tabs;
    const char* last_tab;
};
constexpr family_look family_looks[] = {
    {"VKT531A", "view10_tabs", "table_button_can"},
    {"VKT510A", "vkt510a_view_1_tabs", "vkt510a_tab_button_can"},
    {"VKT610B", "vkt610b_view_1_tabs", "vkt610b_tab_button_canfd"},
};

TEST_F(home_scroll, tabs_and_code_stay_in_view_while_the_page_scrolls) {
    size(1024, 600);
    for (const family_look& of : family_looks) {
        pick("combo_box_ex_dev", of.model);
        const int tabs_at = prop(of.tabs, "window_y");
        const int copy_at = prop("button_copy", "window_y");
        const int page_at = prop(of.tabs, "y") + prop(of.tabs, "h");
        to_end("scroll_bar_d_home");
        ASSERT_EQ(y(), 150);
        EXPECT_EQ(prop(of.tabs, "window_y"), tabs_at) << of.model;
        EXPECT_EQ(prop("button_copy", "window_y"), copy_at) << of.model;
        EXPECT_EQ(prop(of.tabs, "y") + prop(of.tabs, "h"), page_at + 150) << "the page moved under them";
        EXPECT_LE(prop("code_card", "window_y") + prop("code_card", "h") + 16, prop("view", "window_y"))
            << of.model;
        EXPECT_EQ(user_does(tk_format("click home_page/%s\nclick home_page/button_copy", of.last_tab)), "");
    }
}

// The bar's parts from left to right.
constexpr const char* bar[] = {"label_dev",      "combo_box_ex_dev", "label_serial",   "combo_box_ex_serial",
                               "button",         "button2",          "button_read",    "button_write",
                               "button_default", "button_data_lock", "progress_button"};

TEST_F(home_scroll, the_bar_is_never_squeezed_into_a_narrow_window) {
    widget_set_visible(at("button_data_lock"), true); // the widest bar there is
    settle();
    std::vector<int> widths;
    for (const char* name : bar) widths.push_back(prop(name, "w"));
    for (const auto& [w, h] :
         {std::pair(1024, 600), std::pair(1000, 600), std::pair(640, 480), std::pair(320, 240)}) {
        size(w, h);
        for (std::size_t i = 0; i < std::size(bar); i++) {
            EXPECT_EQ(prop(bar[i], "w"), widths[i]) << bar[i] << " at " << w;
            if (i == 0) continue;
            EXPECT_GE(prop(bar[i], "x"), prop(bar[i - 1], "x") + prop(bar[i - 1], "w") + 2) << bar[i];
        }
        EXPECT_EQ(prop("label_dev", "window_x"), 24 - x()) << w;
        if (w < 1000) to_end("scroll_bar_d_home_c");
        const int right = prop("progress_button", "window_x") + prop("progress_button", "w");
        EXPECT_LE(right, w - 24) << w;
        EXPECT_EQ(user_does("click home_page/progress_button"), "") << w;
        if (progress() != nullptr) window_manager_close_window_force(window_manager(), progress());
        for (const char* name : {"app_name", "state_dot", "state_word", "version_name"})
            EXPECT_LE(prop(name, "window_x") + prop(name, "w"), w) << name;
    }
}

TEST_F(home_scroll, tab_brings_a_button_of_the_bar_into_view) {
    size(640, 480);
    widget_set_focused(at("button"));
    for (int i = 0; i < 12 && !widget_get_focused(at("progress_button")); i++) user_does("key Tab");
    ASSERT_TRUE(widget_get_focused(at("progress_button")));
    EXPECT_LE(prop("progress_button", "window_x") + prop("progress_button", "w"), 640);
    EXPECT_GT(x(), 0) << "page and bar stay together";
    EXPECT_EQ(x(), scroll_view_get_offset_x(at("scroll_view_top")));
}

TEST_F(home_scroll, the_top_bar_stays_whole_in_a_small_window) {
    size(1024, 600);
    widget_set_visible(at("button_data_lock"), true); // the widest bar there is
    settle();
    for (const char* name : {"button", "button2", "button_read", "button_write", "button_default", "button_data",
                             "progress_button", "state_word", "combo_box_ex_dev", "combo_box_ex_serial"})
        EXPECT_TRUE(visible(name)) << name;
    EXPECT_LE(prop("state_word", "x") + prop("state_word", "w"), 1000);
    EXPECT_LE(prop("progress_button", "x") + prop("progress_button", "w"), 1000);
    EXPECT_GE(prop("combo_box_ex_dev", "w"), 110);
}

} // namespace
