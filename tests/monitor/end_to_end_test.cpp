// The module's own record of the traffic beside the rows, the lines and the counts.
#include "tests/monitor/traffic_stage.h"

#include "monitor/periodic.h"

#include <algorithm>

using sim::traffic_error;

namespace {

using bytes = std::vector<uint8_t>;

constexpr int patience = static_cast<int>(session_patience_ms);

/// A frame as it stands in a row and on the wire.
struct shown {
    uint32_t channel, identifier;
    bool extended, fd;
    bytes data;
    bool operator==(const shown&) const = default;
};

shown of_record(const traffic_record& record) {
    return {record.channel, record.identifier, record.format == 1, record.protocol == 1,
            bytes(record.bytes().begin(), record.bytes().end())};
}

/// Typed in from the wire's description, beside parser and module.
shown of_wire(const bytes& frame, bool check) {
    return {frame[3] - 1u, frame[5] | frame[6] << 8 | frame[7] << 16 | static_cast<uint32_t>(frame[8]) << 24,
            (frame[4] & 0x08) != 0, (frame[4] & 0x80) != 0,
            bytes(frame.begin() + 9, frame.end() - (check ? 2 : 0))};
}

class end_to_end : public traffic_stage {
  protected:
    /// The rows of one direction, oldest first.
    std::vector<shown> rows(traffic_direction direction) const {
        std::vector<traffic_record> all(page->size());
        all.resize(page->rows(0, all).copied);
        std::vector<shown> out;
        for (auto at = all.rbegin(); at != all.rend(); ++at)
            if (at->direction == direction) out.push_back(of_record(*at));
        return out;
    }
    std::vector<shown> module_sent(bool check) const {
        std::vector<shown> out;
        for (const auto& note : module->traffic_sent())
            if (note.error == traffic_error::none) out.push_back(of_wire(note.frame, check));
        return out;
    }
    static uint64_t bytes_of(const std::vector<sim::traffic_note>& notes) {
        uint64_t sum = 0;
        for (const auto& note : notes) sum += note.frame.size();
        return sum;
    }
    /// Lets the module send its plan's next frames at once, and waits until every byte of them ended in a row or in
    /// a count. Up to three frames come as one piece.
    void send_at_once(sim::traffic_plan plan, uint32_t frames) {
        const uint32_t before = module->count().traffic_sent;
        plan.rate = 1000000;
        plan.burst = frames;
        plan.count = frames;
        plan.first = before;
        module->set_traffic(plan);
        ASSERT_TRUE(module->wait_traffic(before + frames, 0, patience));
        const uint64_t sent = bytes_of(module->traffic_sent());
        ASSERT_TRUE(wait([&] { return page->counters().bytes_read == sent; }));
    }
    /// What the module received, as it would stand in rows.
    std::vector<shown> module_received(bool check) const {
        std::vector<shown> out;
        for (const auto& note : module->traffic_received()) out.push_back(of_wire(note.frame, check));
        return out;
    }
    /// Requests of every channel, type and length, in turn.
    static traffic_request request_of(uint32_t n) {
        traffic_request request{.channel = n % 5, .format = n / 5 % 2, .protocol = n / 10 % 2};
        request.identifier = request.format == 1 ? 0x1FFFFFFF - n : n % 0x800;
        request.length = request.protocol == 1 ? n * 7 % 65 : n % 9;
        for (uint32_t i = 0; i < request.length; ++i) request.data[i] = static_cast<uint8_t>((n * 31 + i) & 0xFF);
        return request;
    }
};

class with_and_without_check : public end_to_end, public testing::WithParamInterface<bool> {};

TEST_P(with_and_without_check, what_the_module_sent_are_the_rows) {
    const bool check = GetParam();
    page->set_check(check);
    open();
    for (int i = 0; i < 60; ++i) send_at_once({.check = check}, 3);
    const traffic_counters now = page->counters();
    EXPECT_EQ(now.frames_received, 180u);
    EXPECT_EQ(now.lost.all(), 0u);
    const auto sent = module_sent(check);
    EXPECT_EQ(sent.size(), 180u);
    EXPECT_EQ(rows(traffic_direction::rx), sent);
}

TEST_P(with_and_without_check, what_the_module_received_are_the_rows_and_the_lines) {
    const bool check = GetParam();
    page->set_check(check);
    module->set_traffic({.check = check});
    open();
    constexpr uint32_t count = 130;
    for (uint32_t n = 0; n < count; ++n) {
        ASSERT_EQ(page->request_send(request_of(n)), RET_OK);
        ASSERT_TRUE(module->wait_traffic(0, n + 1, patience)) << n;
        ASSERT_TRUE(wait_done());
    }
    const auto received = module_received(check);
    EXPECT_EQ(received.size(), count);
    EXPECT_EQ(rows(traffic_direction::tx), received);
    std::string lines;
    for (uint32_t n = 0; n < count; ++n) {
        traffic_record record{};
        ASSERT_TRUE(page->row(count - n - 1, &record));
        lines += csv_line(record);
    }
    EXPECT_EQ(csv(), lines);
    EXPECT_EQ(page->counters().frames_sent, count);
    EXPECT_EQ(module->count().unknown, 0u);
}

INSTANTIATE_TEST_SUITE_P(frames, with_and_without_check, testing::Bool(),
                         [](const auto& one) { return one.param ? "with_check" : "without"; });

// ---- spoiled frames

struct spoiled {
    traffic_error error;
    traffic_loss why;
    uint64_t lost;  ///< bytes; the frame has 8 data bytes and a check
    uint64_t shown; ///< frames of three
};
constexpr spoiled all_spoiled[] = {
    {traffic_error::noise, traffic_loss::noise, 5, 3},
    {traffic_error::no_start, traffic_loss::no_start, 19, 2},
    {traffic_error::cut, traffic_loss::cut, 16, 2},
    {traffic_error::short_length, traffic_loss::length, 19, 2},
    {traffic_error::wrong_command, traffic_loss::command, 19, 2},
    {traffic_error::bad_check, traffic_loss::check, 19, 2},
    {traffic_error::too_much_data, traffic_loss::data_length, 20, 2},
};
void PrintTo(const spoiled& one, std::ostream* out) { *out << sim::traffic_error_name(one.error); }

class spoiled_frames : public end_to_end, public testing::WithParamInterface<spoiled> {};

TEST_P(spoiled_frames, are_counted_by_their_cause) {
    page->set_check(true);
    open();
    send_at_once({.types = {0x00, 0x08},
                  .shortest = 8,
                  .longest = 8,
                  .check = true,
                  .errors = {GetParam().error},
                  .error_every = 3},
                 3);
    const traffic_counters now = page->counters();
    EXPECT_EQ(now.frames_received, GetParam().shown);
    EXPECT_EQ(now.lost[GetParam().why], GetParam().lost);
    EXPECT_EQ(now.lost.all(), GetParam().lost);
    EXPECT_EQ(page->size(), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(causes, spoiled_frames, testing::ValuesIn(all_spoiled),
                         [](const auto& one) { return std::string(sim::traffic_error_name(one.param.error)); });

// ---- in a stream

TEST_F(end_to_end, of_a_stream_every_row_was_sent_in_its_order_and_every_byte_counts) {
    page->set_check(true);
    module->set_traffic({.rate = 4000, .burst = 4, .count = 4000, .types = {0x08, 0x88}, .check = true});
    ASSERT_EQ(setting_write(settings_file.c_str(), "fifo_size", "100000"), 0);
    open();
    uint32_t requested = 0;
    ASSERT_TRUE(wait([&] {
        if (requested < 60 && page->request_send(request_of(requested)) == RET_OK) requested++;
        return module->count().traffic_sent + module->count().traffic_overrun == 4000;
    }));
    ASSERT_TRUE(module->wait_traffic(0, requested, patience));
    ASSERT_TRUE(wait_done());
    // The line is silent from now on. Whatever was left in it ends before this frame, or takes it along.
    const bytes last = {0xAA, 0x07, 0x03, 0x01, 0x08, 0xFF, 0xFF, 0xFF, 0x1F, 0xC5, 0x18};
    while (rows(traffic_direction::rx).empty() || rows(traffic_direction::rx).back().identifier != 0x1FFFFFFF) {
        const uint64_t before = page->counters().bytes_read;
        send(last);
        ASSERT_TRUE(wait([&] { return page->counters().bytes_read > before; }))
            << before << " bytes read, " << page->counters().lost[traffic_loss::purged] << " purged, link "
            << static_cast<int>(page->link()) << ", console " << console->text();
    }
    const traffic_counters now = page->counters();
    const auto got = rows(traffic_direction::rx);
    const auto sent = module_sent(true);
    int64_t before = -1;
    uint64_t shown_bytes = 0;
    for (const shown& one : got) {
        shown_bytes += one.data.size() + 11;
        if (one.identifier == 0x1FFFFFFF) continue;
        ASSERT_GT(one.identifier, before) << "in order, and none twice";
        ASSERT_LT(one.identifier, sent.size());
        ASSERT_EQ(one, sent[one.identifier]);
        before = one.identifier;
    }
    EXPECT_GT(got.size(), 20u);
    EXPECT_EQ(now.frames_received, got.size());
    EXPECT_EQ(now.bytes_read, shown_bytes + now.lost.all() - now.lost[traffic_loss::purged]);
    EXPECT_EQ(rows(traffic_direction::tx), module_received(true));
    EXPECT_EQ(now.frames_sent, requested);
}

TEST_F(end_to_end, what_counts_up_arrives_counted_up) {
    open();
    traffic_request first{.identifier = 0x7F0, .length = 2};
    first.data = {0x00, 0xF0};
    periodic_sender sender;
    sender.start(first, {.to_identifier = true, .to_data = true, .identifier = 1, .data = 1});
    ASSERT_EQ(page->request_send(first), RET_OK);
    uint32_t ticks = 0;
    timer_add(
        [&] {
            if (sender.tick(page->send_done() && module->count().traffic_received > sender.sent())) {
                EXPECT_EQ(page->request_send(sender.request()), RET_OK);
            }
            return ++ticks < 60 ? RET_REPEAT : RET_REMOVE;
        },
        2);
    ASSERT_TRUE(wait([&] { return ticks == 60 && page->send_done(); }));
    EXPECT_EQ(sender.sent() + sender.skipped(), 60u);
    const auto sent = static_cast<uint32_t>(sender.sent()) + 1;
    ASSERT_TRUE(module->wait_traffic(0, sent, patience));
    const auto received = module_received(false);
    ASSERT_EQ(received.size(), sent);
    for (uint32_t n = 0; n < sent; ++n) {
        EXPECT_EQ(received[n].identifier, n < 0x10 ? 0x7F0 + n : n - 0x10);
        const bytes data =
            n < 0x10 ? bytes{0x00, static_cast<uint8_t>(0xF0 + n)} : bytes{0x01, static_cast<uint8_t>(n - 0x10)};
        EXPECT_EQ(received[n].data, data);
    }
}

TEST_F(end_to_end, a_module_that_never_stops_can_be_unplugged) {
    module->set_traffic({.rate = 2000});
    open();
    ASSERT_TRUE(wait_received(50));
    module->hang_up();
    ASSERT_TRUE(wait_link(traffic_link::lost));
    const std::string said = console->text();
    EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
    close();
}

TEST_F(end_to_end, a_module_that_never_stops_can_be_left_and_read) {
    module->set_traffic({.rate = 2000, .burst = 2});
    for (int i = 0; i < 3; ++i) {
        open();
        ASSERT_TRUE(wait_received(page->counters().frames_received + 20));
        page->set_run(traffic_run::pause);
        const uint32_t sent = module->count().traffic_sent;
        ASSERT_TRUE(module->wait_traffic(sent + 200, 0, patience)) << "more than a reply has";
        close();
        ASSERT_TRUE(run(session_kind::read));
        EXPECT_EQ(heard.events.back(), "finished");
        EXPECT_TRUE(heard.logs.empty());
        heard = {};
    }
}

} // namespace
