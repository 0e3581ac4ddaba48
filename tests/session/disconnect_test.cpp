// Leaving the module.
#include "tests/support/session_fixture.h"

#include "toolkit/core/thread.h"

using testing::ElementsAre;

namespace {

class disconnect : public session_test {
  protected:
    bool leave() {
        int ended = 0;
        if (leaver.start({&session()}, progress_report(), [&ended] { ++ended; }) != RET_OK) return false;
        EXPECT_EQ(leaver.start({&session()}, {}, {}), RET_FAIL) << "one at a time";
        idle_run_until([&ended] { return ended > 0; }, session_patience_ms);
        settle();
        return ended == 1;
    }
    void expect_idle() {
        EXPECT_FALSE(session().port_open());
        EXPECT_FALSE(session().connected());
        EXPECT_EQ(session().operation(), session_kind::none);
        EXPECT_TRUE(port_is_free());
    }
};

TEST_F(disconnect, a_b_module_goes_to_transfer_mode) {
    plug("VKT610B");
    connect();
    ASSERT_TRUE(leave());
    EXPECT_THAT(heard.events, ElementsAre("10/8 模式转换中.....", "40/8 模式转换中.....", "80/8 模式转换中.....",
                                          "100/8 现在设备为传输模式"));
    EXPECT_EQ(heard.thread_name, "mode_switch");
    ASSERT_TRUE(idle_run_until([this] { return module->mode() == "transfer"; }, session_patience_ms));
    expect_idle();
}

TEST_F(disconnect, every_failure_of_the_write_ends_idle_all_the_same) {
    struct failure {
        com::call call;
        DWORD error;
        const char* text;
    };
    const failure failures[] = {
        {com::call::create_event, 8, "100/8 创建写事件失败"},
        {com::call::write_file, 87, "100/8 写操作失败"},
        {com::call::write_file, 997, "100/8 等待写操作完成失败"},
        {com::call::get_overlapped_result, 87, "100/8 获取写操作结果失败"},
    };
    plug("VKT610B");
    for (const failure& one : failures) {
        connect();
        com::fault_clear();
        com::fault_set(one.call, 0, 1, one.error);
        if (one.error == 997) com::fault_set(com::call::wait_for_single_object, 0, 1, 6);
        ASSERT_TRUE(leave());
        EXPECT_THAT(heard.events, ElementsAre("10/8 模式转换中.....", "40/8 模式转换中.....", one.text));
        expect_idle();
        heard = {};
        com::fault_clear();
    }
}

TEST_F(disconnect, other_families_are_closed_without_a_word) {
    for (const char* name : {"VKT531A", "VKT510A"}) {
        module.reset();
        plug(name);
        connect();
        module->plan({.what = sim::fault::bad_check});
        ASSERT_TRUE(run(session_kind::read));
        ASSERT_EQ(session().operation(), session_kind::read) << "as a failed session leaves it";
        heard = {};
        ASSERT_TRUE(leave());
        EXPECT_TRUE(heard.events.empty());
        EXPECT_EQ(module->count().mode_texts, 0u);
        expect_idle();
    }
}

TEST_F(disconnect, a_closed_port_is_free_for_others) {
    plug("VKT531A");
    connect();
    ASSERT_TRUE(leave());
    connect();
    ASSERT_TRUE(leave());
}

TEST_F(disconnect, without_a_thread_the_port_is_closed_on_the_spot_and_no_module_hears) {
    plug("VKT610B");
    connect();
    tk_thread_refuse(1);
    int ended = 0;
    EXPECT_EQ(leaver.start({&session()}, progress_report(), [&ended] { ++ended; }), RET_FAIL);
    EXPECT_FALSE(leaver.running());
    expect_idle();
    settle();
    EXPECT_EQ(ended, 0);
    EXPECT_TRUE(heard.events.empty());
    EXPECT_EQ(module->count().mode_texts, 1u) << "that of the connect";
    connect();
    ASSERT_TRUE(leave()) << "a later one goes its way";
    expect_idle();
}

TEST_F(disconnect, with_nothing_open_it_just_ends) {
    plug("VKT610B");
    ASSERT_TRUE(leave());
    EXPECT_TRUE(heard.events.empty());
    expect_idle();
}

TEST_F(disconnect, a_module_that_is_gone_does_not_hold_it_up) {
    plug("VKT610B");
    connect();
    module->hang_up();
    ASSERT_TRUE(leave());
    EXPECT_THAT(heard.events.back(), testing::AnyOf("100/8 写操作失败", "100/8 获取写操作结果失败"));
    expect_idle();
}

} // namespace
