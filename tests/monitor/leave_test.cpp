// Entering, leaving, and every way in which the port goes away.
#include "tests/monitor/traffic_stage.h"

#include <mutex>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr uint32_t promptly_ms = 10000; ///< on a busy machine; what would hang waits for ever

class visits : public traffic_stage {
  protected:
    /// A read session that waits for its reply.
    void start_endless_read() {
        session_timing_get().read_wait_ms = 600000;
        module->plan({.what = sim::fault::silent});
        const uint32_t before = com::call_count(com::call::read_file);
        ASSERT_EQ(start(session_kind::read), RET_OK);
        ASSERT_TRUE(wait([this, before] {
            return module->count().reads > 0 && com::call_count(com::call::read_file) > before;
        }));
    }
};

TEST_F(visits, the_module_hears_transfer_and_config) {
    EXPECT_EQ(page->link(), traffic_link::none);
    EXPECT_EQ(module->mode(), "config") << "from the connect";
    open();
    EXPECT_EQ(page->link(), traffic_link::open);
    EXPECT_GT(refreshes, 0) << "the page is shown the link";
    close();
    ASSERT_TRUE(wait([this] { return module->mode() == "config"; }));
    EXPECT_EQ(page->link(), traffic_link::none);
    EXPECT_FALSE(page->leaving());
    const std::vector<uint8_t> all = module->received();
    const std::string text(all.begin(), all.end());
    EXPECT_EQ(text, std::string("config\0transfer\0config\0", 23));
    EXPECT_EQ(console->text(), "");
}

TEST_F(visits, no_session_starts_meanwhile) {
    session_timing_get().start_wait_ms = 20;
    open();
    EXPECT_EQ(start(session_kind::read), RET_FAIL);
    EXPECT_EQ(start(session_kind::write), RET_FAIL);
    EXPECT_FALSE(port_is_free());
    close();
    EXPECT_TRUE(port_is_free());
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events.back(), "finished");
}

TEST_F(visits, the_session_before_is_waited_for) {
    start_endless_read();
    ASSERT_EQ(begin(), 0);
    EXPECT_EQ(page->link(), traffic_link::waiting);
    ASSERT_EQ(page->request_send({.identifier = 1}), RET_OK) << "goes out when the port is there";
    idle_dispatch();
    EXPECT_EQ(page->link(), traffic_link::waiting);
    EXPECT_EQ(module->count().mode_texts, 1u);
    module->babble(std::vector<uint8_t>(146, 0));
    ASSERT_TRUE(module_gets({0xAA, 0x05, 0x04, 0x01, 0x00, 0x01, 0x00, 0x00, 0x00}));
    EXPECT_EQ(module->mode(), "transfer");
}

TEST_F(visits, without_an_event_there_is_no_receiving) {
    start_endless_read(); // so that nobody else asks for one
    com::fault_set(com::call::create_event, 0, 1, 8);
    ASSERT_EQ(begin(), 0);
    ASSERT_TRUE(wait([] { return com::call_count(com::call::create_event) > 0; }));
    module->babble(std::vector<uint8_t>(146, 0));
    ASSERT_TRUE(wait_link(traffic_link::lost));
    EXPECT_EQ(console->text(), "Create read event failed\n");
    close();
    ASSERT_TRUE(wait([this] { return module->mode() == "config"; }));
}

TEST_F(visits, one_that_waits_for_a_session_can_be_left) {
    start_endless_read();
    ASSERT_EQ(begin(), 0);
    close();
    EXPECT_EQ(module->count().mode_texts, 1u) << "nothing was sent, so nothing is taken back";
    EXPECT_TRUE(session().running());
}

