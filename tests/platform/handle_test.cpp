// Events, and handles that are not what they should be.
#include "port_fixture.h"

#include <atomic>
#include <thread>

namespace {

using handle_test = port_test;

HANDLE made_up() { return reinterpret_cast<HANDLE>(static_cast<uintptr_t>(0x7FFFFFF0)); }

TEST(event_test, keeps_the_state_it_was_made_with) {
    const owned_event set(true, true);
    const owned_event clear(true, false);
    EXPECT_EQ(set.wait(0), WAIT_OBJECT_0);
    EXPECT_EQ(set.wait(0), WAIT_OBJECT_0) << "a manual-reset event stays set";
    EXPECT_EQ(clear.wait(0), WAIT_TIMEOUT);
    const stopwatch watch;
    EXPECT_EQ(clear.wait(100), WAIT_TIMEOUT);
    EXPECT_GE(watch.ms(), 80);
}

TEST(event_test, automatic_one_lets_one_wait_through) {
    const owned_event once(false, true);
    EXPECT_EQ(once.wait(0), WAIT_OBJECT_0);
    EXPECT_EQ(once.wait(0), WAIT_TIMEOUT);
}

TEST(event_test, is_set_and_reset_by_hand) {
    const owned_event event(true, false);
    EXPECT_TRUE(com::SetEvent(event.handle()));
    EXPECT_TRUE(com::SetEvent(event.handle()));
    EXPECT_EQ(event.wait(0), WAIT_OBJECT_0);
    EXPECT_TRUE(com::ResetEvent(event.handle()));
    EXPECT_EQ(event.wait(0), WAIT_TIMEOUT);
    std::thread setter([&] { com::SetEvent(event.handle()); });
    EXPECT_EQ(event.wait(), WAIT_OBJECT_0) << "a wait under way is ended";
    setter.join();
}

TEST(event_test, closed_twice_is_an_invalid_handle) {
    const HANDLE event = com::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    ASSERT_NE(event, nullptr);
    EXPECT_TRUE(com::CloseHandle(event));
    EXPECT_FALSE(com::CloseHandle(event));
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(com::WaitForSingleObject(event, 0), WAIT_FAILED);
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(event_test, made_up_handles_are_refused) {
    EXPECT_EQ(com::WaitForSingleObject(made_up(), 0), WAIT_FAILED);
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
    for (const HANDLE bad : {made_up(), static_cast<HANDLE>(nullptr)}) {
        EXPECT_FALSE(com::SetEvent(bad));
        EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
        EXPECT_FALSE(com::ResetEvent(bad));
        EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
        EXPECT_FALSE(com::CloseHandle(bad));
    }
}

TEST(port_handle_test, every_port_call_refuses_what_is_no_port) {
    for (HANDLE bad : {made_up(), static_cast<HANDLE>(nullptr), INVALID_HANDLE_VALUE}) {
        DCB state{};
        state.BaudRate = 9600;
        state.ByteSize = 8;
        COMMTIMEOUTS t{};
        COMSTAT status{};
        DWORD errors = 0;
        transfer move;
        EXPECT_FALSE(com::SetupComm(bad, 1024, 1024));
        EXPECT_FALSE(com::SetCommState(bad, &state));
        EXPECT_FALSE(com::SetCommTimeouts(bad, &t));
        EXPECT_FALSE(com::GetCommTimeouts(bad, &t));
        EXPECT_FALSE(com::PurgeComm(bad, PURGE_RXCLEAR));
        EXPECT_FALSE(com::ClearCommError(bad, &errors, &status));
        move.read(bad, 1);
        EXPECT_EQ(move.error, ERROR_INVALID_HANDLE);
        move.write(bad, {1});
        EXPECT_EQ(move.error, ERROR_INVALID_HANDLE);
    }
}

TEST_F(handle_test, port_closed_twice_is_an_invalid_handle) {
    const HANDLE old = port;
    port = INVALID_HANDLE_VALUE;
    EXPECT_TRUE(com::CloseHandle(old));
    EXPECT_FALSE(com::CloseHandle(old));
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
    transfer t;
    t.read(old, 1);
    EXPECT_EQ(t.error, ERROR_INVALID_HANDLE);
}

TEST_F(handle_test, read_with_a_closed_event_is_refused) {
    uint8_t byte = 0;
    OVERLAPPED record{};
    record.hEvent = com::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    com::CloseHandle(record.hEvent);
    EXPECT_FALSE(com::ReadFile(port, &byte, 1, nullptr, &record));
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
}

#ifndef _WIN32 // undefined there
TEST_F(handle_test, a_port_is_no_event) {
    EXPECT_FALSE(com::SetEvent(port));
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(com::ResetEvent(port));
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
}
#endif

TEST_F(handle_test, starting_an_operation_resets_its_event) {
    set_timeouts(0, 0, 0);
    transfer t;
    send({1});
    t.read(port, 1);
    t.finish(port);
    EXPECT_EQ(t.event.wait(0), WAIT_OBJECT_0);
    t.read(port, 1);
    EXPECT_TRUE(t.pending_for(0));
    send({2});
    EXPECT_EQ(t.finish(port), 1U);
}

TEST_F(handle_test, operation_without_an_event_is_waited_for_by_its_result) {
    set_timeouts(0, 0, 0);
    uint8_t byte = 0;
    OVERLAPPED record{};
    EXPECT_FALSE(com::ReadFile(port, &byte, 1, nullptr, &record));
    EXPECT_EQ(com::GetLastError(), ERROR_IO_PENDING);
    std::thread sender([&] { send({0x66}); });
    DWORD count = 0;
    EXPECT_TRUE(com::GetOverlappedResult(port, &record, &count, TRUE));
    sender.join();
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(byte, 0x66);
}

TEST_F(handle_test, several_threads_wait_for_one_event) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 1);
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 4; i++) waiters.emplace_back([&] { woken += t.event.wait() == WAIT_OBJECT_0 ? 1 : 0; });
    send({1});
    for (std::thread& w : waiters) w.join();
    EXPECT_EQ(woken, 4);
    EXPECT_EQ(t.finish(port), 1U);
}

