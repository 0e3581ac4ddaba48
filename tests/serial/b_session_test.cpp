// Good and odd runs of the VKT610B, VKT630B and VKT631B sessions.
#include "tests/serial/family_fakes.h"
#include "tests/support/session_fixture.h"

#include "toolkit/core/text.h"

#include <algorithm>

using sim::fault;
using testing::ElementsAre;

namespace {

const std::vector<std::string> opening = {"20/0 串口参数配置.....",    "20/0 SetupComm.....",
                                          "21/0 SetCommTimeouts.....", "22/0 SetCommState.....",
                                          "23/0 PurgeComm.....",       "24/0 ClearCommError....."};
const std::vector<std::string> rest_of_connect = {"20/2 转换为配置模式.....",
                                                  "21/2 转换为配置模式.....",
                                                  "22/2 转换为配置模式.....",
                                                  "23/2 转换为配置模式.....",
                                                  "24/2 转换为配置模式.....",
                                                  "90/0 按键初始化.....",
                                                  "buttons",
                                                  "100/0 连接成功",
                                                  "finished"};
const std::vector<std::string> good_read = {
    "30/3 读配置.....", "50/3 读配置.....", "image",   "80/3 按键初始化.....",
    "buttons",          "100/3 读配置完成", "finished"};

std::vector<std::string> write_events(uint32_t frames) {
    std::vector<std::string> events = {"20/2 写配置....."};
    for (uint32_t r = 0; r < frames; ++r) events.push_back(tk_format("%u/2 写配置.....", 35 + r));
    return events;
}

class b_session : public session_test {
  protected:
    void SetUp() override {
        session_test::SetUp();
        fake_families_register();
        plug("VKT610B");
    }
};

TEST_F(b_session, connect_reports_and_mode) {
    ASSERT_TRUE(run(session_kind::connect));
    std::vector<std::string> events = opening;
    events.insert(events.end(), rest_of_connect.begin(), rest_of_connect.end());
    EXPECT_EQ(heard.events, events);
    ASSERT_TRUE(idle_run_until([this] { return module->mode() == "config"; }, session_patience_ms));
    EXPECT_EQ(module->received(), (std::vector<uint8_t>{'c', 'o', 'n', 'f', 'i', 'g', 0}));
    EXPECT_EQ(context().operation, 0);
    EXPECT_TRUE(context().connected);
    EXPECT_TRUE(lock_is_free());
    EXPECT_EQ(session_log(), "") << "only the A family notes its model";
}

TEST_F(b_session, read_reports_and_image) {
    connect();
    std::vector<uint8_t> memory(140);
    for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<uint8_t>(200 - i);
    module->set_memory(memory);
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read);
    EXPECT_EQ(module->requests(), (std::vector<std::vector<uint8_t>>{{0xAA, 0x02, 0x05, 0xFF, 0x35, 0x46}}));
    EXPECT_TRUE(std::ranges::equal(fakes().b_image, memory));
    EXPECT_THAT(fakes().calls, ElementsAre(testing::StrEq("accept_image")));
    EXPECT_TRUE(fakes().lock_was_held);
    EXPECT_EQ(context().operation, 0);
    EXPECT_TRUE(lock_is_free());
}

TEST_F(b_session, with_the_code_switch_on_requests_start_with_ac) {
    connect();
    ASSERT_TRUE(run(session_kind::read, port_name, true));
    ASSERT_TRUE(run(session_kind::write, port_name, true));
    EXPECT_EQ(module->requests()[0], (std::vector<uint8_t>{0xAC, 0x02, 0x05, 0xFF, 0xAF, 0x0D}));
    ASSERT_EQ(module->requests().size(), 35u);
    for (std::size_t i = 1; i < 35; ++i) EXPECT_EQ(module->requests()[i][0], 0xAC);
}

TEST_F(b_session, write_sends_34_registers_in_order) {
    connect();
    for (std::size_t i = 0; i < 140; ++i) fakes().b_image[i] = static_cast<uint8_t>(i + 3);
    fakes().b_image[0] = 1;
    fakes().b_image[1] = fakes().b_image[2] = fakes().b_image[3] = 0;
    ASSERT_TRUE(run(session_kind::write));
    std::vector<std::string> events = write_events(34);
    for (const char* event : {"80/2 按键初始化.....", "buttons", "100/2 写配置完成", "finished"})
        events.emplace_back(event);
    EXPECT_EQ(heard.events, events);
    const auto requests = module->requests();
    ASSERT_EQ(requests.size(), 34u);
    EXPECT_EQ(requests[0],
              (std::vector<uint8_t>{0xAA, 0x07, 0x02, 0xFF, 0x00, 0x01, 0x00, 0x00, 0x00, 0x1D, 0x2C}));
    for (std::size_t r = 0; r < 34; ++r) EXPECT_EQ(requests[r][4], r);
    const std::vector<uint8_t> memory = module->memory();
    EXPECT_TRUE(std::equal(memory.begin(), memory.begin() + 136, fakes().b_image.begin()));
    EXPECT_EQ(context().operation, 0);
}

