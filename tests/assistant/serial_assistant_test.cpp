// The assistant's threads at the port of a connected module in transfer mode.
#include "assistant/serial_assistant.h"

#include "serial/mode_text.h"
#include "tests/support/session_fixture.h"
#include "toolkit/core/hex_text.h"
#include "toolkit/core/thread.h"

#include <algorithm>
#include <atomic>
#include <optional>

namespace {

using bytes = std::vector<uint8_t>;

const bytes good = {0xAB, 0x0A, 0x03, 0x03, 0x88, 0x78, 0x56, 0x34, 0x12, 0xDE, 0xAD, 0x01, 0x23, 0x3E};

class assistant_at_port : public session_test {
  protected:
    void SetUp() override {
        session_test::SetUp();
        usual_ =
            std::exchange(assistant_timing_get(), {.after_read_ms = 5, .look_again_ms = 2, .port_wait_ms = 200});
        make();
    }
    void TearDown() override {
        one.reset();
        assistant_timing_get() = usual_;
        session_test::TearDown();
    }
    void make() { one = std::make_unique<serial_assistant>((folder / "serial_send.json").string()); }
    /// A module in transfer mode whose frames carry a check value, and the assistant at its port.
    void open() {
        plug("VKT610B");
        sim::traffic_plan plan;
        plan.check = true;
        module->set_traffic(plan);
        connect();
        transfer();
        ASSERT_EQ(begin(), RET_OK);
    }
    void transfer() {
        {
            port_lease port = session().take_port(1000);
            mode_text_write(port, mode_transfer);
        }
        ASSERT_TRUE(wait([this] { return module->mode() == "transfer"; }));
    }
    ret_t begin() {
        return one->start(&session(), [this] { refreshes++; });
    }
    static bool wait(const std::function<bool()>& done) { return idle_run_until(done, session_patience_ms); }
    bool wait_bytes(std::size_t count) {
        return wait([this, count] { return one->log().counts().received >= count; });
    }
    assistant_sent send(const assistant_form& form) {
        std::optional<assistant_sent> what;
        EXPECT_EQ(one->send(form, [&what](assistant_sent is) { what = is; }), assistant_start::started);
        EXPECT_TRUE(wait([&what] { return what.has_value(); }));
        return what.value_or(assistant_sent::failed);
    }

    std::unique_ptr<serial_assistant> one;
    int refreshes = 0;

