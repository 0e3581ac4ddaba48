// Good and odd runs of the VKT610B, VKT630B and VKT631B sessions.
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
        plug("VKT610B");
        blank();
    }
    /// All registers 0, so that the bytes of a failure's frames are few.
    void blank() {
        std::ranges::fill(dev->image, uint8_t{0});
        dev->of.decode(*dev);
    }
};

TEST_F(b_session, connect_reports_and_mode) {
    ASSERT_TRUE(run(session_kind::connect));
    std::vector<std::string> events = opening;
    events.insert(events.end(), rest_of_connect.begin(), rest_of_connect.end());
    EXPECT_EQ(heard.events, events);
    ASSERT_TRUE(idle_run_until([this] { return module->mode() == "config"; }, session_patience_ms));
    EXPECT_EQ(module->received(), (std::vector<uint8_t>{'c', 'o', 'n', 'f', 'i', 'g', 0}));
    EXPECT_EQ(session().operation(), session_kind::none);
    EXPECT_TRUE(session().connected());
    EXPECT_TRUE(port_is_free());
    EXPECT_EQ(session_log(), "") << "only the A family notes its model";
}

TEST_F(b_session, threads_have_their_names) {
    const std::pair<session_kind, const char*> names[] = {{session_kind::connect, "thread_vkt610b_connect"},
                                                          {session_kind::read, "thread_vkt610b_read"},
                                                          {session_kind::write, "thread_vkt610b_write"}};
    for (const auto& [kind, name] : names) expect_thread_name(kind, name);
}

TEST_F(b_session, read_reports_and_image) {
    connect();
    std::vector<uint8_t> memory(140);
    for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<uint8_t>(200 - i);
    module->set_memory(memory);
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read);
    EXPECT_EQ(module->requests(), (std::vector<std::vector<uint8_t>>{{0xAA, 0x02, 0x05, 0xFF, 0x35, 0x46}}));
    // Bytes 0 to 27: the program keeps only the bits that have a meaning.
    const std::vector<uint8_t> kept = {0xC8, 0, 0,    0,    0x04, 0, 0,    0,    0xC0, 0, 0,    0,    0xBC, 0,
                                       0,    0, 0xB8, 0xB7, 0,    0, 0xB4, 0xB3, 0x32, 0, 0xB0, 0xAF, 0x2E, 0};
    std::ranges::copy(kept, memory.begin());
    EXPECT_EQ(dev->image, memory);
    EXPECT_EQ(tk_object_get_prop_uint32(props(), "canfd1_scherm_vkt610b", 0), 0xA9AAABACu);
    EXPECT_EQ(session().operation(), session_kind::none);
    EXPECT_TRUE(port_is_free());
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
    for (std::size_t i = 0; i < 140; ++i) dev->image[i] = static_cast<uint8_t>(i + 3);
    dev->image[0] = 1;
    dev->image[1] = dev->image[2] = dev->image[3] = 0;
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
    EXPECT_TRUE(std::equal(memory.begin(), memory.begin() + 136, dev->image.begin()));
    EXPECT_EQ(session().operation(), session_kind::none);
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
    EXPECT_EQ(session().operation(), session_kind::write);
    EXPECT_TRUE(session().connected());
}

/// An acknowledgement with a right CRC and one byte that is not what it has to be.
struct odd_ack {
    int byte;
    const char* shown; ///< the reply in the log; null: it is as good as another
};
const odd_ack odd_acks[] = {
    {0, nullptr}, // the first byte may be any
    {1, "AA 44 02 FF 80 30 C3"},
    {2, "AA 03 44 FF 80 09 52"},
    {3, "AA 03 02 44 80 60 5C"},
    {4, "AA 03 02 FF 44 8E 02"},
};

class b_acknowledgement : public b_session, public testing::WithParamInterface<odd_ack> {};

