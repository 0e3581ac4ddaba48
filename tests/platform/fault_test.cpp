// The fault switch and the last stop.
#include "port_fixture.h"

#include <atomic>
#include <functional>
#include <thread>

namespace {

class fault_test : public port_test {
  protected:
    DCB state{};
    COMMTIMEOUTS timeouts{};
    char names[65535] = {};
    transfer move;
    owned_event set{true, true};
};

TEST_F(fault_test, each_call_fails_as_asked_and_then_goes_on) {
    state.BaudRate = 9600;
    state.ByteSize = 8;
    state.XoffChar = 1;
    struct row {
        com::call which;
        const char* name;
        std::function<bool()> good;
    };
    const row rows[] = {
        {com::call::setup_comm, "SetupComm", [&] { return com::SetupComm(port, 1024, 1024) != 0; }},
        {com::call::set_comm_state, "SetCommState", [&] { return com::SetCommState(port, &state) != 0; }},
        {com::call::set_comm_timeouts, "SetCommTimeouts",
         [&] { return com::SetCommTimeouts(port, &timeouts) != 0; }},
        {com::call::get_comm_timeouts, "GetCommTimeouts",
         [&] { return com::GetCommTimeouts(port, &timeouts) != 0; }},
        {com::call::purge_comm, "PurgeComm", [&] { return com::PurgeComm(port, PURGE_RXCLEAR) != 0; }},
        {com::call::clear_comm_error, "ClearCommError",
         [&] { return com::ClearCommError(port, nullptr, nullptr) != 0; }},
        {com::call::read_file, "ReadFile",
         [&] {
             move.read(port, 0);
             return move.error == 0 || move.error == ERROR_IO_PENDING;
         }},
        {com::call::write_file, "WriteFile",
         [&] {
             move.write(port, {1});
             return move.error == 0 || move.error == ERROR_IO_PENDING;
         }},
        {com::call::get_overlapped_result, "GetOverlappedResult",
         [&] {
             DWORD count = 0;
             return com::GetOverlappedResult(port, &move.record, &count, TRUE) != 0;
         }},
        {com::call::wait_for_single_object, "WaitForSingleObject", [&] { return set.wait(0) == WAIT_OBJECT_0; }},
        {com::call::query_dos_device, "QueryDosDeviceA",
         [&] { return com::QueryDosDeviceA(nullptr, names, sizeof names) != 0; }},
    };
    for (const row& r : rows) {
        com::fault_clear();
        com::fault_set(r.which, 1, 2, 1234);
        EXPECT_TRUE(r.good()) << r.name;
        for (int i = 0; i < 2; i++) {
            com::SetLastError(0);
            EXPECT_FALSE(r.good()) << r.name;
            EXPECT_EQ(com::GetLastError(), 1234U) << r.name;
        }
        EXPECT_TRUE(r.good()) << r.name;
        EXPECT_EQ(com::call_count(r.which), 4U) << r.name;
        com::fault_clear();
        EXPECT_EQ(com::call_count(r.which), 0U) << r.name;
        EXPECT_TRUE(com::fault_parse((std::string(r.name) + ":0:1:31").c_str())) << r.name;
        EXPECT_FALSE(r.good()) << r.name;
        EXPECT_TRUE(r.good()) << r.name;
    }
}

TEST_F(fault_test, opening_fails_as_asked) {
    com::CloseHandle(port);
    com::fault_clear();
    com::fault_set(com::call::create_file, 0, 1, ERROR_ACCESS_DENIED);
    port = open_path(port_path);
    EXPECT_EQ(port, INVALID_HANDLE_VALUE);
    EXPECT_EQ(com::GetLastError(), ERROR_ACCESS_DENIED);
    port = open_path(port_path);
    EXPECT_NE(port, INVALID_HANDLE_VALUE);
    EXPECT_EQ(com::call_count(com::call::create_file), 2U);
}

TEST_F(fault_test, cancelling_fails_as_asked_and_what_pends_goes_on) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 1);
    ASSERT_EQ(t.error, ERROR_IO_PENDING);
    EXPECT_TRUE(com::fault_parse("CancelIoEx:0:2:6"));
    EXPECT_FALSE(com::CancelIoEx(port, nullptr));
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
    com::abort_all();
    com::resume_all();
    EXPECT_EQ(com::call_count(com::call::cancel_io), 2U);
    send({7});
    EXPECT_EQ(t.finish(port), 1U);
}

