#include "tests/toolkit/ravel/stage.h"
#include "toolkit/ravel/qt/handles.h"

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

struct call {
    const char* name;
    ret_t (*on)(widget* w);
};

TEST_F(finding, what_is_no_widget_is_refused_everywhere) {
    open(ui_window(""));
    const call calls[] = {
        {"build", [](widget* w) { return widget_build(w); }},
        {"foreach", [](widget* w) { return widget_foreach(w, [](widget*) { return RET_OK; }); }},
        {"off", [](widget* w) { return widget_off(w, 1); }},
        {"long_press", [](widget* w) { return widget_set_long_press_ms(w, 10); }},
        {"dispatch", [](widget* w) { return widget_dispatch_simple_event(w, event_type::click); }},
        {"text", [](widget* w) { return widget_set_text_utf8(w, "x"); }},
        {"value", [](widget* w) { return widget_set_value_int(w, 1); }},
        {"visible", [](widget* w) { return widget_set_visible(w, true); }},
        {"enable", [](widget* w) { return widget_set_enable(w, true); }},
        {"focused", [](widget* w) { return widget_set_focused(w); }},
        {"refused", [](widget* w) { return widget_set_refused(w, "x"); }},
        {"marked", [](widget* w) { return widget_set_marked(w, true); }},
        {"tooltip_more", [](widget* w) { return widget_set_tooltip_more(w, "x"); }},
        {"style_state", [](widget* w) { return widget_set_style_state(w, "ok"); }},
        {"tooltip", [](widget* w) { return widget_set_tooltip(w, "x"); }},
        {"prop_int", [](widget* w) { return widget_set_prop_int(w, "a", 1); }},
        {"prop_bool", [](widget* w) { return widget_set_prop_bool(w, "a", true); }},
        {"prop_str", [](widget* w) { return widget_set_prop_str(w, "a", "b"); }},
        {"range", [](widget* w) { return widget_set_range(w, 1, 2); }},
        {"quit", [](widget* w) { return dialog_quit(w, 1); }},
        {"esc", [](widget* w) { return dialog_set_esc_closes(w, true); }},
        {"close", [](widget* w) { return window_manager_close_window_force(window_manager(), w); }},
        {"switch", [](widget* w) { return window_manager_switch_to(window_manager(), nullptr, w, true); }},
    };
    for (const call& one : calls) EXPECT_EQ(one.on(nullptr), RET_BAD_PARAMS) << one.name;
    EXPECT_EQ(widget_get_value_int(nullptr), 0);
    EXPECT_EQ(widget_get_text_utf8(nullptr), "");
    EXPECT_EQ(widget_get_prop_int(nullptr, "a", 7), 7);
    EXPECT_TRUE(widget_get_prop_bool(nullptr, "a", true));
    EXPECT_EQ(widget_get_prop_str(nullptr, "a", "none"), "none");
    EXPECT_EQ(widget_on(nullptr, event_type::click, [](const event&) { return RET_OK; }), 0U);
    EXPECT_EQ(dialog_modal(nullptr), 0U);
    EXPECT_FALSE(widget_get_visible(nullptr) || widget_get_enable(nullptr) || widget_get_focused(nullptr) ||
                 widget_get_refused(nullptr) || widget_get_marked(nullptr) || widget_is_dialog(nullptr));
}