TEST_P(b_acknowledgement, each_byte_but_the_first_counts) {
    constexpr uint32_t at_register = 5;
    connect();
    module->plan({.what = fault::patch, .after = at_register, .argument = GetParam().byte * 256 + 0x44});
    ASSERT_TRUE(run(session_kind::write));
    if (GetParam().shown == nullptr) {
        EXPECT_EQ(heard.events.back(), "finished");
        EXPECT_EQ(module->count().writes, 34u);
        return;
    }
    std::vector<std::string> events = write_events(at_register + 1);
    events.emplace_back("failed 2 应答帧校验失败");
    EXPECT_EQ(heard.events, events);
    EXPECT_THAT(heard.logs,
                ElementsAre("\n VKT610B \nsend:  write product info\n [13-5-9]read: read check failed!\n "
                            "send:AA 07 02 FF 05 00 00 00 00 F2 16\n read:" +
                            std::string(GetParam().shown) + "\n\n"));
    EXPECT_EQ(module->count().writes, at_register + 1);
    EXPECT_TRUE(port_is_free());
}
INSTANTIATE_TEST_SUITE_P(bytes, b_acknowledgement, testing::ValuesIn(odd_acks),
                         [](const auto& one) { return "byte_" + std::to_string(one.param.byte); });

TEST_F(b_session, an_acknowledgement_with_a_wrong_crc_ends_the_write) {
    connect();
    module->plan({.what = fault::bad_check, .after = 33});
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events.back(), "failed 2 应答帧校验失败");
    EXPECT_EQ(module->count().writes, 34u);
}

TEST_F(b_session, a_short_acknowledgement_has_nothing_of_the_one_before) {
    connect();
    module->plan({.what = fault::cut_short, .after = 5, .argument = 3});
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events.back(), "failed 2 应答帧校验失败");
    EXPECT_THAT(heard.logs,
                ElementsAre("\n VKT610B \nsend:  write product info\n [13-5-9]read: read check failed!\n "
                            "send:AA 07 02 FF 05 00 00 00 00 F2 16\n read:AA 03 02 00 00 00 00\n\n"));
}

TEST_F(b_session, a_reply_with_a_wrong_crc_fails) {
    connect();
    module->plan({.what = fault::bad_check});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_THAT(heard.events, ElementsAre("30/3 读配置.....", "50/3 读配置.....", "failed 3 应答帧校验失败"));
    EXPECT_THAT(heard.logs,
                ElementsAre("\n VKT610B \nsend:  read product info\n [13-5-9]read: read check failed!\n\n"));
    EXPECT_THAT(dev->image, testing::Each(0)) << "nothing is taken over";
}

TEST_F(b_session, a_reply_with_a_foreign_header_fails_and_shows_it) {
    connect();
    const std::pair<int, const char*> headers[] = {{1, "aa4405ff"}, {2, "aa8e44ff"}, {3, "aa8e0544"}};
    for (const auto& [byte, shown] : headers) {
        heard = {};
        module->plan({.what = fault::patch, .argument = byte * 256 + 0x44});
        ASSERT_TRUE(run(session_kind::read));
        EXPECT_THAT(heard.events, ElementsAre("30/3 读配置.....", "50/3 读配置.....", "failed 3 应答帧校验失败"));
        EXPECT_THAT(heard.logs,
                    ElementsAre(std::string("\n VKT610B \nsend:  read product info\n [13-5-9]read: read check "
                                            "failed!:") +
                                shown + "\n\n"));
    }
    EXPECT_THAT(dev->image, testing::Each(0)) << "nothing is taken over";
    EXPECT_EQ(session().operation(), session_kind::read) << "a failed session stays busy";
    EXPECT_TRUE(session().connected());
}

TEST_F(b_session, any_first_byte_of_a_reply_will_do) {
    connect();
    module->plan({.what = fault::patch, .argument = 0x00});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read);
}

const char* const check_failed_line =
    "\n VKT610B \nsend:  read product info\n [13-5-9]read: read check failed!\n\n";

TEST_F(b_session, a_reply_of_145_bytes_fails_its_check) {
    connect();
    module->plan({.what = fault::cut_short, .argument = 145});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events.back(), "failed 3 应答帧校验失败");
    EXPECT_THAT(heard.logs, ElementsAre(check_failed_line));
    EXPECT_THAT(dev->image, testing::Each(0)) << "nothing is taken over";
}

