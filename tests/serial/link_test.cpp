// The link as modules need it: every call with its numbers, in order, and what the line itself holds afterwards.
#include "serial/overlapped.h"
#include "serial/port_calls.h"
#include "serial/port_lease.h"
#include "sim/line.h"
#include "tests/support/console_capture.h"
#include "toolkit/core/date_time.h"
#include "toolkit/core/worker.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <string>
#include <thread>
#include <vector>
#ifndef _WIN32
#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>
#endif

using testing::ElementsAre;

namespace {

constexpr int64_t patience = 30000;
constexpr const char* port_path = "\\\\.\\COM7";

template <typename F>
bool wait_for(F done) {
    const int64_t end = time_now_ms() + patience;
    while (!done()) {
        if (time_now_ms() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

class link_test : public testing::Test {
  protected:
    void SetUp() override {
        com::fault_clear();
        com::resume_all();
        line = sim_line_open("COM7");
        ASSERT_NE(line, nullptr);
        port_timing_get() = {};
    }
    void TearDown() override {
        com::watch_calls({});
        com::fault_clear();
        port_timing_get() = {};
    }
    /// Keeps every call from now on.
    void watch() {
        com::watch_calls([this](const std::string& call) {
            const std::lock_guard hold(lock_);
            calls.push_back(call);
        });
    }
    port_lease open_and_take() {
        EXPECT_EQ(owner.open(port_path), RET_OK);
        port_lease port = owner.take(0);
        port.configure();
        return port;
    }
    void send(port_lease& port, DWORD size) {
        const std::vector<uint8_t> bytes(size, 0x42);
        ASSERT_TRUE(line->write(bytes.data(), bytes.size()));
        ASSERT_TRUE(wait_for([&] { return port.waiting() >= size; }));
    }

    std::unique_ptr<sim_line> line;
    com_port owner;
    std::vector<std::string> calls;

  private:
    std::mutex lock_;
};

TEST_F(link_test, a_port_is_opened_and_configured_call_by_call) {
    watch();
    const port_lease port = open_and_take();
    EXPECT_THAT(calls,
                ElementsAre("CreateFileA 3221225472 0 3 1073741824", // read and write, alone, there, overlapped
                            "SetupComm 1024 1024", "SetCommTimeouts 1000 500 1000 500 1000",
                            "SetCommState 9600 8 0 2 0", "PurgeComm 12"));
}

#ifndef _WIN32
TEST_F(link_test, the_line_has_9600_baud_8_bits_no_parity_and_two_stop_bits) {
    const port_lease port = open_and_take();
    const int node = ::open(line->path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_GE(node, 0);
    termios2 now{};
    EXPECT_EQ(ioctl(node, TCGETS2, &now), 0);
    ::close(node);
    EXPECT_EQ(now.c_ospeed, 9600u);
    EXPECT_EQ(now.c_ispeed, 9600u);
    EXPECT_EQ(now.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
    EXPECT_NE(now.c_cflag & CSTOPB, 0u);
    EXPECT_EQ(now.c_cflag & PARENB, 0u);
    EXPECT_EQ(now.c_lflag & (ICANON | ECHO | ISIG), 0u);
    EXPECT_EQ(now.c_iflag & (IXON | IXOFF | ICRNL | ISTRIP), 0u);
    EXPECT_EQ(now.c_oflag & OPOST, 0u);
}
#endif

TEST_F(link_test, a_write_is_waited_for_without_limit_and_a_read_as_long_as_asked) {
    port_lease port = open_and_take();
    com::fault_set(com::call::write_file, 0, 1, 997); // pends, and nobody knows of it
    com::fault_set(com::call::wait_for_single_object, 0, 1, 6);
    watch();
    EXPECT_EQ(port.write(std::vector<uint8_t>(3)).step, io_step::wait);
    ASSERT_GE(calls.size(), 3u);
    EXPECT_EQ(calls[0], "CreateEventA 1 0") << "reset by hand, not set";
    EXPECT_EQ(calls[1], "WriteFile 3");
    EXPECT_EQ(calls[2], "WaitForSingleObject 4294967295");
    calls.clear();
    com::fault_clear();
    com::fault_set(com::call::wait_for_single_object, 0, 1, 258);
    std::array<uint8_t, 65> into{};
    EXPECT_EQ(port.read(into, 4321).step, io_step::wait);
    ASSERT_GE(calls.size(), 3u);
    EXPECT_EQ(calls[0], "CreateEventA 1 0");
    EXPECT_EQ(calls[1], "ReadFile 65");
    EXPECT_EQ(calls[2], "WaitForSingleObject 4321");
    EXPECT_THAT(calls, testing::Contains("CancelIoEx"));
    EXPECT_THAT(calls, testing::Not(testing::Contains("GetOverlappedResult 1"))) << "results are not waited for";
}

// With the system's own pauses a hundred attempts take a millisecond; the best of some rounds counts on a busy
// machine.
TEST_F(link_test, there_is_no_pause_between_the_attempts_to_open) {
    constexpr int rounds = 30;
    constexpr int64_t less_than_a_pause_each = 90;
    int64_t best = patience;
    for (int i = 0; i < rounds && best >= less_than_a_pause_each; i++) {
        com::fault_clear();
        com::fault_set(com::call::create_file, 0, 101, 5);
        const int64_t start = time_now_ms();
        EXPECT_EQ(owner.open(port_path), RET_FAIL);
        best = std::min(best, time_now_ms() - start);
    }
    EXPECT_LT(best, less_than_a_pause_each);
}

#ifndef _WIN32 // behind the layer that the Windows build is tested under, the line takes whatever is written
TEST_F(link_test, a_write_that_stores_less_than_it_was_given_has_failed) {
    port_timing_get().timeouts = {0, 0, 0, 0, 50};
    port_lease port = open_and_take();
    const io_result written = port.write(std::vector<uint8_t>(1 << 20)); // nobody reads at the far end
    EXPECT_EQ(written.step, io_step::result);
    EXPECT_LT(written.bytes, 1u << 20);
}
#endif

// A wait that ends before its operation does: the operation must not go on into memory that was freed.
TEST_F(link_test, an_incomplete_operation_is_cancelled_and_reaped) {
    port_timing_get().timeouts = {};
    DWORD error = 0;
    owned_handle handle(port_handle_open(port_path, &error));
    ASSERT_TRUE(handle.valid());
    port_handle_configure(handle.get(), {}, {});
    com::fault_clear();
    owned_handle event(make_event());
    const io_port raw{handle.get(), {}};
    std::array<uint8_t, 8> into{};
    io_result read;
    std::thread reader([&] { read = overlapped_read_with(raw, event.get(), into, INFINITE); });
    ASSERT_TRUE(wait_for([] { return com::call_count(com::call::wait_for_single_object) > 0; }));
    com::SetEvent(event.get());
    reader.join();
    EXPECT_EQ(read.step, io_step::result);
    EXPECT_EQ(read.error, 996u);
    const std::array<uint8_t, 2> bytes = {1, 2};
    ASSERT_TRUE(line->write(bytes.data(), bytes.size()));
    EXPECT_TRUE(wait_for([&] { return port_handle_waiting(handle.get()) == 2u; })) << "nobody reads any more";
}

TEST_F(link_test, a_read_that_the_system_calls_timed_out_is_a_failed_wait) {
    port_lease port = open_and_take();
    std::array<uint8_t, 8> into{};
    for (const com::call call : {com::call::read_file, com::call::get_overlapped_result}) {
        send(port, 8);
        com::fault_set(call, 0, 1, 1460);
        const io_result read = port.read(into, 10000);
        EXPECT_EQ(read.step, io_step::wait);
        EXPECT_EQ(read.error, 1460u);
        com::fault_clear();
        port.purge();
    }
}

TEST_F(link_test, a_drain_reads_256_bytes_at_most_and_waits_five_seconds) {
    port_lease port = open_and_take();
    port.set_timeouts({10, 0, 10, 0, 0});
    send(port, 3);
    watch();
    com::fault_set(com::call::read_file, 0, 1, 997);
    com::fault_set(com::call::wait_for_single_object, 0, 1, 258);
    console_capture console;
    port.drain();
    ASSERT_GE(calls.size(), 4u);
    EXPECT_EQ(calls[0], "CreateEventA 1 0");
    EXPECT_EQ(calls[1], "ClearCommError");
    EXPECT_EQ(calls[2], "ReadFile 256");
    EXPECT_EQ(calls[3], "WaitForSingleObject 5000");
    EXPECT_THAT(console.text(), testing::StartsWith("WaitForSingleObject failed with error "));
}

// What waited is gone when the drain reads.
#ifndef _WIN32 // that layer ends an empty read as a failed result, which is said
TEST_F(link_test, a_drain_that_reads_nothing_ends_without_a_word) {
    port_lease port = open_and_take();
    port.set_timeouts({10, 0, 10, 0, 0});
    send(port, 3);
    console_capture console;
    com::watch_calls([&](const std::string& call) {
        calls.push_back(call);
        if (call == "ReadFile 256") port.purge();
    });
    port.drain();
    com::watch_calls({});
    EXPECT_EQ(std::ranges::count(calls, std::string("ReadFile 256")), 1);
    EXPECT_EQ(calls.back(), "ClearCommError") << "it looked once more";
    EXPECT_EQ(console.text(), "");
}
#endif

TEST_F(link_test, workers_ask_for_the_usual_priority_and_stack) {
    EXPECT_EQ(worker_plan().priority, 4u);
    EXPECT_EQ(worker_plan().stack_bytes, 4096u);
}

} // namespace
