// The data page: opening, pausing, leaving, and a module that goes.
#include "tests/monitor/pages/data_stage.h"

#include "app/ui_state.h"
#include "monitor/pages/data_info.h"
#include "toolkit/core/worker.h"

namespace {

using testing::HasSubstr;

class data_page : public data_stage {};

TEST_F(data_page, a_missing_window_is_refused_and_logged) {
    EXPECT_EQ(data_page_init(nullptr, nullptr), 16);
    EXPECT_THAT(said(), HasSubstr("condition(win != NULL) failed!\n"));
    EXPECT_THAT(said(), HasSubstr("data_page_init"));
    said_clear();
    EXPECT_EQ(data_info_init(nullptr, nullptr), 16);
    EXPECT_THAT(said(), HasSubstr("data_info_init"));
}

TEST_F(data_page, says_what_it_is_about) {
    open_page();
    EXPECT_EQ(shown("label_device"), "VKT610B · COM7");
    EXPECT_EQ(shown("label_rate"), "9600 bit/s");
    EXPECT_EQ(tries("expect ~/state_dot state ok"), "");
    EXPECT_EQ(shown("label_counts"), "接收 0 帧　发送 0 帧　记录 0 条");
    EXPECT_EQ(shown("label_lost"), "");
    EXPECT_EQ(rows(), 0u);
}

TEST_F(data_page, leaving_takes_its_time_and_no_input_meanwhile) {
    EXPECT_EQ(usual_leave_ms(), 1500u);
    open_page();
    data_page_leave_ms() = 300;
    does("click ~/button_back\n");
    EXPECT_EQ(shown("state_word"), "正在返回配置模式…");
    EXPECT_FALSE(usable("button_back"));
    EXPECT_FALSE(usable("button_write"));
    EXPECT_THAT(tries("click ~/button_write"), HasSubstr("disabled"));
    ASSERT_TRUE(wait([] { return page() == nullptr; }));
    settle();
    EXPECT_EQ(widget_name(window_manager_get_top_window(window_manager())), "home_page");
    EXPECT_TRUE(wait([this] { return module->mode() == "config"; }));
}

TEST_F(data_page, left_it_gives_the_module_back_to_the_sessions) {
    open_page();
    leave_page();
    EXPECT_EQ(module->mode(), "config");
    EXPECT_EQ(buttons(), "drwf");
    EXPECT_EQ(text(home(), "state_word"), "已连接");
    EXPECT_EQ(run("button_read"), "读配置完成");
    press_ok();
    EXPECT_EQ(run("button_write"), "写配置完成");
    press_ok();
}

TEST_F(data_page, opened_again_and_again_it_starts_no_second_threads) {
    open_page();
    leave_page();
    const uint32_t workers = workers_running();
    data_page_leave_ms() = 1;
    for (int i = 0; i < 100; ++i) {
        navigator_to("data_page"); // without the session before it, which takes the most time
        ASSERT_TRUE(wait([] { return shown("state_word") == "传输模式"; })) << i;
        leave_page();
    }
    EXPECT_EQ(workers_running(), workers);
    open_page(frames(1000, 3));
    EXPECT_TRUE(wait([] { return rows() > 0; }));
}

TEST_F(data_page, while_it_is_open_no_session_starts) {
    open_page();
    dev_obj* dev = current_device();
    ASSERT_NE(dev, nullptr);
    session_timing_get().start_wait_ms = 20;
    EXPECT_EQ(dev->session.start(session_kind::read, {}), RET_FAIL);
    session_timing_get().start_wait_ms = session_timing{}.start_wait_ms;
}

TEST_F(data_page, without_a_connected_module_it_says_so_and_can_be_left) {
    said_clear();
    navigator_to("data_page");
    EXPECT_EQ(shown("state_word"), "未连接");
    EXPECT_THAT(said(), HasSubstr("data_page: the traffic cannot be started\n"));
    EXPECT_EQ(refused(), "请先连接设备");
    EXPECT_EQ(csv(), "");
    leave_page();
}

TEST_F(data_page, while_it_waits_for_the_port_one_frame_can_be_asked_for) {
    connect("VKT610B");
    module->set_traffic(frames(0));
    {
        const port_lease other = current_device()->session.take_port(0);
        ASSERT_TRUE(other);
        navigator_to("data_page");
        EXPECT_EQ(shown("state_word"), "等待端口…");
        does("click ~/button_write\n");
        EXPECT_FALSE(usable("button_write"));
        answer_message();
        does("click ~/check_button_send_timer\n");
        EXPECT_TRUE(wait([this] { return !message_seen.empty(); }));
        settle();
        EXPECT_EQ(message_seen, "上一帧还没有发送完，请稍后再试");
        EXPECT_FALSE(checked("check_button_send_timer"));
        EXPECT_TRUE(usable("edit_timer"));
        EXPECT_FALSE(usable("button_write"));
    }
    EXPECT_TRUE(wait([] { return shown("state_word") == "传输模式"; }));
    EXPECT_TRUE(wait([] { return usable("button_write"); }));
    EXPECT_TRUE(wait_received(1));
    leave_page();
    EXPECT_EQ(received().size(), 1u);
}

TEST_F(data_page, a_module_that_vanishes_is_said_and_the_home_page_knows) {
    open_page(frames(100));
    ASSERT_TRUE(wait([] { return rows() > 0; }));
    module->hang_up();
    ASSERT_TRUE(wait([] { return shown("state_word") == "连接已断开"; }));
    EXPECT_EQ(tries("expect ~/state_word state failed"), "");
    const uint32_t before = rows();
    EXPECT_EQ(refused(), "请先连接设备");
    EXPECT_EQ(rows(), before);
    leave_page();
    EXPECT_EQ(ui_state_get(), ui_state::lost);
    EXPECT_EQ(text(home(), "state_word"), "连接已断开");
}

TEST_F(data_page, a_module_that_vanishes_while_the_page_is_left_holds_up_nothing) {
    open_page(frames(100));
    does("click ~/check_button_send_timer\n");
    does("click ~/button_back\n");
    module->hang_up();
    EXPECT_TRUE(wait([] { return page() == nullptr && data_page_traffic().link() == traffic_link::none; }));
}

TEST_F(data_page, a_module_that_vanishes_while_a_frame_is_sent_leaves_the_button) {
    open_page(plain());
    does("click ~/button_write\n");
    module->hang_up();
    ASSERT_TRUE(wait([] { return shown("state_word") == "连接已断开"; }));
    EXPECT_TRUE(wait([] { return usable("button_write"); }));
    EXPECT_EQ(refused(), "请先连接设备");
    leave_page();
    EXPECT_EQ(text(home(), "state_word"), "连接已断开");
}

TEST_F(data_page, pausing_is_kept_across_openings) {
    open_page();
    EXPECT_FALSE(checked("check_button_read_puase"));
    EXPECT_EQ(data_page_traffic().run(), traffic_run::run);
    does("click ~/check_button_read_puase\n");
    EXPECT_EQ(data_page_traffic().run(), traffic_run::pause);
    EXPECT_THAT(settings(), HasSubstr("\"check_button_read_puase\": \"1\""));
    leave_page();
    open_page();
    EXPECT_TRUE(checked("check_button_read_puase"));
    EXPECT_EQ(data_page_traffic().run(), traffic_run::pause);
    does("click ~/check_button_read_puase\n");
    EXPECT_EQ(data_page_traffic().run(), traffic_run::run);
    EXPECT_THAT(settings(), HasSubstr("\"check_button_read_puase\": \"0\""));
}

TEST_F(data_page, the_records_stay_until_they_are_cleared) {
    open_page(frames(1000, 30)); // a purge may drop some
    ASSERT_TRUE(wait([this] { return module->traffic_sent().size() == 30 && rows() > 0; }));
    ASSERT_TRUE(quiet());
    const uint32_t all = rows();
    const std::string counts = tk_format("接收 %u 帧　发送 0 帧　记录 %u 条", all, all);
    EXPECT_TRUE(wait([&counts] { return shown("label_counts") == counts; })) << shown("label_counts");
    leave_page();
    open_page();
    EXPECT_EQ(rows(), all);
    does("click ~/button_clear\n");
    EXPECT_EQ(rows(), 0u);
    EXPECT_EQ(data_page_traffic().size(), 0u);
}

TEST_F(data_page, what_is_lost_is_said_with_its_cause) {
    open_page();
    module->babble({0x11, 0x22, 0xAA, 0x0D, 0x04, 0x01, 0x00, 0x01, 0x00, 0x00, 0x00, 1, 2, 3, 4, 5, 6, 7, 8});
    // "带校验" is the first option: a frame without a check value has a wrong command here.
    EXPECT_TRUE(wait([] { return shown("label_lost") == "丢弃：噪声 2 字节，命令不符 17 字节"; }))
        << shown("label_lost");
}

} // namespace
