// Good and odd runs of the VKT531A and VKT530A sessions.
#include "tests/support/session_fixture.h"

#include "toolkit/core/worker.h"

using sim::fault;
using testing::ElementsAre;

namespace {

const std::vector<uint8_t> handshake = {0xF7, 0xF8, 0x02, 0x04, 0x0A, 0x15, 0x12, 0x03, 0x07};
const std::vector<uint8_t> read_request = {0xF7, 0xF8, 0x03, 0x00, 0x0C};

// Filter byte 0 is set so that an image that came over the wire differs from the defaults.
session_bytes some_image() {
    session_bytes image(60);
    for (std::size_t i = 0; i < image.size(); ++i) image[i] = static_cast<uint8_t>(i + 1);
    return image;
}

class generic_session : public session_test {
  protected:
    void SetUp() override {
        session_test::SetUp();
        plug("VKT531A");
    }
    /// Returns once the module has the request, which it does not answer, and the session has seen its write end.
    void start_endless_read() {
        ASSERT_TRUE(session().take_port(0).set_timeouts({600000, 0, 600000, 500, 1000}));
        session_timing_get().read_wait_ms = 600000;
        module->plan({.what = fault::silent});
        com::fault_clear();
        ASSERT_EQ(start(session_kind::read), RET_OK);
        ASSERT_TRUE(module->wait_requests(2, static_cast<int>(session_patience_ms)));
        const auto write_ended = [] { return com::call_count(com::call::get_overlapped_result) > 0; };
        ASSERT_TRUE(idle_run_until(write_ended, session_patience_ms));
    }
    /// True when so many bytes wait in the port's input queue.
    bool wait_in_queue(DWORD bytes) {
        return idle_run_until([this, bytes] { return session().take_port(0).waiting() == bytes; },
                              session_patience_ms);
    }
    void reply_with(const std::vector<uint8_t>& bytes) {
        module->plan({.what = fault::raw, .times = 0xFFFFFFFF, .bytes = bytes});
    }
};

const std::vector<std::string> good_connect = {"20/0 串口参数配置（预计6s）.....",
                                               "40/0 发送验证命令.....",
                                               "40/0 接收验证应答.....",
                                               "50/0 验证产品标识.....",
                                               "90/0 按键初始化.....",
                                               "buttons",
                                               "100/0 连接成功",
                                               "finished"};
const std::vector<std::string> refused_connect = {"20/0 串口参数配置（预计6s）.....", "40/0 发送验证命令.....",
                                                  "40/0 接收验证应答.....", "50/0 验证产品标识.....",
                                                  "failed 1 获取读操作结果失败"};
const std::vector<std::string> good_read = {"20/3 读配置.....",     "30/3 读配置.....",
                                            "40/3 检测配置.....",   "60/3 检测配置.....",
                                            "80/3 上传配置.....",   "image",
                                            "90/3 按键初始化.....", "buttons",
                                            "100/3 读配置完成",     "finished"};
const std::vector<std::string> good_write = {
    "30/2 写配置.....",     "50/2 写配置.....", "60/2 检测配置.....", "70/2 检测配置.....",
    "80/2 按键初始化.....", "buttons",          "100/2 写配置完成",   "finished"};

TEST_F(generic_session, connect_reports_and_flags) {
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events, good_connect);
    EXPECT_EQ(module->requests(), std::vector<std::vector<uint8_t>>{handshake});
    EXPECT_TRUE(session().port_open());
    EXPECT_TRUE(session().connected());
    EXPECT_EQ(session().operation(), session_kind::none);
    EXPECT_TRUE(port_is_free());
    EXPECT_EQ(session_log(), "");
}

TEST_F(generic_session, vkt530a_connects_the_same_way) {
    module.reset();
    plug("VKT530A");
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events, good_connect);
}

TEST_F(generic_session, the_log_folder_is_made) {
    ASSERT_FALSE(std::filesystem::exists(folder / "log"));
    connect();
    EXPECT_TRUE(std::filesystem::exists(folder / "log"));
}

TEST_F(generic_session, operation_is_set_while_it_runs) {
    module->plan({.what = fault::silent});
    ASSERT_EQ(start(session_kind::connect), RET_OK);
    EXPECT_EQ(session().operation(), session_kind::connect);
    EXPECT_TRUE(session().running());
    settle();
    EXPECT_FALSE(session().running());
}

