// The port's owner and the lease: who may use the port, and what ends a use.
#include "serial/port_lease.h"

#include "sim/line.h"
#include "tests/support/console_capture.h"
#include "toolkit/core/date_time.h"
#include "toolkit/core/worker.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr uint32_t patience = 30000;
constexpr DWORD no_limit = INFINITE;
constexpr const char* port_path = "\\\\.\\COM7";
constexpr const char* absent_path = "\\\\.\\COM444";

/// Waits for `done`, milliseconds of `patience` at most.
template <typename F>
bool wait_for(F done) {
    const int64_t end = time_now_ms() + patience;
    while (!done()) {
        if (time_now_ms() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

class lease : public testing::Test {
  protected:
    void SetUp() override {
        com::fault_clear();
        com::resume_all();
        std::string why;
        line = sim_line_open("COM7", &why);
        ASSERT_NE(line, nullptr) << why;
        port_timing_get() = {};
        port_timing_get().timeouts = {}; // a read ends when it is full
    }
    void TearDown() override {
        port_timing_get() = {};
        com::fault_clear();
        EXPECT_TRUE(wait_for([] { return workers_running() == 0; }));
    }
    /// The open and configured port, taken.
    port_lease open_and_take() {
        EXPECT_EQ(port.open(port_path), RET_OK);
        port_lease mine = port.take(0);
        mine.configure();
        com::fault_clear();
        return mine;
    }
    void send(const std::vector<uint8_t>& bytes) { ASSERT_TRUE(line->write(bytes.data(), bytes.size())); }
    std::vector<uint8_t> receive(std::size_t size) {
        std::vector<uint8_t> got(size);
        std::size_t count = 0;
        while (count < size) {
            const int n = line->read(got.data() + count, size - count, static_cast<int>(patience));
            if (n <= 0) break;
            count += static_cast<std::size_t>(n);
        }
        got.resize(count);
        return got;
    }
    static bool wait_waiting(port_lease& mine, DWORD size) {
        return wait_for([&] { return mine.waiting() == size; });
    }
    /// Starts a worker that takes the port and reads until something ends that; its result is the io_step, and 100
    /// more with an error or with bytes.
    void start_reading() {
        const uint32_t before = com::call_count(com::call::read_file);
        ASSERT_EQ(reader.start({"reader"},
                               [this] {
                                   port_lease mine = port.take(0);
                                   std::array<uint8_t, 8> into{};
                                   const io_result end = mine.read(into, no_limit);
                                   return number(end.step) + (end.error != 0 || end.bytes != 0 ? 100U : 0U);
                               }),
                  RET_OK);
        ASSERT_TRUE(wait_for([before] { return com::call_count(com::call::read_file) > before; }));
    }
    static uint32_t number(io_step step) { return static_cast<uint32_t>(step); }

    std::unique_ptr<sim_line> line;
    com_port port;
    worker reader;
};

TEST_F(lease, an_absent_port_is_tried_101_times_and_says_why) {
    DWORD error = 0;
    EXPECT_EQ(port.open(absent_path, &error), RET_FAIL);
    EXPECT_EQ(error, 2u);
    EXPECT_EQ(com::call_count(com::call::create_file), 101u);
    EXPECT_FALSE(port.is_open());
    EXPECT_FALSE(port.take(0));
}

TEST_F(lease, the_last_attempt_counts) {
    DWORD error = 0;
    com::fault_set(com::call::create_file, 0, 101, 5);
    EXPECT_EQ(port.open(port_path, &error), RET_FAIL);
    EXPECT_EQ(error, 5u);
    com::fault_set(com::call::create_file, 0, 100, 5);
    EXPECT_EQ(port.open(port_path, &error), RET_OK);
    EXPECT_TRUE(port.is_open());
}

TEST_F(lease, a_worker_that_is_to_stop_opens_nothing) {
    DWORD error = 0;
    std::promise<void> asked;
    worker other; // ends before what it uses
    ASSERT_EQ(other.start({"opens"},
                          [&] {
                              asked.get_future().wait();
                              return static_cast<uint32_t>(port.open(port_path, &error));
                          }),
              RET_OK);
    other.request_stop();
    asked.set_value();
    other.join();
    EXPECT_EQ(other.result(), static_cast<uint32_t>(RET_FAIL));
    EXPECT_EQ(error, 995u);
    EXPECT_EQ(com::call_count(com::call::create_file), 0u);
}

TEST_F(lease, opening_again_closes_what_was_open_before) {
    ASSERT_EQ(port.open(port_path), RET_OK);
    ASSERT_EQ(port.open(port_path), RET_OK) << "it is not taken by its own owner";
    EXPECT_EQ(port.open(absent_path), RET_FAIL);
    EXPECT_FALSE(port.is_open());
}

TEST_F(lease, an_open_that_a_close_overtakes_is_dropped) {
    constexpr int rounds = 50;
    for (int i = 0; i < rounds; i++) {
        com::fault_clear();
        com::fault_set(com::call::create_file, 0, 100, 5);
        DWORD error = 0;
        worker other; // ends before what it uses
        ASSERT_EQ(other.start({"opens"}, [&] { return static_cast<uint32_t>(port.open(port_path, &error)); }),
                  RET_OK);
        ASSERT_TRUE(wait_for([] { return com::call_count(com::call::create_file) > 0; }));
        port.close();
        const bool in_time = com::call_count(com::call::create_file) <= 100;
        other.join();
        EXPECT_FALSE(port.is_open()) << "whichever came first";
        EXPECT_TRUE(!in_time || error == 995u) << error;
    }
}

TEST_F(lease, is_empty_when_nothing_is_open_and_does_nothing_then) {
    EXPECT_FALSE(port.take(no_limit)) << "and does not wait";
    port_lease none;
    std::array<uint8_t, 1> byte{};
    const io_result read = none.read(byte, no_limit);
    EXPECT_EQ(read.step, io_step::start);
    EXPECT_EQ(read.error, 6u);
    EXPECT_EQ(none.write(byte).step, io_step::start);
    EXPECT_EQ(none.waiting(), std::nullopt);
    EXPECT_FALSE(none.purge());
    EXPECT_FALSE(none.timeouts().has_value());
    EXPECT_FALSE(none.set_timeouts({}));
    none.clear_errors();
    none.configure();
    none.drain();
    none.close_port();
    none.give_back();
    EXPECT_EQ(com::call_count(com::call::clear_comm_error) + com::call_count(com::call::setup_comm), 0u);
}

TEST_F(lease, reads_and_writes) {
    port_lease mine = open_and_take();
    const std::vector<uint8_t> request(300, 0x5A);
    const io_result written = mine.write(request);
    EXPECT_TRUE(written.ok());
    EXPECT_EQ(written.bytes, 300u);
    EXPECT_EQ(receive(300), request);
    send({1, 2, 3});
    std::array<uint8_t, 3> into{};
    const io_result read = mine.read(into, no_limit);
    EXPECT_TRUE(read.ok());
    EXPECT_EQ(read.bytes, 3u);
    EXPECT_EQ(into, (std::array<uint8_t, 3>{1, 2, 3}));
    EXPECT_EQ(com::call_count(com::call::create_event), 2u) << "each operation has an event of its own";
    EXPECT_LE(com::call_count(com::call::wait_for_single_object), 2u) << "one wait is one call";
    EXPECT_EQ(com::call_count(com::call::get_overlapped_result), 2u);
}

TEST_F(lease, an_observer_sees_what_was_moved_and_goes_with_its_lease) {
    port_lease mine = open_and_take();
    std::vector<std::pair<bool, std::vector<uint8_t>>> seen;
    mine.observe([&seen](bool sent, std::span<const uint8_t> bytes) {
        seen.emplace_back(sent, std::vector<uint8_t>(bytes.begin(), bytes.end()));
    });
    const std::vector<uint8_t> request = {0xF7, 0xF8, 0x03};
    EXPECT_TRUE(mine.write(request).ok());
    EXPECT_EQ(receive(3), request);
    port_lease later;
    later = std::move(mine);
    ASSERT_TRUE(later.set_timeouts({10, 0, patience, 0, 0}));
    send({1, 2});
    ASSERT_TRUE(wait_waiting(later, 2));
    std::array<uint8_t, 8> into{};
    EXPECT_TRUE(later.read(into, no_limit).ok());
    ASSERT_TRUE(later.set_timeouts({0, 0, 1, 0, 0}));
    EXPECT_FALSE(later.read(into, no_limit).ok()) << "nothing came, and nothing is shown";
    const decltype(seen) wanted = {{true, {0xF7, 0xF8, 0x03}}, {false, {1, 2}}};
    EXPECT_EQ(seen, wanted);
    later.give_back();
    port_lease next = port.take(0);
    EXPECT_TRUE(next.write(request).ok());
    EXPECT_EQ(seen.size(), 2u) << "the next holder is not watched";
}

TEST_F(lease, one_thread_may_write_while_another_reads) {
    port_lease mine = open_and_take();
    std::array<uint8_t, 2> into{};
    worker other; // ends before what it uses
    ASSERT_EQ(other.start({"reader"}, [&] { return number(mine.read(into, no_limit).step); }), RET_OK);
    ASSERT_TRUE(wait_for([] { return com::call_count(com::call::read_file) > 0; }));
    EXPECT_TRUE(mine.write(std::vector<uint8_t>{7}).ok());
    EXPECT_EQ(receive(1), std::vector<uint8_t>{7});
    send({8, 9});
    other.join();
    EXPECT_EQ(other.result(), number(io_step::done));
    EXPECT_EQ(into[1], 9);
}

TEST_F(lease, has_one_holder_at_a_time) {
    port_lease mine = open_and_take();
    EXPECT_TRUE(mine);
    EXPECT_FALSE(port.take(0));
    const int64_t start = time_now_ms();
    EXPECT_FALSE(port.take(20));
    EXPECT_GE(time_now_ms() - start, 19);
    mine.give_back();
    EXPECT_FALSE(mine);
    EXPECT_TRUE(port.take(0)) << "and the temporary gives it back";
    mine = port.take(0);
    EXPECT_TRUE(mine);
    port_lease moved = std::move(mine);
    EXPECT_FALSE(port.take(0));
    EXPECT_TRUE(moved.purge());
    moved = port_lease();
    EXPECT_TRUE(port.take(0));
}

TEST_F(lease, who_waits_gets_it_when_the_holder_lets_go) {
    port_lease mine = open_and_take();
    std::promise<void> waiting;
    worker other; // ends before what it uses
    ASSERT_EQ(other.start({"waits"},
                          [&] {
                              waiting.set_value();
                              return port.take(no_limit) ? 1u : 0u;
                          }),
              RET_OK);
    waiting.get_future().wait();
    mine.give_back();
    other.join();
    EXPECT_EQ(other.result(), 1u);
}

TEST_F(lease, a_stop_ends_the_wait_for_it) {
    const port_lease mine = open_and_take();
    worker other; // ends before what it uses
    ASSERT_EQ(other.start({"waits"}, [&] { return port.take(no_limit) ? 1u : 2u; }), RET_OK);
    other.request_stop();
    other.join();
    EXPECT_EQ(other.result(), 2u);
}

TEST_F(lease, a_close_ends_the_wait_for_it) {
    port_lease mine = open_and_take();
    worker other; // ends before what it uses
    ASSERT_EQ(other.start({"waits"}, [&] { return port.take(no_limit) ? 1u : 2u; }), RET_OK);
    mine.close_port();
    other.join();
    EXPECT_EQ(other.result(), 2u);
}

TEST_F(lease, a_stop_ends_a_read_and_leaves_nothing_pending) {
    open_and_take();
    start_reading();
    reader.request_stop();
    EXPECT_EQ(reader.join(), RET_OK);
    EXPECT_EQ(reader.result(), number(io_step::stopped));
    port_lease mine = port.take(0);
    ASSERT_TRUE(mine) << "the reader let go of it";
    send({5, 6});
    EXPECT_TRUE(wait_waiting(mine, 2)) << "nobody reads any more";
    std::array<uint8_t, 2> into{};
    EXPECT_TRUE(mine.read(into, no_limit).ok());
    EXPECT_EQ(into[0], 5);
}

TEST_F(lease, a_worker_that_was_stopped_starts_no_operation) {
    open_and_take();
    start_reading();
    reader.request_stop();
    reader.join();
    com::fault_clear();
    std::promise<void> taken;
    std::promise<void> asked;
    std::vector<io_step> ends;
    worker late; // ends before what it uses
    ASSERT_EQ(late.start({"late"},
                         [&] {
                             port_lease mine = port.take(0);
                             taken.set_value();
                             asked.get_future().wait();
                             std::array<uint8_t, 1> byte{};
                             ends = {mine.read(byte, no_limit).step, mine.write(byte).step};
                             return 0u;
                         }),
              RET_OK);
    taken.get_future().wait();
    late.request_stop();
    asked.set_value();
    late.join();
    EXPECT_EQ(ends, (std::vector<io_step>{io_step::stopped, io_step::stopped}));
    EXPECT_EQ(com::call_count(com::call::read_file) + com::call_count(com::call::write_file), 0u);
}

TEST_F(lease, a_stop_ends_a_wait_that_the_system_does_not_end) {
    port_lease mine = open_and_take();
    // A write that pends and never ends, whatever is cancelled.
    com::fault_set(com::call::write_file, 0, 1, 997);
    worker other; // ends before what it uses
    ASSERT_EQ(other.start({"writes"}, [&] { return number(mine.write(std::vector<uint8_t>{1}).step); }), RET_OK);
    ASSERT_TRUE(wait_for([] { return com::call_count(com::call::wait_for_single_object) > 0; }));
    other.request_stop();
    EXPECT_EQ(other.join(), RET_OK);
    EXPECT_EQ(other.result(), number(io_step::stopped));
}

TEST_F(lease, an_operation_that_never_ends_is_given_up_after_a_second) {
    port_lease mine = open_and_take();
    com::fault_set(com::call::write_file, 0, 1, 997);
    com::fault_set(com::call::get_overlapped_result, 0, 2, 996);
    worker other; // ends before what it uses
    ASSERT_EQ(other.start({"writes"}, [&] { return number(mine.write(std::vector<uint8_t>{1}).step); }), RET_OK);
    ASSERT_TRUE(wait_for([] { return com::call_count(com::call::wait_for_single_object) > 0; }));
    const int64_t start = time_now_ms();
    other.request_stop();
    EXPECT_EQ(other.join(), RET_OK);
    EXPECT_GE(time_now_ms() - start, 999) << "the system had its second";
    EXPECT_EQ(other.result(), number(io_step::stopped));
}

TEST_F(lease, a_close_ends_a_read_and_waits_for_the_holder) {
    open_and_take();
    start_reading();
    const int64_t start = time_now_ms();
    port.close();
    EXPECT_LT(time_now_ms() - start, com_port::close_wait_ms) << "the holder let go when its read ended";
    EXPECT_FALSE(port.is_open());
    reader.join();
    EXPECT_EQ(reader.result(), number(io_step::stopped));
    ASSERT_EQ(port.open(port_path), RET_OK) << "the handle was closed";
}

TEST_F(lease, a_holder_that_does_not_let_go_holds_a_close_up_for_half_a_second) {
    port_lease mine = open_and_take();
    const int64_t start = time_now_ms();
    port.close();
    EXPECT_GE(time_now_ms() - start, com_port::close_wait_ms - 1);
    EXPECT_LT(time_now_ms() - start, patience);
    EXPECT_FALSE(port.is_open());
    EXPECT_FALSE(port.take(0));
    // What the holder still tries reaches nobody.
    com::fault_clear();
    std::array<uint8_t, 1> byte{};
    for (const io_result& end : {mine.read(byte, no_limit), mine.write(byte)}) {
        EXPECT_EQ(end.step, io_step::stopped);
        EXPECT_EQ(end.error, 0u);
        EXPECT_EQ(end.bytes, 0u);
    }
    EXPECT_FALSE(mine.purge());
    EXPECT_EQ(mine.waiting(), std::nullopt);
    EXPECT_EQ(com::call_count(com::call::purge_comm) + com::call_count(com::call::clear_comm_error), 0u);
#ifndef _WIN32 // the compatibility layer that the Windows build is tested under opens a port twice
    com_port other;
    EXPECT_EQ(other.open(port_path), RET_FAIL) << "the handle is still open";
    mine.give_back();
    EXPECT_EQ(other.open(port_path), RET_OK) << "who lets go last closes it";
#endif
}

TEST_F(lease, its_holder_can_close_the_port) {
    port_lease mine = open_and_take();
    const int64_t start = time_now_ms();
    mine.close_port();
    EXPECT_LT(time_now_ms() - start, com_port::close_wait_ms);
    EXPECT_FALSE(mine);
    EXPECT_FALSE(port.is_open());
    EXPECT_FALSE(port.take(0));
    com_port other;
    EXPECT_EQ(other.open(port_path), RET_OK) << "the handle was closed";
    other.close();
    EXPECT_EQ(port.open(port_path), RET_OK);
}

TEST_F(lease, may_outlive_the_ports_owner) {
    port_lease mine;
    {
        com_port gone;
        ASSERT_EQ(gone.open(port_path), RET_OK);
        mine = gone.take(0);
    }
    std::array<uint8_t, 1> byte{};
    EXPECT_EQ(mine.read(byte, no_limit).step, io_step::stopped);
    mine.give_back();
    EXPECT_EQ(port.open(port_path), RET_OK);
}

TEST_F(lease, a_port_that_vanishes_is_no_stop) {
    port_lease mine = open_and_take();
    line->hang_up();
    std::array<uint8_t, 1> byte{};
    const io_result read = mine.read(byte, no_limit);
    EXPECT_TRUE(read.step == io_step::start || read.step == io_step::result);
    EXPECT_TRUE(port_lost_error(read.error)) << read.error;
}

TEST_F(lease, configures_in_four_steps_and_looks_at_no_result) {
    ASSERT_EQ(port.open(port_path), RET_OK);
    port_lease mine = port.take(0);
    for (com::call call :
         {com::call::setup_comm, com::call::set_comm_timeouts, com::call::set_comm_state, com::call::purge_comm})
        com::fault_set(call, 0, 1, 87);
    std::vector<int> steps;
    mine.configure([&](int step) {
        steps.push_back(step);
        EXPECT_EQ(com::call_count(com::call::setup_comm), 1u);
        EXPECT_EQ(com::call_count(com::call::set_comm_timeouts), step >= 1 ? 1u : 0u);
        EXPECT_EQ(com::call_count(com::call::set_comm_state), step >= 2 ? 1u : 0u);
        EXPECT_EQ(com::call_count(com::call::purge_comm), step >= 3 ? 1u : 0u);
    });
    EXPECT_EQ(steps, (std::vector<int>{0, 1, 2, 3}));
}

TEST_F(lease, a_port_gets_the_time_outs_of_its_opening) {
    port_timing_get().timeouts = {10, 20, 30, 40, 50};
    ASSERT_EQ(port.open(port_path), RET_OK);
    port_timing_get().timeouts = {}; // for the ports to come
    port_lease mine = port.take(0);
    mine.configure();
    const auto now = mine.timeouts();
    ASSERT_TRUE(now.has_value());
    EXPECT_EQ(now->ReadIntervalTimeout, 10u);
    EXPECT_EQ(now->ReadTotalTimeoutMultiplier, 20u);
    EXPECT_EQ(now->ReadTotalTimeoutConstant, 30u);
    EXPECT_EQ(now->WriteTotalTimeoutMultiplier, 40u);
    EXPECT_EQ(now->WriteTotalTimeoutConstant, 50u);
    EXPECT_TRUE(mine.set_timeouts({1, 0, 1, 0, 0}));
    EXPECT_EQ(mine.timeouts()->ReadTotalTimeoutConstant, 1u);
    std::array<uint8_t, 1> byte{};
    EXPECT_EQ(mine.read(byte, no_limit).step, io_step::wait) << "they are the port's";
    com::fault_set(com::call::set_comm_timeouts, 0, 1, 87);
    com::fault_set(com::call::get_comm_timeouts, 0, 1, 87);
    EXPECT_FALSE(mine.set_timeouts({}));
    EXPECT_FALSE(mine.timeouts().has_value());
}

TEST_F(lease, the_time_outs_are_those_that_modules_need) {
    const port_timing timing;
    EXPECT_EQ(timing.drain_wait_ms, 5000u);
    EXPECT_EQ(timing.timeouts.ReadIntervalTimeout, 1000u);
    EXPECT_EQ(timing.timeouts.ReadTotalTimeoutMultiplier, 500u);
    EXPECT_EQ(timing.timeouts.ReadTotalTimeoutConstant, 1000u);
    EXPECT_EQ(timing.timeouts.WriteTotalTimeoutMultiplier, 500u);
    EXPECT_EQ(timing.timeouts.WriteTotalTimeoutConstant, 1000u);
}

TEST_F(lease, counts_and_drops_what_waits) {
    port_lease mine = open_and_take();
    send({1, 2, 3});
    ASSERT_TRUE(wait_waiting(mine, 3));
    EXPECT_TRUE(mine.purge());
    EXPECT_EQ(mine.waiting(), 0u);
    com::fault_set(com::call::clear_comm_error, 0, 1, 87);
    EXPECT_EQ(mine.waiting(), std::nullopt);
    com::fault_set(com::call::purge_comm, 0, 1, 87);
    EXPECT_FALSE(mine.purge());
}

TEST_F(lease, drains_one_burst_and_says_what_failed) {
    port_timing_get().timeouts = {100, 0, 100, 0, 0}; // a read ends when nothing more comes
    port_lease mine = open_and_take();
    console_capture console;
    send(std::vector<uint8_t>(40, 0x42));
    ASSERT_TRUE(wait_waiting(mine, 40));
    com::fault_clear();
    mine.drain();
    EXPECT_EQ(mine.waiting(), 0u);
    EXPECT_EQ(com::call_count(com::call::read_file), 1u);
    EXPECT_EQ(console.text(), "");
    send({1});
    ASSERT_TRUE(wait_waiting(mine, 1));
    com::fault_set(com::call::read_file, 0, 1, 87);
    mine.drain();
    EXPECT_EQ(console.text(), "ReadFile failed with error 87\n");
}

// ---- waiting for an opening ----

TEST_F(lease, each_opening_has_its_number) {
    EXPECT_EQ(port.open(port_path), RET_OK);
    EXPECT_EQ(port.wait_opened(0), 1u);
    EXPECT_EQ(port.open(port_path), RET_OK);
    EXPECT_EQ(port.wait_opened(0), 2u) << "of those it missed, the last";
    EXPECT_EQ(port.wait_opened(1), 2u);
}

TEST_F(lease, a_wait_ends_with_the_next_opening) {
    EXPECT_EQ(port.open(port_path), RET_OK);
    std::atomic<bool> waiting = false;
    worker waiter;
    ASSERT_EQ(waiter.start({"waiter"},
                           [&] {
                               waiting = true;
                               return static_cast<uint32_t>(port.wait_opened(1));
                           }),
              RET_OK);
    ASSERT_TRUE(wait_for([&] { return waiting.load(); }));
    port.close();
    EXPECT_EQ(port.open(absent_path), RET_FAIL);
    EXPECT_TRUE(waiter.running()) << "neither a close nor an open that fails ends it";
    EXPECT_EQ(port.open(port_path), RET_OK);
    EXPECT_TRUE(waiter.wait_ended(patience));
    EXPECT_EQ(waiter.result(), 2u);
}

TEST_F(lease, a_port_that_its_holder_closed_is_not_open) {
    port_lease mine = open_and_take();
    mine.close_port();
    worker waiter;
    ASSERT_EQ(waiter.start({"waiter"}, [&] { return static_cast<uint32_t>(port.wait_opened(0)); }), RET_OK);
    waiter.request_stop();
    EXPECT_TRUE(waiter.wait_ended(patience));
    EXPECT_EQ(waiter.result(), 0u) << "a stop ends the wait";
}

} // namespace
