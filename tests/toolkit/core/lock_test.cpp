#include "toolkit/core/thread.h"

#include "toolkit/core/date_time.h"
#include "toolkit/core/worker.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

constexpr uint32_t for_ever = UINT32_MAX;

TEST(mutex, is_held_by_one_thread_at_a_time) {
    tk_mutex* const mutex = tk_mutex_create();
    int counter = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; number++) {
        threads.emplace_back([&] {
            for (int i = 0; i < 1000; i++) {
                const tk_lock lock(mutex);
                counter++;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(counter, 4000);
    EXPECT_EQ(tk_mutex_destroy(mutex), RET_OK);
}

TEST(mutex, is_unlocked_by_its_holder_only) {
    tk_mutex* const mutex = tk_mutex_create();
    EXPECT_EQ(tk_mutex_unlock(mutex), RET_FAIL) << "not held";
    EXPECT_EQ(tk_mutex_lock(mutex), RET_OK);
    std::thread([mutex] {
        EXPECT_EQ(tk_mutex_unlock(mutex), RET_FAIL);
        EXPECT_EQ(tk_mutex_try_lock(mutex), RET_FAIL);
    }).join();
    EXPECT_EQ(tk_mutex_try_lock(mutex), RET_FAIL) << "not recursive";
    EXPECT_EQ(tk_mutex_unlock(mutex), RET_OK);
    EXPECT_EQ(tk_mutex_unlock(mutex), RET_FAIL);
    std::thread([mutex] {
        EXPECT_EQ(tk_mutex_try_lock(mutex), RET_OK);
        EXPECT_EQ(tk_mutex_unlock(mutex), RET_OK);
    }).join();
    tk_mutex_destroy(mutex);
}

TEST(mutex, a_missing_one_is_told) {
    EXPECT_EQ(tk_mutex_lock(nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(tk_mutex_try_lock(nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(tk_mutex_unlock(nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(tk_mutex_destroy(nullptr), RET_BAD_PARAMS);
    const tk_lock lock(nullptr);
}

TEST(mutex, a_lock_of_a_scope_can_let_go_early) {
    tk_mutex* const mutex = tk_mutex_create();
    {
        tk_lock lock(mutex);
        EXPECT_EQ(tk_mutex_try_lock(mutex), RET_FAIL);
        lock.unlock();
        EXPECT_EQ(tk_mutex_try_lock(mutex), RET_OK);
        lock.unlock();
        EXPECT_EQ(tk_mutex_unlock(mutex), RET_OK) << "the second unlock did nothing";
    }
    EXPECT_EQ(tk_mutex_unlock(mutex), RET_FAIL);
    tk_mutex_destroy(mutex);
}

#ifndef NDEBUG
TEST(mutex_death, a_second_lock_by_its_holder_is_loud) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // The message goes to standard output: it is the end of the program that is seen here.
    EXPECT_DEATH(
        {
            tk_mutex* const mutex = tk_mutex_create();
            tk_mutex_lock(mutex);
            tk_mutex_lock(mutex);
        },
        "");
}

TEST(mutex_death, destroyed_under_its_holder_is_loud) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            tk_mutex* const mutex = tk_mutex_create();
            tk_mutex_lock(mutex);
            tk_mutex_destroy(mutex);
        },
        "");
}
#else
TEST(mutex, a_second_lock_by_its_holder_is_refused) {
    tk_mutex* const mutex = tk_mutex_create();
    tk_mutex_lock(mutex);
    EXPECT_EQ(tk_mutex_lock(mutex), RET_FAIL);
    EXPECT_EQ(tk_mutex_unlock(mutex), RET_OK);
    tk_mutex_destroy(mutex);
}

TEST(mutex, destroyed_under_its_holder_is_refused) {
    tk_mutex* const mutex = tk_mutex_create();
    tk_mutex_lock(mutex);
    EXPECT_EQ(tk_mutex_destroy(mutex), RET_FAIL);
    EXPECT_EQ(tk_mutex_unlock(mutex), RET_OK);
    EXPECT_EQ(tk_mutex_destroy(mutex), RET_OK);
}
#endif

TEST(semaphore, gives_what_it_was_made_with) {
    tk_semaphore* const semaphore = tk_semaphore_create(2);
    EXPECT_EQ(tk_semaphore_wait(semaphore, for_ever), RET_OK);
    EXPECT_EQ(tk_semaphore_wait(semaphore, 0), RET_OK);
    EXPECT_EQ(tk_semaphore_wait(semaphore, 0), RET_FAIL);
    EXPECT_EQ(tk_semaphore_post(semaphore), RET_OK);
    EXPECT_EQ(tk_semaphore_wait(semaphore, 0), RET_OK);
    EXPECT_EQ(tk_semaphore_destroy(semaphore), RET_OK);
}

TEST(semaphore, a_wait_ends_on_time) {
    tk_semaphore* const semaphore = tk_semaphore_create(0);
    const int64_t start = time_now_ms();
    EXPECT_EQ(tk_semaphore_wait(semaphore, 30), RET_FAIL);
    EXPECT_GE(time_now_ms() - start, 29);
    tk_semaphore_destroy(semaphore);
}

TEST(semaphore, is_not_posted_beyond_its_range) {
    tk_semaphore* const semaphore = tk_semaphore_create(UINT32_MAX);
    EXPECT_EQ(tk_semaphore_post(semaphore), RET_FAIL);
    EXPECT_EQ(tk_semaphore_wait(semaphore, 0), RET_OK);
    EXPECT_EQ(tk_semaphore_post(semaphore), RET_OK);
    tk_semaphore_destroy(semaphore);
}

TEST(semaphore, every_post_wakes_one_waiter) {
    tk_semaphore* const semaphore = tk_semaphore_create(0);
    std::atomic<int> woken{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < 3; number++) {
        threads.emplace_back([&] {
            if (tk_semaphore_wait(semaphore, for_ever) == RET_OK) woken++;
        });
    }
    for (int number = 0; number < 3; number++) tk_semaphore_post(semaphore);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(woken, 3);
    EXPECT_EQ(tk_semaphore_wait(semaphore, 0), RET_FAIL);
    tk_semaphore_destroy(semaphore);
}

TEST(semaphore, a_stop_ends_a_wait_but_takes_nothing_away) {
    tk_semaphore* const semaphore = tk_semaphore_create(0);
    tk_semaphore* const ready = tk_semaphore_create(0);
    std::vector<ret_t> answers;
    worker waiting;
    ASSERT_EQ(waiting.start({"waiting"},
                            [&] {
                                tk_semaphore_post(ready);
                                answers.push_back(tk_semaphore_wait(semaphore, for_ever));
                                answers.push_back(tk_semaphore_wait(semaphore, 3600000));
                                tk_semaphore_post(semaphore);
                                answers.push_back(tk_semaphore_wait(semaphore, for_ever));
                                return 0U;
                            }),
              RET_OK);
    tk_semaphore_wait(ready, for_ever);
    waiting.request_stop();
    EXPECT_EQ(waiting.join(), RET_OK);
    EXPECT_EQ(answers, (std::vector<ret_t>{RET_FAIL, RET_FAIL, RET_OK})) << "what is there can still be taken";
    EXPECT_EQ(tk_semaphore_wait(semaphore, 0), RET_FAIL);
    EXPECT_EQ(tk_semaphore_destroy(semaphore), RET_OK);
    EXPECT_EQ(tk_semaphore_destroy(ready), RET_OK);
}

TEST(semaphore, a_missing_one_is_told) {
    EXPECT_EQ(tk_semaphore_wait(nullptr, 0), RET_BAD_PARAMS);
    EXPECT_EQ(tk_semaphore_post(nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(tk_semaphore_destroy(nullptr), RET_BAD_PARAMS);
}

} // namespace
