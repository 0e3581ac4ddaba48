#include "port_fixture.h"

namespace {

using hang_up_test = port_test;

TEST_F(hang_up_test, pending_read_ends_with_broken_pipe) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 4);
    ASSERT_EQ(t.error, ERROR_IO_PENDING);
    line->hang_up();
    EXPECT_EQ(t.finish(port), 0U);
    EXPECT_EQ(t.error, ERROR_BROKEN_PIPE);
}

TEST_F(hang_up_test, read_with_some_bytes_ends_too) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 4);
    send({1, 2});
    EXPECT_TRUE(t.pending_for(100));
    line->hang_up();
    t.finish(port);
    // Wine hands over what had come, and fails the next read.
    EXPECT_TRUE(says_lost(t.error) || (t.error == 0 && t.bytes == bytes_t{1, 2})) << t.error;
    t.read(port, 4);
    t.finish(port);
    EXPECT_TRUE(says_lost(t.error)) << t.error;
}

TEST_F(hang_up_test, later_calls_fail) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 4);
    line->hang_up();
    t.finish(port);
    transfer again;
    again.read(port, 4);
    again.finish(port);
    EXPECT_TRUE(says_lost(again.error)) << again.error;
    transfer out;
    out.write(port, {1});
    out.finish(port);
    EXPECT_NE(out.error, 0U);
    EXPECT_FALSE(com::ClearCommError(port, nullptr, nullptr));
}

TEST_F(hang_up_test, first_write_after_it_fails) {
    line->hang_up();
    transfer out;
    out.write(port, {1, 2, 3});
    out.finish(port);
    EXPECT_NE(out.error, 0U);
}

TEST_F(hang_up_test, first_read_after_it_fails) {
    set_timeouts(0, 0, 0);
    line->hang_up();
    transfer t;
    t.read(port, 1);
    EXPECT_EQ(t.finish(port), 0U);
    EXPECT_TRUE(says_lost(t.error)) << t.error;
}

TEST_F(hang_up_test, pending_write_ends) {
    transfer t;
    t.write(port, bytes_t(24U << 20U, 0x55));
    ASSERT_EQ(t.error, ERROR_IO_PENDING);
    line->hang_up();
    t.finish(port);
    EXPECT_NE(t.error, 0U);
}

TEST_F(hang_up_test, port_can_be_closed_and_opened_again_once_it_is_back) {
    line->hang_up();
    EXPECT_TRUE(com::CloseHandle(port));
    line = nullptr;
    std::string why;
    line = sim_line_open(port_name, &why);
    ASSERT_NE(line, nullptr) << why;
    port = open_path(port_path);
    ASSERT_NE(port, INVALID_HANDLE_VALUE) << com::GetLastError();
    send({0x5A});
    transfer t;
    t.read(port, 1);
    EXPECT_EQ(t.finish(port), 1U);
}

TEST_F(hang_up_test, settings_after_it_are_refused) {
    line->hang_up();
    DCB state{};
    state.BaudRate = 9600;
    state.ByteSize = 8;
    state.XoffChar = 1;
    EXPECT_FALSE(com::SetCommState(port, &state));
}

} // namespace
