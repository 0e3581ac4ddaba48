// How reads end. Lower time bounds are exact but for the clock's step, upper ones leave room for a busy machine.
#include "port_fixture.h"

#include "platform/system.h"

namespace {

using read_test = port_test;
constexpr int64_t clock_step_ms = 20;
constexpr DWORD far_ms = 20000; // a time-out that must not be what ends the read

TEST_F(read_test, bytes_that_wait_complete_it) {
    send({0x10, 0x20, 0x30});
    ASSERT_TRUE(wait_in_queue(3));
    transfer t;
    t.read(port, 3);
    EXPECT_EQ(t.finish(port), 3U);
    EXPECT_EQ(t.error, 0U);
    EXPECT_EQ(t.bytes, (bytes_t{0x10, 0x20, 0x30}));
}

TEST_F(read_test, all_zero_timeouts_wait_for_ever) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 2);
    ASSERT_EQ(t.error, ERROR_IO_PENDING);
    EXPECT_TRUE(t.pending_for(300));
    DWORD count = 0;
    EXPECT_FALSE(com::GetOverlappedResult(port, &t.record, &count, FALSE));
    EXPECT_EQ(com::GetLastError(), ERROR_IO_INCOMPLETE);
    send({0x41});
    EXPECT_TRUE(t.pending_for(100));
    send({0x42});
    EXPECT_EQ(t.finish(port), 2U);
    EXPECT_EQ(t.bytes, (bytes_t{0x41, 0x42}));
}

TEST_F(read_test, waiting_costs_no_cpu_time) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 1);
    const int64_t before = platform_cpu_ms();
    EXPECT_TRUE(t.pending_for(500));
    EXPECT_LT(platform_cpu_ms() - before, 50);
    send({1});
    EXPECT_EQ(t.finish(port), 1U);
}

TEST_F(read_test, more_than_asked_for_stays_in_the_queue) {
    send({1, 2, 3, 4, 5});
    ASSERT_TRUE(wait_in_queue(5));
    transfer t;
    t.read(port, 2);
    EXPECT_EQ(t.finish(port), 2U);
    EXPECT_EQ(in_queue(), 3U);
    t.read(port, 3);
    EXPECT_EQ(t.finish(port), 3U);
    EXPECT_EQ(t.bytes, (bytes_t{3, 4, 5}));
}

TEST_F(read_test, total_timeout_is_multiplier_times_size_plus_constant) {
    set_timeouts(0, 50, 100);
    const stopwatch watch;
    transfer t;
    t.read(port, 4);
    const DWORD count = t.finish(port);
    EXPECT_TRUE(says_nothing_came(t, count)) << t.error;
    EXPECT_GE(watch.ms(), 300 - clock_step_ms);
    EXPECT_LT(watch.ms(), 3000);
}

TEST_F(read_test, total_timeout_of_the_constant_alone) {
    set_timeouts(0, 0, 200);
    const stopwatch watch;
    transfer t;
    t.read(port, 1000);
    const DWORD count = t.finish(port);
    EXPECT_TRUE(says_nothing_came(t, count)) << t.error;
    EXPECT_GE(watch.ms(), 200 - clock_step_ms);
    EXPECT_LT(watch.ms(), 3000);
}

TEST_F(read_test, total_timeout_of_the_multiplier_alone) {
    set_timeouts(0, 60, 0);
    const stopwatch watch;
    transfer t;
    t.read(port, 5);
    const DWORD count = t.finish(port);
    EXPECT_TRUE(says_nothing_came(t, count)) << t.error;
    EXPECT_GE(watch.ms(), 300 - clock_step_ms);
    EXPECT_LT(watch.ms(), 3000);
}

