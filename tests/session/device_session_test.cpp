// Who waits for whom: starting, joining, leaving and destroying devices whose sessions run.
#include "tests/support/session_fixture.h"

#include "toolkit/core/thread.h"
#include "toolkit/core/worker.h"

#include <atomic>
#include <optional>
#include <thread>

using sim::fault;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr uint32_t promptly_ms = 10000; ///< on a busy machine; what would hang waits ten minutes
constexpr const char* other_name = "COM8";

/// A good read reply with an image of zeros.
std::vector<uint8_t> zeros_reply() {
    std::vector<uint8_t> reply(65);
    reply[0] = 0xF7;
    reply[1] = 0xF8;
    reply[2] = 0x03;
    reply[3] = 0x3C;
    reply[64] = 0x30;
    return reply;
}

class device_session_test : public session_test {
  protected:
    void SetUp() override {
        session_test::SetUp();
        session_timing_get().read_wait_ms = 600000;
        port_timing_get().timeouts.ReadIntervalTimeout = port_timing_get().timeouts.ReadTotalTimeoutConstant =
            600000;
        session_timing_get().start_wait_ms = 20;
    }
    /// Returns once the module has a read request that it does not answer.
    void start_endless_read() {
        const uint32_t before = module->count().reads;
        module->plan({.what = fault::silent});
        ASSERT_EQ(start(session_kind::read), RET_OK);
        ASSERT_TRUE(idle_run_until([&] { return module->count().reads > before; }, session_patience_ms));
    }
    void plug_connected(const char* model_name) {
        plug(model_name);
        connect();
    }
};

// ---- waits

const std::string log_path_at_start = session_log_path(); // before a test chooses another

TEST(session_log, stands_beside_the_folder_that_the_program_runs_in) {
    EXPECT_EQ(log_path_at_start, "../log/p_v_info.txt");
}

TEST(session_timing, waits_are_those_that_modules_need) {
    const session_timing timing;
    EXPECT_EQ(timing.start_wait_ms, 500u);
    EXPECT_EQ(timing.read_wait_ms, 5000u);
    EXPECT_EQ(timing.mode_step_ms, 200u);
    EXPECT_EQ(timing.quiet_ms, 30u);
}

// ---- starting

TEST_F(device_session_test, a_start_is_refused_while_a_session_runs) {
    plug_connected("VKT531A");
    start_endless_read();
    const uint32_t run_before = session().last_run();
    session_timing_get().start_wait_ms = 60;
    const int64_t begin = time_now_ms();
    EXPECT_EQ(start(session_kind::write), RET_FAIL);
    EXPECT_GE(time_now_ms() - begin, 60) << "the one before may be about to end";
    EXPECT_EQ(start(session_kind::connect), RET_FAIL);
    EXPECT_EQ(session().last_run(), run_before);
    EXPECT_EQ(session().operation(), session_kind::read);
    EXPECT_TRUE(session().running());
    module->babble(zeros_reply());
    settle();
    EXPECT_EQ(heard.events.back(), "finished") << "the session that ran has not noticed";
    EXPECT_EQ(module->count().writes, 0u);
}

TEST_F(device_session_test, a_start_waits_for_a_session_that_is_about_to_end) {
    plug_connected("VKT531A");
    start_endless_read();
    session_timing_get().start_wait_ms = session_patience_ms;
    std::thread replies([this] { module->babble(zeros_reply()); });
    EXPECT_EQ(start(session_kind::write), RET_OK);
    replies.join();
    settle();
    const auto finished = std::ranges::count(heard.events, std::string("finished"));
    EXPECT_EQ(finished, 2);
    EXPECT_EQ(heard.events.back(), "finished");
    EXPECT_EQ(module->count().writes, 1u);
}

// The session has given the port back and reported its end; its thread has yet to return.
TEST_F(device_session_test, a_start_waits_for_the_thread_too) {
    plug("VKT531A");
    worker_event go_on;
    session_reports held;
    held.finished = [&go_on](uint32_t) { go_on.wait(session_patience_ms); };
    dev = dev_open(all_families, "VKT531A", held);
    ASSERT_EQ(start(session_kind::connect), RET_OK);
    ASSERT_TRUE(idle_run_until([this] { return session().port_open() && port_is_free(); }, session_patience_ms));
    EXPECT_EQ(start(session_kind::read), RET_FAIL);
    EXPECT_TRUE(port_is_free()) << "a refused start has given the port back";
    session_timing_get().start_wait_ms = session_patience_ms;
    std::thread ends([&] {
        while (port_is_free()) std::this_thread::yield(); // a start takes it before it looks at the thread
        go_on.set();
    });
    EXPECT_EQ(start(session_kind::read), RET_OK);
    ends.join();
    go_on.set();
    settle();
    EXPECT_EQ(session().last_run(), 2u);
}