TEST_F(generic_session, threads_have_their_names) {
    const std::pair<session_kind, const char*> names[] = {{session_kind::connect, "connect_entry"},
                                                          {session_kind::read, "read_entry"},
                                                          {session_kind::write, "write_entry"}};
    for (const auto& [kind, name] : names) expect_thread_name(kind, name);
}

TEST_F(generic_session, handshake_of_five_bytes_is_accepted) {
    reply_with({0xF7, 0xF8, 0x02, 0x13, 0x1E});
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events, good_connect);
}

TEST_F(generic_session, handshake_with_a_wrong_check_is_refused) {
    reply_with({0xF7, 0xF8, 0x02, 0x13, 0x0E});
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events, refused_connect);
    EXPECT_THAT(heard.logs, ElementsAre("\nsend: check product flage\n [13-5-9]read: get read result failed!\n\n"));
}

TEST_F(generic_session, handshake_that_says_no_is_refused) {
    for (uint8_t check : std::vector<uint8_t>{0x1F, 0x0F}) {
        heard = {};
        reply_with({0xF7, 0xF8, 0x02, 0x12, check, 0x00});
        ASSERT_TRUE(run(session_kind::connect));
        EXPECT_EQ(heard.events, refused_connect);
        EXPECT_FALSE(session().port_open());
    }
}

TEST_F(generic_session, foreign_answers_to_the_handshake_are_refused) {
    const std::vector<std::vector<uint8_t>> answers = {
        {0xF7, 0xF8, 0x03, 0x13, 0x1F, 0x00}, // another command
        {0xF6, 0xF8, 0x02, 0x13, 0x1F, 0x00}, // another start
        {0xF7, 0xF8, 0x02, 0x13, 0x1E, 0x01}, // no zero at the end
        {0xF7},
        {0x00, 0x00, 0x00, 0x00, 0x00, 0x00}, // its XOR is right
        {0xF7, 0xF8, 0x02, 0x13, 0x0E, 0x10}, // its last byte is the XOR of all others
    };
    for (const auto& answer : answers) {
        heard = {};
        reply_with(answer);
        ASSERT_TRUE(run(session_kind::connect));
        EXPECT_EQ(heard.events, refused_connect);
        EXPECT_TRUE(port_is_free());
    }
}

TEST_F(generic_session, read_reports_and_image) {
    connect();
    const session_bytes image = some_image();
    module->set_memory(image);
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read);
    EXPECT_EQ(module->requests().back(), read_request);
    EXPECT_EQ(dev->image, image);
    EXPECT_EQ(tk_object_get_prop_uint8(props(), "uart_baud_rate", 0), 1);
    EXPECT_EQ(tk_object_get_prop_str(props(), "can_scherm", ""), "0b 0c 0d 0e");
    EXPECT_EQ(session().operation(), session_kind::none);
    EXPECT_TRUE(port_is_free());
}

TEST_F(generic_session, write_reports_and_frame) {
    connect();
    const session_bytes image = some_image();
    dev->image = image;
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events, good_write);
    EXPECT_EQ(module->memory(), image);
    const std::vector<uint8_t> frame = module->requests().back();
    ASSERT_EQ(frame.size(), 65u);
    EXPECT_THAT(std::vector<uint8_t>(frame.begin(), frame.begin() + 4), ElementsAre(0xF7, 0xF8, 0x01, 0x3C));
    EXPECT_EQ(frame[64], 0x0E); // the head gives 0x32, the numbers from 1 to 60 give 0x3C
    EXPECT_EQ(session().operation(), session_kind::none);
}

TEST_F(generic_session, a_write_sends_the_image_as_it_stands) {
    connect();
    tk_object_set_prop_uint8(props(), "uart_baud_rate", 6);
    const session_bytes before = dev->image;
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(module->memory(), before);
}

TEST_F(generic_session, a_reply_with_a_foreign_header_keeps_the_image_and_completes) {
    connect();
    dev->image = some_image();
    module->plan({.what = fault::wrong_header});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_THAT(heard.events,
                ElementsAre("20/3 读配置.....", "30/3 读配置.....", "40/3 检测配置.....", "60/3 检测配置.....",
                            "failed 3 校验配置失败", "80/3 上传配置.....", "image", "90/3 按键初始化.....",
                            "buttons", "100/3 读配置完成", "finished"));
    EXPECT_THAT(heard.logs, ElementsAre("\nsend: read product config info(calculate failed!)\n"));
    EXPECT_EQ(dev->image, some_image());
    EXPECT_TRUE(heard.port_was_free);
    EXPECT_TRUE(port_is_free());
    EXPECT_EQ(session().operation(), session_kind::none);
}

