// The input drain and the one-shot mode text.
#include "serial/mode_text.h"
#include "sim/module.h"
#include "tests/support/console_capture.h"
#include "toolkit/core/idle.h"

#include <gmock/gmock.h>

namespace {

constexpr uint32_t patience_ms = 30000;

class port_calls : public testing::Test {
  protected:
    void SetUp() override {
        com::fault_clear();
        com::resume_all();
        idle_set_gui_thread();
        port_timing_get() = {.drain_wait_ms = 10000, .timeouts = {200, 0, 600, 500, 1000}};
        module = sim::module_start(sim::model::vkt610b, "COM7");
        ASSERT_NE(module, nullptr);
        ASSERT_EQ(owner.open("\\\\.\\COM7"), RET_OK);
        port = owner.take(0);
        port.configure();
        com::fault_clear();
    }
    void TearDown() override {
        com::fault_clear();
        port_timing_get() = {};
    }
    /// Lets the module send `count` bytes and waits until they are in the queue.
    void fill(DWORD count) {
        module->babble(std::vector<uint8_t>(count, 0x42));
        ASSERT_TRUE(idle_run_until([&] { return port.waiting() >= count; }, patience_ms));
        com::fault_clear();
    }

    console_capture console;
    std::unique_ptr<sim::module_t> module;
    com_port owner;
    port_lease port; // before its owner is closed
};

TEST_F(port_calls, drain_of_an_empty_queue_reads_nothing) {
    port.drain();
    EXPECT_EQ(com::call_count(com::call::create_event), 1u);
    EXPECT_EQ(com::call_count(com::call::clear_comm_error), 1u);
    EXPECT_EQ(com::call_count(com::call::read_file), 0u);
    EXPECT_EQ(console.text(), "");
}

TEST_F(port_calls, drain_swallows_one_burst) {
    fill(40);
    port.drain();
    EXPECT_EQ(port.waiting(), 0u);
    EXPECT_EQ(com::call_count(com::call::read_file), 1u);
    EXPECT_EQ(console.text(), "");
}

TEST_F(port_calls, drain_takes_256_bytes_and_fails_in_its_second_round) {
    fill(300);
    port.drain();
    EXPECT_EQ(com::call_count(com::call::create_event), 1u);
    EXPECT_EQ(com::call_count(com::call::read_file), 2u);
    EXPECT_EQ(port.waiting(), 44u) << "the second round has no event to read with";
    EXPECT_EQ(console.text(), "ReadFile failed with error 6\n");
}

TEST_F(port_calls, drain_says_what_failed) {
    const std::pair<com::call, const char*> failures[] = {
        {com::call::create_event, "CreateEvent failed with error 87\n"},
        {com::call::clear_comm_error, "ClearCommError failed with error 87\n"},
        {com::call::read_file, "ReadFile failed with error 87\n"},
        {com::call::wait_for_single_object, "WaitForSingleObject failed with error 87\n"},
        {com::call::get_overlapped_result, "GetOverlappedResult failed with error 87\n"},
    };
    std::string said;
    for (const auto& [call, line] : failures) {
        fill(10);
        com::fault_set(call, 0, 1, 87);
        port.drain();
        said += line;
        EXPECT_EQ(console.text(), said);
        com::fault_clear();
        port.purge(PURGE_RXCLEAR);
    }
    fill(10);
    com::fault_set(com::call::clear_comm_error, 1, 1, 87);
    port.drain();
    EXPECT_EQ(console.text(), said + "ClearCommError failed with error 87\n");
}

TEST_F(port_calls, drain_says_which_call_timed_out) {
    const std::pair<com::call, const char*> failures[] = {
        {com::call::read_file, "ReadFile failed with error 1460\n"},
        {com::call::get_overlapped_result, "GetOverlappedResult failed with error 1460\n"},
    };
    for (const auto& [call, line] : failures) {
        fill(10);
        com::fault_set(call, 0, 1, 1460);
        port.drain();
        EXPECT_EQ(console.take(), line);
        com::fault_clear();
        port.purge(PURGE_RXCLEAR);
    }
}

TEST_F(port_calls, mode_text_goes_out) {
    mode_text_write(port, mode_config);
    ASSERT_TRUE(idle_run_until([this] { return module->mode() == "config"; }, patience_ms));
    mode_text_write(port, mode_transfer);
    ASSERT_TRUE(idle_run_until([this] { return module->mode() == "transfer"; }, patience_ms));
    EXPECT_EQ(console.text(), "");
    EXPECT_EQ(module->count().mode_texts, 2u);
}

TEST_F(port_calls, mode_text_says_what_failed) {
    com::fault_set(com::call::create_event, 0, 1, 8);
    mode_text_write(port, mode_config);
    com::fault_set(com::call::write_file, 0, 1, 87);
    mode_text_write(port, mode_config);
    com::fault_set(com::call::write_file, 0, 1, 997);
    com::fault_set(com::call::wait_for_single_object, 0, 1, 6);
    mode_text_write(port, mode_config);
    com::fault_set(com::call::get_overlapped_result, 1, 1, 87);
    mode_text_write(port, 9);
    EXPECT_EQ(console.text(), "Create event for async write failed\n"
                              "Async write operation failed with error code: 87\n"
                              "Wait for async write operation failed\n");
    mode_text_write(port, mode_config);
    EXPECT_THAT(console.text(), testing::EndsWith("Get overlapped result for async write failed\n"));
}

TEST_F(port_calls, a_failed_wait_leaves_no_operation_behind) {
    std::array<uint8_t, 8> bytes{};
    const io_result read = port.read(bytes, 20);
    EXPECT_EQ(read.step, io_step::wait);
    fill(8);
    EXPECT_EQ(port.waiting(), 8u) << "nobody reads any more";
    const io_result again = port.read(bytes, 1000);
    EXPECT_TRUE(again.ok());
    EXPECT_EQ(again.bytes, 8u);
    EXPECT_EQ(bytes[7], 0x42);
}

TEST_F(port_calls, a_read_that_ends_empty_is_a_failed_wait) {
    std::array<uint8_t, 8> bytes{};
    EXPECT_EQ(port.read(bytes, 60000).step, io_step::wait) << "ended by the port's own time-out";
}

} // namespace
