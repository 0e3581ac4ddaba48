#include "app/progress.h"

#include "app/last_session.h"
#include "app/paths.h"
#include "app/session_results.h"
#include "app/ui_state.h"
#include "dev_generic/pages/generic_pages.h"
#include "shell/err_display.h"
#include "tests/support/app_fixture.h"
#include "tests/support/user.h"
#include "toolkit/core/worker.h"

#include <regex>

namespace {

using testing::HasSubstr;

class progress_window : public app_test {
  protected:
    void open() { ASSERT_EQ(navigator_to("progress"), RET_OK); }
    static void report(uint32_t percent, const char* step, uint8_t code) {
        progress_post(percent, step, code);
        settle();
    }
    static ret_t fail(session_kind kind, const char* log_line, const char* shown_text) {
        return session_fail_post(generic_pages, {.run = 0, .kind = kind, .log_line = log_line, .text = shown_text});
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

TEST_F(progress_window, the_bar_shows_how_it_ended) {
    open();
    const auto state = [](const char* name) {
        std::string found = "none";
        for (const char* one : {"", "ok", "failed"})
            if (user_tries(std::string("expect progress/") + name + " state \"" + one + "\"").empty()) found = one;
        return found;
    };
    const struct {
        uint32_t percent;
        const char* step;
        uint8_t code;
        const char* bar;
        const char* label;
    } rows[] = {
        {100, "读配置完成", 3, "ok", ""},
        {50, "一", 3, "", ""},
        {100, "读配置命令失败", 1, "failed", "failed"},
        {100, "写配置完成", 2, "ok", ""},
        {100, "连接成功", 0, "ok", ""},
        {100, "写操作失败", 8, "", ""},
        {100, "现在设备为传输模式", 8, "ok", ""},
    };
    for (const auto& row : rows) {
        report(row.percent, row.step, row.code);
        EXPECT_EQ(state("progress_bar"), row.bar) << row.step;
        for (const char* name : {"label", "label3"}) EXPECT_EQ(state(name), row.label) << row.step;
    }
}

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
    tk_object_set_prop_uint8(device(generic_pages).props.get(), "uart_baud_rate", 9);
    open();
    report(100, "读配置完成", 3);
    EXPECT_EQ(text(at("page_uart"), "combo_box_ex_bps"), "1200");
}

TEST_F(progress_window, a_report_without_a_window_is_dropped_even_if_one_opens) {
    progress_post(70, "早", 3);
    open();
    settle();
    EXPECT_NE(text(progress(), "label3"), "早");
    EXPECT_NE(bar(), 70);
}

TEST_F(progress_window, a_report_finds_the_window_by_name) {
    open();
    progress_post(70, "一", 3);
    open(); // single instance: another window now
    settle();
    EXPECT_EQ(text(progress(), "label3"), "一");
}

TEST_F(progress_window, without_a_window_nothing_is_shown) {
    EXPECT_EQ(progress_update({.window_open = true, .percent = 40, .text = "一", .operation = 3}), RET_INIT_FAILED);
    open();
    EXPECT_EQ(progress_update({.window_open = false, .percent = 40, .text = "一", .operation = 3}),
              RET_INIT_FAILED);
    EXPECT_NE(text(progress(), "label3"), "一");
    EXPECT_EQ(progress_update({.window_open = true, .percent = 40, .text = "二", .operation = 3}), RET_OK);
    EXPECT_EQ(text(progress(), "label3"), "二");
}

TEST_F(progress_window, reports_come_from_any_thread_in_order) {
    open();
    worker session;
    ASSERT_EQ(session.start({},
                            [] {
                                for (uint32_t percent = 1; percent <= 90; ++percent)
                                    progress_post(percent, tk_format("%u", percent), 3);
                                return 0u;
                            }),
              RET_OK);
    EXPECT_TRUE(wait([] { return bar() == 90; }));
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

// ---- what "ok" leads to

class progress_end : public progress_window {
  protected:
    /// Wishes for something after the run under way.
    void wish() {
        progress_then({.refusal = {}, .then = [this] {
                           ++led;
                           led_from_home =
                               progress() == nullptr && window_manager_get_top_window(window_manager()) == home();
                           return RET_OK;
                       }});
    }
    void finish_and_press_ok() {
        report(100, "读配置完成", operation::read);
        press_ok();
        settle();
        EXPECT_EQ(progress(), nullptr);
    }
    int led = 0;
    bool led_from_home = false;
};

TEST_F(progress_end, ok_leads_on_once_the_home_page_is_back) {
    progress_open_for_run();
    wish();
    finish_and_press_ok();
    EXPECT_EQ(led, 1);
    EXPECT_TRUE(led_from_home);
    progress_open_for_run();
    finish_and_press_ok();
    EXPECT_EQ(led, 1);
}

TEST_F(progress_end, a_refusal_is_shown_over_the_window_and_leads_nowhere) {
    progress_open_for_run();
    progress_then({.refusal = [] { return "请更换波特率后重试"; },
                   .then =
                       [this] {
                           ++led;
                           return RET_OK;
                       }});
    report(100, "读配置完成", operation::read);
    answer_message();
    press_ok();
    settle();
    EXPECT_EQ(message_seen, "请更换波特率后重试");
    EXPECT_EQ(window_manager_get_top_window(window_manager()), progress());
    finish_and_press_ok();
    EXPECT_EQ(led, 0);
}

TEST_F(progress_end, is_forgotten_when_the_window_is_left_by_esc) {
    progress_open_for_run();
    wish();
    report(100, "读配置完成", operation::read);
    EXPECT_EQ(user_does("key Esc"), "");
    settle();
    ASSERT_EQ(progress(), nullptr);
    click(home(), "progress_button");
    press_ok();
    settle();
    EXPECT_EQ(led, 0);
}

TEST_F(progress_end, is_forgotten_when_another_run_begins_while_one_goes_on) {
    connect();
    module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
    click(home(), "button_read");
    ASSERT_TRUE(wait([this] { return module->count().reads == 1; }));
    wish();
    progress_open_for_run();
    com::abort_all();
    ASSERT_TRUE(wait([] { return !session_any_running() && shown("ok"); }));
    press_ok();
    settle();
    EXPECT_EQ(progress(), nullptr);
    EXPECT_EQ(led, 0);
}

TEST_F(progress_end, stays_while_the_window_is_asked_for_again_during_a_run) {
    connect();
    module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
    click(home(), "button_read");
    ASSERT_TRUE(wait([this] { return module->count().reads == 1; }));
    wish();
    ASSERT_EQ(navigator_to("progress"), RET_OK); // single instance: another window now
    com::abort_all();
    ASSERT_TRUE(wait([] { return !session_any_running() && shown("ok"); }));
    press_ok();
    settle();
    EXPECT_EQ(led, 1);
}

// ---- between two sessions

TEST_F(progress_window, before_any_session_it_says_so) {
    last_session_begin();
    click(home(), "progress_button");
    EXPECT_EQ(text(progress(), "label3"), "还没有与模块通信");
    for (const char* name : {"progress_bar", "steps", "button_copy_steps", "hscroll_label"})
        EXPECT_FALSE(shown(name)) << name;
    EXPECT_TRUE(shown("ok"));
}

TEST_F(progress_window, between_two_sessions_the_last_ones_steps_and_bytes_are_shown) {
    connect();
    click(home(), "progress_button");
    EXPECT_EQ(bar(), 100);
    EXPECT_EQ(text(progress(), "label3"), "连接成功");
    EXPECT_EQ(text(progress(), "label"), "   连接设备状态");
    EXPECT_EQ(user_tries("expect progress/progress_bar state ok"), "");
    EXPECT_TRUE(shown("steps"));
    EXPECT_TRUE(shown("ok"));
    EXPECT_FALSE(shown("hscroll_label"));
    const std::string steps = text(progress(), "steps");
    EXPECT_THAT(steps, testing::StartsWith("   0.000  开始连接.....\n"));
    const std::string untimed = std::regex_replace(steps, std::regex(" +[0-9]+[.][0-9]{3}  "), "");
    EXPECT_THAT(untimed, testing::HasSubstr(
                             "\n发送 F7 F8 02 04 0A 15 12 03 07\n接收验证应答.....\n接收 F7 F8 02 13 1E 00\n"));
    EXPECT_THAT(steps, testing::EndsWith("  连接成功\n"));
    EXPECT_EQ(user_does("key Alt+Z"), "");
    EXPECT_TRUE(wait([&steps] { return clip_board_get_text() == steps; }));
    press_ok();
    settle();
    // A session shows itself, not the one before.
    click(home(), "button_read");
    EXPECT_FALSE(shown("steps"));
    EXPECT_FALSE(shown("button_copy_steps"));
    EXPECT_TRUE(shown("progress_bar"));
    ASSERT_TRUE(wait([] { return shown("ok"); }));
    EXPECT_FALSE(shown("steps"));
    press_ok();
    settle();
    click(home(), "progress_button");
    EXPECT_THAT(text(progress(), "steps"), testing::Not(HasSubstr("开始连接")));
}

TEST_F(progress_window, a_step_that_only_gets_on_is_one_line_and_a_failure_has_its_cause) {
    progress_open_for_run();
    progress_update({true, 10, "一", operation::read, 1000});
    progress_update({true, 20, "一", operation::read, 1200});
    last_session_bytes(1234, {true, {0x0A, 0xFF}});
    progress_update({true, 100, "二", operation::connect_failed, 61500});
    last_session_line(61501, "\nCOM7: 已拔出\n\n");
    EXPECT_EQ(last_session_text(), "   0.000  一\n   0.234  发送 0A FF\n  60.500  二\n  60.501  COM7: 已拔出\n");
    press_ok();
    settle();
    click(home(), "progress_button");
    EXPECT_EQ(text(progress(), "label3"), "二");
    EXPECT_EQ(user_tries("expect progress/label3 state failed"), "");
}

// ---- failure reports

TEST_F(progress_window, a_failed_connect_returns_to_idle) {
    ui_state_apply(home(), ui_state::connecting);
    open();
    EXPECT_EQ(fail(session_kind::connect, "line one\n", "串口打开失败"), RET_INIT_FAILED);
    settle();
    EXPECT_EQ(buttons(), "cfmp");
    EXPECT_EQ(text(home(), "state_word"), "未连接");
    EXPECT_EQ(text(progress(), "label3"), "串口打开失败");
    EXPECT_EQ(text(progress(), "label"), "   连接失败");
    EXPECT_EQ(bar(), 100);
    EXPECT_TRUE(shown("ok"));
}

TEST_F(progress_window, a_failed_read_or_write_returns_to_connected) {
    for (const session_kind kind : {session_kind::write, session_kind::read}) {
        ui_state_apply(home(), ui_state::busy);
        open();
        fail(kind, "x", "检测配置失败");
        settle();
        EXPECT_EQ(buttons(), "drwf");
        EXPECT_EQ(text(home(), "state_word"), "已连接");
        // Failures of every kind are shown the same way.
        EXPECT_EQ(text(progress(), "label"), "   连接失败");
    }
}

TEST_F(progress_window, showing_a_failed_connect_closes_the_port) {
    connect();
    ASSERT_TRUE(device(generic_pages).session.port_open());
    open();
    const session_failure failure{0, session_kind::connect, "x", "串口打开失败"};
    EXPECT_EQ(session_fail_display(generic_pages, failure), RET_OK);
    EXPECT_FALSE(device(generic_pages).session.port_open());
    EXPECT_FALSE(device(generic_pages).session.connected());
}

TEST_F(progress_window, a_failure_that_cannot_be_logged_is_not_shown) {
    connect();
    ui_state_apply(home(), ui_state::busy);
    open();
    const std::string before = text(progress(), "label3");
    const std::string usual = std::exchange(error_log_path(), ".."); // a folder
    const session_failure failure{0, session_kind::connect, "x", "串口打开失败"};
    EXPECT_EQ(session_fail_display(generic_pages, failure), RET_INIT_FAILED);
    error_log_path() = usual;
    EXPECT_EQ(text(progress(), "label3"), before);
    EXPECT_EQ(text(home(), "state_word"), "读写中…");
    EXPECT_TRUE(device(generic_pages).session.port_open());
}

TEST_F(progress_window, a_failure_is_appended_to_both_logs_as_it_stands) {
    fail(session_kind::read, "first\n\n", "一");
    fail(session_kind::read, "second", "二");
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

TEST_F(progress_window, a_failure_is_on_the_console_too_with_its_cause_in_words) {
    said_clear();
    session_fail_post(
        generic_pages,
        {.run = 0, .kind = session_kind::read, .log_line = "line\n\n", .text = "一", .cause = "why\n"});
    EXPECT_EQ(said(), "line\n\nwhy\n") << "at once";
    session_not_started(generic_pages, session_kind::read, "not started\n", "二");
    EXPECT_EQ(said(), "line\n\nwhy\nnot started\n");
    settle();
    EXPECT_THAT(file_text(tree() / "log" / "p_v_info.txt"), testing::EndsWith("line\n\nwhy\nnot started\n"));
    EXPECT_THAT(file_text(error_log_path()), testing::EndsWith("line\n\nwhy\nnot started\n"));
}

TEST_F(progress_window, a_lost_port_shows_until_a_session_goes_well) {
    ui_state_apply(home(), ui_state::busy);
    open();
    session_fail_post(generic_pages,
                      {.run = 0, .kind = session_kind::write, .log_line = "x", .text = "一", .port_lost = true});
    settle();
    EXPECT_EQ(ui_state_get(), ui_state::lost);
    EXPECT_EQ(buttons(), "drwf");
    session_fail_post(generic_pages,
                      {.run = 0, .kind = session_kind::connect, .log_line = "x", .text = "一", .port_lost = true});
    settle();
    EXPECT_EQ(ui_state_get(), ui_state::idle);
}

TEST_F(progress_window, a_failure_without_a_home_page_or_an_error_log_is_dropped) {
    const session_failure failure{.run = 0, .kind = session_kind::read, .log_line = "x", .text = "一"};
    ui_state_apply(home(), ui_state::busy);
    const std::string usual = std::exchange(error_log_path(), "..");
    EXPECT_EQ(session_fail_display(generic_pages, failure), RET_INIT_FAILED);
    EXPECT_EQ(buttons(), "");
    error_log_path() = usual;
    open();
    navigator_close("home_page");
    EXPECT_EQ(session_fail_display(generic_pages, failure), RET_INIT_FAILED);
    EXPECT_NE(text(progress(), "label3"), "一");
}

TEST_F(progress_window, the_failure_is_shown_before_later_reports_of_the_same_thread) {
    open();
    fail(session_kind::read, "x", "校验配置失败");
    progress_post(80, "上传配置.....", 3);
    settle();
    EXPECT_EQ(text(progress(), "label3"), "上传配置.....");
    EXPECT_EQ(bar(), 80);
}

// ---- messages

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
    worker other;
    ASSERT_EQ(other.start({},
                          [] {
                              err_display_post("无权限，请使用管理员权限运行程序");
                              return 0u;
                          }),
              RET_OK);
    EXPECT_EQ(other.join(), RET_OK);
    answer_message();
    EXPECT_TRUE(wait([this] { return !message_seen.empty() && message() == nullptr; }));
    EXPECT_EQ(message_seen, "无权限，请使用管理员权限运行程序");
}

} // namespace
