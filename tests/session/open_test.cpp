// From the port text to an open port, and every way in which that fails.
#include "serial/mode_text.h"
#include "serial/port_names.h"
#include "tests/support/session_fixture.h"

#include <array>

using testing::ElementsAre;

namespace {

constexpr const char* bad_name = "failed 1 串口号有误";
constexpr const char* not_opened = "failed 1 串口打开失败";
constexpr const char* open_log = "\n[13-5-9]open: open serial failed!\n\n";

class port_opening : public session_test, public testing::WithParamInterface<const char*> {
  protected:
    void SetUp() override {
        session_test::SetUp();
        plug(GetParam());
        com::fault_clear();
    }
    /// What a connect with this text tried and said.
    void expect_failure(const std::string& text, const char* event, uint32_t attempts,
                        const testing::Matcher<std::string>& cause) {
        heard = {};
        com::fault_clear();
        ASSERT_TRUE(run(session_kind::connect, text));
        EXPECT_THAT(heard.events, ElementsAre(event)) << text;
        const std::string head = dev->of.typed_paths ? "" : "\n " + model + " \n";
        EXPECT_THAT(heard.logs, ElementsAre(head + open_log));
        EXPECT_EQ(com::call_count(com::call::create_file), attempts) << text;
        EXPECT_THAT(heard.causes, ElementsAre(cause)) << text;
        EXPECT_TRUE(heard.port_was_free);
        EXPECT_TRUE(port_is_free());
        EXPECT_FALSE(session().connected());
        EXPECT_FALSE(session().port_open());
    }
};

TEST_P(port_opening, no_text_is_no_attempt) { expect_failure("", bad_name, 0, ""); }

TEST_P(port_opening, an_unknown_name_is_no_attempt) {
    for (const char* text : {"COM500", "C", "COM", "COM07", "CON", " com500 "})
        expect_failure(text, bad_name, 0, "");
}

TEST_P(port_opening, an_absent_port_is_tried_101_times) {
    expect_failure("COM444", not_opened, 101, "COM444: 不存在 (error 2)\n");
}

TEST_P(port_opening, a_folder_is_tried_101_times) {
    expect_failure(".", not_opened, 101,
                   dev->of.typed_paths ? testing::AnyOf(".: 不存在 (error 2)\n", ".: 被占用 (error 5)\n")
                                       : testing::AnyOf(".: 不存在 (error 3)\n", ".: 不存在 (error 2)\n"));
}

TEST_P(port_opening, a_taken_or_forbidden_port_is_tried_101_times) {
    // Set after expect_failure has cleared the switch, so this one is spelt out.
    com::fault_set(com::call::create_file, 0, 101, 5);
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_THAT(heard.events, ElementsAre(not_opened));
    EXPECT_EQ(com::call_count(com::call::create_file), 101u);
    heard = {};
    com::fault_clear();
    com::fault_set(com::call::create_file, 0, 100, 5);
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events.back(), "finished") << "the last attempt counts";
}

#ifndef _WIN32 // the compatibility layer that the Windows build is tested under opens a port twice
TEST_P(port_opening, a_port_somebody_holds_is_taken) {
    com_port held;
    ASSERT_EQ(held.open("\\\\.\\COM7"), RET_OK);
    expect_failure(port_name, not_opened, 101, "COM7: 被占用 (error 5)\n");
    held.close();
    heard = {};
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events.back(), "finished");
}
#endif

TEST_P(port_opening, only_the_first_hundred_bytes_of_the_text_count) {
    const std::string text(300, 'x');
    const char* error = dev->of.typed_paths ? "2" : "3";
    expect_failure(text, not_opened, 101, text + ": 不存在 (error " + error + ")\n");
    const std::string base(99, 'x');
    EXPECT_EQ(port_path(base + "串口", true), base) << "no half character";
}

TEST_P(port_opening, a_name_may_be_typed_in_any_case_with_blanks_around) {
    for (const char* text : {"com7", " COM7 "}) {
        ASSERT_TRUE(run(session_kind::connect, text));
        EXPECT_EQ(heard.events.back(), "finished") << text;
    }
}

TEST_P(port_opening, settings_that_fail_do_not_matter) {
    for (com::call call :
         {com::call::setup_comm, com::call::set_comm_timeouts, com::call::set_comm_state, com::call::purge_comm})
        com::fault_set(call, 0, 1, 87);
    // The port's own time-outs stay what the system made them: let the read be ended by its last byte.
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events.back(), "finished");
}

TEST_P(port_opening, a_text_without_a_leading_c_is_a_path) {
    const bool has_path = GetParam() != std::string("VKT610B");
    EXPECT_EQ(port_path("\\\\.\\COM7", dev->of.typed_paths), has_path ? "\\\\.\\COM7" : "");
    com::fault_clear();
    ASSERT_TRUE(run(session_kind::connect, "\\\\.\\COM7"));
    EXPECT_EQ(heard.events.back(), has_path ? "finished" : not_opened);
    EXPECT_EQ(com::call_count(com::call::create_file), has_path ? 1u : 101u);
}

TEST_P(port_opening, a_port_that_vanishes_while_it_is_opened) {
    module->hang_up();
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events.back().rfind("failed 1 ", 0), 0u);
    EXPECT_FALSE(session().connected());
    EXPECT_TRUE(port_is_free());
}

INSTANTIATE_TEST_SUITE_P(families, port_opening, testing::Values("VKT531A", "VKT510A", "VKT610B"),
                         [](const auto& one) { return std::string(one.param); });

TEST(mode_text, texts_carry_their_zero_byte) {
    const auto bytes = [](uint8_t mode) {
        return std::vector<uint8_t>(mode_text(mode).begin(), mode_text(mode).end());
    };
    EXPECT_EQ(bytes(0), (std::vector<uint8_t>{'c', 'o', 'n', 'f', 'i', 'g', 0}));
    EXPECT_EQ(bytes(1), (std::vector<uint8_t>{'t', 'r', 'a', 'n', 's', 'f', 'e', 'r', 0}));
    EXPECT_EQ(bytes(2), (std::vector<uint8_t>{0}));
}

} // namespace
