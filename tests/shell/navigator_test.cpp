#include "shell/navigator.h"

#include "tests/support/app_fixture.h"
#include "tests/support/pattern.h"
#include "tests/support/user.h"

namespace {

using testing::HasSubstr;

class navigator : public app_test {
  protected:
    static constexpr const char* single =
        "  <property name=\"single_instance\" stdset=\"0\"><bool>true</bool></property>\n";
    static constexpr const char* not_modal =
        "  <property name=\"to_modal\" stdset=\"0\"><bool>false</bool></property>\n";

    static int shown(const std::string& name) {
        int count = 0;
        for (widget* win = window_manager_get_top_window(window_manager()); win != nullptr;) {
            if (widget_name(win) == name) ++count;
            window_manager_close_window_force(window_manager(), win);
            win = window_manager_get_top_window(window_manager());
        }
        return count;
    }
    static std::string top() { return widget_name(window_manager_get_top_window(window_manager())); }
};

TEST_F(navigator, an_empty_name_is_refused_and_opens_nothing) {
    const std::string before = top();
    for (const char* name : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_EQ(navigator_to(name), RET_BAD_PARAMS);
        EXPECT_EQ(navigator_to_with_context(name, "x"), RET_BAD_PARAMS);
        EXPECT_EQ(navigator_replace(name), RET_BAD_PARAMS);
        EXPECT_EQ(navigator_switch_to(name, true), RET_BAD_PARAMS);
        EXPECT_EQ(navigator_close(name), RET_BAD_PARAMS);
        EXPECT_EQ(navigator_request_close(name), RET_BAD_PARAMS);
    }
    EXPECT_EQ(top(), before);
    for (const char* who : {"navigator_to_with_context", "navigator_replace", "navigator_switch_to",
                            "navigator_close", "navigator_request_close"})
        EXPECT_THAT(said(), HasSubstr(std::string(who) + ":"));
    EXPECT_THAT(said(), HasSubstr(" condition(target != NULL &&* target != '\\0') failed!\n"));
}

TEST_F(navigator, a_missing_layout_is_a_failure) {
    EXPECT_EQ(navigator_to("no_such_window"), RET_FAIL);
    EXPECT_THAT(said(), HasSubstr("navigator_window_open_and_close:"));
    EXPECT_THAT(said(), HasSubstr("condition(win != NULL) failed!\n"));
    EXPECT_EQ(top(), "home_page");
}

TEST_F(navigator, a_name_that_nobody_registered_opens_its_layout_without_bindings) {
    add_layout("about_box", "", false);
    EXPECT_EQ(navigator_to("about_box"), RET_OK);
    EXPECT_EQ(top(), "about_box");
}

TEST_F(navigator, a_single_instance_window_closes_the_one_before) {
    add_layout("only_one", "", false, single);
    navigator_to("only_one");
    widget* first = navigator_find("only_one");
    widget_set_prop_int(first, "marked", 1);
    navigator_to("only_one");
    settle();
    EXPECT_EQ(widget_get_prop_int(navigator_find("only_one"), "marked", 0), 0);
    EXPECT_EQ(shown("only_one"), 1);
}

TEST_F(navigator, other_windows_may_stand_twice) {
    add_layout("many", "", false);
    navigator_to("many");
    navigator_to("many");
    EXPECT_EQ(shown("many"), 2);
}

TEST_F(navigator, a_dialog_that_is_not_modal_does_not_block) {
    add_layout("card", "", true, not_modal);
    EXPECT_EQ(navigator_to("card"), RET_OK);
    EXPECT_EQ(top(), "card");
}

TEST_F(navigator, a_modal_dialog_gives_its_quit_code) {
    add_layout("question", "", true);
    idle_queue([] { return dialog_quit(navigator_find("question"), 7); });
    EXPECT_EQ(static_cast<int>(navigator_to("question")), 7);
    EXPECT_EQ(navigator_find("question"), nullptr);
}

TEST_F(navigator, back_ends_a_modal_dialog) {
    add_layout("question", "", true);
    idle_queue([] { return navigator_back(); });
    EXPECT_EQ(navigator_to("question"), RET_OK);
    EXPECT_EQ(top(), "home_page");
}

TEST_F(navigator, a_failed_init_is_logged_and_the_window_stays) {
    add_layout("data_info", "", true);
    ASSERT_EQ(navigator_register_window("data_info", [](widget*, const void*) { return RET_INIT_FAILED; }), RET_OK);
    EXPECT_EQ(navigator_to("data_info"), RET_INIT_FAILED);
    EXPECT_EQ(top(), "data_info");
    EXPECT_THAT(said(), HasSubstr("condition(ret == RET_OK) failed!\n"));
}

TEST_F(navigator, the_context_reaches_the_init) {
    add_layout("data_info", "", false);
    static const void* seen = nullptr;
    navigator_register_window("data_info", [](widget*, const void* context) {
        seen = context;
        return RET_OK;
    });
    const int record = 1;
    EXPECT_EQ(navigator_to_with_context("data_info", &record), RET_OK);
    EXPECT_EQ(seen, &record);
}

TEST_F(navigator, replace_closes_the_top_main_window) {
    add_layout("first", "", false);
    add_layout("second", "", false);
    navigator_to("first");
    EXPECT_EQ(navigator_replace("second"), RET_OK);
    settle();
    EXPECT_EQ(navigator_find("first"), nullptr);
    EXPECT_EQ(top(), "second");
    EXPECT_THAT(said(), HasSubstr("close current window: first\n"));
}

TEST_F(navigator, the_closing_line_is_only_for_debug_level) {
    add_layout("first", "", false);
    add_layout("second", "", false);
    navigator_to("first");
    log_set_log_level(LOG_LEVEL_INFO);
    navigator_replace("second");
    log_set_log_level(LOG_LEVEL_DEBUG);
    EXPECT_THAT(said(), testing::Not(HasSubstr("close current window")));
}

TEST_F(navigator, switch_to_opens_a_window_that_is_not_there) {
    EXPECT_EQ(navigator_switch_to("progress", false), RET_OK);
    ASSERT_NE(progress(), nullptr);
    // Its init has run: with no session, "ok" is offered.
    EXPECT_TRUE(widget_get_visible(widget_lookup(progress(), "ok")));
}

TEST_F(navigator, switch_to_brings_an_open_window_forward) {
    add_layout("other", "", false);
    navigator_to("other");
    EXPECT_EQ(navigator_switch_to("home_page", false), RET_OK);
    EXPECT_EQ(top(), "home_page");
    EXPECT_EQ(shown("home_page"), 1);
}

TEST_F(navigator, switch_to_can_close_the_current_window) {
    add_layout("other", "", false);
    navigator_to("other");
    EXPECT_EQ(navigator_switch_to("home_page", true), RET_OK);
    settle();
    EXPECT_EQ(navigator_find("other"), nullptr);
    EXPECT_EQ(top(), "home_page");
}

TEST_F(navigator, close_and_request_close_need_the_window) {
    EXPECT_EQ(navigator_close("progress"), RET_FAIL);
    EXPECT_EQ(navigator_request_close("progress"), RET_FAIL);
    for (const char* who : {"navigator_close", "navigator_request_close"})
        EXPECT_THAT(said(), HoldsPattern(std::string(who) + ":[0-9]+ condition\\(win != NULL\\) failed!\n"));
    EXPECT_THAT(said(), HasSubstr("condition(win != NULL) failed!\n"));
}

TEST_F(navigator, close_does_not_ask) {
    add_layout("stubborn", "", false);
    navigator_to("stubborn");
    widget_on(navigator_find("stubborn"), event_type::request_close, [](const event&) { return RET_FAIL; });
    EXPECT_EQ(navigator_close("stubborn"), RET_OK);
    EXPECT_EQ(navigator_find("stubborn"), nullptr);
}

TEST_F(navigator, request_close_leaves_it_to_the_window) {
    add_layout("stubborn", "", false);
    navigator_to("stubborn");
    int asked = 0;
    widget_on(navigator_find("stubborn"), event_type::request_close, [&asked](const event&) {
        ++asked;
        return RET_FAIL;
    });
    navigator_request_close("stubborn");
    EXPECT_EQ(asked, 1);
    EXPECT_NE(navigator_find("stubborn"), nullptr);
}

TEST_F(navigator, back_to_home_closes_everything_above) {
    add_layout("first", "", false);
    add_layout("card", "", true, not_modal);
    navigator_to("first");
    navigator_to("card");
    EXPECT_EQ(navigator_back_to_home(), RET_OK);
    EXPECT_EQ(top(), "home_page");
}

TEST_F(navigator, registering_needs_a_name_and_an_init) {
    EXPECT_EQ(navigator_register_window(nullptr, [](widget*, const void*) { return RET_OK; }), RET_BAD_PARAMS);
    EXPECT_EQ(navigator_register_window("about_box", nullptr), RET_BAD_PARAMS);
}

TEST_F(navigator, any_window_can_be_registered_and_the_last_init_counts) {
    add_layout("newcomer", "", false);
    ASSERT_EQ(navigator_register_window("newcomer", [](widget*, const void*) { return RET_FAIL; }), RET_OK);
    EXPECT_EQ(navigator_to("newcomer"), RET_FAIL);
    const auto init = [](widget* win, const void*) { return widget_set_prop_int(win, "bound", 1); };
    ASSERT_EQ(navigator_register_window("newcomer", init), RET_OK);
    EXPECT_EQ(navigator_to("newcomer"), RET_OK);
    EXPECT_EQ(widget_get_prop_int(navigator_find("newcomer"), "bound", 0), 1);
}

TEST_F(navigator, handlers_go_to_the_window_manager) {
    static int seen = 0; // the handler stays with the window manager
    EXPECT_EQ(navigator_on(event_type::resize,
                           [](const event& what) {
                               if (what.type == event_type::resize) ++seen;
                               return RET_OK;
                           }),
              RET_OK);
    ASSERT_TRUE(user_window_size(1100, 700));
    settle();
    EXPECT_GT(seen, 0);
    ASSERT_TRUE(user_window_size(1280, 750));
    settle();
}

} // namespace