TEST_F(read_test, interval_alone_does_not_end_an_empty_read) {
    set_timeouts(30, 0, 0);
    transfer t;
    t.read(port, 2);
    EXPECT_TRUE(t.pending_for(300));
    send({9});
    EXPECT_EQ(t.finish(port), 1U);
    EXPECT_EQ(t.error, 0U);
    EXPECT_EQ(t.bytes, (bytes_t{9}));
}

TEST_F(read_test, interval_ends_a_read_that_has_bytes) {
    set_timeouts(100, 0, far_ms);
    transfer t;
    t.read(port, 10);
    EXPECT_TRUE(t.pending_for(200));
    const stopwatch watch;
    send({1, 2, 3});
    EXPECT_EQ(t.finish(port), 3U);
    EXPECT_EQ(t.error, 0U);
    EXPECT_EQ(t.bytes, (bytes_t{1, 2, 3}));
    EXPECT_GE(watch.ms(), 100 - clock_step_ms);
    EXPECT_LT(watch.ms(), 5000);
}

TEST_F(read_test, interval_starts_at_the_call_when_bytes_wait) {
    set_timeouts(100, 0, far_ms);
    send({1, 2, 3});
    ASSERT_TRUE(wait_in_queue(3));
    const stopwatch watch;
    transfer t;
    t.read(port, 256);
    EXPECT_EQ(t.finish(port), 3U);
    EXPECT_GE(watch.ms(), 100 - clock_step_ms);
    EXPECT_LT(watch.ms(), 5000);
}

TEST_F(read_test, interval_restarts_at_each_byte) {
    set_timeouts(1000, 0, far_ms);
    transfer t;
    t.read(port, 5);
    for (uint8_t i = 0; i < 4; i++) {
        send({i});
        EXPECT_TRUE(t.pending_for(400)) << int{i}; // four of these are longer than the interval
    }
    send({4});
    EXPECT_EQ(t.finish(port), 5U);
    EXPECT_EQ(t.bytes, (bytes_t{0, 1, 2, 3, 4}));
}

TEST_F(read_test, total_timeout_ends_a_read_that_has_bytes) {
    set_timeouts(0, 0, 400);
    const stopwatch watch;
    transfer t;
    t.read(port, 3);
    send({7, 8});
    EXPECT_EQ(t.finish(port), 2U);
    EXPECT_EQ(t.error, 0U);
    EXPECT_EQ(t.bytes, (bytes_t{7, 8}));
    EXPECT_GE(watch.ms(), 400 - clock_step_ms);
    EXPECT_LT(watch.ms(), 3000);
}

TEST_F(read_test, total_timeout_counts_from_the_call_however_often_bytes_come) {
    set_timeouts(5000, 0, 500);
    const stopwatch watch;
    transfer t;
    t.read(port, 100);
    DWORD sent = 0;
    while (sent < 99 && t.pending_for(60)) {
        send({static_cast<uint8_t>(sent)});
        sent++;
    }
    const DWORD count = t.finish(port);
    EXPECT_GE(count, 1U);
    EXPECT_LE(count, sent);
    EXPECT_GE(watch.ms(), 500 - clock_step_ms);
    EXPECT_LT(watch.ms(), 3000);
}

TEST_F(read_test, full_length_ends_it_before_any_timeout) {
    set_timeouts(far_ms, 500, far_ms);
    const stopwatch watch;
    transfer t;
    t.read(port, 6);
    send({0xF7, 0xF8, 0x02, 0x13, 0x1E, 0x00});
    EXPECT_EQ(t.finish(port), 6U);
    EXPECT_LT(watch.ms(), 5000);
}

TEST_F(read_test, new_timeouts_hold_for_the_next_read) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 1);
    set_timeouts(0, 0, 50);
    EXPECT_TRUE(t.pending_for(300));
    send({1});
    EXPECT_EQ(t.finish(port), 1U);
    t.read(port, 1);
    const DWORD count = t.finish(port);
    EXPECT_TRUE(says_nothing_came(t, count));
}