TEST_F(device_session_test, a_start_is_refused_for_a_family_without_such_a_session) {
    plug_connected("VKT531A");
    static constexpr session_script only_read[] = {
        {.thread_name = "only_read", .kind = session_kind::read, .report_operation = 3}};
    family_descriptor of = generic_family;
    of.scripts = only_read;
    device_session other(of, {});
    for (const auto kind :
         {session_kind::connect, session_kind::write, session_kind::mode_switch, session_kind::none})
        EXPECT_EQ(other.start(kind, {}), RET_FAIL);
    EXPECT_EQ(other.operation(), session_kind::none);
    EXPECT_EQ(other.last_run(), 0u);
    EXPECT_FALSE(other.running());
    EXPECT_EQ(other.start(session_kind::read, {}), RET_OK);
    EXPECT_EQ(other.last_run(), 1u);
}

TEST_F(device_session_test, a_start_is_refused_without_a_thread_and_leaves_everything_as_it_was) {
    plug_connected("VKT531A");
    module->plan({.what = fault::refuse});
    ASSERT_TRUE(run(session_kind::write));
    const uint32_t run_before = session().last_run();
    for (const auto kind : {session_kind::read, session_kind::connect}) {
        tk_thread_refuse(1);
        EXPECT_EQ(start(kind), RET_FAIL);
        EXPECT_EQ(session().operation(), session_kind::write);
        EXPECT_EQ(session().last_run(), run_before);
        EXPECT_TRUE(session().port_open());
        EXPECT_TRUE(port_is_free());
    }
    ASSERT_TRUE(run(session_kind::read));
    EXPECT_EQ(heard.events.back(), "finished");
}

TEST_F(device_session_test, a_start_is_refused_while_somebody_else_holds_the_port) {
    plug_connected("VKT531A");
    std::optional<port_lease> lease = session().take_port(0);
    ASSERT_TRUE(*lease);
    EXPECT_FALSE(port_is_free());
    for (const auto kind : {session_kind::connect, session_kind::read, session_kind::write})
        EXPECT_EQ(start(kind), RET_FAIL);
    EXPECT_EQ(session().operation(), session_kind::none);
    lease.reset();
    EXPECT_TRUE(port_is_free());
    EXPECT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.events.back(), "finished");
}

TEST_F(device_session_test, a_session_holds_the_port_from_its_start) {
    plug_connected("VKT531A");
    start_endless_read();
    EXPECT_FALSE(session().take_port(0));
    module->babble(zeros_reply());
    settle();
    EXPECT_TRUE(session().take_port(0));
}

TEST_F(device_session_test, runs_are_numbered_and_reports_carry_their_number) {
    std::vector<uint32_t> ended;
    const auto keep = [&ended](uint32_t run) {
        idle_queue([&ended, run] {
            ended.push_back(run);
            return RET_OK;
        });
    };
    plug("VKT531A");
    dev = dev_open(all_families, "VKT531A",
                   {.progress = {},
                    .failed = [keep](const session_failure& failure) { keep(100 + failure.run); },
                    .image = {},
                    .connected = {},
                    .finished = keep});
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(session().last_run(), 1u);
    module->plan({.what = fault::refuse});
    ASSERT_TRUE(run(session_kind::write));
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(session().last_run(), 3u);
    EXPECT_THAT(ended, ElementsAre(1u, 102u, 3u));
}

// ---- joining

TEST_F(device_session_test, joining_waits_for_the_run_and_for_no_newer_one) {
    plug_connected("VKT531A");
    ASSERT_EQ(session().last_run(), 1u);
    start_endless_read();
    session().join(1);
    EXPECT_TRUE(session().running());
    std::thread replies([this] { module->babble(zeros_reply()); });
    session().join(2);
    EXPECT_FALSE(session().running());
    replies.join();
}

TEST_F(device_session_test, joining_without_a_run_returns) {
    plug("VKT531A");
    session().join(0);
    session().join(7);
    EXPECT_FALSE(session().running());
}

// ---- side by side

