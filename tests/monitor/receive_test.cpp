// What a module sends, from the port to the rows.
#include "tests/monitor/traffic_stage.h"

#include <mutex>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using bytes = std::vector<uint8_t>;

bytes operator+(bytes left, const bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

class receiving : public traffic_stage {
  protected:
    /// What the port has waiting when the traffic is started.
    void send_before(const bytes& content) {
        const port_lease port = session().take_port(0);
        ASSERT_TRUE(port);
        send(content);
        ASSERT_TRUE(wait([&] { return const_cast<port_lease&>(port).waiting() >= content.size(); }));
    }
};

TEST_F(receiving, frames_become_rows_newest_first) {
    open();
    send(frame(1) + frame(2));
    ASSERT_TRUE(wait_received(2));
    EXPECT_THAT(identifiers(), ElementsAre(2, 1));
    traffic_record row{};
    ASSERT_TRUE(page->row(1, &row));
    EXPECT_EQ(record_time_text(row), "2025-09-29 13:05:09");
    EXPECT_GT(row.at.steady_us, 0);
    EXPECT_STREQ(record_channel_text(row), "uart1-can1");
    EXPECT_EQ(record_id_text(row), "0x01");
    EXPECT_EQ(record_type_text(row), "标准帧-can");
    EXPECT_STREQ(record_direction_text(row), "rx");
    EXPECT_EQ(record_data_text(row), "D0 D1 ");
    EXPECT_FALSE(page->row(2, &row));
    const traffic_counters now = page->counters();
    EXPECT_EQ(now.frames_received, 2u);
    EXPECT_EQ(now.bytes_read, 22u);
    EXPECT_EQ(now.lost.all(), 0u);
    EXPECT_EQ(csv(), "") << "only what is sent is recorded in the file";
    EXPECT_EQ(console->text(), "");
}

TEST_F(receiving, the_port_is_asked_in_this_order) {
    std::mutex lock;
    std::vector<std::string> calls;
    com::watch_calls([&](const std::string& call) {
        const std::lock_guard hold(lock);
        calls.push_back(call);
    });
    open();
    send(frame(1));
    ASSERT_TRUE(wait_received(1));
    page.reset();
    com::watch_calls({});
    std::vector<std::string> round;
    for (const std::string& call : calls)
        if (round.size() < 4 && (call.starts_with("Set") || call.starts_with("Read") || call.starts_with("Purge")))
            round.push_back(call);
    EXPECT_THAT(round, ElementsAre("SetCommTimeouts 10 10 0 500 1000", "ReadFile 1024", "PurgeComm 12",
                                   "SetCommTimeouts 200 0 600 500 1000"));
    EXPECT_EQ(std::ranges::count(calls, "CreateEventA 1 0"), 2) << "one for all reads, one for the mode text";
}

TEST_F(receiving, what_no_frame_can_be_made_of_is_counted) {
    open();
    send(bytes{1, 2, 3} + frame(7) + bytes{0xAA, 0x04, 3, 1, 0, 0, 0, 0, 0});
    ASSERT_TRUE(wait_read(23));
    EXPECT_THAT(identifiers(), ElementsAre(7));
    const traffic_counters now = page->counters();
    EXPECT_EQ(now.lost[traffic_loss::noise], 3u);
    EXPECT_EQ(now.lost[traffic_loss::length], 9u);
    EXPECT_EQ(now.lost.all(), 12u);
    send(bytes(5, 0x11));
    ASSERT_TRUE(wait_read(28));
    EXPECT_EQ(page->counters().lost[traffic_loss::no_start], 5u);
}

TEST_F(receiving, what_a_purge_drops_is_counted) {
    bytes many;
    for (int i = 0; i < 140; ++i) many = many + frame(static_cast<uint8_t>(i));
    ASSERT_EQ(many.size(), 1540u);
    send_before(many);
    open();
    ASSERT_TRUE(wait_read(1024));
    ASSERT_TRUE(wait([this] { return page->counters().lost[traffic_loss::purged] > 0; }));
    const traffic_counters now = page->counters();
    EXPECT_EQ(now.bytes_read, 1024u);
    EXPECT_EQ(now.lost[traffic_loss::purged], 516u);
    EXPECT_EQ(now.frames_received, 93u);
    EXPECT_EQ(now.lost[traffic_loss::no_start], 1u) << "the frame that straddles two reads is lost";
    send(frame(200));
    ASSERT_TRUE(wait_received(94));
    EXPECT_EQ(identifiers().front(), 200u);
}

TEST_F(receiving, frames_with_a_check_value_are_taken_when_it_is_asked_for) {
    page->set_check(true);
    EXPECT_TRUE(page->check());
    open();
    send({0xAC, 0x09, 0x03, 0x05, 0x88, 0x78, 0x56, 0x34, 0x12, 0x01, 0x02, 0x79, 0x5F});
    ASSERT_TRUE(wait_received(1));
    traffic_record row{};
    ASSERT_TRUE(page->row(0, &row));
    EXPECT_EQ(row.identifier, 0x12345678u);
    EXPECT_EQ(record_type_text(row), "扩展帧-canfd");
    EXPECT_STREQ(record_channel_text(row), "spi1-can2");
    send({0xAC, 0x09, 0x03, 0x05, 0x88, 0x78, 0x56, 0x34, 0x12, 0x01, 0x02, 0x79, 0x5E});
    ASSERT_TRUE(wait_read(26));
    EXPECT_EQ(page->counters().lost[traffic_loss::check], 13u);
}

TEST_F(receiving, refreshes_asked_for_while_one_is_pending_are_one) {
    open();
    while (idle_dispatch() > 0) {
    }
    refreshes = 0;
    for (uint8_t i = 1; i <= 5; ++i) {
        send(frame(i));
        const int64_t end = time_now_ms() + session_patience_ms;
        while (page->counters().frames_received < i)
            ASSERT_LT(time_now_ms(), end); // nothing is dispatched meanwhile
    }
    ASSERT_TRUE(wait([this] { return refreshes > 0; }));
    while (idle_dispatch() > 0) {
    }
    EXPECT_LE(refreshes, 2) << "the last chunk may have asked after the first refresh ran";
    EXPECT_EQ(page->size(), 5u);
}

// ---- pause, stop

TEST_F(receiving, nothing_is_read_while_paused) {
    open(traffic_run::pause);
    EXPECT_EQ(page->run(), traffic_run::pause);
    send(frame(1));
    const uint32_t reads = com::call_count(com::call::read_file);
    ASSERT_EQ(page->request_send({.length = 1}), RET_OK); // takes its time, and goes on
    ASSERT_TRUE(wait_done());
    EXPECT_EQ(com::call_count(com::call::read_file), reads);
    EXPECT_EQ(page->counters().frames_received, 0u);
    EXPECT_EQ(page->counters().frames_sent, 1u);
    page->set_run(traffic_run::run);
    send(frame(2));
    ASSERT_TRUE(wait_received(1));
    EXPECT_EQ(identifiers().front(), 2u);
}

TEST_F(receiving, stopped_receiving_begins_again_with_the_next_start) {
    open();
    page->set_run(traffic_run::stop);
    ASSERT_TRUE(wait([] { return workers_running() == 1; })) << "the pending read is ended";
    EXPECT_EQ(page->link(), traffic_link::open);
    ASSERT_EQ(begin(), 0);
    send(frame(3));
    ASSERT_TRUE(wait_received(1));
    EXPECT_EQ(module->count().mode_texts, 2u) << "of the connect and of the first start";
}

// ---- the queue

TEST_F(receiving, the_queue_is_as_large_as_the_settings_say) {
    ASSERT_EQ(setting_write(settings_file.c_str(), "fifo_size", "3"), 0);
    open();
    send(frame(1) + frame(2) + frame(3) + frame(4) + frame(5));
    ASSERT_TRUE(wait_received(5));
    EXPECT_THAT(identifiers(), ElementsAre(5, 4, 3));
    EXPECT_EQ(page->counters().records_dropped, 2u);
    page->clear();
    EXPECT_EQ(page->size(), 0u);
    EXPECT_THAT(identifiers(), IsEmpty());
    EXPECT_EQ(console->text(), "");
}

TEST_F(receiving, a_queue_out_of_range_is_said_once) {
    ASSERT_EQ(setting_write(settings_file.c_str(), "fifo_size", "2000000000"), 0);
    open();
    close();
    open();
    EXPECT_EQ(console->text(), "fifo_size 2000000000 is out of range: 5000000 records are kept\n");
}

TEST_F(receiving, records_outlive_the_visit) {
    EXPECT_EQ(page->size(), 0u);
    open();
    send(frame(1));
    ASSERT_TRUE(wait_received(1));
    close();
    EXPECT_THAT(identifiers(), ElementsAre(1));
    open();
    send(frame(2));
    ASSERT_TRUE(wait_received(2));
    EXPECT_THAT(identifiers(), ElementsAre(2, 1));
}

// ---- failures

TEST_F(receiving, a_read_that_cannot_be_started_is_said_and_tried_again) {
    com::fault_set(com::call::read_file, 0, 2, 87);
    open();
    send(frame(1));
    ASSERT_TRUE(wait_received(1));
    EXPECT_EQ(console->text(), "Async read operation failed with error code: 87\n"
                               "Async read operation failed with error code: 87\n");
    EXPECT_EQ(page->link(), traffic_link::open);
}

TEST_F(receiving, a_read_whose_wait_fails_is_said_and_tried_again) {
    com::fault_set(com::call::read_file, 0, 1, 997); // pends, and nobody knows of it
    com::fault_set(com::call::wait_for_single_object, 0, 1, 6);
    open();
    ASSERT_TRUE(wait([this] { return !console->text().empty(); }));
    send(frame(1));
    ASSERT_TRUE(wait_received(1));
    EXPECT_EQ(console->text(), "Wait for async read operation failed\n");
}

TEST_F(receiving, a_read_without_a_result_is_said_and_tried_again) {
    open();
    com::fault_set(com::call::get_overlapped_result, 0, 1, 87);
    send(frame(1));
    ASSERT_TRUE(wait([this] { return !console->text().empty(); }));
    send(frame(2));
    ASSERT_TRUE(wait_received(1));
    EXPECT_EQ(console->text(), "Get overlapped result for async read failed\n");
}

TEST_F(receiving, a_read_that_ends_as_a_lost_ports_does_has_some_more_chances) {
    open();
    com::fault_set(com::call::get_overlapped_result, 0, 1, 109);
    send(frame(1));
    ASSERT_TRUE(wait([this] { return !console->text().empty(); }));
    send(frame(2));
    ASSERT_TRUE(wait_received(1));
    EXPECT_EQ(page->link(), traffic_link::open);
    EXPECT_EQ(console->text(), "Get overlapped result for async read failed\n");
    com::fault_set(com::call::read_file, 0, 6, 21);
    send(frame(3)); // may still be read by the read that is pending
    send(frame(4));
    ASSERT_TRUE(wait_link(traffic_link::lost));
    EXPECT_EQ(console->text(), "Get overlapped result for async read failed\n"
                               "Async read operation failed with error code: 21\n");
}

TEST_F(receiving, a_port_without_time_outs_to_save_is_read_all_the_same) {
    com::fault_set(com::call::get_comm_timeouts, 0, 1, 87);
    open();
    send(frame(1));
    ASSERT_TRUE(wait_received(1));
}

} // namespace