TEST_F(finding, what_is_of_another_kind_is_refused_everywhere) {
    open(ui_window(ui_widget("QLabel", "label", "0 0 9 9")));
    const call calls[] = {
        {"value", [](widget* w) { return widget_set_value_int(widget_get_window(w), 1); }},
        {"append", [](widget* w) { return combo_box_append_option(w, 1, "x"); }},
        {"reset", [](widget* w) { return combo_box_reset_options(w); }},
        {"options",
         [](widget* w) {
             return combo_box_set_options(w, {{1, "x"}});
         }},
        {"marked", [](widget* w) { return widget_set_marked(w, true); }},
        {"limit", [](widget* w) { return edit_set_text_limit(w, 0, 1); }},
        {"int_limit", [](widget* w) { return edit_set_int_limit(w, 0, 1, 1); }},
        {"range", [](widget* w) { return widget_set_range(w, 1, 2); }},
        {"page", [](widget* w) { return pages_set_active(w, 0); }},
        {"page_by_name", [](widget* w) { return pages_set_active_by_name(w, "x"); }},
        {"offset", [](widget* w) { return scroll_view_set_offset(w, 0, 0); }},
        {"virtual_w", [](widget* w) { return scroll_view_set_virtual_w(w, 1); }},
        {"virtual_h", [](widget* w) { return scroll_view_set_virtual_h(w, 1); }},
        {"quit", [](widget* w) { return dialog_quit(w, 1); }},
        {"esc", [](widget* w) { return dialog_set_esc_closes(w, true); }},
        {"close", [](widget* w) { return window_manager_close_window_force(window_manager(), w); }},
        {"close_by", [](widget* w) { return window_manager_close_window_force(w, widget_get_window(w)); }},
        {"switch", [](widget* w) { return window_manager_switch_to(window_manager(), nullptr, w, true); }},
        {"switch_by", [](widget* w) { return window_manager_switch_to(w, nullptr, widget_get_window(w), true); }},
        {"back", [](widget* w) { return window_manager_back(w); }},
        {"back_to_home", [](widget* w) { return window_manager_back_to_home(w); }},
        {"cursor", [](widget* w) { return window_manager_set_cursor(w, "cursor"); }},
    };
    for (const call& one : calls) EXPECT_EQ(one.on(at("label")), RET_BAD_PARAMS) << one.name;
    EXPECT_EQ(combo_box_count_options(at("label")), 0);
    EXPECT_FALSE(combo_box_has_option_text(at("label"), "x"));
    EXPECT_EQ(scroll_view_get_offset_x(at("label")), 0);
    EXPECT_EQ(scroll_view_get_offset_y(at("label")), 0);
    EXPECT_EQ(window_manager_get_top_window(at("label")), nullptr);
    EXPECT_EQ(window_manager_get_top_main_window(at("label")), nullptr);
    EXPECT_EQ(dialog_modal(at("label")), 0U);
    EXPECT_EQ(window_manager_get_top_window(window_manager()), win) << "nothing was closed";
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

TEST_F(finding, a_stale_handle_is_reported_by_the_function_that_got_it) {
    open(ui_window(""), "home");
    widget* gone = open(ui_window(""), "second");
    window_manager_close_window_force(window_manager(), gone);
    settle();
    said heard;
    EXPECT_EQ(widget_set_visible(gone, false), RET_BAD_PARAMS);
    EXPECT_EQ(heard.take(), "widget_set_visible: the widget is gone\n");
    EXPECT_EQ(widget_lookup(gone, "edit"), nullptr);
    EXPECT_EQ(heard.take(), "widget_lookup: the widget is gone\n");
    EXPECT_EQ(widget_set_visible(nullptr, false), RET_BAD_PARAMS);
    EXPECT_EQ(heard.take(), "") << "null is no stale handle";
}

TEST_F(finding, a_stale_handle_means_no_other_widget_at_the_same_address) {
    open(ui_window(""), "home");
    widget* gone = open(ui_window(ui_widget("QLineEdit", "edit", "0 0 90 30")), "second");
    widget* edit = at("edit");
    const QWidget* address = qwidget_of(edit);
    bool reused = false;
    for (int round = 0; round < 50 && !reused; ++round) {
        window_manager_close_window_force(window_manager(), win);
        settle();
        open(ui_window(ui_widget("QLineEdit", "edit", "0 0 90 30")), "second");
        reused = qwidget_of(at("edit")) == address;
        EXPECT_NE(at("edit"), edit);
        EXPECT_NE(win, gone);
        EXPECT_EQ(qwidget_of(edit), nullptr);
        EXPECT_EQ(widget_set_text_utf8(edit, "x"), RET_BAD_PARAMS);
        EXPECT_EQ(widget_get_text_utf8(at("edit")), "");
    }
}

TEST(handles, a_place_taken_again_gives_another_handle) {
    // Told apart by their addresses alone.
    auto* first = reinterpret_cast<widget_state*>(8);
    auto* second = reinterpret_cast<widget_state*>(16);
    widget* old = handle_take(first);
    EXPECT_EQ(handle_find(old), first);
    handle_drop(old);
    EXPECT_EQ(handle_find(old), nullptr);
    widget* next = handle_take(second);
    EXPECT_NE(next, old);
    EXPECT_EQ(handle_find(next), second);
    EXPECT_EQ(handle_find(old), nullptr);
    handle_drop(old); // not its own any more
    EXPECT_EQ(handle_find(next), second);
    handle_drop(next);
    EXPECT_EQ(handle_find(nullptr), nullptr);
}

TEST_F(finding, what_is_needed_and_not_there_is_reported_with_window_and_name) {
    open(ui_window(ui_widget("QWidget", "box", "0 0 90 90", ui_widget("QLabel", "deep", "0 0 9 9"))), "home");
    EXPECT_EQ(widget_need(win, "deep"), at("deep"));
    said heard;
    std::vector<std::string> missing;
    widget_need_set_hook([&missing](const std::string& text) { missing.push_back(text); });
    EXPECT_EQ(widget_need(win, "dep"), nullptr);
    EXPECT_EQ(widget_need(at("box"), "dep"), nullptr);
    EXPECT_EQ(widget_need(nullptr, "dep"), nullptr);
    EXPECT_EQ(widget_need(win, nullptr), nullptr);
    widget_need_set_hook({});
    EXPECT_THAT(missing, ElementsAre("widget_need: no widget \"dep\" in \"home\"\n",
                                     "widget_need: no widget \"dep\" in \"box\" of \"home\"\n",
                                     "widget_need: no widget \"dep\" in no widget\n",
                                     "widget_need: no widget \"\" in \"home\"\n"));
    EXPECT_EQ(heard.take(), missing[0] + missing[1] + missing[2] + missing[3]);
}

#ifndef NDEBUG
TEST_F(finding, what_is_needed_and_not_there_ends_a_debug_build) {
    open(ui_window(""), "home");
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto call = [this] {
        end_stage_at_abort();
        log_set_capture([](const std::string& text, void*) { std::fputs(text.c_str(), stderr); }, nullptr);
        widget_need(win, "dep");
    };
    EXPECT_DEATH(call(), "no widget \"dep\" in \"home\"");
}
#endif

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