TEST_F(fault_test, event_is_not_made_as_asked) {
    EXPECT_TRUE(com::fault_parse("CreateEventA:0:1:8"));
    EXPECT_EQ(com::CreateEventA(nullptr, TRUE, FALSE, nullptr), nullptr);
    EXPECT_EQ(com::GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(fault_test, wait_fails_or_times_out) {
    com::fault_set(com::call::wait_for_single_object, 0, 1, ERROR_INVALID_HANDLE);
    com::fault_set(com::call::wait_for_single_object, 1, 1, WAIT_TIMEOUT);
    EXPECT_EQ(set.wait(0), WAIT_FAILED);
    EXPECT_EQ(com::GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(set.wait(0), WAIT_TIMEOUT);
    EXPECT_EQ(set.wait(0), WAIT_OBJECT_0);
}

TEST_F(fault_test, faults_count_from_the_moment_they_are_set) {
    EXPECT_EQ(set.wait(0), WAIT_OBJECT_0);
    EXPECT_EQ(set.wait(0), WAIT_OBJECT_0);
    com::fault_set(com::call::wait_for_single_object, 0, 0xFFFFFFFF, 6);
    EXPECT_EQ(set.wait(0), WAIT_FAILED);
    EXPECT_EQ(set.wait(0), WAIT_FAILED);
    EXPECT_EQ(com::call_count(com::call::wait_for_single_object), 4U);
}

TEST_F(fault_test, text_with_a_slip_sets_nothing) {
    for (const char* bad :
         {"ReadFile", "ReadFile:0:1", "ReadFile:0:1:", "ReadFile:0:1:5:6", "ReadFile:-1:1:5", "ReadFile: 0:1:5",
          "readfile:0:1:5", "CloseHandle:0:1:5", ":0:1:5", "ReadFile:0:1:5x", "ReadFile:99999999999:1:5",
          "ReadFile:0:1:hangs", "WaitForSingleObject:0:1:6;nonsense", "ReadFile:::"})
        EXPECT_FALSE(com::fault_parse(bad)) << bad;
    EXPECT_FALSE(com::fault_parse(nullptr));
    EXPECT_EQ(set.wait(0), WAIT_OBJECT_0);
    EXPECT_TRUE(com::fault_parse(""));
    EXPECT_TRUE(com::fault_parse("ReadFile:0:1:hang"));
    EXPECT_TRUE(com::fault_parse("WaitForSingleObject:0:1:6;"));
    EXPECT_EQ(set.wait(0), WAIT_FAILED);
}

TEST_F(fault_test, abort_ends_what_pends_and_refuses_what_comes) {
    set_timeouts(0, 0, 0);
    transfer t;
    t.read(port, 1);
    ASSERT_EQ(t.error, ERROR_IO_PENDING);
    com::abort_all();
    t.finish(port);
    EXPECT_EQ(t.error, ERROR_OPERATION_ABORTED);
    t.read(port, 1);
    EXPECT_EQ(t.error, ERROR_OPERATION_ABORTED);
    t.write(port, {1});
    EXPECT_EQ(t.error, ERROR_OPERATION_ABORTED);
    com::resume_all();
    t.write(port, {3});
    EXPECT_EQ(t.finish(port), 1U);
    EXPECT_EQ(receive(1), (bytes_t{3}));
}

TEST_F(fault_test, abort_leaves_no_reader_behind) {
    set_timeouts(0, 0, 0);
    for (int round = 0; round < 20; round++) {
        std::atomic<int> running{0};
        std::vector<std::thread> readers;
        for (int i = 0; i < 3; i++)
            readers.emplace_back([&] {
                running++;
                for (DWORD error = 0; error != ERROR_OPERATION_ABORTED;) {
                    transfer t;
                    t.read(port, 1);
                    t.finish(port);
                    error = t.error;
                }
            });
        while (running < 3) std::this_thread::yield();
        com::abort_all();
        for (std::thread& r : readers) r.join();
        com::resume_all();
    }
}

} // namespace
