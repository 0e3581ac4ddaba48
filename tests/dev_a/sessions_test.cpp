// Good and odd runs of the VKT510A sessions.
#include "tests/support/session_fixture.h"

#include <algorithm>

using sim::fault;
using testing::ElementsAre;

namespace {

const std::vector<std::string> good_connect = {"20/0 串口参数配置.....",
                                               "40/0 发送验证命令.....",
                                               "40/0 接收验证应答.....",
                                               "50/0 验证产品标识.....",
                                               "60/0 发送读取命令.....",
                                               "70/0 接收读取应答.....",
                                               "80/0 读取固件信息.....",
                                               "90/0 按键初始化.....",
                                               "buttons",
                                               "100/0 连接成功",
                                               "finished"};
const std::vector<std::string> good_read = {
    "20/3 读配置.....",     "50/3 读配置.....", "40/3 检测配置.....", "image",
    "80/3 按键初始化.....", "buttons",          "100/3 读配置完成",   "finished"};
const std::vector<std::string> good_write = {
    "30/2 写配置.....",     "50/2 写配置.....", "60/2 检测配置.....", "70/2 检测配置.....",
    "80/2 按键初始化.....", "buttons",          "100/2 写配置完成",   "finished"};

class a_session : public session_test {
  protected:
    void SetUp() override {
        session_test::SetUp();
        plug("VKT510A");
    }
};

TEST_F(a_session, connect_reports_and_firmware_line) {
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events, good_connect);
    const std::vector<std::vector<uint8_t>> requests = {{0xF7, 0xF8, 0x02, 0x04, 0x0A, 0x15, 0x12, 0x03, 0x07},
                                                        {0xF7, 0xF8, 0x04, 0x00, 0x0B}};
    EXPECT_EQ(module->requests(), requests);
    EXPECT_EQ(session_log(), "VKT510A:\nVKT510A, 02-00-01, 21-07\r\n");
    EXPECT_EQ(session().operation(), session_kind::none);
    EXPECT_TRUE(session().connected());
    EXPECT_TRUE(port_is_free());
}

TEST_F(a_session, threads_have_their_names) {
    const std::pair<session_kind, const char*> names[] = {{session_kind::connect, "thread_vkt510a_connect"},
                                                          {session_kind::read, "thread_vkt510a_read"},
                                                          {session_kind::write, "thread_vkt510a_write"}};
    for (const auto& [kind, name] : names) expect_thread_name(kind, name);
}

TEST_F(a_session, firmware_with_a_foreign_header_is_accepted_without_a_line) {
    module->plan({.what = fault::wrong_header, .after = 1});
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events, good_connect);
    EXPECT_EQ(session_log(), "VKT510A:\n");
}

TEST_F(a_session, firmware_of_ten_bytes_is_accepted) {
    module->plan({.what = fault::no_tail, .after = 1});
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events, good_connect);
    EXPECT_EQ(session_log(), "VKT510A:\nVKT510A, 02-00-01, 21-07\r\n");
}

TEST_F(a_session, firmware_with_a_wrong_check_or_tail_fails_the_connect) {
    for (fault what : {fault::bad_check, fault::nonzero_tail}) {
        heard = {};
        module->plan({.what = what, .after = 1});
        ASSERT_TRUE(run(session_kind::connect));
        EXPECT_THAT(heard.events,
                    ElementsAre("20/0 串口参数配置.....", "40/0 发送验证命令.....", "40/0 接收验证应答.....",
                                "50/0 验证产品标识.....", "60/0 发送读取命令.....", "70/0 接收读取应答.....",
                                "80/0 读取固件信息.....", "failed 1 获取读操作结果失败"));
        EXPECT_THAT(heard.logs,
                    ElementsAre("\nsend: read product version info\n [13-5-9]read: get read result failed!\n\n"));
        EXPECT_FALSE(session().port_open());
    }
    EXPECT_EQ(session_log(), "VKT510A:\nVKT510A:\n");
}

TEST_F(a_session, firmware_has_its_check_in_its_tenth_byte) {
    module->plan(
        {.what = fault::raw,
         .after = 1,
         .bytes = {0xF7, 0xF8, 0x04, 0x05, 0x21, 0x07, 0x02, 0x00, 0x01, 0xD4, 0xFF}}); // XOR of all others
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events.back(), "failed 1 获取读操作结果失败");
}

TEST_F(a_session, silence_after_the_handshake_fails_the_connect) {
    module->plan({.what = fault::silent, .after = 1});
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events.back(), "failed 1 等待读操作完成失败");
    EXPECT_EQ(module->count().firmware_reads, 1u);
}

TEST_F(a_session, bytes_after_the_handshake_are_drained_before_the_firmware_request) {
    module->plan({.what = fault::raw, .bytes = {0xF7, 0xF8, 0x02, 0x13, 0x1E, 0x00, 0x41, 0x42, 0x43}});
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events, good_connect);
    EXPECT_EQ(session_log(), "VKT510A:\nVKT510A, 02-00-01, 21-07\r\n");
}

