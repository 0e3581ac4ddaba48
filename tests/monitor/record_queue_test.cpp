// The record queue.
#include "monitor/record_queue.h"

#include "platform/system.h"

#include <gmock/gmock.h>

#include <thread>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

traffic_record numbered(uint32_t number) {
    traffic_record record{};
    record.identifier = number;
    return record;
}

void append(record_queue* queue, uint32_t first, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        const traffic_record record = numbered(first + i);
        ASSERT_EQ(queue->append(std::span(&record, 1)), 0u);
    }
}

std::vector<uint32_t> rows(const record_queue& queue, std::size_t first, std::size_t count) {
    std::vector<traffic_record> out(count);
    out.resize(queue.rows(first, out).copied);
    std::vector<uint32_t> numbers;
    for (const traffic_record& record : out) numbers.push_back(record.identifier);
    return numbers;
}

// ---- capacity

TEST(record_capacity, of_a_text) {
    for (const char* text : {"", "0", "abc", "-0", " ", "0x10", "五"})
        EXPECT_EQ(record_capacity_of(text), 5000u) << text;
    EXPECT_EQ(record_capacity_of("1"), 1u);
    EXPECT_EQ(record_capacity_of(" 12abc"), 12u);
    EXPECT_EQ(record_capacity_of("1000000"), 1000000u);
    EXPECT_EQ(record_capacity_of("5000000"), 5000000u);
}

TEST(record_capacity, out_of_range_is_held_and_said) {
    std::string said;
    EXPECT_EQ(record_capacity_of("5000", &said), 5000u);
    EXPECT_EQ(record_capacity_of("text", &said), 5000u);
    EXPECT_EQ(said, "");
    EXPECT_EQ(record_capacity_of("5000001", &said), 5000000u);
    EXPECT_EQ(said, "fifo_size 5000001 is out of range: 5000000 records are kept\n");
    EXPECT_EQ(record_capacity_of("99999999999999999999", &said), 5000000u);
    EXPECT_EQ(record_capacity_of("-1", &said), 5000u);
    EXPECT_EQ(said, "fifo_size -1 is out of range: 5000 records are kept\n");
    EXPECT_EQ(record_capacity_of("-99999999999999999999"), 5000u);
}

// ---- queue

TEST(record_queue_test, the_newest_is_row_0) {
    record_queue queue(10);
    EXPECT_THAT(rows(queue, 0, 5), IsEmpty());
    append(&queue, 1, 4);
    EXPECT_EQ(queue.size(), 4u);
    EXPECT_THAT(rows(queue, 0, 10), ElementsAre(4, 3, 2, 1));
    EXPECT_THAT(rows(queue, 2, 1), ElementsAre(2));
    EXPECT_THAT(rows(queue, 4, 1), IsEmpty());
    EXPECT_THAT(rows(queue, SIZE_MAX, 1), IsEmpty());
}

TEST(record_queue_test, a_row_that_is_not_there_leaves_what_is) {
    record_queue queue(2);
    traffic_record record = numbered(77);
    EXPECT_FALSE(queue.row(0, &record));
    EXPECT_EQ(record.identifier, 77u);
    append(&queue, 5, 1);
    EXPECT_TRUE(queue.row(0, &record));
    EXPECT_EQ(record.identifier, 5u);
}

TEST(record_queue_test, of_5001_the_first_is_gone) {
    record_queue queue(record_capacity_of("0"));
    append(&queue, 1, 5000);
    EXPECT_EQ(queue.dropped(), 0u);
    EXPECT_THAT(rows(queue, 4999, 2), ElementsAre(1));
    append(&queue, 5001, 1);
    EXPECT_EQ(queue.size(), 5000u);
    EXPECT_THAT(rows(queue, 4999, 2), ElementsAre(2));
    EXPECT_THAT(rows(queue, 0, 1), ElementsAre(5001));
    EXPECT_EQ(queue.dropped(), 1u);
}

TEST(record_queue_test, a_capacity_of_one_keeps_the_newest) {
    record_queue queue(0);
    EXPECT_EQ(queue.capacity(), 1u);
    append(&queue, 1, 3);
    EXPECT_THAT(rows(queue, 0, 9), ElementsAre(3));
    EXPECT_EQ(queue.dropped(), 2u);
}

TEST(record_queue_test, several_are_appended_in_their_order) {
    record_queue queue(4);
    const std::vector<traffic_record> six = {numbered(1), numbered(2), numbered(3),
                                             numbered(4), numbered(5), numbered(6)};
    EXPECT_EQ(queue.append(six), 0u);
    EXPECT_EQ(queue.append({}), 0u);
    EXPECT_THAT(rows(queue, 0, 9), ElementsAre(6, 5, 4, 3));
    EXPECT_EQ(queue.dropped(), 2u);
}

