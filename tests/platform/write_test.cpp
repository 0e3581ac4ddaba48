#include "port_fixture.h"

#include <algorithm>

namespace {

using write_test = port_test;

/// More than all buffers between the port and its far end hold together.
const bytes_t& flood() {
    static const bytes_t bytes(24U << 20U, 0x55);
    return bytes;
}

TEST_F(write_test, bytes_arrive_as_they_are) {
    bytes_t all(256);
    for (std::size_t i = 0; i < all.size(); i++) all[i] = static_cast<uint8_t>(i);
    transfer t;
    t.write(port, all);
    EXPECT_EQ(t.finish(port), 256U);
    EXPECT_EQ(t.error, 0U);
    EXPECT_EQ(receive(256), all);
}

TEST_F(write_test, nothing_comes_back_as_an_echo) {
    transfer t;
    t.write(port, {'a', '\r', '\n'});
    EXPECT_EQ(t.finish(port), 3U);
    EXPECT_EQ(receive(3), (bytes_t{'a', '\r', '\n'}));
    EXPECT_EQ(in_queue(), 0U);
}

TEST_F(write_test, writes_arrive_in_their_order) {
    transfer a;
    transfer b;
    a.write(port, bytes_t(300, 1));
    b.write(port, bytes_t(300, 2));
    bytes_t expected(600, 1);
    std::fill(expected.begin() + 300, expected.end(), uint8_t{2});
    EXPECT_EQ(a.finish(port), 300U);
    EXPECT_EQ(b.finish(port), 300U);
    EXPECT_EQ(receive(600), expected);
}

TEST_F(write_test, write_and_read_pend_side_by_side) {
    set_timeouts(0, 0, 0);
    transfer in;
    in.read(port, 2);
    transfer out;
    out.write(port, {1, 2, 3});
    EXPECT_EQ(out.finish(port), 3U);
    EXPECT_EQ(receive(3), (bytes_t{1, 2, 3}));
    EXPECT_TRUE(in.pending_for(50));
    send({8, 9});
    EXPECT_EQ(in.finish(port), 2U);
    EXPECT_EQ(in.bytes, (bytes_t{8, 9}));
}

TEST_F(write_test, write_pends_while_the_far_end_does_not_read_and_can_be_cancelled) {
    transfer t;
    t.write(port, flood());
    ASSERT_EQ(t.error, ERROR_IO_PENDING);
    EXPECT_TRUE(t.pending_for(200));
    ASSERT_TRUE(com::CancelIoEx(port, &t.record));
    EXPECT_LT(t.finish(port), flood().size());
    EXPECT_EQ(t.error, ERROR_OPERATION_ABORTED);
}

TEST_F(write_test, pending_write_goes_on_when_the_far_end_reads) {
    constexpr DWORD size = 300000;
    transfer t;
    t.write(port, bytes_t(size, 0x77));
    EXPECT_EQ(receive(size), bytes_t(size, 0x77));
    EXPECT_EQ(t.finish(port), size);
    EXPECT_EQ(t.error, 0U);
}

TEST_F(write_test, closing_the_port_ends_the_pending_write) {
    transfer t;
    t.write(port, flood());
    ASSERT_EQ(t.error, ERROR_IO_PENDING);
    ASSERT_TRUE(com::CloseHandle(port));
    port = INVALID_HANDLE_VALUE;
    EXPECT_EQ(t.event.wait(), WAIT_OBJECT_0);
}

#ifndef _WIN32

// Wine's purge takes from a pseudo-terminal what its far end has not read yet.
TEST_F(write_test, purge_after_a_write_takes_nothing_away) {
    for (uint8_t i = 0; i < 100; i++) {
        transfer t;
        t.write(port, {i, 1, 2, 3});
        ASSERT_EQ(t.finish(port), 4U);
        ASSERT_TRUE(com::PurgeComm(port, PURGE_TXCLEAR | PURGE_RXCLEAR));
        ASSERT_EQ(receive(4), (bytes_t{i, 1, 2, 3}));
    }
}

// Wine's write time-out is now and then forgotten.
TEST_F(write_test, write_timeout_ends_it_with_the_bytes_that_went_out) {
    set_timeouts(0, 0, 0, 0, 500);
    const stopwatch watch;
    transfer t;
    t.write(port, flood());
    const DWORD count = t.finish(port);
    EXPECT_TRUE(t.error == 0 || t.error == ERROR_TIMEOUT) << t.error;
    EXPECT_LT(count, flood().size());
    EXPECT_GE(watch.ms(), 480);
    EXPECT_LT(watch.ms(), 8000);
}

#endif

} // namespace