TEST_F(device_session_test, a_second_device_is_untouched_by_the_first_ones_failure) {
    plug_connected("VKT531A");
    start_endless_read();
    std::vector<std::string> failures;
    auto other = dev_open(all_families, "VKT531A",
                          {.progress = {},
                           .failed =
                               [&failures](const session_failure& failure) {
                                   idle_queue([&failures, text = failure.text] {
                                       failures.push_back(text);
                                       return RET_OK;
                                   });
                               },
                           .image = {},
                           .connected = {},
                           .finished = {}});
    const auto other_module = sim::module_start(sim::model::vkt531a, other_name);
    ASSERT_NE(other_module, nullptr);
    const auto play = [&](session_kind kind) {
        session_input input = dev_session_input(*other, kind, false);
        input.port_text = other_name;
        ASSERT_EQ(other->session.start(kind, std::move(input)), RET_OK);
        ASSERT_TRUE(idle_run_until([&] { return !other->session.running(); }, session_patience_ms));
        idle_dispatch();
    };
    other_module->plan({.what = fault::refuse, .after = 1, .times = 2});
    play(session_kind::connect);
    play(session_kind::write);
    EXPECT_THAT(failures, ElementsAre("检测配置失败"));
    EXPECT_EQ(other->session.operation(), session_kind::write);
    EXPECT_TRUE(other->session.port_open());
    play(session_kind::connect);
    EXPECT_THAT(failures, ElementsAre("检测配置失败", "获取读操作结果失败"));
    other->session.give_up();
    EXPECT_FALSE(other->session.port_open());

    EXPECT_TRUE(session().running());
    EXPECT_EQ(session().operation(), session_kind::read);
    EXPECT_TRUE(session().connected());
    EXPECT_TRUE(session().port_open());
    module->babble(zeros_reply());
    settle();
    EXPECT_EQ(heard.events.back(), "finished");
    EXPECT_THAT(heard.logs, IsEmpty());
    EXPECT_THAT(dev->image, testing::Each(0));
    EXPECT_NE(other->image, dev->image);
}

// ---- ending

TEST_F(device_session_test, a_device_whose_session_waits_for_ever_is_destroyed_promptly) {
    plug_connected("VKT531A");
    start_endless_read();
    const int64_t begin = time_now_ms();
    dev.reset();
    EXPECT_LT(time_now_ms() - begin, promptly_ms);
    settle();
    EXPECT_THAT(heard.events, ElementsAre("20/3 读配置.....", "30/3 读配置.....")) << "without a word";
    EXPECT_EQ(workers_running(), 0u);
    dev = dev_open(all_families, model.c_str());
    module->plan({});
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_TRUE(session().connected()) << "the port was closed";
}

TEST_F(device_session_test, a_device_is_destroyed_while_its_port_is_opened) {
    plug("VKT531A");
    com::fault_set(com::call::create_file, 0, 1000, 5);
    ASSERT_EQ(start(session_kind::connect), RET_OK);
    dev.reset();
    EXPECT_EQ(workers_running(), 0u);
}

TEST_F(device_session_test, a_failed_connect_closes_the_port_that_was_open) {
    for (const char* name : {"VKT531A", "VKT510A", "VKT610B"}) {
        for (const char* text : {"COM500", "COM444"}) {
            module.reset();
            dev.reset();
            plug_connected(name);
            ASSERT_TRUE(run(session_kind::connect, text));
            EXPECT_EQ(heard.events.back().rfind("failed 1 串口", 0), 0u);
            EXPECT_FALSE(session().port_open()) << name << " " << text;
            EXPECT_FALSE(session().connected());
            EXPECT_TRUE(heard.port_was_free);
            EXPECT_EQ(session().operation(), session_kind::connect) << "a failed session stays busy";
            heard = {};
        }
    }
}

TEST_F(device_session_test, giving_up_closes_the_port_and_keeps_the_operation) {
    plug_connected("VKT531A");
    module->plan({.what = fault::refuse});
    ASSERT_TRUE(run(session_kind::write));
    session().give_up();
    EXPECT_FALSE(session().port_open());
    EXPECT_FALSE(session().connected());
    EXPECT_EQ(session().operation(), session_kind::write);
}

TEST_F(device_session_test, dropping_closes_and_clears_without_a_word) {
    plug_connected("VKT610B");
    ASSERT_TRUE(idle_run_until([this] { return module->mode() == "config"; }, session_patience_ms));
    module->plan({.what = fault::refuse});
    ASSERT_TRUE(run(session_kind::write));
    heard = {};
    session().drop();
    EXPECT_FALSE(session().port_open());
    EXPECT_FALSE(session().connected());
    EXPECT_EQ(session().operation(), session_kind::none);
    EXPECT_TRUE(port_is_free());
    settle();
    EXPECT_THAT(heard.events, IsEmpty());
    EXPECT_EQ(module->count().mode_texts, 1u) << "the module is not told";
    ASSERT_TRUE(run(session_kind::connect));
    EXPECT_EQ(heard.events.back(), "finished");
}

TEST_F(device_session_test, dropping_ends_a_session_that_waits_for_ever) {
    plug_connected("VKT531A");
    start_endless_read();
    const int64_t begin = time_now_ms();
    session().drop();
    EXPECT_LT(time_now_ms() - begin, promptly_ms);
    settle();
    EXPECT_THAT(heard.events, ElementsAre("20/3 读配置.....", "30/3 读配置....."));
    EXPECT_FALSE(session().port_open());
    EXPECT_EQ(session().operation(), session_kind::none);
}

// ---- leaving

