// Every CAN page can be scrolled to its last edit, whichever way, in the sizes that screens have.
#include "app/home_scroll.h"

#include "tests/support/app_fixture.h"
#include "tests/support/user.h"

namespace {

struct can_page {
    const char* name;
    const char* model;
    std::vector<const char*> tabs; ///< clicked one after the other
    const char* free_last;         ///< clicked so that the last edit is enabled; null: it is
    const char* view;
    const char* bar;
    const char* first;
    const char* last;
};

const can_page pages[] = {
    {"generic",
     "VKT531A",
     {"table_button_can"},
     "page_can/check_button",
     "scroll_view_can",
     "scroll_bar_d_can",
     "combo_box_ex_bps",
     "edit_check5"},
    {"a",
     "VKT510A",
     {"vkt510a_tab_button_can"},
     "page_vkt510a_can/check_button_vkt510a",
     "scroll_view_can_vkt510a",
     "scroll_bar_d_can_vkt510a",
     "combo_box_ex_bps_vkt510a",
     "edit_check5_vkt510a"},
    {"b1",
     "VKT610B",
     {"vkt610b_tab_button_canfd"},
     nullptr,
     "scroll_view_vkt610b_canfd1",
     "scroll_bar_d_can_vkt610b_canfd1",
     "combo_box_ex_mode_vkt610b_canfd1",
     "edit_check7_vkt610b_canfd1"},
    {"b2",
     "VKT610B",
     {"vkt610b_tab_button_canfd", "tab_button_canfd2"},
     nullptr,
     "scroll_view_vkt610b_canfd2",
     "scroll_bar_d_can_vkt610b_canfd2",
     "combo_box_ex_mode_vkt610b_canfd2",
     "edit_check7_vkt610b_canfd2"},
};
void PrintTo(const can_page& page, std::ostream* out) { *out << page.name; }

class page_scroll : public app_test, public testing::WithParamInterface<can_page> {
  protected:
    void TearDown() override {
        user_window_size(1280, 750);
        app_test::TearDown();
    }
    static void open(int w, int h) {
        const can_page& page = GetParam();
        user_window_size(w, h);
        settle();
        pick("combo_box_ex_dev", page.model);
        for (const char* tab : page.tabs) click(home(), tab);
        if (page.free_last != nullptr) click(home(), page.free_last);
    }
    static std::string on_home(const char* what, const std::string& name, const char* rest = "") {
        return tk_format("%s home_page/%s %s\n", what, name.c_str(), rest);
    }
    static bool can_click(const char* name) { return user_tries(on_home("click", name)).empty(); }
    /// Does `once` until the last edit takes a click.
    static void reach_last(const std::string& once) {
        constexpr int patience = 60;
        for (int i = 0; i < patience && !can_click(GetParam().last); ++i) ASSERT_EQ(user_does(once), "");
        EXPECT_TRUE(can_click(GetParam().last));
    }
};

TEST_P(page_scroll, no_bar_stands_where_nothing_overflows) {
    open(1280, 750);
    EXPECT_FALSE(visible(GetParam().bar));
    EXPECT_TRUE(can_click(GetParam().last));
}

TEST_P(page_scroll, by_wheel) {
    open(1024, 600);
    reach_last(on_home("wheel", GetParam().view, "-120"));
}

TEST_P(page_scroll, by_bar) {
    open(1024, 600);
    ASSERT_TRUE(visible("scroll_bar_d_home"));
    reach_last(on_home("wheel", "scroll_bar_d_home", "-120"));
}

TEST_P(page_scroll, by_keyboard) {
    open(1024, 600);
    ASSERT_EQ(user_does(on_home("click", GetParam().first) + "key Esc\n"), "");
    constexpr int patience = 60;
    for (int i = 0; i < patience && !widget_get_focused(at(GetParam().last)); ++i)
        ASSERT_EQ(user_does("key Tab"), "");
    ASSERT_TRUE(widget_get_focused(at(GetParam().last)));
    EXPECT_TRUE(can_click(GetParam().last));
}

TEST_P(page_scroll, a_view_that_is_cut_shows_its_bar_and_moves_by_it) {
    open(1280, 750);
    widget* view = at(GetParam().view);
    scroll_view_set_virtual_h(view, 900);
    settle();
    EXPECT_TRUE(visible(GetParam().bar));
    ASSERT_EQ(user_does(on_home("wheel", GetParam().view, "-120")), "");
    EXPECT_EQ(widget_get_value_int(at(GetParam().bar)), 100);
    EXPECT_EQ(scroll_view_get_offset_y(view), 36); // 36.6
}

INSTANTIATE_TEST_SUITE_P(can_pages, page_scroll, testing::ValuesIn(pages),
                         [](const auto& one) { return std::string(one.param.name); });

} // namespace
