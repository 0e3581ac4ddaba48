#include "toolkit/core/idle.h"

#include "platform/system.h"
#include "toolkit/core/date_time.h"
#include "toolkit/core/log.h"

#include <atomic>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Generous: reached only when something is broken.
constexpr uint32_t patience = 10000;

class idle : public testing::Test {
  protected:
    void SetUp() override {
        idle_set_gui_thread();
        idle_restart();
    }
    void TearDown() override {
        idle_set_wakeup({});
        idle_restart();
    }
    /// A job that notes its name and answers `result`.
    idle_job note(const std::string& name, ret_t result = RET_OK) {
        return [this, name, result] {
            ran.push_back(name);
            return result;
        };
    }
    std::vector<std::string> ran;
};

TEST_F(idle, jobs_run_once_and_in_order) {
    EXPECT_EQ(idle_queue(note("a")), RET_OK);
    EXPECT_GT(idle_add(note("b")), 0U);
    EXPECT_EQ(idle_queue(note("c")), RET_OK);
    EXPECT_THAT(ran, IsEmpty());
    EXPECT_EQ(idle_dispatch(), 3U);
    EXPECT_THAT(ran, ElementsAre("a", "b", "c"));
    EXPECT_EQ(idle_dispatch(), 0U);
}

TEST_F(idle, an_empty_job_is_refused) {
    EXPECT_EQ(idle_queue({}), RET_BAD_PARAMS);
    EXPECT_EQ(idle_queue_once("key", {}), RET_BAD_PARAMS);
    EXPECT_EQ(idle_queue_once("", note("a")), RET_BAD_PARAMS);
    EXPECT_EQ(idle_add({}), 0U);
    EXPECT_EQ(timer_add({}, 0), 0U);
}

TEST_F(idle, a_job_queued_by_a_job_waits_for_the_next_dispatch) {
    idle_queue([this] {
        ran.push_back("outer");
        return idle_queue(note("inner"));
    });
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_THAT(ran, ElementsAre("outer"));
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_THAT(ran, ElementsAre("outer", "inner"));
}

TEST_F(idle, only_added_jobs_repeat_and_they_go_to_the_end) {
    idle_queue(note("queued", RET_REPEAT));
    int left = 2;
    idle_add([&] {
        ran.push_back("added");
        return --left > 0 ? RET_REPEAT : RET_REMOVE;
    });
    idle_queue(note("last"));
    idle_dispatch();
    EXPECT_THAT(ran, ElementsAre("queued", "added", "last"));
    idle_queue(note("later"));
    idle_dispatch();
    EXPECT_THAT(ran, ElementsAre("queued", "added", "last", "added", "later"));
    EXPECT_EQ(idle_next_due_ms(), -1);
}

TEST_F(idle, of_one_key_the_newest_job_runs_once_in_the_place_of_the_first) {
    EXPECT_EQ(idle_queue_once("table", note("first")), RET_OK);
    idle_queue(note("between"));
    EXPECT_EQ(idle_queue_once("other", note("other")), RET_OK);
    auto held = std::make_shared<int>(0);
    EXPECT_EQ(idle_queue_once("table", [held] { return RET_OK; }), RET_OK);
    EXPECT_EQ(held.use_count(), 2);
    EXPECT_EQ(idle_queue_once("table", note("newest")), RET_OK);
    EXPECT_EQ(held.use_count(), 1) << "what is replaced is destroyed";
    EXPECT_EQ(idle_dispatch(), 3U);
    EXPECT_THAT(ran, ElementsAre("newest", "between", "other"));
    EXPECT_EQ(idle_dispatch(), 0U);
    EXPECT_EQ(idle_queue_once("table", note("again")), RET_OK);
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_THAT(ran, ElementsAre("newest", "between", "other", "again"));
}

TEST_F(idle, a_job_of_a_key_can_ask_for_the_next_one_while_it_runs) {
    idle_queue_once("table", [this] {
        ran.push_back("first");
        idle_queue_once("table", note("second"));
        return idle_queue_once("table", note("third"));
    });
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_THAT(ran, ElementsAre("first", "third"));
}

TEST_F(idle, a_job_of_a_key_wakes_the_loop_once_and_is_refused_after_shutdown) {
    std::atomic<int> calls{0};
    idle_set_wakeup([&calls] { calls++; });
    auto held = std::make_shared<int>(0);
    idle_queue_once("a", [held] { return RET_OK; });
    idle_queue_once("a", [held] { return RET_OK; });
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(idle_next_due_ms(), 0);
    EXPECT_EQ(held.use_count(), 2);
    idle_shutdown();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(idle_queue_once("a", [held] { return RET_OK; }), RET_FAIL);
    EXPECT_EQ(held.use_count(), 1);
    idle_restart();
    EXPECT_EQ(idle_queue_once("a", note("anew")), RET_OK);
    EXPECT_EQ(idle_dispatch(), 1U);
}