TEST_F(b_session, a_bad_acknowledgement_ends_the_write_and_shows_both_frames) {
    connect();
    module->plan({.what = fault::refuse, .after = 12});
    ASSERT_TRUE(run(session_kind::write, port_name, true));
    std::vector<std::string> events = write_events(13);
    events.emplace_back("failed 2 应答帧校验失败");
    EXPECT_EQ(heard.events, events);
    EXPECT_EQ(module->count().writes, 13u);
    EXPECT_THAT(heard.logs,
                ElementsAre("\n VKT610B \nsend:  write product info\n [13-5-9]read: read check failed!\n "
                            "send:AA 07 02 FF 0C 00 00 00 00 96 47\n read:AC 03 02 FF 00 36 3D\n\n"));
    EXPECT_EQ(context().operation, 2);
    EXPECT_TRUE(context().connected);
}

TEST_F(b_session, each_byte_of_an_acknowledgement_but_the_first_counts) {
    connect();
    for (int byte = 1; byte <= 4; ++byte) {
        heard = {};
        module->plan({.what = fault::patch, .argument = byte * 256 + 0x44});
        ASSERT_TRUE(run(session_kind::write));
        EXPECT_EQ(heard.events.back(), "failed 2 应答帧校验失败") << byte;
    }
    heard = {};
    module->plan({.what = fault::patch, .argument = 0x44});
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events.back(), "finished");
    EXPECT_EQ(module->count().writes, 4u + 34u);
}

TEST_F(b_session, an_acknowledgement_with_a_wrong_crc_ends_the_write) {
    connect();
    module->plan({.what = fault::bad_check, .after = 33});
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events.back(), "failed 2 应答帧校验失败");
    EXPECT_EQ(module->count().writes, 34u);
}

TEST_F(b_session, a_reply_with_a_wrong_crc_fails) {
    connect();
    module->plan({.what = fault::bad_check});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_THAT(heard.events, ElementsAre("30/3 读配置.....", "50/3 读配置.....", "failed 3 应答帧校验失败"));
    EXPECT_THAT(heard.logs,
                ElementsAre("\n VKT610B \nsend:  read product info\n [13-5-9]read: read check failed!\n\n"));
    EXPECT_TRUE(fakes().calls.empty());
}

TEST_F(b_session, a_reply_with_a_foreign_header_fails_and_shows_it) {
    connect();
    module->plan({.what = fault::patch, .argument = 2 * 256 + 0x06});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events.back(), "failed 3 应答帧校验失败");
    EXPECT_THAT(
        heard.logs,
        ElementsAre("\n VKT610B \nsend:  read product info\n [13-5-9]read: read check failed!:aa8e06ff\n\n"));
    EXPECT_TRUE(fakes().calls.empty());
}

TEST_F(b_session, any_first_byte_of_a_reply_will_do) {
    connect();
    module->plan({.what = fault::patch, .argument = 0x00});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read);
}

TEST_F(b_session, replies_of_another_length) {
    connect();
    module->plan({.what = fault::cut_short, .argument = 145});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events.back(), "failed 3 应答帧校验失败");
    heard = {};
    module->plan({.what = fault::extra, .argument = 1});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read) << "146 bytes are read, the next session drains the rest";
    heard = {};
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read);
    heard = {};
    module->plan({.what = fault::junk_first, .argument = 3});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events.back(), "failed 3 应答帧校验失败");
}

TEST_F(b_session, the_port_vanishes_at_a_register) {
    for (uint32_t r : {0u, 7u, 33u}) {
        heard = {};
        ASSERT_TRUE(module->plug_in());
        module->plan({});
        connect();
        const uint32_t before = module->count().writes;
        module->plan({.what = fault::hang_up, .after = r});
        ASSERT_TRUE(run(session_kind::write));
        // Nobody can tell whether the write's end or the read meets it first.
        EXPECT_THAT(heard.events.back(), testing::AnyOf("failed 2 读取写命令应答失败", "failed 2 写配置命令失败"));
        ASSERT_EQ(heard.logs.size(), 1u);
        EXPECT_THAT(heard.logs[0], testing::HasSubstr("port lost, error "));
        EXPECT_EQ(module->count().writes - before, r + 1);
        EXPECT_TRUE(lock_is_free());
    }
}

TEST_F(b_session, log_lines_carry_the_chosen_model) {
    model = "VKT631B";
    ASSERT_TRUE(run(session_kind::connect, "COM500"));
    EXPECT_THAT(heard.logs, ElementsAre("\n VKT631B \n\n[13-5-9]open: open serial failed!\n\n"));
}

TEST_F(b_session, without_the_codec_nothing_is_read_or_written) {
    b_session_ops_register({});
    EXPECT_EQ(session_start(of, session_kind::read, {port_name, model, false}), RET_FAIL);
    EXPECT_EQ(session_start(of, session_kind::write, {port_name, model, false}), RET_FAIL);
}

} // namespace
