// Chunks as a read brings them.
#include "monitor/chunk.h"

#include <gmock/gmock.h>

using testing::IsEmpty;

namespace {

using bytes = std::vector<uint8_t>;

bytes operator+(bytes left, const bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// A standard frame with this identifier and two data bytes.
bytes frame(uint8_t identifier) { return {0xAA, 0x07, 0x03, 0x02, 0x00, identifier, 0, 0, 0, 0xD0, 0xD1}; }

struct taken {
    std::vector<uint32_t> identifiers;
    traffic_losses lost;
};

taken take(const bytes& chunk, bool check = false) {
    taken out;
    std::vector<traffic_record> records;
    out.lost = chunk_take(chunk, check, {1, 2}, &records);
    for (const traffic_record& record : records) out.identifiers.push_back(record.identifier);
    return out;
}

/// Bytes lost for this reason alone.
void expect_lost(const taken& got, traffic_loss why, uint64_t count) {
    EXPECT_EQ(got.lost[why], count);
    EXPECT_EQ(got.lost.all(), count);
}

TEST(chunk, nothing) {
    const taken got = take({});
    EXPECT_THAT(got.identifiers, IsEmpty());
    EXPECT_EQ(got.lost.all(), 0u);
}

TEST(chunk, every_good_frame_is_taken) {
    const taken got = take(frame(1) + frame(2) + frame(3));
    EXPECT_EQ(got.identifiers, (std::vector<uint32_t>{1, 2, 3}));
    EXPECT_EQ(got.lost.all(), 0u);
}

TEST(chunk, records_have_the_time_of_the_read) {
    std::vector<traffic_record> records;
    static_cast<void>(chunk_take(frame(1), false, {11, 22}, &records));
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].at.local_us, 11);
    EXPECT_EQ(records[0].at.steady_us, 22);
    EXPECT_EQ(records[0].channel, 1);
    EXPECT_EQ(records[0].direction, traffic_direction::rx);
}

TEST(chunk, noise_is_counted_and_the_next_good_frame_taken) {
    const taken got = take(bytes{1, 2, 3} + frame(1) + bytes{4, 5} + frame(2));
    EXPECT_EQ(got.identifiers, (std::vector<uint32_t>{1, 2}));
    expect_lost(got, traffic_loss::noise, 5);
}

TEST(chunk, what_remains_without_a_start_is_counted) {
    expect_lost(take(frame(1) + bytes(7, 0x11)), traffic_loss::no_start, 7);
    expect_lost(take(frame(1) + bytes{0xAA, 0x07, 0x03}), traffic_loss::no_start, 3);
    expect_lost(take(bytes(1024, 0x11)), traffic_loss::no_start, 1024);
}

TEST(chunk, the_first_refusal_ends_the_chunk_and_counts_the_rest_of_it) {
    const bytes rest = frame(2);
    const auto n = rest.size();
    bytes bad = frame(1);
    bad[1] = 4;
    expect_lost(take(bad + rest), traffic_loss::length, 11 + n);
    bad = frame(1);
    bad[2] = 4;
    expect_lost(take(bad + rest), traffic_loss::command, 11 + n);
    bad = frame(1);
    bad[1] = 200;
    expect_lost(take(bad + rest), traffic_loss::cut, 11 + n);
    expect_lost(take(frame(1) + rest, true), traffic_loss::check, 11 + n);
    bad = bytes{0xAA, 0x0E, 0x03, 0x02, 0x00, 1, 0, 0, 0} + bytes(9, 0xDD);
    expect_lost(take(bad + rest), traffic_loss::data_length, 18 + n);
    for (const bytes& one : {bad, bytes(frame(1))}) EXPECT_THAT(take(one + rest, true).identifiers, IsEmpty());
}

TEST(chunk, noise_before_a_refused_frame_is_noise) {
    bytes bad = frame(1);
    bad[2] = 4;
    const taken got = take(frame(7) + bytes{1, 2, 3} + bad);
    EXPECT_EQ(got.identifiers, std::vector<uint32_t>{7});
    EXPECT_EQ(got.lost[traffic_loss::noise], 3u);
    EXPECT_EQ(got.lost[traffic_loss::command], 11u);
    EXPECT_EQ(got.lost.all(), 14u);
}

TEST(chunk, losses_add_up) {
    traffic_losses sum = take(bytes{1, 2, 3} + frame(1)).lost;
    sum += take(bytes{1} + frame(1) + bytes{9}).lost;
    sum[traffic_loss::purged] += 100;
    EXPECT_EQ(sum[traffic_loss::noise], 4u);
    EXPECT_EQ(sum[traffic_loss::no_start], 1u);
    EXPECT_EQ(sum.all(), 105u);
}

} // namespace