TEST_F(handle_test, port_is_closed_under_readers_without_harm) {
    set_timeouts(0, 0, 0);
    for (int round = 0; round < 20; round++) {
        std::vector<std::thread> readers;
        std::atomic<int> ended{0};
        const HANDLE shared = port;
        for (int i = 0; i < 3; i++)
            readers.emplace_back([&, shared] {
                transfer t;
                t.read(shared, 8);
                if (t.error == ERROR_IO_PENDING) t.finish(shared);
                ended++;
            });
        com::CloseHandle(shared);
        for (std::thread& r : readers) r.join();
        EXPECT_EQ(ended, 3);
        port = open_path(port_path);
        ASSERT_NE(port, INVALID_HANDLE_VALUE) << com::GetLastError();
        set_timeouts(0, 0, 0);
    }
}

#ifndef _WIN32 // undefined there

TEST_F(handle_test, missing_records_and_buffers_are_refused) {
    uint8_t byte = 0;
    DWORD count = 0;
    OVERLAPPED record{};
    EXPECT_FALSE(com::ReadFile(port, &byte, 1, &count, nullptr)) << "an overlapped handle needs a record";
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(com::ReadFile(port, nullptr, 1, &count, &record));
    EXPECT_FALSE(com::WriteFile(port, nullptr, 1, &count, &record));
    EXPECT_FALSE(com::GetOverlappedResult(port, nullptr, &count, FALSE));
    EXPECT_EQ(com::WaitForSingleObject(INVALID_HANDLE_VALUE, 0), WAIT_FAILED);
    EXPECT_FALSE(com::CancelIoEx(INVALID_HANDLE_VALUE, nullptr));
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(handle_test, a_record_that_pends_counts_nothing_yet) {
    set_timeouts(0, 0, 0);
    uint8_t byte = 0;
    OVERLAPPED record{};
    record.InternalHigh = 77;
    EXPECT_FALSE(com::ReadFile(port, &byte, 1, nullptr, &record));
    EXPECT_EQ(record.InternalHigh, 0U);
    com::CancelIoEx(port, &record);
}

TEST(event_test, handle_numbers_are_never_used_again) {
    const HANDLE first = com::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(first) % 4, 0U) << "the low bits are nobody's";
    com::CloseHandle(first);
    for (int i = 0; i < 100; i++) {
        const owned_event next;
        EXPECT_NE(next.handle(), first);
    }
}

#endif

} // namespace