TEST_F(a_session, read_reports_and_decodes) {
    connect();
    std::vector<uint8_t> memory(60, 0x5A);
    module->set_memory(memory);
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read);
    EXPECT_EQ(tk_object_get_prop_uint32(props(), "can_send_shield_vkt510a", 0), 0x5A5A5A5Au);
    EXPECT_EQ(tk_object_get_prop_uint8(props(), "uart_bps_vkt510a", 0), 0x5A);
    // What no property holds is shown as it will be written.
    memory[1] = 8;
    memory[2] = memory[58] = memory[59] = 1;
    memory[3] = 0;
    EXPECT_EQ(dev->image, memory);
    EXPECT_EQ(session().operation(), session_kind::none);
    EXPECT_TRUE(port_is_free());
}

TEST_F(a_session, write_sends_the_image_and_does_not_drain) {
    connect();
    com::fault_clear();
    tk_object_set_prop_uint8(props(), "uart_bps_vkt510a", 0x77);
    ASSERT_EQ(dev_encode(*dev, "uart_bps_vkt510a"), RET_OK);
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events, good_write);
    EXPECT_EQ(module->memory(), dev->image);
    EXPECT_EQ(module->memory()[0], 0x77);
    EXPECT_EQ(com::call_count(com::call::create_event), 2u) << "one for the write, one for the read";
    EXPECT_EQ(com::call_count(com::call::clear_comm_error), 1u);
}

// A write does not drain, so what a failed one leaves behind would spoil every one after it.
TEST_F(a_session, bytes_too_many_spoil_one_write_at_most) {
    connect();
    for (const bool paced : {false, true}) {
        module->set_paced(paced); // on a real line the end of a reply comes after the failure
        module->plan({.what = fault::extra, .argument = 2});
        ASSERT_TRUE(run(session_kind::write));
        EXPECT_EQ(heard.events, good_write) << "it has its six bytes";
        ASSERT_TRUE(run(session_kind::write));
        EXPECT_EQ(heard.events.back(), "failed 2 检测配置失败");
        heard = {};
        ASSERT_TRUE(run(session_kind::write));
        EXPECT_EQ(heard.events, good_write) << "paced: " << paced;
        heard = {};
    }
}

TEST_F(a_session, a_reply_with_a_foreign_header_keeps_the_image_and_completes) {
    connect();
    const session_bytes before = dev->image;
    tk_object_set_prop_uint8(props(), "uart_bps_vkt510a", 0x77);
    module->plan({.what = fault::wrong_header});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_THAT(heard.events,
                ElementsAre("20/3 读配置.....", "50/3 读配置.....", "40/3 检测配置.....", "failed 3 校验配置失败",
                            "image", "80/3 按键初始化.....", "buttons", "100/3 读配置完成", "finished"));
    EXPECT_THAT(heard.logs, ElementsAre("\nsend: read product config info(calculate failed!)\n"));
    EXPECT_EQ(dev->image, before);
    EXPECT_EQ(tk_object_get_prop_uint8(props(), "uart_bps_vkt510a", 0), before[0]) << "it is decoded again";
    EXPECT_TRUE(heard.port_was_free);
    EXPECT_TRUE(port_is_free());
}

TEST_F(a_session, a_reply_with_a_wrong_check_ends_the_read) {
    connect();
    const session_bytes before = dev->image;
    module->plan({.what = fault::bad_check});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_THAT(heard.events,
                ElementsAre("20/3 读配置.....", "50/3 读配置.....", "40/3 检测配置.....", "failed 3 检测配置失败"));
    EXPECT_THAT(heard.logs[0], testing::StartsWith("\nsend: read product config info(calculate failed!)\n "
                                                   "[13-5-9]read: f7f8033c01 08010008"));
    EXPECT_EQ(dev->image, before);
    EXPECT_EQ(session().operation(), session_kind::read);
}

TEST_F(a_session, acknowledgements_that_are_none) {
    connect();
    const std::pair<fault, const char*> refusals[] = {
        {fault::bad_check, "\nsend: write product info(calculate failed!)\n [13-5-9]read: f7 f8 01 13 e2 00\n"},
        {fault::nonzero_tail, "\nsend: write product info(calculate failed!)\n [13-5-9]read: f7 f8 01 13 1d 01\n"},
        {fault::refuse, "\nsend: write product info (ack failed!)\n [13-5-9]read:f7 f8 01 12 1c\n\n"},
    };
    for (const auto& [what, log] : refusals) {
        heard = {};
        module->plan({.what = what});
        ASSERT_TRUE(run(session_kind::write));
        EXPECT_EQ(heard.events.back(), "failed 2 检测配置失败");
        EXPECT_THAT(heard.logs, ElementsAre(log));
    }
}

} // namespace