TEST_F(b_session, of_147_bytes_146_are_read_and_the_next_session_drains_the_rest) {
    connect();
    module->plan({.what = fault::extra, .argument = 1});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read);
    heard = {};
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events, good_read);
    EXPECT_EQ(module->count().reads, 2u);
}

TEST_F(b_session, noise_before_a_reply_fails_its_check) {
    connect();
    module->plan({.what = fault::junk_first, .argument = 3});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events.back(), "failed 3 应答帧校验失败");
    EXPECT_THAT(heard.logs, ElementsAre(check_failed_line));
    EXPECT_THAT(dev->image, testing::Each(0)) << "nothing is taken over";
}

TEST_F(b_session, noise_before_an_acknowledgement_fails_its_check) {
    connect();
    module->plan({.what = fault::junk_first, .after = 3, .argument = 1});
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events.back(), "failed 2 应答帧校验失败");
    EXPECT_EQ(module->count().writes, 4u);
}

class b_port_lost : public b_session, public testing::WithParamInterface<uint32_t> {};

TEST_P(b_port_lost, at_a_register_of_a_write) {
    const uint32_t r = GetParam();
    connect();
    module->plan({.what = fault::hang_up, .after = r});
    ASSERT_TRUE(run(session_kind::write));
    std::vector<std::string> events = write_events(r + 1);
    // Nobody can tell whether the write's end or the read meets it first.
    const bool in_read = heard.events.back() == "failed 2 读取写命令应答失败";
    events.emplace_back(in_read ? "failed 2 读取写命令应答失败" : "failed 2 写配置命令失败");
    EXPECT_EQ(heard.events, events);
    const char* head = in_read ? "\n VKT610B \nsend:  write product info\n [13-5-9]read: "
                               : "\n VKT610B \nsend: write product info\n[13-5-9]write: ";
    EXPECT_THAT(heard.logs,
                ElementsAre(testing::AllOf(testing::StartsWith(head), testing::EndsWith("failed!\n\n"))));
    EXPECT_THAT(heard.causes, ElementsAre(testing::AllOf(testing::StartsWith("COM7: 已拔出 (error "),
                                                         testing::EndsWith(")\nlost"))));
    EXPECT_EQ(module->count().writes, r + 1);
    EXPECT_TRUE(port_is_free());
    EXPECT_EQ(session().operation(), session_kind::write);
    EXPECT_TRUE(session().connected());
}
INSTANTIATE_TEST_SUITE_P(registers, b_port_lost, testing::Values(0u, 1u, 7u, 20u, 33u),
                         [](const auto& one) { return std::to_string(one.param); });

TEST_F(b_session, the_port_vanishes_in_a_read_reply) {
    connect();
    module->plan({.what = fault::hang_up_mid_reply});
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_THAT(heard.events.back(), testing::AnyOf("failed 3 读配置命令失败", "failed 3 读取写命令应答失败",
                                                    "failed 3 应答帧校验失败"));
    EXPECT_THAT(dev->image, testing::Each(0)) << "nothing is taken over";
    EXPECT_EQ(module->count().reads, 1u);
}

TEST_F(b_session, a_path_without_a_leading_c_is_never_opened) {
    ASSERT_TRUE(run(session_kind::connect, "/dev/ttyS0"));
    EXPECT_THAT(heard.events, ElementsAre("failed 1 串口打开失败"));
    EXPECT_THAT(heard.logs, ElementsAre("\n VKT610B \n\n[13-5-9]open: open serial failed!\n\n"));
    EXPECT_FALSE(session().port_open());
}

TEST_F(b_session, log_lines_carry_the_chosen_model) {
    model = "VKT631B";
    ASSERT_TRUE(run(session_kind::connect, "COM500"));
    EXPECT_THAT(heard.logs, ElementsAre("\n VKT631B \n\n[13-5-9]open: open serial failed!\n\n"));
}

} // namespace
