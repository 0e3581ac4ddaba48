#include "toolkit/core/worker.h"

#include "toolkit/core/date_time.h"
#include "toolkit/core/thread.h"

#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <pthread.h>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr int64_t patience = 10000;
constexpr uint32_t hour = 3600000;

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

/// Work that waits until it is asked to stop.
uint32_t until_stopped() {
    worker_event never;
    while (!worker_should_stop()) never.wait(wait_for_ever);
    return 7;
}

class workers : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(workers_running(), 0U); }
    void TearDown() override {
        EXPECT_TRUE(wait_for([] { return workers_running() == 0; }));
    }
};

TEST_F(workers, run_their_work_and_keep_its_result) {
    worker one;
    EXPECT_EQ(one.join(), RET_FAIL) << "never started";
    EXPECT_FALSE(one.running());
    EXPECT_EQ(one.result(), 0U);
    EXPECT_STREQ(one.name(), "");
    one.request_stop();
    ASSERT_EQ(one.start({.name = "one"}, [] { return 42U; }), RET_OK);
    EXPECT_EQ(one.join(), RET_OK);
    EXPECT_FALSE(one.running());
    EXPECT_EQ(one.result(), 42U);
    EXPECT_STREQ(one.name(), "one");
    EXPECT_EQ(one.join(), RET_OK) << "it has ended";
}

#ifdef __linux__ // elsewhere a thread cannot be asked for its stack
/// Of the calling thread, in KiB.
uint32_t stack_kib() {
    pthread_attr_t attributes;
    std::size_t bytes = 0;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
    pthread_attr_getstacksize(&attributes, &bytes);
    pthread_attr_destroy(&attributes);
    return static_cast<uint32_t>(bytes / 1024);
}

TEST_F(workers, get_the_stack_of_their_plan_but_never_too_little) {
    worker one;
    ASSERT_EQ(one.start({.name = "one", .stack_bytes = 64 << 20}, stack_kib), RET_OK);
    one.join();
    EXPECT_GE(one.result(), 65536U) << "more than the system gives of itself";
    ASSERT_EQ(one.start({"usual"}, stack_kib), RET_OK);
    one.join();
    EXPECT_GE(one.result(), 256U);
}
#endif

TEST_F(workers, without_work_none_is_started) {
    worker one;
    EXPECT_EQ(one.start({"one"}, {}), RET_BAD_PARAMS);
    EXPECT_EQ(one.join(), RET_FAIL);
}

TEST_F(workers, one_that_the_system_refuses_keeps_what_ran_last) {
    worker one;
    ASSERT_EQ(one.start({"first"}, [] { return 5U; }), RET_OK);
    one.join();
    tk_thread_refuse(1);
    EXPECT_EQ(one.start({"second"}, [] { return 6U; }), RET_FAIL);
    EXPECT_FALSE(one.running());
    EXPECT_EQ(one.result(), 5U);
    EXPECT_STREQ(one.name(), "first");
    ASSERT_EQ(one.start({"third"}, [] { return 7U; }), RET_OK);
    one.join();
    EXPECT_EQ(one.result(), 7U);
}

TEST_F(workers, one_that_ended_can_be_started_again_and_has_forgotten_the_stop) {
    worker one;
    ASSERT_EQ(one.start({"first"}, until_stopped), RET_OK);
    one.request_stop();
    ASSERT_TRUE(wait_for([&] { return !one.running(); }));
    EXPECT_EQ(one.result(), 7U);
    ASSERT_EQ(one.start({"second"}, [] { return worker_should_stop() ? 1U : 2U; }), RET_OK);
    EXPECT_EQ(one.join(), RET_OK);
    EXPECT_EQ(one.result(), 2U);
    EXPECT_STREQ(one.name(), "second");
}

TEST_F(workers, one_that_runs_is_not_started_again) {
    worker one;
    ASSERT_EQ(one.start({"first"}, until_stopped), RET_OK);
    EXPECT_TRUE(one.running());
    EXPECT_EQ(one.start({"second"}, [] { return 1U; }), RET_FAIL);
    EXPECT_STREQ(one.name(), "first");
    EXPECT_EQ(workers_running(), 1U);
}

TEST_F(workers, the_destructor_ends_the_work_before_what_it_uses_goes) {
    std::atomic<bool> ended{false};
    {
        int used = 1; // the sanitisers see a late use
        worker one;
        ASSERT_EQ(one.start({"one"},
                            [&] {
                                until_stopped();
                                used++;
                                ended = true;
                                return 0U;
                            }),
                  RET_OK);
    }
    EXPECT_TRUE(ended);
}

