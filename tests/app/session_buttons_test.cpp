#include "app/session_buttons.h"

#include "app/paths.h"
#include "app/progress.h"
#include "app/ui_state.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "dev_generic/pages/generic_pages.h"
#include "tests/support/app_fixture.h"
#include "tests/support/pattern.h"
#include "tests/support/user.h"
#include "toolkit/core/idle.h"

namespace {

using testing::HasSubstr;

class session_buttons : public app_test {};

struct state_case {
    const char* name;
    ui_state state;
    const char* buttons;
    const char* word;
};

class button_states : public app_test, public testing::WithParamInterface<state_case> {};

TEST_P(button_states, one_row_per_state) {
    ui_state_apply(home(), GetParam().state);
    EXPECT_EQ(buttons(), GetParam().buttons);
    EXPECT_EQ(text(home(), "state_word"), GetParam().word);
    EXPECT_EQ(ui_state_get(), GetParam().state);
}

INSTANTIATE_TEST_SUITE_P(states, button_states,
                         testing::Values(state_case{"idle", ui_state::idle, "cfmp", "未连接"},
                                         state_case{"connecting", ui_state::connecting, "", "连接中…"},
                                         state_case{"connected", ui_state::connected, "drwf", "已连接"},
                                         state_case{"busy", ui_state::busy, "", "读写中…"},
                                         state_case{"lost", ui_state::lost, "drwf", "连接已断开"}),
                         [](const auto& test) { return test.param.name; });

TEST_F(session_buttons, connect_read_edit_write_and_read_back) {
    plug("VKT531A");
    std::vector<uint8_t> memory = module->memory();
    memory[42] = 1; // conversion mode
    memory[0] = 9;  // UART 1200
    module->set_memory(memory);

    EXPECT_EQ(run("button"), "连接成功");
    EXPECT_EQ(buttons(), "drwf");
    EXPECT_EQ(text(home(), "state_word"), "已连接");
    press_ok();

    EXPECT_EQ(run("button_read"), "读配置完成");
    EXPECT_EQ(text(progress(), "label"), "   读取配置结束");
    press_ok();
    EXPECT_EQ(text(at("page_change"), "combo_box_ex"), "透明转换");
    EXPECT_THAT(text(home(), "mledit"), testing::StartsWith("F7 F8 01 3C 09 "));

    click(home(), "table_button_uart");
    pick("page_uart/combo_box_ex_bps", "9600");
    EXPECT_EQ(run("button_write"), "写配置完成");
    press_ok();
    EXPECT_EQ(module->memory()[0], 6);
    EXPECT_EQ(module->memory()[42], 1);

    EXPECT_EQ(run("button_read"), "读配置完成");
    press_ok();
    EXPECT_EQ(text(at("page_uart"), "combo_box_ex_bps"), "9600");
    EXPECT_EQ(buttons(), "drwf");
}

TEST_F(session_buttons, while_connecting_nothing_can_be_pressed_and_the_window_stays) {
    plug("VKT531A");
    module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
    click(home(), "button");
    EXPECT_EQ(buttons(), "");
    EXPECT_EQ(text(home(), "state_word"), "连接中…");
    ASSERT_NE(progress(), nullptr);
    EXPECT_FALSE(widget_get_visible(widget_lookup(progress(), "ok")));
    EXPECT_EQ(user_does("key Esc"), "");
    EXPECT_NE(progress(), nullptr);
}

struct failure_case {
    const char* name;
    const char* port;
    sim::fault fault;
    const char* shown;
};

class connect_failures : public session_buttons, public testing::WithParamInterface<failure_case> {};

TEST_P(connect_failures, return_to_idle_with_the_port_closed) {
    plug("VKT531A");
    module->plan({.what = GetParam().fault, .times = 0xFFFFFFFF});
    type("combo_box_ex_serial", GetParam().port);
    EXPECT_EQ(run("button"), GetParam().shown);
    EXPECT_EQ(text(progress(), "label"), "   连接失败");
    EXPECT_EQ(buttons(), "cfmp");
    EXPECT_FALSE(device(generic_pages).session.port_open());
    EXPECT_FALSE(device(generic_pages).session.connected());
    press_ok();
    // And the next try works.
    module->plan({});
    type("combo_box_ex_serial", port_name);
    EXPECT_EQ(run("button"), "连接成功");
}

INSTANTIATE_TEST_SUITE_P(
    rows, connect_failures,
    testing::Values(failure_case{"no_port_chosen", "", sim::fault::none, "串口号有误"},
                    failure_case{"number_out_of_range", "COM999", sim::fault::none, "串口号有误"},
                    failure_case{"absent_port", "COM77", sim::fault::none, "串口打开失败"},
                    failure_case{"silent_module", "COM7", sim::fault::silent, "等待读操作完成失败"},
                    failure_case{"refused", "COM7", sim::fault::refuse, "获取读操作结果失败"}),
    [](const auto& test) { return test.param.name; });

TEST_F(session_buttons, a_failed_read_returns_to_connected_and_can_be_repeated) {
    connect();
    module->plan({.what = sim::fault::bad_check});
    EXPECT_EQ(run("button_read"), "检测配置失败");
    EXPECT_EQ(buttons(), "drwf");
    press_ok();
    EXPECT_EQ(run("button_read"), "读配置完成");
}

TEST_F(session_buttons, a_reply_with_a_foreign_header_fails_and_completes) {
    connect();
    const std::string before = text(home(), "mledit");
    module->plan({.what = sim::fault::wrong_header});
    click(home(), "button_read");
    EXPECT_TRUE(wait([] { return text(progress(), "label3") == "读配置完成" && !session_any_running(); }));
    EXPECT_EQ(text(home(), "mledit"), before);
    EXPECT_EQ(buttons(), "drwf");
}

TEST_F(session_buttons, read_and_write_need_a_connection) {
    for (const auto press : {session_read_pressed, session_write_pressed}) {
        answer_message();
        press(home());
        EXPECT_EQ(message_seen, "请先连接设备");
        EXPECT_EQ(progress(), nullptr);
        EXPECT_EQ(buttons(), "cfmp");
    }
}

TEST_F(session_buttons, the_data_monitor_needs_a_connection) {
    answer_message();
    widget_set_visible(at("button_data_lock"), true);
    widget_set_enable(at("button_data_lock"), true);
    settle();
    click(home(), "button_data");
    EXPECT_EQ(message_seen, "请先连接设备");
}

TEST_F(session_buttons, the_data_monitor_does_nothing_more_for_a_generic_module) {
    connect();
    widget_set_visible(at("button_data_lock"), true);
    widget_set_enable(at("button_data_lock"), true);
    settle();
    click(home(), "button_data");
    settle();
    EXPECT_EQ(message(), nullptr);
    EXPECT_EQ(progress(), nullptr);
}

TEST_F(session_buttons, disconnect_closes_the_port_and_returns_to_idle) {
    connect();
    click(home(), "button2");
    EXPECT_TRUE(wait([] { return !session_any_running() && ui_state_get() == ui_state::idle; }));
    EXPECT_EQ(buttons(), "cfmp");
    EXPECT_FALSE(device(generic_pages).session.port_open());
    EXPECT_FALSE(device(generic_pages).session.connected());
    EXPECT_EQ(progress(), nullptr);
    EXPECT_EQ(run("button"), "连接成功");
}

TEST_F(session_buttons, disconnect_without_any_open_port_still_returns_to_idle_and_scans) {
    ui_state_apply(home(), ui_state::connected);
    std::filesystem::remove("com_list.txt");
    click(home(), "button2");
    EXPECT_TRUE(wait([] { return ui_state_get() == ui_state::idle && std::filesystem::exists("com_list.txt"); }));
    EXPECT_EQ(buttons(), "cfmp");
}

class focus_after : public session_buttons {
  protected:
    static bool has_focus(const char* name) { return widget_get_focused(at(name)); }
};

TEST_F(focus_after, a_session_goes_to_its_button_or_to_the_first_one_enabled) {
    plug("VKT531A");
    EXPECT_EQ(run("button"), "连接成功");
    press_ok();
    EXPECT_TRUE(has_focus("button2")); // there is nothing to connect any more
    for (const char* name : {"button_read", "button_write"}) {
        run(name);
        press_ok();
        EXPECT_TRUE(has_focus(name)) << name;
    }
    run("button_read");
    EXPECT_EQ(user_does("key Esc"), "");
    settle();
    EXPECT_EQ(progress(), nullptr);
    EXPECT_TRUE(has_focus("button_read"));
    click(home(), "button2"); // shows no window
    EXPECT_TRUE(wait([] { return ui_state_get() == ui_state::idle; }));
    EXPECT_TRUE(has_focus("button"));
}

TEST_F(focus_after, a_session_that_failed_goes_to_its_button) {
    plug("VKT531A");
    module->plan({.what = sim::fault::bad_check, .times = 0xFFFFFFFF});
    EXPECT_NE(run("button"), "连接成功");
    press_ok();
    EXPECT_TRUE(has_focus("button"));
}

TEST_F(focus_after, a_disconnect_that_is_watched_goes_to_connect) {
    connect("VKT610B");
    EXPECT_EQ(run("button2"), "现在设备为传输模式");
    press_ok();
    EXPECT_TRUE(has_focus("button"));
}

TEST_F(focus_after, a_look_at_the_progress_leaves_it_where_it_was) {
    connect();
    widget_set_focused(at("button_write"));
    ASSERT_EQ(navigator_switch_to("progress", false), RET_OK);
    press_ok();
    EXPECT_TRUE(has_focus("button_write"));
}

TEST_F(session_buttons, a_second_disconnect_starts_nothing) {
    connect();
    EXPECT_EQ(session_disconnect_pressed(home()), RET_OK);
    EXPECT_EQ(session_disconnect_pressed(home()), RET_FAIL);
    EXPECT_TRUE(wait([] { return ui_state_get() == ui_state::idle; }));
}

TEST_F(session_buttons, connect_with_a_text_outside_the_list_starts_nothing) {
    plug("VKT531A");
    widget_set_value_int(at("combo_box_ex_dev"), 99);
    click(home(), "button");
    settle();
    EXPECT_FALSE(session_any_running());
    EXPECT_FALSE(enabled("button"));
    EXPECT_EQ(module->count().requests(), 0u);
}

TEST_F(session_buttons, the_read_handlers_first_report_is_not_seen) {
    connect();
    module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
    // Looks at the window between the first report, which was made before it opened, and the next.
    static std::string* seen = nullptr;
    std::string first_seen = "not looked";
    seen = &first_seen;
    navigator_register_window("progress", [](widget* win, const void* context) {
        const ret_t ret = progress_init(win, context);
        idle_queue([] {
            *seen = text(progress(), "label3");
            return RET_OK;
        });
        return ret;
    });
    click(home(), "button_read");
    settle();
    navigator_register_window("progress", progress_init);
    EXPECT_EQ(first_seen, "");
    EXPECT_EQ(text(progress(), "label"), "   读取配置状态");
    EXPECT_NE(text(progress(), "label3"), "");
}

TEST_F(session_buttons, the_first_step_of_a_connect) {
    widget_set_value_int(at("combo_box_ex_dev"), 99); // starts nothing: the first report is the last
    session_connect_pressed(home());
    settle();
    EXPECT_EQ(text(progress(), "label3"), "开始连接.....");
    EXPECT_EQ(text(progress(), "label"), "   连接设备状态");
    EXPECT_EQ(widget_get_value_int(widget_lookup(progress(), "progress_bar")), 10);
    // Nothing runs, so the window can be left.
    EXPECT_TRUE(widget_get_visible(widget_lookup(progress(), "ok")));
    EXPECT_EQ(buttons(), "");
}

// A transfer that cannot start: a session that nobody saw starting still has the port.
class second_transfer : public session_buttons {
  protected:
    void SetUp() override {
        app_test::SetUp();
        connect();
        module->plan({.what = sim::fault::silent, .times = 0xFFFFFFFF});
        dev_obj& dev = device(generic_pages);
        ASSERT_EQ(dev.session.start(session_kind::read, dev_session_input(dev, session_kind::read, false)), RET_OK);
        ASSERT_TRUE(wait([this] { return module->count().reads == 1; }));
        settle();
    }
};

struct transfer_case {
    const char* name;
    const char* button;
    const char* status;
    const char* failed;
};

class second_transfers : public second_transfer, public testing::WithParamInterface<transfer_case> {};

TEST_P(second_transfers, show_their_first_step) {
    // Without an error log failures are not shown, so the first report is the last.
    const std::string usual = std::exchange(error_log_path(), "..");
    click(home(), GetParam().button);
    settle();
    EXPECT_EQ(text(progress(), "label3"), "获取配置.....");
    EXPECT_EQ(text(progress(), "label"), GetParam().status);
    EXPECT_EQ(widget_get_value_int(widget_lookup(progress(), "progress_bar")), 10);
    EXPECT_FALSE(widget_get_visible(widget_lookup(progress(), "ok")));
    EXPECT_EQ(buttons(), "");
    com::abort_all();
    // Nothing runs, so the window can be left.
    EXPECT_TRUE(wait([] { return widget_get_visible(widget_lookup(progress(), "ok")); }));
    EXPECT_EQ(buttons(), "");
    error_log_path() = usual;
}

TEST_P(second_transfers, fail_like_their_first_exchange) {
    click(home(), GetParam().button);
    settle();
    EXPECT_EQ(text(progress(), "label3"), GetParam().failed);
    EXPECT_EQ(text(progress(), "label"), "   连接失败");
    EXPECT_EQ(buttons(), "drwf");
    EXPECT_THAT(file_text(error_log_path()), testing::EndsWith("\nVKT531A\nsession thread not started!\n\n"));
}

INSTANTIATE_TEST_SUITE_P(runs, second_transfers,
                         testing::Values(transfer_case{"read", "button_read", "   读取配置状态", "读配置命令失败"},
                                         transfer_case{"write", "button_write", "   写配置状态", "写配置命令失败"}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(session_buttons, the_a_family_connects_reads_and_writes) {
    connect("VKT510A");
    EXPECT_EQ(module->count().firmware_reads, 1u);
    EXPECT_EQ(run("button_read"), "读配置完成");
    press_ok();
    pick("page_vkt510a_change/combo_box_ex_vkt510a", "自定义协议转换");
    EXPECT_EQ(run("button_write"), "写配置完成");
    press_ok();
    EXPECT_EQ(module->memory()[42], 3);
    EXPECT_EQ(buttons(), "drwf");
}

TEST_F(session_buttons, the_port_vanishing_in_a_read_gives_the_buttons_back) {
    connect();
    module->plan({.what = sim::fault::hang_up});
    const std::string shown = run("button_read");
    // Which step notices is a matter of microseconds.
    EXPECT_THAT(shown, testing::AnyOf("读配置命令失败", "获取写操作结果失败", "获取读操作结果失败",
                                      "等待读操作完成失败", "读取写命令应答失败"));
    EXPECT_EQ(buttons(), "drwf");
    EXPECT_EQ(text(home(), "state_word"), "连接已断开");
    EXPECT_EQ(user_does("expect home_page/state_word state failed\nexpect home_page/state_dot state failed"), "");
    press_ok();
    click(home(), "button2");
    EXPECT_TRUE(wait([] { return text(home(), "state_word") == "未连接"; }));
}

class b_port_lost : public session_buttons, public testing::WithParamInterface<uint32_t> {};

TEST_P(b_port_lost, at_a_register_gives_the_buttons_back) {
    connect("VKT610B");
    module->plan({.what = sim::fault::hang_up, .after = GetParam()});
    EXPECT_THAT(run("button_write"), testing::AnyOf("读取写命令应答失败", "写配置命令失败"));
    EXPECT_EQ(text(progress(), "label"), "   连接失败");
    EXPECT_EQ(module->count().writes, GetParam() + 1);
    EXPECT_EQ(buttons(), "drwf");
    EXPECT_THAT(file_text(session_log_path()),
                HoldsPattern("\n VKT610B \nsend:[^!]*failed!\n\nCOM7: 已拔出 [(]error [0-9]+[)]\n$"));
    EXPECT_EQ(text(home(), "state_word"), "连接已断开");
    press_ok();
    EXPECT_THAT(run("button2"), testing::AnyOf("写操作失败", "获取写操作结果失败"));
    EXPECT_EQ(text(progress(), "label"), "   模式转换结束");
    press_ok();
    EXPECT_EQ(buttons(), "cfmp");
    EXPECT_FALSE(device(vkt610b_pages).session.port_open());
}
INSTANTIATE_TEST_SUITE_P(registers, b_port_lost, testing::Values(0u, 12u, 33u),
                         [](const auto& one) { return std::to_string(one.param); });

} // namespace