TEST_F(idle, many_threads_ask_for_one_job_and_none_is_forgotten) {
    std::atomic<int> asked{0};
    int seen = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; number++) {
        threads.emplace_back([&] {
            for (int i = 0; i < 300; i++) {
                asked++;
                idle_queue_once("table", [&] {
                    seen = asked;
                    return RET_OK;
                });
            }
        });
    }
    EXPECT_TRUE(idle_run_until([&] { return seen == 1200; }, patience));
    for (std::thread& thread : threads) thread.join();
}

TEST_F(idle, a_waiting_job_can_be_removed_once) {
    const uint32_t id = idle_add(note("a"));
    idle_queue(note("b"));
    EXPECT_EQ(idle_remove(id), RET_OK);
    EXPECT_EQ(idle_remove(id), RET_FAIL);
    EXPECT_EQ(idle_remove(0), RET_FAIL);
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_THAT(ran, ElementsAre("b"));
}

TEST_F(idle, a_job_removed_by_the_job_before_it_does_not_run) {
    uint32_t id = 0;
    idle_queue([&] { return idle_remove(id); });
    id = idle_add(note("removed"));
    idle_dispatch();
    EXPECT_THAT(ran, IsEmpty());
}

TEST_F(idle, a_job_that_removes_itself_does_not_repeat) {
    uint32_t id = 0;
    id = idle_add([&] {
        EXPECT_EQ(idle_remove(id), RET_OK);
        ran.push_back("once");
        return RET_REPEAT;
    });
    idle_dispatch();
    idle_dispatch();
    EXPECT_THAT(ran, ElementsAre("once"));
}

TEST_F(idle, a_dispatch_inside_a_job_runs_the_rest_in_order) {
    idle_queue([this] {
        ran.push_back("outer in");
        EXPECT_EQ(idle_dispatch(), 2U);
        ran.push_back("outer out");
        return RET_OK;
    });
    idle_queue(note("a"));
    idle_queue(note("b"));
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_THAT(ran, ElementsAre("outer in", "a", "b", "outer out"));
}