TEST_F(workers, cannot_join_themselves) {
    worker one;
    std::promise<void> started;
    ret_t joined = RET_OK;
    ASSERT_EQ(one.start({"one"},
                        [&] {
                            started.get_future().wait();
                            joined = one.join();
                            return 0U;
                        }),
              RET_OK);
    started.set_value();
    EXPECT_EQ(one.join(), RET_OK);
    EXPECT_EQ(joined, RET_FAIL);
}

TEST_F(workers, one_that_destroys_itself_is_asked_to_stop_and_goes_on) {
    auto* const one = new worker;
    std::promise<void> started;
    std::atomic<bool> asked{false};
    ASSERT_EQ(one->start({"one"},
                         [&] {
                             started.get_future().wait();
                             delete one;
                             asked = worker_should_stop();
                             return 0U;
                         }),
              RET_OK);
    started.set_value();
    EXPECT_TRUE(wait_for([&] { return asked.load(); }));
}

TEST_F(workers, move_with_their_thread) {
    worker one;
    ASSERT_EQ(one.start({"one"}, until_stopped), RET_OK);
    worker other = std::move(one);
    EXPECT_TRUE(other.running());
    EXPECT_FALSE(one.running());
    EXPECT_EQ(one.join(), RET_FAIL);
    ASSERT_EQ(one.start({"again"}, [] { return 5U; }), RET_OK) << "the one that was moved from is as new";
    one = std::move(other);
    EXPECT_TRUE(one.running());
    EXPECT_STREQ(one.name(), "one");
    worker& same = one;
    one = std::move(same);
    EXPECT_TRUE(one.running());
}

TEST_F(workers, assigning_ends_what_ran_before) {
    worker one;
    std::atomic<bool> ended{false};
    ASSERT_EQ(one.start({"one"},
                        [&] {
                            until_stopped();
                            ended = true;
                            return 0U;
                        }),
              RET_OK);
    one = worker();
    EXPECT_TRUE(ended);
    EXPECT_FALSE(one.running());
}