// What a view needs to keep its place while new rows come in above it.
TEST(record_queue_test, a_look_says_how_many_came_ever) {
    record_queue queue(3);
    append(&queue, 1, 5);
    std::vector<traffic_record> out(2);
    const record_queue::look look = queue.rows(0, out);
    EXPECT_EQ(look.size, 3u);
    EXPECT_EQ(look.copied, 2u);
    EXPECT_EQ(look.appended, 5u);
    queue.clear();
    EXPECT_EQ(queue.rows(0, out).appended, 5u);
}

TEST(record_queue_test, a_record_is_found_by_its_number_as_long_as_it_is_kept) {
    record_queue queue(3);
    append(&queue, 101, 5);
    traffic_record record = numbered(77);
    for (const uint64_t gone : {0, 1, 2, 6}) EXPECT_FALSE(queue.numbered(gone, &record)) << gone;
    EXPECT_EQ(record.identifier, 77u);
    for (const uint32_t kept : {3u, 4u, 5u}) {
        EXPECT_TRUE(queue.numbered(kept, &record));
        EXPECT_EQ(record.identifier, 100 + kept);
    }
    queue.clear();
    EXPECT_FALSE(queue.numbered(5, &record));
    append(&queue, 106, 1);
    EXPECT_FALSE(queue.numbered(5, &record));
    EXPECT_TRUE(queue.numbered(6, &record));
    EXPECT_EQ(record.identifier, 106u);
}

TEST(record_queue_test, what_is_cleared_lives_as_long_as_somebody_holds_it) {
    record_queue queue(10);
    std::weak_ptr<void> held;
    {
        const std::shared_ptr<void> gone = queue.clear();
        held = gone;
        EXPECT_FALSE(held.expired());
    }
    EXPECT_TRUE(held.expired());
}

TEST(record_queue_test, clearing_drops_all_and_counts_nothing) {
    record_queue queue(3);
    append(&queue, 1, 3);
    queue.clear();
    EXPECT_EQ(queue.size(), 0u);
    EXPECT_EQ(queue.dropped(), 0u);
    EXPECT_EQ(queue.capacity(), 3u);
    append(&queue, 7, 4);
    EXPECT_THAT(rows(queue, 0, 9), ElementsAre(10, 9, 8));
}

TEST(record_queue_test, records_stay_whole_while_others_come_and_go) {
    record_queue queue(500);
    constexpr uint32_t count = 20000;
    std::thread writer([&queue] {
        for (uint32_t i = 1; i <= count; ++i) {
            traffic_record record = numbered(i);
            record.at.steady_us = i;
            record.length = 64;
            record.data.fill(static_cast<uint8_t>(i & 0xFF));
            static_cast<void>(queue.append(std::span(&record, 1)));
            if (i % 7000 == 0) queue.clear();
        }
    });
    uint64_t seen = 0;
    std::vector<traffic_record> out(40);
    while (seen < count) {
        const record_queue::look look = queue.rows(3, out);
        ASSERT_GE(look.appended, seen);
        seen = look.appended;
        for (std::size_t i = 0; i < look.copied; ++i) {
            ASSERT_EQ(out[i].identifier, seen - 3 - i);
            ASSERT_EQ(out[i].at.steady_us, static_cast<int64_t>(out[i].identifier));
            ASSERT_THAT(out[i].data, testing::Each(static_cast<uint8_t>(out[i].identifier & 0xFF)));
        }
    }
    writer.join();
}

TEST(record_queue_test, memory_is_taken_as_records_come) {
    const int64_t before = platform_resident_kib();
    record_queue queue(record_capacity_max);
    append(&queue, 1, 1000);
    EXPECT_LT(platform_resident_kib() - before, 2048);
}

// Measured from the process: what the queue takes beside its records counts too. A sanitiser takes its part, so the
// limit is looser there.
TEST(record_queue_test, a_record_costs_at_most_100_bytes) {
    constexpr std::size_t count = 400000;
    const std::vector<traffic_record> chunk(1000);
    const int64_t before = platform_resident_kib();
    record_queue queue(count);
    for (std::size_t i = 0; i < count; i += chunk.size()) ASSERT_EQ(queue.append(chunk), 0u);
    const int64_t taken = (platform_resident_kib() - before) * 1024;
    EXPECT_LE(taken, static_cast<int64_t>(count) * VKT_RECORD_BYTES_MAX);
}

} // namespace