TEST_F(idle, what_a_job_holds_is_released_after_it_ran) {
    auto held = std::make_shared<int>(1);
    idle_queue([held] { return RET_OK; });
    EXPECT_EQ(held.use_count(), 2);
    idle_dispatch();
    EXPECT_EQ(held.use_count(), 1);
    const uint32_t id = idle_add([held] { return RET_OK; });
    idle_remove(id);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(idle, a_failing_job_is_told_at_debug_level_only) {
    std::string text;
    log_set_capture([](const std::string& line, void* to) { *static_cast<std::string*>(to) += line; }, &text);
    idle_queue(note("fails", RET_FAIL));
    idle_dispatch();
    EXPECT_EQ(text, "");
    log_set_log_level(LOG_LEVEL_DEBUG);
    idle_queue(note("well"));
    idle_queue(note("fails", RET_FAIL));
    idle_dispatch();
    log_set_log_level(LOG_LEVEL_ERROR);
    log_set_capture(nullptr, nullptr);
    EXPECT_EQ(text, "idle job returned 2\n");
}

TEST_F(idle, nothing_to_wait_for_is_minus_one_and_a_waiting_job_is_zero) {
    EXPECT_EQ(idle_next_due_ms(), -1);
    idle_queue(note("a"));
    EXPECT_EQ(idle_next_due_ms(), 0);
    idle_dispatch();
    EXPECT_EQ(idle_next_due_ms(), -1);
    const uint32_t id = timer_add(note("t"), 60000);
    EXPECT_GT(idle_next_due_ms(), 50000);
    EXPECT_LE(idle_next_due_ms(), 60000);
    EXPECT_EQ(timer_suspend(id), RET_OK);
    EXPECT_EQ(idle_next_due_ms(), -1);
    EXPECT_EQ(timer_resume(id), RET_OK);
    EXPECT_GT(idle_next_due_ms(), 50000);
    EXPECT_EQ(timer_remove(id), RET_OK);
    EXPECT_EQ(idle_next_due_ms(), -1);
}

TEST_F(idle, a_timer_fires_after_its_time_and_once_unless_it_repeats) {
    const int64_t start = time_now_ms();
    int left = 3;
    timer_add(note("once", RET_OK), 5);
    timer_add(
        [&] {
            ran.push_back("tick");
            return --left > 0 ? RET_REPEAT : RET_REMOVE;
        },
        20);
    EXPECT_TRUE(idle_run_until([&] { return left == 0; }, patience));
    EXPECT_GE(time_now_ms() - start, 59);
    EXPECT_THAT(ran, ElementsAre("once", "tick", "tick", "tick"));
    EXPECT_EQ(idle_next_due_ms(), -1);
}

TEST_F(idle, a_repeating_timer_of_no_time_runs_once_in_a_dispatch) {
    const uint32_t id = timer_add(note("tick", RET_REPEAT), 0);
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_EQ(idle_next_due_ms(), 0);
    timer_remove(id);
}

TEST_F(idle, a_timer_added_by_a_job_waits_for_the_next_dispatch) {
    idle_queue([this] {
        timer_add(note("timer"), 0);
        return RET_OK;
    });
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_THAT(ran, ElementsAre("timer"));
}

TEST_F(idle, due_timers_run_after_the_jobs_and_by_their_due_time) {
    const int64_t start = time_now_ms();
    timer_add(note("late"), 2);
    timer_add(note("early"), 1);
    while (time_now_ms() < start + 5) std::this_thread::yield();
    idle_queue(note("job"));
    EXPECT_EQ(idle_next_due_ms(), 0);
    EXPECT_EQ(idle_dispatch(), 3U);
    EXPECT_THAT(ran, ElementsAre("job", "early", "late"));
}

TEST_F(idle, late_ticks_are_not_made_up_for) {
    int ticks = 0;
    const uint32_t id = timer_add(
        [&] {
            ticks++;
            return RET_REPEAT;
        },
        30);
    const int64_t start = time_now_ms();
    while (time_now_ms() < start + 100) std::this_thread::yield();
    idle_dispatch();
    idle_dispatch();
    EXPECT_EQ(ticks, 1);
    timer_remove(id);
}

TEST_F(idle, missed_ticks_leave_the_rhythm_as_it_was) {
    constexpr int64_t period_ms = 400;
    const int64_t start = time_now_ms();
    const uint32_t id = timer_add([] { return RET_REPEAT; }, period_ms);
    while (time_now_ms() < start + period_ms + 100) std::this_thread::yield();
    EXPECT_EQ(idle_dispatch(), 1U);
    // 100 ms late, and the next one is due 300 ms later, not 400.
    EXPECT_LE(idle_next_due_ms(), period_ms - 60);
    timer_remove(id);
}

TEST_F(idle, a_missed_beat_is_left_out_and_the_one_after_it_kept) {
    constexpr int64_t period_ms = 200;
    const int64_t start = time_now_ms();
    const uint32_t id = timer_add([] { return RET_REPEAT; }, period_ms);
    while (time_now_ms() < start + 2 * period_ms + 50) std::this_thread::yield();
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_LE(idle_next_due_ms(), period_ms - 30) << "with the third beat";
    timer_remove(id);
}

TEST_F(idle, a_timer_can_be_removed_by_itself) {
    uint32_t id = 0;
    auto held = std::make_shared<int>(0);
    id = timer_add(
        [&, held] {
            EXPECT_EQ(timer_remove(id), RET_OK);
            ++*held;
            return RET_REPEAT;
        },
        0);
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_EQ(idle_dispatch(), 0U);
    EXPECT_EQ(timer_remove(id), RET_FAIL);
    EXPECT_EQ(*held, 1);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(idle, a_suspended_timer_starts_anew_when_resumed) {
    const uint32_t id = timer_add(note("tick"), 1);
    EXPECT_EQ(timer_suspend(id), RET_OK);
    const int64_t start = time_now_ms();
    while (time_now_ms() < start + 5) std::this_thread::yield();
    EXPECT_EQ(idle_dispatch(), 0U);
    EXPECT_EQ(timer_resume(id), RET_OK);
    EXPECT_EQ(timer_resume(id), RET_OK);
    EXPECT_TRUE(idle_run_until([&] { return !ran.empty(); }, patience));
    EXPECT_THAT(ran, ElementsAre("tick"));
}

TEST_F(idle, a_timer_that_is_not_there_is_told) {
    EXPECT_EQ(timer_remove(0), RET_FAIL);
    EXPECT_EQ(timer_suspend(12345678), RET_FAIL);
    EXPECT_EQ(timer_resume(12345678), RET_FAIL);
}

TEST_F(idle, a_timer_is_not_run_again_inside_its_own_job) {
    const uint32_t id = timer_add(
        [this] {
            ran.push_back("in");
            EXPECT_EQ(idle_next_due_ms(), -1);
            EXPECT_EQ(idle_dispatch(), 0U);
            return RET_REPEAT;
        },
        0);
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_THAT(ran, ElementsAre("in"));
    timer_remove(id);
}

TEST_F(idle, the_wakeup_is_called_for_every_kind_of_new_work) {
    std::atomic<int> calls{0};
    idle_set_wakeup([&calls] { calls++; });
    idle_queue(note("a"));
    EXPECT_EQ(calls, 1);
    idle_add(note("b"));
    EXPECT_EQ(calls, 2);
    const uint32_t id = timer_add(note("c"), 60000);
    EXPECT_EQ(calls, 3);
    timer_suspend(id);
    EXPECT_EQ(calls, 3);
    timer_resume(id);
    EXPECT_EQ(calls, 4);
    std::thread([this] { idle_queue(note("d")); }).join();
    EXPECT_EQ(calls, 5);
    idle_set_wakeup({});
    idle_queue(note("e"));
    EXPECT_EQ(calls, 5);
}

TEST_F(idle, knows_the_gui_thread) {
    EXPECT_TRUE(idle_is_gui_thread());
    bool elsewhere = true;
    std::thread([&elsewhere] { elsewhere = idle_is_gui_thread(); }).join();
    EXPECT_FALSE(elsewhere);
}

TEST_F(idle, many_threads_post_and_each_ones_order_is_kept) {
    constexpr int per_thread = 300;
    std::vector<int> last(4, -1);
    int total = 0;
    std::vector<std::thread> threads;
    for (std::size_t number = 0; number < last.size(); number++) {
        threads.emplace_back([&, number] {
            for (int i = 0; i < per_thread; i++) {
                idle_queue([&, number, i] {
                    EXPECT_TRUE(idle_is_gui_thread());
                    EXPECT_EQ(last[number] + 1, i);
                    last[number] = i;
                    total++;
                    return RET_OK;
                });
            }
        });
    }
    EXPECT_TRUE(idle_run_until([&] { return total == 4 * per_thread; }, patience));
    for (std::thread& thread : threads) thread.join();
}

TEST_F(idle, run_until_ends_on_time_and_says_so) {
    const int64_t start = time_now_ms();
    EXPECT_FALSE(idle_run_until([] { return false; }, 30));
    const int64_t before = platform_cpu_ms();
    EXPECT_FALSE(idle_run_until([] { return false; }, 300));
    EXPECT_LT(platform_cpu_ms() - before, 100) << "it sleeps meanwhile";
    EXPECT_GE(time_now_ms() - start, 29);
    EXPECT_TRUE(idle_run_until([] { return true; }, 0));
    std::atomic<bool> flag{false};
    std::thread thread([&flag] { flag = true; });
    EXPECT_TRUE(idle_run_until([&flag] { return flag.load(); }, patience)) << "nothing is posted";
    thread.join();
}

TEST_F(idle, after_shutdown_work_is_destroyed_and_refused) {
    auto held = std::make_shared<int>(1);
    idle_queue([held] { return RET_OK; });
    idle_add([held] { return RET_OK; });
    timer_add([held] { return RET_OK; }, 0);
    EXPECT_EQ(held.use_count(), 4);
    idle_shutdown();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(idle_queue([held] { return RET_OK; }), RET_FAIL);
    EXPECT_EQ(idle_add([held] { return RET_OK; }), 0U);
    EXPECT_EQ(timer_add([held] { return RET_OK; }, 0), 0U);
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(idle_dispatch(), 0U);
    EXPECT_EQ(idle_next_due_ms(), -1);
    idle_restart();
    EXPECT_EQ(idle_queue(note("again")), RET_OK);
    EXPECT_EQ(idle_dispatch(), 1U);
}

TEST_F(idle, a_shutdown_inside_a_job_ends_the_repeating) {
    idle_add([this] {
        idle_shutdown();
        ran.push_back("job");
        return RET_REPEAT;
    });
    timer_add(note("timer"), 0);
    idle_queue(note("never"));
    EXPECT_EQ(idle_dispatch(), 1U);
    EXPECT_EQ(idle_dispatch(), 0U);
    EXPECT_THAT(ran, ElementsAre("job"));
}

} // namespace