TEST_F(workers, what_the_work_holds_is_released_before_it_counts_as_ended) {
    auto held = std::make_shared<int>(0);
    worker one;
    ASSERT_EQ(one.start({"one"}, [held] { return 0U; }), RET_OK);
    ASSERT_TRUE(wait_for([&] { return !one.running(); }));
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(workers, an_abandoned_one_is_asked_to_stop_and_not_waited_for) {
    // A wait that no stop ends, as in a driver's call.
    std::promise<void> answer;
    auto held = std::make_shared<std::atomic<bool>>(false);
    worker one;
    ASSERT_EQ(one.start({"one"},
                        [held, hang = answer.get_future().share()] {
                            hang.wait();
                            *held = worker_should_stop();
                            return 0U;
                        }),
              RET_OK);
    one.abandon();
    EXPECT_FALSE(one.running());
    EXPECT_EQ(workers_running(), 1U) << "it is still counted";
    EXPECT_FALSE(*held);
    answer.set_value();
    EXPECT_TRUE(wait_for([] { return workers_running() == 0; }));
    EXPECT_TRUE(*held);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(workers, may_be_asked_by_any_thread_while_the_owner_starts_and_joins) {
    worker one;
    std::atomic<bool> enough{false};
    std::thread asking([&] {
        while (!enough) {
            one.request_stop();
            static_cast<void>(one.running());
            static_cast<void>(one.result());
        }
    });
    for (int i = 0; i < 50; i++) {
        ASSERT_EQ(one.start({"one"}, until_stopped), RET_OK);
        EXPECT_EQ(one.join(), RET_OK);
        EXPECT_EQ(one.result(), 7U);
    }
    enough = true;
    asking.join();
}

TEST_F(workers, their_end_can_be_waited_for) {
    worker one;
    EXPECT_TRUE(one.wait_ended(wait_for_ever)) << "none runs";
    ASSERT_EQ(one.start({"one"}, until_stopped), RET_OK);
    const int64_t start = time_now_ms();
    EXPECT_FALSE(one.wait_ended(20));
    EXPECT_GE(time_now_ms() - start, 19);
    worker waiting;
    ASSERT_EQ(waiting.start({"waiting"}, [&] { return one.wait_ended(wait_for_ever) ? 1U : 2U; }), RET_OK);
    waiting.request_stop();
    waiting.join();
    EXPECT_EQ(waiting.result(), 2U) << "a stop ends the wait";
    ASSERT_EQ(waiting.start({"waiting"}, [&] { return one.wait_ended(wait_for_ever) ? 1U : 2U; }), RET_OK);
    one.request_stop();
    waiting.join();
    EXPECT_EQ(waiting.result(), 1U);
    EXPECT_FALSE(one.running());
}

TEST_F(workers, a_stop_token_is_the_calling_workers) {
    EXPECT_FALSE(worker_stop_token().stop_possible());
    EXPECT_FALSE(worker_should_stop());
    worker one;
    std::promise<stop_token> token;
    ASSERT_EQ(one.start({"one"},
                        [&] {
                            token.set_value(worker_stop_token());
                            return until_stopped();
                        }),
              RET_OK);
    const stop_token given = token.get_future().get();
    EXPECT_TRUE(given.stop_possible());
    EXPECT_FALSE(given.stop_requested());
    bool called = false;
    const stop_callback on_stop(given, [&called] { called = true; });
    one.request_stop();
    EXPECT_TRUE(called) << "on the thread that asks";
    EXPECT_TRUE(given.stop_requested());
}

TEST_F(workers, an_event_is_taken_by_one_wait) {
    worker_event event;
    EXPECT_FALSE(event.wait(0));
    event.set();
    event.set();
    EXPECT_TRUE(event.wait(0));
    const int64_t start = time_now_ms();
    EXPECT_FALSE(event.wait(20)) << "two signals that nobody took are one";
    EXPECT_GE(time_now_ms() - start, 19);
    worker one;
    ASSERT_EQ(one.start({"one"}, [&] { return event.wait(wait_for_ever) ? 1U : 0U; }), RET_OK);
    event.set();
    one.join();
    EXPECT_EQ(one.result(), 1U);
}

TEST_F(workers, a_stop_ends_the_wait_for_an_event) {
    worker_event event;
    worker one;
    ASSERT_EQ(one.start({"one"}, [&] { return event.wait(wait_for_ever) || event.wait(hour) ? 1U : 2U; }), RET_OK);
    one.request_stop();
    EXPECT_EQ(one.join(), RET_OK);
    EXPECT_EQ(one.result(), 2U);
}

TEST_F(workers, stop_all_ends_whoever_runs) {
    EXPECT_EQ(workers_stop_all(0), 0U);
    std::vector<worker> many(4);
    for (worker& one : many) ASSERT_EQ(one.start({"one"}, until_stopped), RET_OK);
    tk_thread* const thread = tk_thread_create(until_stopped);
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    EXPECT_EQ(workers_running(), 5U);
    EXPECT_EQ(workers_stop_all(patience), 0U);
    EXPECT_EQ(workers_running(), 0U);
    for (const worker& one : many) EXPECT_FALSE(one.running());
    EXPECT_EQ(tk_thread_result(thread), 7U);
    tk_thread_destroy(thread);
}

TEST_F(workers, stop_all_gives_up_on_time_and_says_on_how_many) {
    std::promise<void> answer;
    worker hangs;
    worker ends;
    ASSERT_EQ(hangs.start({"hangs"},
                          [&answer] {
                              answer.get_future().wait();
                              return 0U;
                          }),
              RET_OK);
    ASSERT_EQ(ends.start({"ends"}, until_stopped), RET_OK);
    const int64_t start = time_now_ms();
    EXPECT_EQ(workers_stop_all(50), 1U);
    EXPECT_GE(time_now_ms() - start, 49);
    ASSERT_TRUE(wait_for([&] { return !ends.running(); }));
    answer.set_value();
}

TEST_F(workers, stop_all_ends_those_too_that_are_started_meanwhile) {
    worker second;
    worker first;
    ASSERT_EQ(first.start({"first"},
                          [&] {
                              until_stopped();
                              return second.start({"second"}, until_stopped) == RET_OK ? 1U : 0U;
                          }),
              RET_OK);
    EXPECT_EQ(workers_stop_all(patience), 0U);
    EXPECT_EQ(first.result(), 1U);
    EXPECT_EQ(second.result(), 7U);
}

TEST_F(workers, stop_all_by_a_worker_leaves_itself_alone) {
    worker other;
    ASSERT_EQ(other.start({"other"}, until_stopped), RET_OK);
    worker one;
    ASSERT_EQ(one.start({"one"}, [] { return workers_stop_all(patience) == 0 && !worker_should_stop() ? 1U : 0U; }),
              RET_OK);
    one.join();
    EXPECT_EQ(one.result(), 1U);
    EXPECT_FALSE(other.running());
}

} // namespace
