// The one place in the tests that sleeps: sleeping is what is tested here.
#include "toolkit/core/date_time.h"
#include "toolkit/core/thread.h"
#include "toolkit/core/worker.h"

#include <atomic>
#include <gtest/gtest.h>

namespace {

constexpr uint32_t hour = 3600000;
constexpr int64_t patience = 10000;

TEST(sleep, lasts_as_long_as_asked_on_any_thread) {
    int64_t start = time_now_ms();
    sleep_ms(0);
    sleep_ms(20);
    EXPECT_GE(time_now_ms() - start, 19);

    tk_thread* const thread = tk_thread_create([] {
        const int64_t began = time_now_ms();
        sleep_ms(20);
        return static_cast<uint32_t>(time_now_ms() - began);
    });
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    tk_thread_join(thread);
    EXPECT_GE(tk_thread_result(thread), 19U);
    tk_thread_destroy(thread);
}

TEST(sleep, ends_at_once_when_the_thread_is_asked_to_stop) {
    tk_semaphore* const ready = tk_semaphore_create(0);
    tk_thread* const thread = tk_thread_create([ready] {
        tk_semaphore_post(ready);
        sleep_ms(hour);
        sleep_ms(hour); // stays interrupted
        return 1U;
    });
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    tk_semaphore_wait(ready, UINT32_MAX);
    const int64_t start = time_now_ms();
    tk_thread_request_stop(thread);
    EXPECT_EQ(tk_thread_join(thread), RET_OK);
    EXPECT_LT(time_now_ms() - start, patience);
    EXPECT_EQ(tk_thread_result(thread), 1U);
    tk_thread_destroy(thread);
    tk_semaphore_destroy(ready);
}

TEST(sleep, destroy_ends_a_sleeping_thread) {
    tk_semaphore* const ready = tk_semaphore_create(0);
    std::atomic<bool> ended{false};
    tk_thread* const thread = tk_thread_create([&] {
        tk_semaphore_post(ready);
        while (!tk_thread_should_stop()) sleep_ms(hour);
        ended = true;
        return 0U;
    });
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    tk_semaphore_wait(ready, UINT32_MAX);
    EXPECT_EQ(tk_thread_destroy(thread), RET_OK);
    EXPECT_TRUE(ended);
    tk_semaphore_destroy(ready);
}

TEST(sleep, says_whether_a_stop_ended_it) {
    const int64_t start = time_now_ms();
    EXPECT_TRUE(worker_sleep_ms(20)) << "no worker";
    EXPECT_GE(time_now_ms() - start, 19);
    worker one;
    ASSERT_EQ(one.start({"one"}, [] { return worker_sleep_ms(1) ? 1U : 0U; }), RET_OK);
    one.join();
    EXPECT_EQ(one.result(), 1U);
    ASSERT_EQ(one.start({"one"}, [] { return worker_sleep_ms(hour) || worker_sleep_ms(hour) ? 1U : 2U; }), RET_OK);
    one.request_stop();
    EXPECT_EQ(one.join(), RET_OK);
    EXPECT_EQ(one.result(), 2U);
}

} // namespace
