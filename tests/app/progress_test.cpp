#include "app/progress.h"

#include "app/err_display.h"
#include "app/session_news.h"
#include "app/ui_state.h"
#include "tests/app/app_fixture.h"

namespace {

using testing::HasSubstr;

class progress_window : public app_test {
  protected:
    void open() { ASSERT_EQ(navigator_to("progress"), RET_OK); }
    static void report(uint32_t percent, const char* step, uint8_t code) {
        progress_post(nullptr, percent, step, code);
        settle();
    }
    static bool shown(const char* name) { return widget_get_visible(widget_lookup(progress(), name)); }
    static int bar() { return widget_get_value_int(widget_lookup(progress(), "progress_bar")); }
};

struct status_case {
    const char* name;
    uint8_t code;
    const char* running;
    const char* finished;
};

class progress_status : public progress_window, public testing::WithParamInterface<status_case> {};

TEST_P(progress_status, follows_the_operation) {
    open();
    const auto& row = GetParam();
    report(50, "一", row.code);
    EXPECT_EQ(text(progress(), "label"), row.running);
    EXPECT_EQ(text(progress(), "label3"), "一");
    EXPECT_EQ(bar(), 50);
    EXPECT_FALSE(shown("ok"));
    EXPECT_TRUE(shown("hscroll_label"));
    report(100, "二", row.code);
    EXPECT_EQ(text(progress(), "label"), row.finished);
    EXPECT_EQ(text(progress(), "label3"), "二");
    EXPECT_EQ(bar(), 100);
    EXPECT_TRUE(shown("ok"));
    EXPECT_FALSE(shown("hscroll_label"));
}

INSTANTIATE_TEST_SUITE_P(operations, progress_status,
                         testing::Values(status_case{"connect", 0, "   连接设备状态", "   连接设备状态"},
                                         status_case{"failed", 1, "   连接设备状态", "   连接失败"},
                                         status_case{"write", 2, "   写配置状态", "   写配置结束"},
                                         status_case{"read", 3, "   读取配置状态", "   读取配置结束"},
                                         status_case{"mode", 8, "   模式转换状态", "   模式转换结束"}),
                         [](const auto& test) { return test.param.name; });

TEST_F(progress_window, another_operation_leaves_the_status_line) {
    open();
    report(50, "一", 2);
    report(60, "二", 7);
    EXPECT_EQ(text(progress(), "label"), "   写配置状态");
    EXPECT_EQ(text(progress(), "label3"), "二");
}

TEST_F(progress_window, a_report_below_100_after_100_hides_ok_again) {
    open();
    report(100, "一", 3);
    report(50, "二", 3);
    EXPECT_FALSE(shown("ok"));
    EXPECT_TRUE(shown("hscroll_label"));
    EXPECT_EQ(text(progress(), "label"), "   读取配置状态");
}

TEST_F(progress_window, a_report_of_100_fills_the_visible_page) {
    click(home(), "table_button_uart");
    tk_object_set_prop_uint8(config_store(), "uart_baud_rate", 9);
    open();
    report(100, "读配置完成", 3);
    EXPECT_EQ(text(at("page_uart"), "combo_box_ex_bps"), "1200");
}

TEST_F(progress_window, a_report_without_a_window_is_dropped_even_if_one_opens) {
    progress_post(nullptr, 70, "早", 3);
    open();
    settle();
    EXPECT_NE(text(progress(), "label3"), "早");
    EXPECT_NE(bar(), 70);
}

TEST_F(progress_window, a_report_finds_the_window_by_name) {
    open();
    progress_post(nullptr, 70, "一", 3);
    open(); // single instance: another window now
    settle();
    EXPECT_EQ(text(progress(), "label3"), "一");
}

TEST_F(progress_window, malformed_reports_are_dropped) {
    open();
    for (const char* missing : {"win", "propgress_value", "text_name"}) {
        const tk_object_ptr made = progress_report(40, "一", 3);
        tk_object_remove_prop(made.get(), missing);
        EXPECT_EQ(progress_update(made.get()), RET_INIT_FAILED) << missing;
    }
    const tk_object_ptr invalid = progress_report(0xFFFFFFFF, "一", 3);
    EXPECT_EQ(progress_update(invalid.get()), RET_INIT_FAILED);
    EXPECT_NE(text(progress(), "label3"), "一");
    const tk_object_ptr no_code = progress_report(40, "二", 3);
    tk_object_remove_prop(no_code.get(), "flage");
    EXPECT_EQ(progress_update(no_code.get()), RET_OK);
    EXPECT_EQ(text(progress(), "label3"), "二");
}

TEST_F(progress_window, reports_come_from_any_thread_in_order) {
    open();
    tk_thread* worker = tk_thread_create([] {
        for (uint32_t percent = 1; percent <= 90; ++percent)
            progress_post(nullptr, percent, tk_format("%u", percent), 3);
        return 0u;
    });
    ASSERT_EQ(tk_thread_start(worker), RET_OK);
    EXPECT_TRUE(wait([] { return bar() == 90; }));
    tk_thread_join(worker);
    tk_thread_destroy(worker);
    EXPECT_EQ(text(progress(), "label3"), "90");
}

TEST_F(progress_window, ok_goes_back_to_the_home_page) {
    open();
    report(100, "一", 3);
    press_ok();
    settle();
    EXPECT_EQ(progress(), nullptr);
    EXPECT_EQ(window_manager_get_top_window(window_manager()), home());
}

TEST_F(progress_window, init_without_a_window_is_refused) {
    EXPECT_EQ(progress_init(nullptr, nullptr), RET_BAD_PARAMS);
    EXPECT_THAT(said(), HasSubstr("progress_init:"));
    EXPECT_THAT(said(), HasSubstr("condition(win != NULL) failed!\n"));
}

// ---- failure reports
// ------------------------------------------------------------------------------------------------

TEST_F(progress_window, a_failed_connect_returns_to_idle) {
    ui_state_apply(home(), ui_state::connecting);
    open();
    EXPECT_EQ(session_fail_post(family::generic, "line one\n", "串口打开失败", 1), RET_INIT_FAILED);
    settle();
    EXPECT_EQ(buttons(), "cfmp");
    EXPECT_EQ(text(home(), "state_word"), "未连接");
    EXPECT_EQ(text(progress(), "label3"), "串口打开失败");
    EXPECT_EQ(text(progress(), "label"), "   连接失败");
    EXPECT_EQ(bar(), 100);
    EXPECT_TRUE(shown("ok"));
}

TEST_F(progress_window, a_failed_read_or_write_returns_to_connected) {
    for (const uint8_t state : {uint8_t{2}, uint8_t{3}}) {
        ui_state_apply(home(), ui_state::busy);
        open();
        session_fail_post(family::generic, "x", "检测配置失败", state);
        settle();
        EXPECT_EQ(buttons(), "drwf");
        EXPECT_EQ(text(home(), "state_word"), "已连接");
        // Failures of every kind are shown the same way.
        EXPECT_EQ(text(progress(), "label"), "   连接失败");
    }
}

TEST_F(progress_window, a_failure_is_appended_to_both_logs_as_it_stands) {
    session_fail_post(family::generic, "first\n\n", "一", 3);
    session_fail_post(family::generic, "second", "二", 3);
    settle();
    std::string logged;
    for (const auto& entry : std::filesystem::directory_iterator(tree() / "log"))
        if (entry.path().filename().string().starts_with("err-")) {
            EXPECT_EQ(entry.path().filename(), "err-2025-9-29-13.txt");
            logged = file_text(entry.path());
        }
    EXPECT_THAT(logged, testing::EndsWith("first\n\nsecond"));
    EXPECT_THAT(file_text(tree() / "log" / "p_v_info.txt"), testing::EndsWith("first\n\nsecond"));
}

TEST_F(progress_window, a_failure_report_without_its_parts_is_dropped) {
    ui_state_apply(home(), ui_state::busy);
    for (const char* missing : {"win", "char_log", "progress_text"}) {
        const tk_object_ptr made(object_default_create());
        for (const char* key : {"win", "char_log", "progress_text"})
            if (key != std::string(missing)) tk_object_set_prop_str(made.get(), key, "home_page");
        EXPECT_EQ(session_fail_display(made.get()), RET_INIT_FAILED) << missing;
        EXPECT_EQ(buttons(), "");
    }
}

TEST_F(progress_window, a_failure_report_without_a_state_counts_as_connected) {
    ui_state_apply(home(), ui_state::busy);
    const tk_object_ptr made(object_default_create());
    tk_object_set_prop_str(made.get(), "win", "home_page");
    tk_object_set_prop_str(made.get(), "char_log", "x");
    tk_object_set_prop_str(made.get(), "progress_text", "一");
    EXPECT_EQ(session_fail_display(made.get()), RET_OK);
    EXPECT_EQ(buttons(), "drwf");
}

TEST_F(progress_window, the_failure_is_shown_before_later_reports_of_the_same_thread) {
    open();
    session_fail_post(family::generic, "x", "校验配置失败", 3);
    progress_post(nullptr, 80, "上传配置.....", 3);
    settle();
    EXPECT_EQ(text(progress(), "label3"), "上传配置.....");
    EXPECT_EQ(bar(), 80);
}

// ---- messages
// -------------------------------------------------------------------------------------------------------

TEST_F(progress_window, a_message_shows_its_text_and_closes_on_ok) {
    answer_message();
    EXPECT_EQ(err_display_show("请先连接设备"), RET_OK);
    EXPECT_EQ(message_seen, "请先连接设备");
    settle();
    EXPECT_EQ(message(), nullptr);
}

TEST_F(progress_window, a_message_init_without_a_window_is_refused) {
    EXPECT_EQ(err_display_init(nullptr, "x"), RET_BAD_PARAMS);
    EXPECT_THAT(said(), HasSubstr("err_display_init:"));
    EXPECT_THAT(said(), HasSubstr("condition(win != NULL) failed!\n"));
}

TEST_F(progress_window, a_message_may_come_from_another_thread) {
    tk_thread* worker = tk_thread_create([] {
        err_display_post("无权限，请使用管理员权限运行程序");
        return 0u;
    });
    ASSERT_EQ(tk_thread_start(worker), RET_OK);
    tk_thread_join(worker);
    tk_thread_destroy(worker);
    answer_message();
    EXPECT_TRUE(wait([this] { return !message_seen.empty() && message() == nullptr; }));
    EXPECT_EQ(message_seen, "无权限，请使用管理员权限运行程序");
}

} // namespace