TEST_F(read_test, nothing_asked_for_completes_at_once) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 0);
    EXPECT_EQ(t.finish(port), 0U);
    EXPECT_EQ(t.error, 0U);
}

TEST_F(read_test, cancelled_read_ends_with_aborted) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 4);
    ASSERT_EQ(t.error, ERROR_IO_PENDING);
    ASSERT_TRUE(com::CancelIoEx(port, &t.record));
    EXPECT_EQ(t.finish(port), 0U);
    EXPECT_EQ(t.error, ERROR_OPERATION_ABORTED);
    EXPECT_FALSE(com::CancelIoEx(port, &t.record));
    EXPECT_EQ(com::GetLastError(), ERROR_NOT_FOUND);
    // What comes later is the next read's.
    send({5, 6, 7, 8});
    transfer next;
    next.read(port, 4);
    EXPECT_EQ(next.finish(port), 4U);
    EXPECT_EQ(next.bytes, (bytes_t{5, 6, 7, 8}));
    EXPECT_TRUE(t.bytes.empty());
}

TEST_F(read_test, cancelling_all_ends_every_read) {
    set_timeouts(0, 0, 0);
    transfer a;
    transfer b;
    a.read(port, 1);
    b.read(port, 1);
    ASSERT_TRUE(com::CancelIoEx(port, nullptr));
    a.finish(port);
    b.finish(port);
    EXPECT_EQ(a.error, ERROR_OPERATION_ABORTED);
    EXPECT_EQ(b.error, ERROR_OPERATION_ABORTED);
}

TEST_F(read_test, two_reads_are_served_in_their_order) {
    set_timeouts(0, 0, 0);
    transfer a;
    transfer b;
    a.read(port, 2);
    b.read(port, 2);
    send({1, 2, 3, 4});
    EXPECT_EQ(a.finish(port), 2U);
    EXPECT_EQ(b.finish(port), 2U);
    EXPECT_EQ(a.bytes, (bytes_t{1, 2}));
    EXPECT_EQ(b.bytes, (bytes_t{3, 4}));
}

TEST_F(read_test, every_byte_value_comes_through) {
    bytes_t all(256);
    for (std::size_t i = 0; i < all.size(); i++) all[i] = static_cast<uint8_t>(i);
    transfer t;
    t.read(port, 256);
    send(all);
    EXPECT_EQ(t.finish(port), 256U);
    EXPECT_EQ(t.bytes, all);
}

TEST_F(read_test, result_can_be_waited_for) {
    set_timeouts(0, 0, 150);
    transfer t;
    t.read(port, 3);
    ASSERT_EQ(t.error, ERROR_IO_PENDING);
    DWORD count = 77;
    const stopwatch watch;
    const bool good = com::GetOverlappedResult(port, &t.record, &count, TRUE) != 0;
    EXPECT_TRUE(good || com::GetLastError() == ERROR_TIMEOUT);
    EXPECT_EQ(count, 0U);
    EXPECT_LT(watch.ms(), 5000);
}

TEST_F(read_test, closing_the_port_ends_the_pending_read) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 1);
    ASSERT_EQ(t.error, ERROR_IO_PENDING);
    ASSERT_TRUE(com::CloseHandle(port));
    port = INVALID_HANDLE_VALUE;
    EXPECT_EQ(t.event.wait(), WAIT_OBJECT_0);
}

TEST_F(read_test, purge_drops_what_was_received) {
    send({1, 2, 3});
    ASSERT_TRUE(wait_in_queue(3));
    ASSERT_TRUE(com::PurgeComm(port, PURGE_TXCLEAR | PURGE_RXCLEAR));
    EXPECT_EQ(in_queue(), 0U);
    send({4});
    transfer t;
    t.read(port, 1);
    EXPECT_EQ(t.finish(port), 1U);
    EXPECT_EQ(t.bytes, (bytes_t{4}));
}