TEST_F(visits, leaving_ends_the_read_and_restores_the_time_outs_before_config) {
    std::mutex lock;
    std::vector<std::string> calls;
    open();
    ASSERT_TRUE(wait([] { return com::call_count(com::call::read_file) > 0; }));
    com::watch_calls([&](const std::string& call) {
        const std::lock_guard hold(lock);
        if (call.starts_with("SetCommTimeouts") || call.starts_with("WriteFile")) calls.push_back(call);
    });
    const int64_t begin = time_now_ms();
    close();
    EXPECT_LT(time_now_ms() - begin, promptly_ms);
    com::watch_calls({});
    EXPECT_THAT(calls, ElementsAre("SetCommTimeouts 200 0 600 500 1000", "WriteFile 7"));
    port_lease port = session().take_port(0);
    ASSERT_TRUE(port);
    EXPECT_EQ(port.timeouts()->ReadIntervalTimeout, 200u);
    EXPECT_EQ(port.timeouts()->ReadTotalTimeoutMultiplier, 0u);
    EXPECT_EQ(port.timeouts()->ReadTotalTimeoutConstant, 600u);
}

TEST_F(visits, leaving_does_not_wait_and_refreshes_nobody) {
    open();
    while (idle_dispatch() > 0) {
    }
    refreshes = 0;
    close();
    while (idle_dispatch() > 0) {
    }
    EXPECT_EQ(refreshes, 0);
    EXPECT_EQ(page->run(), traffic_run::pause);
}

TEST_F(visits, a_send_that_is_under_way_goes_before_config) {
    open();
    ASSERT_EQ(page->request_send({.identifier = 1}), RET_OK);
    close();
    EXPECT_TRUE(page->send_done());
    ASSERT_TRUE(wait([this] { return module->mode() == "config"; }));
    const std::vector<uint8_t> all = module->received();
    const std::string text(all.begin(), all.end());
    EXPECT_EQ(text.substr(16), std::string("\xAA\x05\x04\x01\0\x01\0\0\0config\0", 16));
}

TEST_F(visits, what_the_module_still_says_is_no_reply_for_a_session) {
    open();
    page->set_run(traffic_run::pause);
    std::vector<uint8_t> much;
    for (int i = 0; i < 90; ++i) {
        const auto one = frame(1);
        much.insert(much.end(), one.begin(), one.end());
    }
    send(much);
    close();
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events.back(), "finished");
}

TEST_F(visits, leaving_twice_or_without_a_start_is_refused) {
    EXPECT_EQ(page->leave(), RET_FAIL);
    open();
    EXPECT_EQ(page->leave(), RET_OK);
    EXPECT_EQ(page->leave(), RET_FAIL);
    ASSERT_TRUE(wait([this] { return !page->leaving(); }));
    EXPECT_EQ(page->leave(), RET_FAIL);
}

TEST_F(visits, a_hundred_of_them) {
    session_timing_get().quiet_ms = 1;
    for (int i = 0; i < 100; ++i) {
        open();
        close();
        ASSERT_TRUE(wait([this] { return module->mode() == "config"; }));
    }
    EXPECT_EQ(module->count().mode_texts, 201u);
    EXPECT_TRUE(port_is_free());
    EXPECT_TRUE(wait([] { return workers_running() == 1; })) << "the send thread stays";
}

TEST_F(visits, a_start_waits_for_the_leave_before) {
    open();
    EXPECT_EQ(page->leave(), RET_OK);
    session_timing_get().start_wait_ms = session_patience_ms;
    ASSERT_EQ(begin(), 0);
    ASSERT_TRUE(wait([this] { return module->count().mode_texts == 4; }));
    EXPECT_EQ(module->mode(), "transfer");
}

// ---- the port goes away

TEST_F(visits, a_module_that_vanishes_ends_receiving_with_one_line) {
    open();
    ASSERT_TRUE(wait([] { return com::call_count(com::call::read_file) > 0; }));
    refreshes = 0;
    module->hang_up();
    ASSERT_TRUE(wait_link(traffic_link::lost));
    ASSERT_TRUE(wait([this] { return refreshes > 0; }));
    ASSERT_TRUE(wait([] { return workers_running() == 1; })) << "it does not try again";
    const std::string said = console->text();
    EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
    EXPECT_TRUE(said == "Get overlapped result for async read failed\n" ||
                said.starts_with("Async read operation failed with error code: "))
        << said;
}

