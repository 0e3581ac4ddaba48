#include "toolkit/core/ring.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <random>
#include <string>

namespace {

TEST(ring, keeps_the_newest_in_order) {
    ring<int> three(3);
    EXPECT_TRUE(three.empty());
    EXPECT_EQ(three.capacity(), 3u);
    EXPECT_FALSE(three.push_back(1));
    EXPECT_FALSE(three.push_back(2));
    EXPECT_FALSE(three.push_back(3));
    EXPECT_TRUE(three.push_back(4)) << "1 was dropped";
    EXPECT_EQ(three.size(), 3u);
    EXPECT_EQ(three.front(), 2);
    EXPECT_EQ(three[1], 3);
    EXPECT_EQ(three.back(), 4);
    three[1] = 30;
    three.pop_front();
    EXPECT_EQ(three.front(), 30);
    three.clear();
    EXPECT_TRUE(three.empty());
    three.pop_front();
    EXPECT_FALSE(three.push_back(5));
    EXPECT_EQ(three.front(), 5);
}

TEST(ring, of_no_capacity_holds_one) {
    ring<int> one(0);
    EXPECT_EQ(one.capacity(), 1u);
    EXPECT_FALSE(one.push_back(1));
    EXPECT_TRUE(one.push_back(2));
    EXPECT_EQ(one.size(), 1u);
    EXPECT_EQ(one.front(), 2);
}

TEST(ring, destroys_what_it_drops_and_what_it_holds) {
    const auto counted = std::make_shared<int>(0);
    {
        ring<std::shared_ptr<int>> two(2);
        for (int i = 0; i < 5; i++) two.push_back(counted);
        EXPECT_EQ(counted.use_count(), 3);
        two.pop_front();
        EXPECT_EQ(counted.use_count(), 2);
        two.push_back(counted);
        two.clear();
        EXPECT_EQ(counted.use_count(), 1);
        two.push_back(counted);
    }
    EXPECT_EQ(counted.use_count(), 1);
}

TEST(ring, takes_what_can_only_be_moved) {
    ring<std::unique_ptr<int>> two(2);
    two.push_back(std::make_unique<int>(1));
    two.push_back(std::make_unique<int>(2));
    two.push_back(std::make_unique<int>(3));
    EXPECT_EQ(*two.front(), 2);
    EXPECT_EQ(*two.back(), 3);
}

TEST(ring, takes_memory_as_it_fills_and_gives_it_back_as_it_empties) {
    constexpr std::size_t block = ring<uint64_t>::block_size;
    ring<uint64_t> large(1000000);
    EXPECT_EQ(large.blocks(), 0u);
    for (uint64_t i = 0; i < block; i++) large.push_back(i);
    EXPECT_EQ(large.blocks(), 1u);
    large.push_back(block);
    EXPECT_EQ(large.blocks(), 2u);
    for (uint64_t i = block + 1; i < 10 * block; i++) large.push_back(i);
    EXPECT_EQ(large.blocks(), 10u);
    while (large.size() > 1) large.pop_front();
    EXPECT_EQ(large.blocks(), 1u);
    EXPECT_EQ(large.front(), 10 * block - 1);
    large.clear();
    EXPECT_EQ(large.blocks(), 0u);
}

TEST(ring, that_is_full_holds_its_blocks_while_it_turns) {
    constexpr std::size_t block = ring<int>::block_size;
    ring<int> two_and_a_bit(2 * block + 10);
    for (int i = 0; i < 5000; i++) {
        two_and_a_bit.push_back(i);
        EXPECT_EQ(two_and_a_bit.blocks(), std::min<std::size_t>(static_cast<std::size_t>(i) / block + 1, 3));
    }
    EXPECT_EQ(two_and_a_bit.front(), 5000 - static_cast<int>(2 * block + 10));
}

/// Plays random operations on a ring and on a deque and compares the two.
void compare(std::size_t capacity, uint32_t seed) {
    SCOPED_TRACE("capacity " + std::to_string(capacity) + ", seed " + std::to_string(seed));
    std::mt19937 generator(seed);
    const auto random = [&generator] { return static_cast<uint32_t>(generator()); };
    ring<std::string> mine(capacity);
    std::deque<std::string> model;
    uint32_t pushes = 60; // percent; changes so that it fills and empties
    for (uint32_t step = 0; step < 3000; step++) {
        if (step % 500 == 0) pushes = random() % 101;
        const uint32_t what = random() % 1000;
        if (what == 0) {
            mine.clear();
            model.clear();
        } else if (random() % 100 < pushes) {
            // Some are long enough to live outside of the text itself.
            const std::string value = std::to_string(step) + std::string(random() % 40, 'x');
            const bool full = model.size() == capacity;
            if (full) model.pop_front();
            model.push_back(value);
            ASSERT_EQ(mine.push_back(value), full);
        } else {
            mine.pop_front();
            if (!model.empty()) model.pop_front();
        }
        ASSERT_EQ(mine.size(), model.size());
        ASSERT_EQ(mine.empty(), model.empty());
        ASSERT_LE(mine.blocks(),
                  model.size() / ring<std::string>::block_size + 3); // a part at each end, and the short last one
        if (model.empty()) continue;
        ASSERT_EQ(mine.front(), model.front());
        ASSERT_EQ(mine.back(), model.back());
        const std::size_t index = random() % model.size();
        ASSERT_EQ(mine[index], model[index]);
    }
    for (std::size_t i = 0; i < model.size(); i++) ASSERT_EQ(mine[i], model[i]);
}

TEST(ring, behaves_as_a_queue_that_is_cut_at_its_capacity) {
    for (const std::size_t capacity : {1, 2, 3, 255, 256, 257, 512, 513, 1000, 1000000})
        for (uint32_t seed = 1; seed <= 2; seed++) compare(capacity, seed);
}

} // namespace