TEST_F(device_session_test, leaving_waits_for_the_session_that_runs) {
    plug_connected("VKT610B");
    module->plan({.what = fault::silent});
    ASSERT_EQ(start(session_kind::read), RET_OK);
    ASSERT_TRUE(idle_run_until([this] { return module->count().reads == 1; }, session_patience_ms));
    bool left = false;
    ASSERT_EQ(leaver.start({&session()}, progress_report(), [&left] { left = true; }), RET_OK);
    EXPECT_FALSE(idle_run_until([&left] { return left; }, 100));
    EXPECT_TRUE(leaver.running());
    EXPECT_THAT(heard.events, Not(Contains("10/8 模式转换中.....")));
    EXPECT_TRUE(session().port_open());
    // AA 8E 05 FF, 140 zeros, CRC.
    std::vector<uint8_t> reply(146);
    reply[0] = 0xAA;
    reply[1] = 0x8E;
    reply[2] = 0x05;
    reply[3] = 0xFF;
    reply[144] = 0x14;
    reply[145] = 0x48;
    module->babble(reply);
    ASSERT_TRUE(idle_run_until([&left] { return left; }, session_patience_ms));
    EXPECT_THAT(heard.events,
                ElementsAre("30/3 读配置.....", "50/3 读配置.....", "image", "80/3 按键初始化.....", "buttons",
                            "100/3 读配置完成", "finished", "10/8 模式转换中.....", "40/8 模式转换中.....",
                            "80/8 模式转换中.....", "100/8 现在设备为传输模式"));
    EXPECT_FALSE(session().port_open());
    EXPECT_EQ(session().operation(), session_kind::none);
}

// A session gives its port back before it has said all.
TEST_F(device_session_test, leaving_waits_until_the_session_has_reported_its_end) {
    plug_connected("VKT610B");
    worker_event go_on;
    std::atomic<bool> at_end{false};
    session_reports held;
    held.finished = [&](uint32_t run) {
        if (run == 1) return;
        at_end = true;
        go_on.wait(session_patience_ms);
    };
    dev = dev_open(all_families, model.c_str(), held);
    ASSERT_TRUE(run(session_kind::connect));
    ASSERT_EQ(start(session_kind::read), RET_OK);
    ASSERT_TRUE(idle_run_until([&] { return at_end.load(); }, session_patience_ms));
    ASSERT_TRUE(port_is_free());
    bool left = false;
    ASSERT_EQ(leaver.start({&session()}, progress_report(), [&left] { left = true; }), RET_OK);
    EXPECT_FALSE(idle_run_until([&left] { return left; }, 100));
    EXPECT_THAT(heard.events, IsEmpty());
    go_on.set();
    ASSERT_TRUE(idle_run_until([&left] { return left; }, session_patience_ms));
    EXPECT_THAT(heard.events, Contains("100/8 现在设备为传输模式"));
}

TEST_F(device_session_test, leaving_waits_for_whoever_else_holds_the_port) {
    plug_connected("VKT610B");
    std::optional<port_lease> lease = session().take_port(0);
    bool left = false;
    ASSERT_EQ(leaver.start({&session()}, progress_report(), [&left] { left = true; }), RET_OK);
    EXPECT_FALSE(idle_run_until([&left] { return left; }, 100));
    EXPECT_TRUE(session().port_open());
    lease.reset();
    ASSERT_TRUE(idle_run_until([&left] { return left; }, session_patience_ms));
    EXPECT_FALSE(session().port_open());
    ASSERT_TRUE(idle_run_until([this] { return module->mode() == "transfer"; }, session_patience_ms));
}

TEST_F(device_session_test, devices_are_left_one_after_the_other) {
    plug_connected("VKT610B");
    const auto generic_module = sim::module_start(sim::model::vkt531a, other_name);
    ASSERT_NE(generic_module, nullptr);
    const auto generic = dev_open(all_families, "VKT531A");
    ASSERT_EQ(generic->session.start(session_kind::connect,
                                     {.port_text = other_name, .model = "VKT531A", .requests = {}}),
              RET_OK);
    ASSERT_TRUE(idle_run_until([&] { return !generic->session.running(); }, session_patience_ms));
    ASSERT_TRUE(generic->session.connected());
    bool left = false;
    ASSERT_EQ(leaver.start({&generic->session, &session()}, progress_report(), [&left] { left = true; }), RET_OK);
    ASSERT_TRUE(idle_run_until([&left] { return left; }, session_patience_ms));
    for (const device_session* one : {&session(), &generic->session}) {
        EXPECT_FALSE(one->port_open());
        EXPECT_FALSE(one->connected());
    }
    EXPECT_EQ(generic_module->received().size(), 9u) << "the handshake";
    EXPECT_EQ(heard.events.size(), 4u);
}

} // namespace