TEST_F(visits, a_module_that_vanishes_in_a_pause_is_noticed) {
    open(traffic_run::pause); // the write that asked for the mode is through too: it would have a line of its own
    module->hang_up();
    ASSERT_TRUE(wait_link(traffic_link::lost));
    page->set_run(traffic_run::run);
    ASSERT_TRUE(wait([] { return workers_running() == 1; })) << "it does not try again";
    const std::string said = console->text();
    EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
    EXPECT_TRUE(said.starts_with("The port is gone, receiving has ended: error code ")) << said;
    close();
    EXPECT_TRUE(port_is_free());
}

TEST_F(visits, sending_to_a_module_that_has_vanished_fails_and_is_done) {
    open();
    module->hang_up();
    ASSERT_TRUE(wait_link(traffic_link::lost));
    console->take();
    ASSERT_EQ(page->request_send({.identifier = 1}), RET_OK);
    ASSERT_TRUE(wait_done());
    const std::string said = console->text();
    EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
    EXPECT_EQ(page->counters().sends_failed, 1u);
    EXPECT_EQ(page->counters().frames_sent, 0u);
}

TEST_F(visits, a_module_that_has_vanished_can_be_left) {
    open();
    module->hang_up();
    ASSERT_TRUE(wait_link(traffic_link::lost));
    close();
    EXPECT_EQ(page->link(), traffic_link::none);
    EXPECT_TRUE(port_is_free());
}

TEST_F(visits, a_module_that_vanishes_while_it_is_left) {
    open();
    bool left = false;
    ASSERT_EQ(page->leave([&left] { left = true; }), RET_OK);
    module->hang_up();
    ASSERT_TRUE(wait([&left] { return left; }));
    EXPECT_TRUE(port_is_free());
}

TEST_F(visits, a_module_that_vanished_is_there_again_after_a_connect) {
    open();
    module->hang_up();
    ASSERT_TRUE(wait_link(traffic_link::lost));
    close();
    ASSERT_TRUE(module->plug_in());
    connect();
    open();
    send(frame(9));
    ASSERT_TRUE(wait_received(1));
    EXPECT_THAT(identifiers(), ElementsAre(9));
}

TEST_F(visits, closing_the_port_ends_receiving_promptly) {
    open();
    ASSERT_TRUE(wait([] { return com::call_count(com::call::read_file) > 0; }));
    const int64_t begin = time_now_ms();
    session().give_up();
    EXPECT_LT(time_now_ms() - begin, promptly_ms);
    ASSERT_TRUE(wait_link(traffic_link::closed));
    EXPECT_EQ(console->text(), "");
    ASSERT_EQ(page->request_send({.identifier = 1}), RET_OK);
    ASSERT_TRUE(wait_done());
    EXPECT_EQ(page->counters().sends_failed, 1u);
    close();
    EXPECT_EQ(page->link(), traffic_link::none);
}

TEST_F(visits, without_an_open_port_there_is_no_traffic) {
    session().give_up();
    ASSERT_EQ(begin(), 0);
    ASSERT_TRUE(wait_link(traffic_link::closed));
    close();
}

// ---- the end of the program

TEST_F(visits, an_end_is_prompt_whatever_is_under_way) {
    const int64_t from = time_now_ms();
    const auto ends = [this] {
        page.reset();
        EXPECT_EQ(workers_running(), 0u);
        EXPECT_TRUE(port_is_free());
        make();
    };
    ends();
    open();
    ends(); // receiving
    ASSERT_EQ(begin(traffic_run::pause), 0);
    ends(); // entering
    open();
    ASSERT_EQ(page->request_send({.identifier = 1}), RET_OK);
    ends(); // sending
    open();
    ASSERT_EQ(page->leave(), RET_OK);
    ends();                       // leaving
    while (idle_dispatch() > 0) { // what was posted does nothing any more
    }
    EXPECT_LT(time_now_ms() - from, promptly_ms);
}

TEST_F(visits, workers_end_when_all_are_asked_to) {
    open();
    EXPECT_EQ(workers_stop_all(session_patience_ms), 0u);
}

} // namespace
