#include "dev_a/pages/vkt510a_pages.h"
#include "dev_generic/pages/generic_pages.h"
#include "tests/support/home_stage.h"

namespace {

struct scroll_case {
    const family_pages& of;
    const char* page;
    const char* view;
    const char* bar;
};
const scroll_case scroll_cases[] = {
    {generic_pages, "page_can", "scroll_view_can", "scroll_bar_d_can"},
    {vkt510a_pages, "page_vkt510a_can", "scroll_view_can_vkt510a", "scroll_bar_d_can_vkt510a"},
};

class can_scrolling : public home_stage, public testing::WithParamInterface<scroll_case> {
  protected:
    void SetUp() override {
        home_stage::SetUp();
        choose(GetParam().of);
        show(GetParam().page);
        view = on_page(GetParam().view);
        bar = on_page(GetParam().bar);
        // Tall enough that no offset is held back.
        scroll_view_set_virtual_h(view, 3000);
    }
    int offset() const { return scroll_view_get_offset_y(view); }
    void wheel(int delta) { does(std::string("wheel @/") + GetParam().view + " " + std::to_string(delta) + "\n"); }

    widget* view = nullptr;
    widget* bar = nullptr;
};

TEST_P(can_scrolling, the_wheel_moves_bar_and_view_by_a_hundred) {
    wheel(-120);
    EXPECT_EQ(widget_get_value_int(bar), 100);
    EXPECT_EQ(offset(), 36); // 36.6
    wheel(-120);
    EXPECT_EQ(widget_get_value_int(bar), 200);
    EXPECT_EQ(offset(), 73); // 73.2
    wheel(120);
    EXPECT_EQ(widget_get_value_int(bar), 100);
    EXPECT_EQ(offset(), 36);
}

TEST_P(can_scrolling, the_position_stays_within_0_and_500) {
    wheel(120);
    EXPECT_EQ(widget_get_value_int(bar), 0);
    EXPECT_EQ(offset(), 0);
    for (int i = 0; i < 7; i++) wheel(-120);
    EXPECT_EQ(widget_get_value_int(bar), 500);
    EXPECT_EQ(offset(), 183);
    wheel(120);
    EXPECT_EQ(widget_get_value_int(bar), 400);
    EXPECT_EQ(offset(), 146); // 146.4
}

TEST_P(can_scrolling, the_bar_moves_the_view) {
    widget_set_range(bar, 0, 500);
    does(std::string("click @/") + GetParam().bar + "\n"); // a press on the trough turns a page
    const int value = widget_get_value_int(bar);
    EXPECT_GT(value, 0);
    EXPECT_EQ(offset(), static_cast<int>(value * 0.366));
}

TEST_P(can_scrolling, handlers_are_attached_once) {
    wheel(-120);
    show(GetParam().page); // handlers of a second time would count from 0
    show(GetParam().page);
    wheel(-120);
    EXPECT_EQ(widget_get_value_int(bar), 200);
    EXPECT_EQ(offset(), 73);
}

TEST_P(can_scrolling, the_wheel_goes_on_from_the_pages_own_position) {
    widget_set_value_int(bar, 400); // as the bar's own moves leave it
    wheel(-120);
    EXPECT_EQ(widget_get_value_int(bar), 100);
    EXPECT_EQ(offset(), 36);
}

TEST_P(can_scrolling, the_position_starts_anew_when_nothing_overflows_for_a_while) {
    for (int i = 0; i < 3; i++) wheel(-120);
    EXPECT_EQ(widget_get_value_int(bar), 300);
    scroll_view_set_virtual_h(view, 0);
    toolkit_stage_settle();
    EXPECT_FALSE(widget_get_visible(bar));
    EXPECT_EQ(widget_get_value_int(bar), 0);
    scroll_view_set_virtual_h(view, 3000);
    toolkit_stage_settle();
    EXPECT_TRUE(widget_get_visible(bar));
    EXPECT_EQ(widget_get_value_int(bar), 0);
    EXPECT_EQ(offset(), 0) << "where the bar is";
    wheel(-120);
    EXPECT_EQ(widget_get_value_int(bar), 100) << "one notch from the top";
    EXPECT_EQ(offset(), 36);
}

TEST_P(can_scrolling, a_bar_that_was_turned_back_to_the_top_leaves_the_pages_own_position) {
    for (int i = 0; i < 2; i++) wheel(-120);
    for (int i = 0; i < 10; i++) does("wheel @/" + std::string(GetParam().bar) + " 120\n");
    EXPECT_EQ(widget_get_value_int(bar), 0);
    wheel(-120);
    EXPECT_EQ(widget_get_value_int(bar), 300);
    EXPECT_EQ(offset(), 109); // 109.8
}

INSTANTIATE_TEST_SUITE_P(both, can_scrolling, testing::ValuesIn(scroll_cases),
                         [](const auto& one) { return std::string(one.param.page); });

} // namespace
