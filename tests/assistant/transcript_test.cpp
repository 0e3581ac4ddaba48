// What is kept, how it becomes rows and frames, and what is dropped.
#include "assistant/transcript.h"

#include "toolkit/core/worker.h"

#include <numeric>

namespace {

using bytes = std::vector<uint8_t>;

const bytes good = {0xAB, 0x0A, 0x03, 0x03, 0x88, 0x78, 0x56, 0x34, 0x12, 0xDE, 0xAD, 0x01, 0x23, 0x3E};
const bytes empty_frame = {0xAA, 0x07, 0x03, 0x01, 0x00, 0x05, 0x00, 0x00, 0x00, 0x25, 0x38};

time_stamp at(int64_t us) { return {.local_us = us, .steady_us = 0}; }

bytes counted(std::size_t size) {
    bytes all(size);
    std::iota(all.begin(), all.end(), uint8_t{0});
    return all;
}

class transcript_of : public ::testing::Test {
  protected:
    void hear(const bytes& more, int64_t us = 0) { log.received(more, at(us)); }
    void walk() {
        while (log.walk()) {
        }
    }
    std::vector<transcript_row> rows(std::size_t first = 0, std::size_t most = 100) const {
        std::vector<transcript_row> out(most);
        out.resize(log.rows(first, out));
        return out;
    }
    static bytes of(const transcript_row& row) { return {row.bytes().begin(), row.bytes().end()}; }