TEST_F(generic_session, an_acknowledgement_with_a_foreign_header_completes) {
    connect();
    reply_with({0xF7, 0xF8, 0x05, 0x13, 0x19, 0x00});
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_THAT(heard.events, ElementsAre("30/2 写配置.....", "50/2 写配置.....", "60/2 检测配置.....",
                                          "70/2 检测配置.....", "failed 2 检测配置失败", "80/2 按键初始化.....",
                                          "buttons", "100/2 写配置完成", "finished"));
    EXPECT_THAT(heard.logs,
                ElementsAre("\nsend: write product info (ack failed!)\n [13-5-9]read:f7 f8 05 13 19\n\n"));
    EXPECT_TRUE(heard.port_was_free);
    EXPECT_TRUE(port_is_free());
}

TEST_F(generic_session, an_acknowledgement_that_says_no_ends_the_write) {
    connect();
    module->plan({.what = fault::refuse});
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_THAT(heard.events, ElementsAre("30/2 写配置.....", "50/2 写配置.....", "60/2 检测配置.....",
                                          "70/2 检测配置.....", "failed 2 检测配置失败"));
    EXPECT_THAT(heard.logs,
                ElementsAre("\nsend: write product info (ack failed!)\n [13-5-9]read:f7 f8 01 12 1c\n\n"));
    EXPECT_EQ(session().operation(), session_kind::write);
    EXPECT_TRUE(session().connected());
}

TEST_F(generic_session, an_acknowledgement_with_a_wrong_check_shows_its_six_bytes) {
    connect();
    reply_with({0xF7, 0xF8, 0x01, 0x13, 0xE2, 0x00});
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events.back(), "failed 2 检测配置失败");
    EXPECT_THAT(heard.logs, ElementsAre("\nsend: write product info(calculate failed!)\n [13-5-9]read: "
                                        "f7 f8 01 13 e2 00\n"));
}

TEST_F(generic_session, an_acknowledgement_has_its_check_in_its_fifth_byte) {
    connect();
    reply_with({0xF7, 0xF8, 0x01, 0x13, 0x2D, 0x30}); // the last byte is the XOR of all others
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events.back(), "failed 2 检测配置失败");
}

TEST_F(generic_session, an_acknowledgement_of_five_bytes_is_accepted_and_a_sixth_must_be_zero) {
    connect();
    module->plan({.what = fault::no_tail});
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events, good_write);
    heard = {};
    module->plan({.what = fault::nonzero_tail});
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events.back(), "failed 2 检测配置失败");
    EXPECT_THAT(heard.logs, ElementsAre("\nsend: write product info(calculate failed!)\n [13-5-9]read: "
                                        "f7 f8 01 13 1d 01\n"));
}

TEST_F(generic_session, a_reply_with_a_wrong_check_shows_its_65_bytes) {
    connect();
    dev->image = some_image();
    std::vector<uint8_t> answer(65, 0x11);
    answer[0] = 0xF7;
    answer[64] = 0xAB;
    reply_with(answer);
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_THAT(heard.events,
                ElementsAre("20/3 读配置.....", "30/3 读配置.....", "40/3 检测配置.....", "failed 3 检测配置失败"));
    EXPECT_THAT(heard.logs,
                ElementsAre("\nsend: read product config info(calculate failed!)\n [13-5-9]read: "
                            "f711111111 1111111111 1111111111 1111111111 1111111111 1111111111 1111111111 "
                            "1111111111 1111111111 1111111111 1111111111 1111111111 11111111ab\n"));
    EXPECT_EQ(dev->image, some_image());
}

TEST_F(generic_session, a_reply_cut_short_fails_its_check) {
    connect();
    module->plan({.what = fault::cut_short, .argument = 30});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events.back(), "failed 3 检测配置失败");
}

TEST_F(generic_session, noise_before_the_reply_fails_its_check) {
    connect();
    module->plan({.what = fault::junk_first, .argument = 16});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events.back(), "failed 3 检测配置失败");
    heard = {};
    ASSERT_TRUE(run(session_kind::read)) << "the rest of it is drained";
    EXPECT_EQ(heard.events, good_read);
}