  private:
    assistant_timing usual_;
};

TEST_F(assistant_at_port, what_comes_in_is_kept_and_its_frames_are_found) {
    open();
    module->babble(good);
    ASSERT_TRUE(wait([this] { return one->log().counts().frames == 1; }));
    EXPECT_TRUE(wait([this] { return refreshes > 0; }));
    transcript_row row;
    ASSERT_EQ(one->log().rows(0, std::span(&row, 1)), 1u);
    EXPECT_FALSE(row.sent);
}

TEST_F(assistant_at_port, a_burst_is_read_whole_before_the_pause) {
    assistant_timing_get().after_read_ms = 60000;
    open();
    port_lease other = session().take_port(1000);
    bytes all;
    for (int i = 0; i < 70; ++i) all.insert(all.end(), good.begin(), good.end());
    module->babble(all);
    ASSERT_TRUE(wait([&other] { return other.waiting().value_or(0) == 980; }));
    other.give_back();
    ASSERT_TRUE(wait_bytes(980));
    EXPECT_TRUE(wait([this] { return one->log().counts().frames >= 64; }));
}

TEST_F(assistant_at_port, the_module_receives_what_was_sent) {
    open();
    EXPECT_EQ(send({.channel = 5, .format = 8, .speed = 128, .identifier = 0x12345678, .data = "DEAD"}),
              assistant_sent::written);
    ASSERT_TRUE(module->wait_traffic(0, 1, 10000));
    EXPECT_EQ(hex_pairs_from_bytes(module->traffic_received()[0].frame),
              "AC 0B 04 05 88 78 56 34 12 DE AD 00 00 25 2F");
    const transcript_counts now = one->log().counts();
    EXPECT_EQ(now.sent, 15u);
    transcript_row row;
    ASSERT_EQ(one->log().rows(0, std::span(&row, 1)), 1u);
    EXPECT_TRUE(row.sent);
    ASSERT_EQ(one->history().size(), 1u);
    EXPECT_EQ(one->history()[0].identifier, 0x12345678u);
}

TEST_F(assistant_at_port, errors_of_the_port_are_cleared_before_a_frame_is_written) {
    assistant_timing_get().look_again_ms = 60000;
    open();
    std::vector<std::string> calls;
    com::watch_calls([&calls](const std::string& call) { calls.push_back(call); });
    EXPECT_EQ(send({.data = "11"}), assistant_sent::written);
    com::watch_calls({});
    ASSERT_GE(calls.size(), 2u);
    EXPECT_EQ(calls[0], "ClearCommError");
    EXPECT_EQ(std::ranges::count(calls, "WriteFile 13"), 1);
}

TEST_F(assistant_at_port, every_channel_and_kind_reaches_the_module) {
    open();
    uint32_t sent = 0;
    for (const assistant_option& channel : assistant_channels)
        for (const assistant_option& format : assistant_formats)
            for (const assistant_option& speed : assistant_speeds) {
                ASSERT_EQ(send({channel.value, format.value, speed.value, 1, "AB"}), assistant_sent::written);
                ASSERT_TRUE(module->wait_traffic(0, ++sent, 10000));
                const traffic_wire frame = assistant_frame({channel.value, format.value, speed.value, 1, "AB"});
                EXPECT_EQ(module->traffic_received().back().frame,
                          bytes(frame.bytes().begin(), frame.bytes().end()));
            }
    EXPECT_EQ(one->history().size(), 20u);
}

TEST_F(assistant_at_port, one_frame_at_a_time) {
    open();
    EXPECT_EQ(one->send({.data = "11"}, {}), assistant_start::started);
    EXPECT_EQ(one->send({.data = "11"}, {}), assistant_start::busy);
    ASSERT_TRUE(wait([this] { return one->history().size() == 1; }));
    EXPECT_EQ(send({.data = "22"}), assistant_sent::written);
    EXPECT_EQ(one->send({.channel = 6, .data = "11"}, {}), assistant_start::no_frame);
}

TEST_F(assistant_at_port, without_a_thread_nothing_is_sent_or_made_and_nothing_is_under_way) {
    open();
    const auto fail = [](const std::string&) { return RET_FAIL; };
    tk_thread_refuse(2);
    EXPECT_EQ(one->send({.data = "11"}, {}), assistant_start::no_thread);
    EXPECT_EQ(one->make_text({}, fail, {}), assistant_start::no_thread);
    EXPECT_TRUE(one->history().empty());
    EXPECT_EQ(send({.data = "22"}), assistant_sent::written);
    EXPECT_EQ(one->make_text({}, fail, {}), assistant_start::started);
}

TEST_F(assistant_at_port, threads_that_could_not_be_started_start_the_next_time) {
    plug("VKT610B");
    connect();
    tk_thread_refuse(1);
    EXPECT_EQ(begin(), RET_FAIL);
    ASSERT_EQ(begin(), RET_OK);
    module->babble(good);
    EXPECT_TRUE(wait([this] { return one->log().counts().frames == 1; }));
}

TEST_F(assistant_at_port, without_an_open_port_nothing_is_sent) {
    plug("VKT610B");
    EXPECT_EQ(send({.data = "11"}), assistant_sent::no_port) << "no device";
    ASSERT_EQ(begin(), RET_OK);
    EXPECT_EQ(send({.data = "11"}), assistant_sent::no_port);
    EXPECT_TRUE(one->history().empty());
    EXPECT_EQ(one->log().counts().sent, 0u);
}

/// Until a timer has fired as often as the assistant's pause between two looks would have ended.
void let_looks_pass(int count) {
    int passed = 0;
    timer_add([&] { return ++passed < count ? RET_REPEAT : RET_REMOVE; }, assistant_timing_get().look_again_ms);
    ASSERT_TRUE(idle_run_until([&] { return passed >= count; }, session_patience_ms));
}

TEST_F(assistant_at_port, while_no_port_is_open_it_sleeps) {
    plug("VKT610B");
    ASSERT_EQ(begin(), RET_OK);
    let_looks_pass(20);
    EXPECT_EQ(one->looks(), 0u);
    connect();
    module->babble(good);
    EXPECT_TRUE(wait_bytes(good.size())) << "woken by the opening";
    disconnect();
    const uint64_t before = one->looks();
    let_looks_pass(20);
    EXPECT_LE(one->looks(), before + 1) << "one look finds that it was closed";
    connect();
    module->babble(good);
    EXPECT_TRUE(wait_bytes(2 * good.size()));
}

TEST_F(assistant_at_port, once_the_port_has_vanished_it_sleeps_until_one_is_opened) {
    plug("VKT610B");
    connect();
    ASSERT_EQ(begin(), RET_OK);
    module->babble(good);
    ASSERT_TRUE(wait_bytes(good.size()));
    module->hang_up();
    const uint64_t before = one->looks();
    com::fault_clear();
    let_looks_pass(20);
    EXPECT_LE(one->looks(), before + 1) << "one look finds that it has vanished";
    EXPECT_LE(com::call_count(com::call::clear_comm_error), 1u);
    module.reset();
    plug("VKT610B");
    connect();
    module->babble(good);
    EXPECT_TRUE(wait_bytes(2 * good.size()));
}

TEST_F(assistant_at_port, how_the_port_is_is_known_and_a_change_refreshes) {
    const auto becomes = [this](assistant_port what) {
        const int before = refreshes;
        return wait([&] { return one->port() == what && refreshes > before; });
    };
    EXPECT_EQ(one->port(), assistant_port::closed);
    plug("VKT610B");
    ASSERT_EQ(begin(), RET_OK);
    EXPECT_EQ(one->port(), assistant_port::closed);
    connect();
    EXPECT_EQ(one->port(), assistant_port::open);
    EXPECT_TRUE(wait([this] { return refreshes > 0; }));
    disconnect();
    EXPECT_EQ(one->port(), assistant_port::closed);
    connect();
    EXPECT_EQ(one->port(), assistant_port::open);
    settle();
    module->hang_up();
    EXPECT_TRUE(becomes(assistant_port::lost));
    module.reset();
    plug("VKT610B");
    connect();
    EXPECT_TRUE(wait([this] { return one->port() == assistant_port::open; }));
}

TEST_F(assistant_at_port, it_listens_at_the_device_that_it_was_given_last) {
    device_session other(vkt610b_family, {});
    ASSERT_EQ(one->start(&other, {}), RET_OK);
    const uint32_t running = workers_running();
    plug("VKT610B");
    connect();
    ASSERT_EQ(begin(), RET_OK);
    EXPECT_EQ(workers_running(), running);
    ASSERT_EQ(one->start(nullptr, {}), RET_OK) << "the same again";
    module->babble(good);
    EXPECT_TRUE(wait_bytes(good.size()));
    one.reset(); // before the other device
}

TEST_F(assistant_at_port, a_session_gets_the_port) {
    plug("VKT610B");
    connect();
    ASSERT_EQ(begin(), RET_OK);
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_TRUE(heard.logs.empty());
    EXPECT_THAT(heard.events, testing::Contains("finished"));
    EXPECT_EQ(one->log().counts().received, 0u) << "its replies are its own";
    module->babble(good);
    EXPECT_TRUE(wait_bytes(good.size()));
}

TEST_F(assistant_at_port, while_somebody_has_the_port_nothing_is_read_or_sent) {
    open();
    port_lease other = session().take_port(1000);
    ASSERT_TRUE(other);
    com::fault_clear();
    module->babble(good);
    EXPECT_EQ(send({.data = "11"}), assistant_sent::no_port);
    EXPECT_EQ(com::call_count(com::call::read_file), 0u);
    EXPECT_EQ(com::call_count(com::call::write_file), 0u);
    other.give_back();
    EXPECT_TRUE(wait_bytes(good.size()));
}

TEST_F(assistant_at_port, a_write_that_fails_is_reported) {
    open();
    com::fault_set(com::call::write_file, 0, 1, 5);
    EXPECT_EQ(send({.data = "11"}), assistant_sent::failed);
    EXPECT_TRUE(one->history().empty());
    EXPECT_EQ(send({.data = "11"}), assistant_sent::written);
}

TEST_F(assistant_at_port, started_twice_it_has_its_two_threads_and_loses_nothing) {
    open();
    const uint32_t running = workers_running();
    module->babble(good);
    ASSERT_EQ(begin(), RET_OK);
    EXPECT_EQ(workers_running(), running);
    module->babble(good);
    ASSERT_TRUE(wait_bytes(2 * good.size()));
    EXPECT_EQ(one->log().counts().received, 2 * good.size());
}

TEST_F(assistant_at_port, without_its_window_it_goes_on) {
    open();
    one->leave();
    module->babble(good);
    ASSERT_TRUE(wait([this] { return one->log().counts().frames == 1; }));
    while (idle_dispatch() > 0) {
    }
    EXPECT_EQ(refreshes, 0);
}

TEST_F(assistant_at_port, a_full_store_becomes_a_text_on_a_thread) {
    one->log().received(bytes(0x100000, 0x41), {.local_us = 0});
    std::size_t lines = 0, size = 0;
    std::optional<ret_t> ended;
    const auto made = [&](const std::string& text) {
        lines = static_cast<std::size_t>(std::ranges::count(text, '\n'));
        size = text.size();
        EXPECT_FALSE(idle_is_gui_thread());
        return RET_FAIL;
    };
    ASSERT_EQ(one->make_text({.form = byte_form::chars}, made, [&](ret_t ret) { ended = ret; }),
              assistant_start::started);
    EXPECT_EQ(one->make_text({}, made, {}), assistant_start::busy) << "one at a time";
    ASSERT_TRUE(wait([&] { return ended.has_value(); }));
    EXPECT_EQ(*ended, RET_FAIL);
    EXPECT_EQ(lines, 0x10000u);
    EXPECT_EQ(size, 0x10000u * std::string("1970-01-01 00:00:00.000 rx AAAAAAAAAAAAAAAA\n").size());
}

TEST_F(assistant_at_port, a_text_of_some_rows) {
    for (uint8_t i = 0; i < 5; ++i) one->log().received(bytes{i}, {.local_us = 0});
    std::string text;
    std::optional<ret_t> ended;
    ASSERT_EQ(one->make_text(
                  {.first = 1, .count = 2},
                  [&text](std::string made) {
                      text = std::move(made);
                      return RET_OK;
                  },
                  [&](ret_t ret) { ended = ret; }),
              assistant_start::started);
    ASSERT_TRUE(wait([&] { return ended == RET_OK; }));
    EXPECT_EQ(text, "1970-01-01 00:00:00.000 rx 01\n1970-01-01 00:00:00.000 rx 02\n");
}

TEST_F(assistant_at_port, a_text_of_what_is_cleared_meanwhile_is_none) {
    one->log().received(bytes(0x100000, 0x41), {.local_us = 0});
    std::atomic<std::size_t> lines = 0;
    std::optional<ret_t> ended;
    const auto made = [&lines](const std::string& text) {
        lines = static_cast<std::size_t>(std::ranges::count(text, '\n'));
        return RET_OK;
    };
    ASSERT_EQ(one->make_text({.form = byte_form::chars}, made, [&](ret_t ret) { ended = ret; }),
              assistant_start::started);
    one->log().clear();
    ASSERT_TRUE(wait([&] { return ended.has_value(); }));
    EXPECT_EQ(lines, 0u) << "whichever came first";
    EXPECT_EQ(ended, RET_FAIL);
}

// ---- the end, in every state ----

class assistant_end : public assistant_at_port {
  protected:
    void end() {
        const int64_t begin_ms = time_now_ms();
        one.reset();
        EXPECT_LT(time_now_ms() - begin_ms, 500);
        while (idle_dispatch() > 0) {
        }
    }
};

TEST_F(assistant_end, while_it_waits_for_a_port) {
    plug("VKT610B");
    ASSERT_EQ(begin(), RET_OK);
    end();
}

TEST_F(assistant_end, while_it_waits_for_another_port) {
    plug("VKT610B");
    connect();
    ASSERT_EQ(begin(), RET_OK);
    module->hang_up();
    let_looks_pass(2);
    end();
}

TEST_F(assistant_end, between_two_looks) {
    assistant_timing_get().look_again_ms = 60000;
    plug("VKT610B");
    connect();
    ASSERT_EQ(begin(), RET_OK);
    end();
}

TEST_F(assistant_end, in_the_pause_after_a_read) {
    assistant_timing_get().after_read_ms = 60000;
    open();
    module->babble(good);
    ASSERT_TRUE(wait_bytes(good.size()));
    end();
}

TEST_F(assistant_end, while_a_frame_waits_for_the_port) {
    assistant_timing_get().port_wait_ms = 60000;
    open();
    const port_lease other = session().take_port(1000);
    bool reported = false;
    ASSERT_EQ(one->send({.data = "11"}, [&reported](assistant_sent) { reported = true; }),
              assistant_start::started);
    end();
    EXPECT_FALSE(reported) << "nobody is there any more";
}

TEST_F(assistant_end, while_a_write_is_pending) {
    open();
    com::fault_clear();
    com::fault_set(com::call::write_file, 0, 1, 997);
    bool reported = false;
    ASSERT_EQ(one->send({.data = "11"}, [&reported](assistant_sent) { reported = true; }),
              assistant_start::started);
    ASSERT_TRUE(wait([] { return com::call_count(com::call::wait_for_single_object) > 0; }));
    end();
    EXPECT_FALSE(reported);
    EXPECT_TRUE(port_is_free());
    EXPECT_FALSE(std::filesystem::exists(folder / "serial_send.json")) << "what did not go out is not kept";
}

TEST_F(assistant_end, while_a_text_is_saved_the_file_is_whole_or_not_there) {
    const std::string file = (folder / "saved.txt").string();
    one->log().received(bytes(0x100000, 0x41), {});
    std::atomic<bool> written = false;
    const auto made = [&](const std::string& text) {
        const ret_t ret = fs_write_whole(file.c_str(), text);
        written = ret == RET_OK;
        return ret;
    };
    ASSERT_EQ(one->make_text({.form = byte_form::chars}, made, {}), assistant_start::started);
    end();
    const std::size_t whole = 0x10000u * std::string("1970-01-01 00:00:00.000 rx AAAAAAAAAAAAAAAA\n").size();
    ASSERT_EQ(std::filesystem::exists(file), written);
    EXPECT_EQ(written ? std::filesystem::file_size(file) : whole, whole);
}

TEST_F(assistant_end, while_a_text_is_made) {
    one->log().received(bytes(0x100000, 0x41), {});
    std::atomic<bool> whole = true;
    const auto made = [&whole](const std::string& text) {
        whole = std::ranges::count(text, '\n') == 0x10000;
        return RET_OK;
    };
    ASSERT_EQ(one->make_text({}, made, {}), assistant_start::started);
    end();
    EXPECT_TRUE(whole) << "a text that was broken off is none";
}

} // namespace