    transcript log;
};

TEST_F(transcript_of, a_piece_is_rows_of_16_bytes) {
    hear(counted(40), 7);
    const auto all = rows();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(of(all[0]), counted(16));
    EXPECT_EQ(of(all[2]), (bytes{32, 33, 34, 35, 36, 37, 38, 39}));
    EXPECT_TRUE(all[0].first);
    EXPECT_FALSE(all[1].first);
    for (const transcript_row& row : all) EXPECT_EQ(row.local_us, 7);
}

TEST_F(transcript_of, pieces_stand_in_their_order_and_say_who_spoke) {
    hear(counted(17), 1);
    log.sent(good, at(2));
    hear({0x77}, 3);
    const auto all = rows();
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(of(all[1]), bytes{16});
    EXPECT_EQ(of(all[2]), good);
    EXPECT_EQ(of(all[3]), bytes{0x77});
    EXPECT_FALSE(all[1].sent);
    EXPECT_TRUE(all[2].sent);
    EXPECT_FALSE(all[3].sent);
    EXPECT_EQ(all[3].local_us, 3);
    EXPECT_EQ(log.counts().received, 18u);
    EXPECT_EQ(log.counts().sent, good.size());
}

TEST_F(transcript_of, rows_are_copied_from_any_on) {
    for (int i = 0; i < 10; ++i) hear(counted(33), i);
    EXPECT_EQ(log.counts().rows, 30u);
    const auto some = rows(4, 3);
    ASSERT_EQ(some.size(), 3u);
    EXPECT_EQ(some[0].room[0], 16);
    EXPECT_EQ(of(some[1]), bytes{32});
    EXPECT_EQ(some[2].local_us, 2);
    EXPECT_EQ(rows(29).size(), 1u);
    EXPECT_EQ(rows(30).size(), 0u);
}

TEST_F(transcript_of, nothing_is_no_row) {
    hear({});
    log.sent({}, at(0));
    EXPECT_EQ(log.counts().rows, 0u);
}

TEST_F(transcript_of, a_full_store_keeps_its_content_and_drops_every_later_byte) {
    hear(bytes(0xFFFFF, 1));
    hear({2, 3, 4});
    EXPECT_EQ(log.counts().received, 0x100000u);
    EXPECT_EQ(log.counts().dropped, 2u);
    const std::size_t last = log.counts().rows - 1;
    EXPECT_EQ(of(rows(last)[0]), bytes{2});
    hear(good);
    EXPECT_EQ(log.counts().received, 0x100000u);
    EXPECT_EQ(log.counts().rows, last + 1);
    EXPECT_EQ(log.counts().dropped, 2u + good.size());
    EXPECT_EQ(of(rows(0)[0]), bytes(16, 1));
    log.sent(good, at(0));
    EXPECT_EQ(log.counts().sent, good.size()) << "what is sent has room of its own";
}

TEST_F(transcript_of, frames_are_found_between_noise_and_across_reads) {
    hear({0x00, 0x11});
    hear(bytes(good.begin(), good.begin() + 5));
    walk();
    EXPECT_EQ(log.counts().frames, 0u);
    hear(bytes(good.begin() + 5, good.end()));
    hear(empty_frame);
    walk();
    EXPECT_EQ(log.counts().frames, 2u);
    EXPECT_EQ(log.counts().noise, 2u);
    transcript_frame frame;
    ASSERT_TRUE(log.frame(0, &frame));
    EXPECT_EQ(frame.channel, 3);
    EXPECT_EQ(frame.type, 0x88);
    EXPECT_EQ(frame.identifier, 0x12345678u);
    EXPECT_EQ(bytes(frame.data().begin(), frame.data().end()), (bytes{0xDE, 0xAD, 0x01}));
    ASSERT_TRUE(log.frame(1, &frame));
    EXPECT_EQ(frame.channel, 1);
    EXPECT_EQ(frame.size, 0);
    EXPECT_FALSE(log.frame(2, &frame));
}

TEST_F(transcript_of, a_frame_with_a_wrong_check_value_is_counted) {
    bytes bad = good;
    bad[12] ^= 0xFF;
    hear(bad);
    hear(good);
    walk();
    EXPECT_EQ(log.counts().frames, 1u);
    EXPECT_EQ(log.counts().frames_bad, 1u);
}

TEST_F(transcript_of, what_was_sent_is_no_received_frame) {
    log.sent(good, at(0));
    walk();
    EXPECT_EQ(log.counts().frames, 0u);
}

TEST_F(transcript_of, exactly_76_unread_bytes_wait_for_more) {
    bytes all = good;
    all.resize(76, 0x55);
    hear(all);
    walk();
    EXPECT_EQ(log.counts().frames, 0u);
    hear({0x55});
    walk();
    EXPECT_EQ(log.counts().frames, 1u);
    EXPECT_EQ(log.counts().noise, 77u - good.size());
}

TEST_F(transcript_of, a_frame_has_the_time_at_which_its_last_byte_came) {
    const std::vector<uint8_t> frame = {0xAB, 0x0A, 0x03, 0x03, 0x88, 0x78, 0x56,
                                        0x34, 0x12, 0xDE, 0xAD, 0x01, 0x23, 0x3E};
    log.received(std::span(frame).first(5), at(1000));
    log.sent(frame, at(1500));
    log.received(std::span(frame).subspan(5), at(2000));
    log.received(frame, at(3000));
    walk();
    transcript_frame found;
    ASSERT_TRUE(log.frame(0, &found));
    EXPECT_EQ(found.local_us, 2000);
    ASSERT_TRUE(log.frame(1, &found));
    EXPECT_EQ(found.local_us, 3000);
}

TEST_F(transcript_of, many_frames_are_walked_whole) {
    bytes all;
    for (int i = 0; i < 6000; ++i) all.insert(all.end(), empty_frame.begin(), empty_frame.end());
    hear(all);
    walk();
    EXPECT_EQ(log.counts().frames, 6000u);
}

TEST_F(transcript_of, clear_forgets_all_and_walks_on) {
    hear(good);
    log.sent(good, at(0));
    walk();
    hear(bytes(good.begin(), good.begin() + 5));
    walk();
    log.clear();
    const transcript_counts now = log.counts();
    EXPECT_EQ(now.received + now.sent + now.rows + now.frames + now.noise + now.dropped, 0u);
    EXPECT_EQ(now.clears, 1u);
    EXPECT_TRUE(rows().empty());
    hear(good);
    walk();
    EXPECT_EQ(log.counts().frames, 1u);
    EXPECT_EQ(of(rows()[0]), good);
}

TEST_F(transcript_of, one_thread_appends_while_another_walks_and_shows) {
    worker walker, shower;
    ASSERT_EQ(walker.start({.name = "walks"},
                           [this] {
                               uint64_t seen = 0;
                               while (log.wait_received(&seen)) walk();
                               return 0u;
                           }),
              RET_OK);
    ASSERT_EQ(shower.start({.name = "shows"},
                           [this] {
                               transcript_row row;
                               while (log.counts().frames < 500 && !worker_should_stop())
                                   static_cast<void>(log.rows(log.counts().rows / 2, std::span(&row, 1)));
                               return 0u;
                           }),
              RET_OK);
    for (int i = 0; i < 500; ++i) hear(empty_frame);
    EXPECT_TRUE(shower.wait_ended(30000));
    EXPECT_EQ(log.counts().frames, 500u);
}

TEST(transcript, a_frame_arrives_with_its_last_byte) {
    transcript log;
    log.received(std::span(good).first(13), at(1));
    log.received(std::span(good).last(1), at(2));
    while (log.walk()) {
    }
    transcript_frame found;
    ASSERT_TRUE(log.frame(0, &found));
    EXPECT_EQ(found.local_us, 2);
}

} // namespace