TEST_F(read_test, purge_without_abort_leaves_a_pending_read) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 1);
    ASSERT_TRUE(com::PurgeComm(port, PURGE_TXCLEAR | PURGE_RXCLEAR));
    EXPECT_TRUE(t.pending_for(100));
    send({6});
    EXPECT_EQ(t.finish(port), 1U);
}

#ifndef _WIN32 // Wine knows neither of these

TEST_F(read_test, purge_with_abort_ends_the_pending_read) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 1);
    ASSERT_TRUE(com::PurgeComm(port, PURGE_RXABORT));
    t.finish(port);
    EXPECT_EQ(t.error, ERROR_OPERATION_ABORTED);
    EXPECT_FALSE(com::PurgeComm(port, 0));
    EXPECT_FALSE(com::PurgeComm(port, 16));
}

TEST_F(read_test, maximal_interval_alone_returns_what_is_there) {
    set_timeouts(MAXDWORD, 0, 0);
    transfer t;
    t.read(port, 4);
    EXPECT_EQ(t.error, 0U) << "must complete at once";
    EXPECT_EQ(t.finish(port), 0U);
    send({1, 2});
    ASSERT_TRUE(wait_in_queue(2));
    t.read(port, 4);
    EXPECT_EQ(t.error, 0U) << "must complete at once";
    EXPECT_EQ(t.finish(port), 2U);
}

TEST_F(read_test, maximal_interval_and_multiplier_wait_for_the_first_byte) {
    set_timeouts(MAXDWORD, MAXDWORD, far_ms);
    transfer t;
    t.read(port, 4);
    EXPECT_TRUE(t.pending_for(100));
    send({3});
    EXPECT_EQ(t.finish(port), 1U);
    send({4, 5});
    ASSERT_TRUE(wait_in_queue(2));
    t.read(port, 4);
    EXPECT_EQ(t.error, 0U) << "must complete at once";
    EXPECT_EQ(t.finish(port), 2U);
    set_timeouts(MAXDWORD, MAXDWORD, 100);
    t.read(port, 4);
    EXPECT_EQ(t.finish(port), 0U);
    COMMTIMEOUTS impossible = {MAXDWORD, MAXDWORD, MAXDWORD, 0, 0};
    EXPECT_FALSE(com::SetCommTimeouts(port, &impossible));
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(read_test, maximal_interval_with_a_total_timeout_waits_only_while_nothing_is_there) {
    set_timeouts(MAXDWORD, 100, 100);
    send({1});
    ASSERT_TRUE(wait_in_queue(1));
    transfer t;
    t.read(port, 4);
    EXPECT_EQ(t.error, 0U) << "must complete at once";
    EXPECT_EQ(t.finish(port), 1U);
    const stopwatch watch;
    t.read(port, 4);
    EXPECT_EQ(t.finish(port), 0U);
    EXPECT_GE(watch.ms(), 500 - clock_step_ms);
}

TEST_F(read_test, handle_opened_without_overlap_blocks) {
    com::CloseHandle(port);
    port = open_path(port_path, 0);
    ASSERT_NE(port, INVALID_HANDLE_VALUE);
    set_timeouts(0, 0, 200);
    uint8_t bytes[4] = {};
    DWORD count = 99;
    const stopwatch watch;
    EXPECT_TRUE(com::ReadFile(port, bytes, 4, &count, nullptr));
    EXPECT_EQ(count, 0U);
    EXPECT_GE(watch.ms(), 200 - clock_step_ms);
    send({1, 2, 3, 4});
    EXPECT_TRUE(com::ReadFile(port, bytes, 4, &count, nullptr));
    EXPECT_EQ(count, 4U);
    EXPECT_TRUE(com::WriteFile(port, bytes, 4, &count, nullptr));
    EXPECT_EQ(count, 4U);
    EXPECT_EQ(receive(4), (bytes_t{1, 2, 3, 4}));
}

#endif

} // namespace
