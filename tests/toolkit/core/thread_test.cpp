#include "toolkit/core/thread.h"

#include "toolkit/core/date_time.h"
#include "toolkit/core/worker.h"

#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <pthread.h>
#include <string>
#include <thread>

namespace {

constexpr int64_t patience = 10000;
constexpr uint32_t for_ever = UINT32_MAX;

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

class threads : public testing::Test {
  protected:
    void SetUp() override { gate = tk_semaphore_create(0); }
    void TearDown() override {
        EXPECT_TRUE(wait_for([] { return workers_running() == 0; }));
        EXPECT_EQ(tk_semaphore_destroy(gate), RET_OK);
    }
    tk_semaphore* gate = nullptr;
};

TEST_F(threads, run_their_entry_and_keep_its_result) {
    tk_thread* const thread = tk_thread_create([] { return 42U; });
    EXPECT_FALSE(tk_thread_is_running(thread));
    EXPECT_EQ(tk_thread_result(thread), 0U);
    EXPECT_EQ(tk_thread_start(thread), RET_OK);
    EXPECT_EQ(tk_thread_join(thread), RET_OK);
    EXPECT_FALSE(tk_thread_is_running(thread));
    EXPECT_EQ(tk_thread_result(thread), 42U);
    EXPECT_EQ(tk_thread_join(thread), RET_FAIL) << "joined before";
    EXPECT_EQ(tk_thread_start(thread), RET_FAIL) << "started before";
    EXPECT_EQ(tk_thread_destroy(thread), RET_OK);
}

TEST_F(threads, that_never_started_can_be_let_go) {
    tk_thread* const thread = tk_thread_create([] { return 0U; });
    EXPECT_EQ(tk_thread_join(thread), RET_FAIL);
    EXPECT_EQ(tk_thread_destroy(thread), RET_OK);
    EXPECT_EQ(tk_thread_release(tk_thread_create([] { return 0U; })), RET_OK);
    EXPECT_EQ(tk_thread_destroy(tk_thread_create({})), RET_OK);
}

TEST_F(threads, a_missing_thread_is_told) {
    EXPECT_EQ(tk_thread_set_name(nullptr, "x"), RET_BAD_PARAMS);
    EXPECT_EQ(tk_thread_set_priority(nullptr, 4), RET_BAD_PARAMS);
    EXPECT_EQ(tk_thread_set_stack_size(nullptr, 4096), RET_BAD_PARAMS);
    EXPECT_EQ(tk_thread_start(nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(tk_thread_join(nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(tk_thread_wait(nullptr, 0), RET_BAD_PARAMS);
    EXPECT_EQ(tk_thread_destroy(nullptr), RET_OK);
    EXPECT_EQ(tk_thread_release(nullptr), RET_OK);
    EXPECT_FALSE(tk_thread_is_running(nullptr));
    EXPECT_EQ(tk_thread_result(nullptr), 0U);
    EXPECT_STREQ(tk_thread_name(nullptr), "");
    tk_thread_request_stop(nullptr);
}

TEST_F(threads, keep_the_whole_name_and_show_its_start_to_the_system) {
    std::string seen;
    tk_thread* const thread = tk_thread_create([&seen] {
        char name[64] = "";
        pthread_getname_np(pthread_self(), name, sizeof(name));
        seen = name;
        return 0U;
    });
    EXPECT_EQ(tk_thread_set_name(thread, nullptr), RET_BAD_PARAMS);
    EXPECT_EQ(tk_thread_set_name(thread, "thread_vkt610b_connect"), RET_OK);
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    EXPECT_STREQ(tk_thread_name(thread), "thread_vkt610b_connect");
    tk_thread_join(thread);
    EXPECT_EQ(seen, "thread_vkt610b_");
    tk_thread_destroy(thread);
}

TEST_F(threads, get_a_stack_that_suffices_however_little_is_asked_for) {
    // 64 KiB of locals: more than the 4096 bytes asked for.
    tk_thread* const thread = tk_thread_create([] {
        volatile char room[64 * 1024];
        for (std::size_t i = 0; i < sizeof(room); i += 512) room[i] = static_cast<char>(i / 512);
        return static_cast<uint32_t>(room[512 * 100]);
    });
    EXPECT_EQ(tk_thread_set_priority(thread, 4), RET_OK);
    EXPECT_EQ(tk_thread_set_stack_size(thread, 4096), RET_OK);
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    tk_thread_join(thread);
    EXPECT_EQ(tk_thread_result(thread), 100U);
    tk_thread_destroy(thread);
}

TEST_F(threads, get_the_stack_they_ask_for) {
    tk_thread* const thread = tk_thread_create([] {
        volatile char room[3 * 1024 * 1024];
        for (std::size_t i = 0; i < sizeof(room); i += 1024) room[i] = 1;
        return static_cast<uint32_t>(room[1024]);
    });
    tk_thread_set_stack_size(thread, 4 * 1024 * 1024);
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    tk_thread_join(thread);
    EXPECT_EQ(tk_thread_result(thread), 1U);
    tk_thread_destroy(thread);
}

TEST_F(threads, that_the_system_refuses_never_ran) {
    tk_thread* const thread = tk_thread_create([] { return 42U; });
    tk_thread_refuse(1);
    EXPECT_EQ(tk_thread_start(thread), RET_FAIL);
    EXPECT_FALSE(tk_thread_is_running(thread));
    EXPECT_EQ(workers_running(), 0U);
    EXPECT_EQ(tk_thread_join(thread), RET_FAIL);
    EXPECT_EQ(tk_thread_wait(thread, 0), RET_OK);
    EXPECT_EQ(tk_thread_start(thread), RET_OK) << "a later try may go well";
    EXPECT_EQ(tk_thread_join(thread), RET_OK);
    EXPECT_EQ(tk_thread_result(thread), 42U);
    tk_thread_destroy(thread);
}

TEST_F(threads, are_counted_while_they_run) {
    EXPECT_EQ(workers_running(), 0U);
    tk_thread* const thread = tk_thread_create([this] {
        tk_semaphore_wait(gate, for_ever);
        return 0U;
    });
    EXPECT_EQ(workers_running(), 0U);
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    EXPECT_EQ(workers_running(), 1U);
    EXPECT_TRUE(tk_thread_is_running(thread));
    tk_semaphore_post(gate);
    tk_thread_join(thread);
    EXPECT_EQ(workers_running(), 0U);
    tk_thread_destroy(thread);
}

TEST_F(threads, can_neither_join_nor_wait_for_themselves) {
    tk_thread* thread = nullptr;
    ret_t joined = RET_OK;
    thread = tk_thread_create([&] {
        tk_semaphore_wait(gate, for_ever);
        joined = tk_thread_join(thread);
        return 0U;
    });
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    tk_semaphore_post(gate);
    EXPECT_EQ(tk_thread_join(thread), RET_OK);
    EXPECT_EQ(joined, RET_FAIL);
    tk_thread_destroy(thread);
}

TEST_F(threads, can_destroy_themselves) {
    tk_thread* thread = nullptr;
    std::atomic<bool> done{false};
    thread = tk_thread_create([&] {
        tk_semaphore_wait(gate, for_ever);
        tk_thread_destroy(thread);
        done = true;
        return 0U;
    });
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    tk_semaphore_post(gate);
    EXPECT_TRUE(wait_for([&] { return done.load(); }));
}

TEST_F(threads, only_toolkit_threads_are_asked_to_stop) { EXPECT_FALSE(tk_thread_should_stop()); }

TEST_F(threads, asked_to_stop_before_the_start_see_it_at_once) {
    tk_thread* const thread = tk_thread_create([] { return tk_thread_should_stop() ? 1U : 0U; });
    tk_thread_request_stop(thread);
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    tk_thread_join(thread);
    EXPECT_EQ(tk_thread_result(thread), 1U);
    tk_thread_destroy(thread);
}

TEST_F(threads, release_neither_stops_nor_waits) {
    auto seen = std::make_shared<std::atomic<int>>(0);
    tk_thread* const thread = tk_thread_create([this, seen] {
        tk_semaphore_wait(gate, for_ever);
        *seen = tk_thread_should_stop() ? 1 : 2;
        return 0U;
    });
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    tk_thread_release(thread);
    EXPECT_EQ(*seen, 0);
    tk_semaphore_post(gate);
    EXPECT_TRUE(wait_for([&] { return *seen != 0; }));
    EXPECT_EQ(*seen, 2);
}

TEST_F(threads, destroy_asks_and_waits_for_the_end) {
    auto ended = std::make_shared<std::atomic<bool>>(false);
    tk_thread* const thread = tk_thread_create([this, ended] {
        tk_semaphore_wait(gate, for_ever);
        *ended = tk_thread_should_stop();
        return 0U;
    });
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    EXPECT_EQ(tk_thread_destroy(thread), RET_OK);
    EXPECT_TRUE(*ended);
    EXPECT_EQ(workers_running(), 0U);
}

TEST_F(threads, a_wait_for_the_end_ends_on_time) {
    tk_thread* const thread = tk_thread_create([this] {
        tk_semaphore_wait(gate, for_ever);
        return 0U;
    });
    EXPECT_EQ(tk_thread_wait(thread, for_ever), RET_OK) << "it does not run";
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    const int64_t start = time_now_ms();
    EXPECT_EQ(tk_thread_wait(thread, 20), RET_FAIL);
    EXPECT_GE(time_now_ms() - start, 19);
    tk_semaphore_post(gate);
    EXPECT_EQ(tk_thread_wait(thread, for_ever), RET_OK);
    EXPECT_FALSE(tk_thread_is_running(thread));
    EXPECT_EQ(tk_thread_join(thread), RET_OK) << "it is still to be joined";
    EXPECT_EQ(tk_thread_wait(thread, 0), RET_OK);
    tk_thread_destroy(thread);
}

TEST_F(threads, what_the_entry_holds_is_released_when_it_returns) {
    auto held = std::make_shared<int>(0);
    tk_thread* const thread = tk_thread_create([held] { return 0U; });
    EXPECT_EQ(held.use_count(), 2);
    ASSERT_EQ(tk_thread_start(thread), RET_OK);
    tk_thread_join(thread);
    EXPECT_EQ(held.use_count(), 1);
    tk_thread_destroy(thread);
}

} // namespace
