#include "toolkit/core/stop.h"

#include "toolkit/core/date_time.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace {

constexpr uint32_t patience = 30000;

TEST(stop, is_told_by_every_token_of_its_source) {
    const stop_source source;
    const stop_source same = source;
    const stop_token token = source.get_token();
    EXPECT_TRUE(token.stop_possible());
    EXPECT_FALSE(token.stop_requested());
    EXPECT_EQ(token, same.get_token());
    EXPECT_NE(token, stop_source().get_token());
    same.request_stop();
    EXPECT_TRUE(token.stop_requested());
    EXPECT_TRUE(source.stop_requested());
    source.request_stop();
    EXPECT_TRUE(token.stop_requested()) << "once and for all";
}

TEST(stop, of_no_source_never_comes) {
    const stop_token none;
    EXPECT_FALSE(none.stop_possible());
    EXPECT_FALSE(none.stop_requested());
    const stop_callback never(none, [] { ADD_FAILURE(); });
}

TEST(stop, runs_each_callback_once_on_the_thread_that_asks) {
    const stop_source source;
    std::string ran;
    std::thread::id where;
    const stop_callback first(source.get_token(), [&] { ran += "1"; });
    const stop_callback second(source.get_token(), [&] {
        ran += "2";
        where = std::this_thread::get_id();
    });
    {
        const stop_callback gone(source.get_token(), [&] { ran += "gone"; });
    }
    EXPECT_EQ(ran, "");
    std::thread asking([&] {
        source.request_stop();
        source.request_stop();
        EXPECT_EQ(where, std::this_thread::get_id());
    });
    asking.join();
    EXPECT_EQ(ran, "21");
}

TEST(stop, that_was_asked_for_before_runs_a_callback_at_once) {
    const stop_source source;
    source.request_stop();
    bool ran = false;
    const stop_callback late(source.get_token(), [&ran] { ran = true; });
    EXPECT_TRUE(ran);
}

TEST(stop, a_callback_may_destroy_itself_and_the_source) {
    auto source = std::make_unique<stop_source>();
    std::optional<stop_callback> itself;
    bool ran = false;
    const stop_callback older(source->get_token(), [&] { EXPECT_TRUE(ran) << "newest first"; });
    itself.emplace(source->get_token(), [&] {
        ran = true;
        source.reset();
        itself.reset();
    });
    source->request_stop();
    EXPECT_TRUE(ran);
}

TEST(stop, a_callback_that_runs_is_waited_for_by_its_destructor) {
    const stop_source source;
    std::promise<void> running;
    std::promise<void> go_on;
    std::atomic<bool> ended{false};
    auto callback = std::make_unique<stop_callback>(source.get_token(), [&] {
        running.set_value();
        go_on.get_future().wait();
        ended = true;
    });
    std::thread asking([&] { source.request_stop(); });
    running.get_future().wait();
    std::atomic<bool> destroying{false};
    std::thread destroyer([&] {
        destroying = true;
        callback.reset();
        EXPECT_TRUE(ended);
    });
    while (!destroying) std::this_thread::yield();
    go_on.set_value();
    destroyer.join();
    asking.join();
}

TEST(stop_condition, waits_for_what_it_is_told_of) {
    std::mutex lock;
    stop_condition changed;
    bool ready = false;
    std::thread other([&] {
        const std::lock_guard guard(lock);
        ready = true;
        changed.notify_all();
    });
    std::unique_lock guard(lock);
    EXPECT_TRUE(changed.wait(guard, {}, wait_for_ever, [&] { return ready; }));
    EXPECT_TRUE(guard.owns_lock());
    guard.unlock();
    other.join();
}

TEST(stop_condition, ends_on_time) {
    std::mutex lock;
    stop_condition changed;
    std::unique_lock guard(lock);
    const int64_t start = time_now_ms();
    EXPECT_FALSE(changed.wait(guard, {}, 20, [] { return false; }));
    EXPECT_GE(time_now_ms() - start, 19);
    EXPECT_TRUE(guard.owns_lock());
    EXPECT_TRUE(changed.wait(guard, {}, 0, [] { return true; }));
}

TEST(stop_condition, that_was_stopped_waits_no_more_but_still_looks) {
    const stop_source source;
    source.request_stop();
    std::mutex lock;
    stop_condition changed;
    std::unique_lock guard(lock);
    EXPECT_FALSE(changed.wait(guard, source.get_token(), wait_for_ever, [] { return false; }));
    EXPECT_TRUE(changed.wait(guard, source.get_token(), wait_for_ever, [] { return true; }));
}

// Who asks and who waits meet at every point of each other's way.
TEST(stop_condition, misses_no_stop) {
    for (int round = 0; round < 2000 && !HasFailure(); round++) {
        const stop_source source;
        std::mutex lock;
        stop_condition changed;
        std::atomic<bool> here{false};
        std::thread waiting([&] {
            std::unique_lock guard(lock);
            here = true;
            const int64_t start = time_now_ms();
            EXPECT_FALSE(changed.wait(guard, source.get_token(), patience, [] { return false; }));
            EXPECT_LT(time_now_ms() - start, patience) << "the stop was missed";
        });
        while (!here) std::this_thread::yield();
        for (std::atomic<int> i = 0; i < 5 * (round % 100); i++) {
        }
        source.request_stop();
        waiting.join();
    }
}

} // namespace
