// Traffic, periodic sending and page changes for as long as VKT_SOAK_SECONDS says (a few seconds without it): every
// frame that the module sent is a row or in a count, none is doubled, every frame that it received is a line, and
// memory stays flat.
#include "tests/monitor/pages/data_stage.h"

#include <cstdlib>

namespace {

constexpr int64_t usual_seconds = 4;
constexpr int64_t page_seconds = 15; ///< at most on one page

/// Resident memory; 0 where the system does not tell that way.
double resident_mb() {
    std::ifstream statm("/proc/self/statm");
    double all = 0;
    double resident = 0;
    return statm >> all >> resident ? resident * 4096 / 1048576 : 0;
}

class soak : public data_stage {
  protected:
    /// Identifiers of the rows that came in since `from` was appended, oldest first.
    static std::vector<uint32_t> identifiers_since(uint64_t from) {
        const uint64_t now = data_page_traffic().rows(0, {}).appended;
        std::vector<traffic_record> records(static_cast<std::size_t>(now - from));
        const auto look = data_page_traffic().rows(0, records);
        records.resize(look.copied);
        std::vector<uint32_t> out;
        for (auto record = records.rbegin(); record != records.rend(); ++record)
            if (record->direction == traffic_direction::rx) out.push_back(record->identifier);
        return out;
    }
    /// Extended identifiers only: they count on where standard ones would begin anew.
    static sim::traffic_plan plan_of(int round) {
        sim::traffic_plan plan = frames(100 + 100 * static_cast<uint32_t>(round % 3));
        plan.types = {0x08, 0x88};
        return plan;
    }
    static std::size_t lines() {
        const std::string text = csv();
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }
};

TEST_F(soak, nothing_is_lost_unseen_doubled_or_kept) {
    const char* wanted = std::getenv("VKT_SOAK_SECONDS");
    const int64_t seconds = wanted != nullptr ? std::atoi(wanted) : usual_seconds;
    const int64_t end_ms = time_now_ms() + seconds * 1000;
    std::ofstream("setting.json", std::ios::binary) << R"({"fifo_size":"20000"})"; // more than one page gives
    double memory = 0;
    uint64_t seen_frames = 0;
    for (int round = 0; round == 0 || time_now_ms() < end_ms; ++round) {
        open_page(plan_of(round));
        const std::size_t sent_before = module->traffic_sent().size();
        const traffic_counters before = data_page_traffic().counters();
        const uint64_t appended = data_page_traffic().rows(0, {}).appended;
        does("type ~/edit_timer 5\nclick ~/check_button_send_timer\n");
        const int64_t until = std::min(end_ms, time_now_ms() + page_seconds * 1000);
        wait([until] { return time_now_ms() >= until; });
        does("click ~/check_button_send_timer\nclick ~/check_button_read_puase\n");
        ASSERT_TRUE(wait([] { return data_page_traffic().send_done(); }));
        const std::vector<uint32_t> seen = identifiers_since(appended);
        const traffic_counters after = data_page_traffic().counters();
        does("click ~/check_button_read_puase\n");
        leave_page();

        EXPECT_GT(seen.size(), 0u);
        EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end(), std::less_equal<>())) << "in order, none twice";
        EXPECT_EQ(seen.size(), after.frames_received - before.frames_received);
        // The module may have sent more by now than had come in when the page was paused.
        std::size_t sent_bytes = 0;
        const auto sent = module->traffic_sent();
        for (std::size_t i = sent_before; i < sent.size(); ++i) sent_bytes += sent[i].frame.size();
        EXPECT_LE(after.bytes_read - before.bytes_read, sent_bytes);
        EXPECT_EQ(lines(), after.frames_sent) << "a line for every frame sent";
        ASSERT_TRUE(wait_received(after.frames_sent));
        EXPECT_EQ(module->traffic_received().size(), after.frames_sent) << "and the module has it";
        seen_frames += seen.size();
        does("click home_page/vkt610b_tab_button_uart\nclick home_page/vkt610b_tab_button_change\n");
        if (round == 1) memory = resident_mb();
    }
    // The module lives in this process too, and keeps every frame.
    double kept = 0;
    for (const sim::traffic_note& note : module->traffic_sent())
        kept += static_cast<double>(note.frame.size()) + 64;
    if (memory > 0) {
        EXPECT_LT(resident_mb(), memory * 1.1 + VKT_SOAK_GROWTH_MB + 2 * kept / 1048576) << "MB, after " << memory;
    }
    RecordProperty("frames", std::to_string(seen_frames));
}

} // namespace
