// A layout that is read on a thread of its own before its window is opened.
#include "tests/toolkit/ravel/stage.h"

#include "toolkit/core/worker.h"

using testing::EndsWith;
using testing::HasSubstr;

namespace {

class layouts_ahead : public stage {};

TEST_F(layouts_ahead, a_layout_is_opened_as_it_was_read_and_once) {
    write_layout("ahead", ui_window(ui_widget("QLabel", "first", "0 0 9 9")));
    window_read_ahead("ahead");
    EXPECT_TRUE(wait_until([] { return workers_running() == 0; }));
    write_layout("ahead", ui_window(ui_widget("QLabel", "second", "0 0 9 9")));
    EXPECT_NE(widget_lookup(window_open("ahead"), "first"), nullptr);
    EXPECT_NE(widget_lookup(window_open("ahead"), "second"), nullptr);
}

TEST_F(layouts_ahead, a_layout_stands_back_for_another_window) {
    write_layout("ahead", ui_window(ui_widget("QLabel", "first", "0 0 9 9")));
    write_layout("other", ui_window(ui_widget("QLabel", "other", "0 0 9 9")));
    window_read_ahead("ahead");
    EXPECT_NE(widget_lookup(window_open("other"), "other"), nullptr);
    EXPECT_NE(widget_lookup(window_open("ahead"), "first"), nullptr);
    window_read_ahead("ahead");
    window_read_ahead("other");
    EXPECT_NE(widget_lookup(window_open("ahead"), "first"), nullptr);
    EXPECT_NE(widget_lookup(window_open("other"), "other"), nullptr);
    window_read_ahead("ahead");
    write_layout("ahead", ui_window(ui_widget("QLabel", "second", "0 0 9 9")));
    window_read_ahead("ahead");
    EXPECT_NE(widget_lookup(window_open("ahead"), "second"), nullptr);
    EXPECT_NE(widget_lookup(window_open("ahead"), "second"), nullptr);
}

TEST_F(layouts_ahead, a_broken_layout_is_refused_as_it_is_opened) {
    write_layout("ahead", "<ui>\n<widget></ui>");
    window_read_ahead("ahead");
    EXPECT_EQ(window_open("ahead"), nullptr);
    EXPECT_THAT(window_open_error(), HasSubstr("/ui/ahead.ui:2: "));
    window_read_ahead("absent");
    EXPECT_EQ(window_open("absent"), nullptr);
    EXPECT_THAT(window_open_error(), EndsWith("/ui/absent.ui:0: cannot be opened"));
}

} // namespace