TEST_F(generic_session, one_byte_at_a_time_is_a_reply) {
    connect();
    module->plan({.what = fault::slow, .argument = 2});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read);
}

TEST_F(generic_session, what_was_said_before_the_request_is_drained) {
    connect();
    module->babble({0xF7, 0xF8, 0x03, 0x3C, 0x55, 0x55});
    ASSERT_TRUE(wait_in_queue(6));
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read);
}

TEST_F(generic_session, a_late_answer_is_not_taken_for_the_next_one) {
    connect();
    session_timing_get().read_wait_ms = 50;
    module->plan({.what = fault::late, .argument = 300});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events.back(), "failed 3 等待读操作完成失败");
    ASSERT_TRUE(wait_in_queue(65));
    session_timing_get().read_wait_ms = 10000;
    heard = {};
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events, good_write);
}

TEST_F(generic_session, reconnecting_replaces_the_port) {
    connect();
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events, good_connect);
    EXPECT_EQ(module->count().handshakes, 2u);
}

// The port vanishes before the read begins or while it waits: nobody can tell which.
const auto lost_in_read = testing::AnyOf("failed 3 获取读操作结果失败", "failed 3 读取写命令应答失败");
const auto lost_in_read_log =
    testing::AnyOf("\nsend: read product config info\n [13-5-9]read: get read result failed!\n\n",
                   "\nsend: read product config info\n [13-5-9]read: read failed!\n\n");
const auto lost_cause = testing::AllOf(testing::StartsWith("COM7: 已拔出 (error "), testing::EndsWith(")\nlost"));

TEST_F(generic_session, a_module_that_went_away_is_reported_and_connects_again) {
    connect();
    start_endless_read();
    module->hang_up();
    settle();
    EXPECT_THAT(heard.events, ElementsAre("20/3 读配置.....", "30/3 读配置.....", lost_in_read));
    EXPECT_THAT(heard.logs, ElementsAre(lost_in_read_log));
    EXPECT_THAT(heard.causes, ElementsAre(lost_cause));
    EXPECT_TRUE(session().connected());
    heard = {};
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_THAT(heard.events.back(), testing::AnyOf("failed 2 写配置命令失败", "failed 2 获取写操作结果失败"));
    module->plan({});
    ASSERT_TRUE(module->plug_in());
    heard = {};
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events, good_connect);
}

TEST_F(generic_session, a_module_that_goes_away_in_mid_reply_is_reported) {
    connect();
    start_endless_read();
    module->babble({0xF7, 0xF8, 0x03, 0x3C, 0x01, 0x08});
    module->hang_up();
    settle();
    // Some systems end the read well with the bytes that came, and their check fails.
    EXPECT_THAT(heard.events.back(), testing::AnyOf(lost_in_read, "failed 3 检测配置失败"));
    const auto check_log = testing::StartsWith("\nsend: read product config info(calculate failed!)\n");
    EXPECT_THAT(heard.logs, ElementsAre(testing::AnyOf(lost_in_read_log, check_log)));
    EXPECT_THAT(heard.causes, ElementsAre(lost_cause)) << "whichever step met it";
    EXPECT_TRUE(port_is_free());
}

TEST_F(generic_session, a_second_session_is_refused_while_one_runs) {
    connect();
    start_endless_read();
    EXPECT_EQ(start(session_kind::write), RET_FAIL);
    EXPECT_EQ(session().operation(), session_kind::read);
    com::abort_all();
    settle();
    EXPECT_EQ(module->count().writes, 0u);
}

TEST_F(generic_session, a_stop_ends_a_waiting_session_without_a_word) {
    connect();
    start_endless_read();
    EXPECT_EQ(workers_stop_all(session_patience_ms), 0u);
    settle();
    EXPECT_THAT(heard.events, ElementsAre("20/3 读配置.....", "30/3 读配置....."));
    EXPECT_TRUE(port_is_free());
}

TEST_F(generic_session, aborting_all_ports_ends_a_waiting_session) {
    connect();
    start_endless_read();
    com::abort_all();
    settle();
    EXPECT_EQ(heard.events.back().rfind("failed 3", 0), 0u);
    EXPECT_TRUE(port_is_free());
}

TEST_F(generic_session, no_other_kind_can_be_started) {
    EXPECT_EQ(start(session_kind::none), RET_FAIL);
    EXPECT_EQ(start(session_kind::mode_switch), RET_FAIL);
    EXPECT_EQ(session().operation(), session_kind::none);
}

} // namespace
