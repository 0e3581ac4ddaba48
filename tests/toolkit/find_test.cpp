#include "tests/toolkit/stage.h"

using testing::ElementsAre;

namespace {

class finding : public stage {};

TEST_F(finding, lookup_goes_breadth_first_and_never_answers_the_root) {
    open(ui_window(ui_widget("QWidget", "left", "0 0 9 9", ui_widget("QLineEdit", "twin", "0 0 9 9")) +
                   ui_widget("QLabel", "twin", "0 0 9 9") + ui_widget("QWidget", "win", "0 0 9 9")));
    EXPECT_EQ(widget_type(widget_lookup(win, "twin")), "label");
    EXPECT_EQ(widget_type(widget_lookup(at("left"), "twin")), "edit");
    EXPECT_NE(widget_lookup(win, "win"), win);
    EXPECT_EQ(widget_lookup(win, "nobody"), nullptr);
    EXPECT_EQ(widget_lookup(nullptr, "twin"), nullptr);
    EXPECT_EQ(widget_lookup(win, nullptr), nullptr);
    EXPECT_EQ(widget_lookup(win, ""), nullptr);
}

TEST_F(finding, child_is_direct_and_containers_without_a_name_do_not_count) {
    open(ui_window(ui_widget("QWidget", "", "0 0 9 9", ui_widget("QLabel", "inner", "0 0 9 9")) +
                   ui_widget("QWidget", "box", "0 0 9 9", ui_widget("QLabel", "deep", "0 0 9 9"))));
    EXPECT_NE(widget_child(win, "inner"), nullptr);
    EXPECT_EQ(widget_child(win, "deep"), nullptr);
    EXPECT_NE(widget_child(at("box"), "deep"), nullptr);
}

TEST_F(finding, child_of_the_window_manager_is_the_topmost_of_that_name) {
    widget* below = open(ui_window(""), "same");
    widget* above = open(ui_window(""), "same");
    EXPECT_NE(below, above);
    EXPECT_EQ(widget_child(window_manager(), "same"), above);
    window_manager_close_window_force(window_manager(), above);
    EXPECT_EQ(widget_child(window_manager(), "same"), below);
}

TEST_F(finding, foreach_visits_parents_first_in_layout_order_also_after_pages_were_turned) {
    open(ui_window(ui_widget("QStackedWidget", "pages", "0 0 90 90",
                             ui_widget("QWidget", "p0", "", ui_widget("QLabel", "l0", "0 0 9 9")) +
                                 ui_widget("QWidget", "p1", "", ui_widget("QLabel", "l1", "0 0 9 9"))) +
                   ui_widget("QLabel", "last", "0 0 9 9")));
    pages_set_active(at("pages"), 1);
    pages_set_active(at("pages"), 0);
    std::vector<std::string> names;
    widget_foreach(win, [&names](widget* w) {
        names.push_back(widget_name(w));
        return RET_OK;
    });
    EXPECT_THAT(names, ElementsAre("pages", "p0", "l0", "p1", "l1", "last"));
}

TEST_F(finding, foreach_ends_with_the_first_answer_that_is_not_ok) {
    open(ui_window(ui_widget("QLabel", "a", "0 0 9 9") + ui_widget("QLabel", "b", "0 0 9 9")));
    int visits = 0;
    EXPECT_EQ(widget_foreach(win, [&visits](widget*) { return ++visits == 1 ? RET_FAIL : RET_OK; }), RET_FAIL);
    EXPECT_EQ(visits, 1);
    EXPECT_EQ(widget_foreach(nullptr, [](widget*) { return RET_OK; }), RET_BAD_PARAMS);
}

TEST_F(finding, window_of_a_widget_and_of_itself) {
    open(ui_window(ui_widget("QWidget", "box", "0 0 9 9", ui_widget("QLabel", "deep", "0 0 9 9"))));
    EXPECT_EQ(widget_get_window(at("deep")), win);
    EXPECT_EQ(widget_get_window(win), win);
    EXPECT_EQ(widget_get_window(window_manager()), nullptr);
}

TEST_F(finding, a_handle_of_a_destroyed_window_is_noticed) {
    open(ui_window(""), "home");
    widget* gone = open(ui_window(ui_widget("QLineEdit", "edit", "0 0 90 30")), "second");
    widget* edit = at("edit");
    window_manager_close_window_force(window_manager(), gone);
    EXPECT_EQ(widget_name(gone), "second") << "it lives until nothing can be using it";
    settle();
    EXPECT_EQ(widget_name(gone), "");
    EXPECT_EQ(widget_set_text_utf8(edit, "x"), RET_BAD_PARAMS);
    EXPECT_EQ(widget_get_text_utf8(edit), "");
    EXPECT_EQ(widget_on(edit, event_type::click, [](const event&) { return RET_OK; }), 0u);
}

TEST_F(finding, handlers_run_in_order_and_can_be_taken_off_by_one_another) {
    open(ui_window(ui_widget("QPushButton", "go", "0 0 90 30")));
    std::vector<int> order;
    uint32_t third = 0;
    widget_on(at("go"), event_type::click, [&](const event&) {
        order.push_back(1);
        widget_off(at("go"), third);
        return RET_FAIL;
    });
    widget_on(at("go"), event_type::click, [&](const event& e) {
        order.push_back(2);
        EXPECT_EQ(e.target, at("go"));
        return RET_OK;
    });
    third = widget_on(at("go"), event_type::click, [&](const event&) {
        order.push_back(3);
        return RET_OK;
    });
    click(at("go"));
    EXPECT_THAT(order, ElementsAre(1, 2));
    EXPECT_EQ(widget_off(at("go"), third), RET_FAIL);
    EXPECT_EQ(widget_off(nullptr, 1), RET_BAD_PARAMS);
    EXPECT_EQ(widget_on(at("go"), event_type::click, {}), 0u);
}

} // namespace
