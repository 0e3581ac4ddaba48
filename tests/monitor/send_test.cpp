// What is sent: row, line, frame, and the end of it.
#include "tests/monitor/traffic_stage.h"

#include <filesystem>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using bytes = std::vector<uint8_t>;

const traffic_request request = [] {
    traffic_request r{.channel = 3, .identifier = 0x7FF, .length = 2};
    r.data = {0x5A, 0x01};
    return r;
}();
const bytes request_frame = {0xAC, 0x07, 0x04, 0x04, 0x00, 0xFF, 0x07, 0x00, 0x00, 0x5A, 0x01};
const char* const request_line = "2025-09-29 13:05:09,spi1-can1,0x7ff,标准帧-can,tx,2,0x5a 0x01 \n";

class sending : public traffic_stage {};

TEST_F(sending, a_request_is_a_row_a_line_and_a_frame) {
    open();
    EXPECT_TRUE(page->send_done());
    ASSERT_EQ(page->request_send(request), RET_OK);
    ASSERT_TRUE(module_gets(request_frame));
    ASSERT_TRUE(wait_done());
    EXPECT_EQ(csv(), request_line);
    traffic_record row{};
    ASSERT_TRUE(page->row(0, &row));
    EXPECT_STREQ(record_direction_text(row), "tx");
    EXPECT_EQ(record_id_text(row), "0x7ff");
    EXPECT_EQ(record_data_text(row), "5A 01 ");
    EXPECT_EQ(page->counters().frames_sent, 1u);
    EXPECT_EQ(page->counters().sends_failed, 0u);
    EXPECT_EQ(console->text(), "");
}

TEST_F(sending, the_check_mode_of_the_request_counts) {
    open();
    page->set_check(true);
    ASSERT_EQ(page->request_send({.channel = 1, .identifier = 0x7FF}), RET_OK);
    page->set_check(false);
    ASSERT_TRUE(wait([this] { return module_got().size() >= 11; }));
    const bytes got = module_got();
    EXPECT_EQ(bytes(got.begin(), got.begin() + 9), (bytes{0xAA, 0x07, 0x04, 0x02, 0x00, 0xFF, 0x07, 0x00, 0x00}));
    EXPECT_EQ(got.size(), 11u);
}

TEST_F(sending, an_empty_frame_is_recorded_and_sent) {
    open();
    ASSERT_EQ(page->request_send({.identifier = 1}), RET_OK);
    ASSERT_TRUE(module_gets({0xAA, 0x05, 0x04, 0x01, 0x00, 0x01, 0x00, 0x00, 0x00}));
    ASSERT_TRUE(wait_done());
    EXPECT_EQ(csv(), "2025-09-29 13:05:09,uart1-can1,0x01,标准帧-can,tx,0,\n");
}

TEST_F(sending, a_channel_that_is_none_is_recorded_and_not_sent) {
    open();
    const uint32_t writes = com::call_count(com::call::write_file);
    ASSERT_EQ(page->request_send({.channel = 5, .identifier = 1}), RET_OK);
    ASSERT_TRUE(wait_done());
    EXPECT_EQ(com::call_count(com::call::write_file), writes);
    EXPECT_THAT(csv(), HasSubstr(",未知,"));
    EXPECT_EQ(page->size(), 1u);
    EXPECT_EQ(page->counters().frames_sent + page->counters().sends_failed, 0u);
}

TEST_F(sending, it_is_done_when_the_refresh_runs) {
    open();
    while (idle_dispatch() > 0) {
    }
    bool done_at_refresh = false, early = false;
    const auto refresh = [&] {
        if (page->size() == 0) return;
        done_at_refresh = page->send_done();
        early = early || !done_at_refresh;
    };
    ASSERT_EQ(page->start(session(), refresh), 0);
    while (idle_dispatch() > 0) {
    }
    ASSERT_FALSE(done_at_refresh);
    ASSERT_EQ(page->request_send(request), RET_OK);
    ASSERT_TRUE(wait([&] { return done_at_refresh; }));
    EXPECT_FALSE(early);
}

TEST_F(sending, one_request_at_a_time) {
    com::fault_set(com::call::write_file, 1, 1, 997); // the frame's write pends, and nobody knows of it
    open();
    ASSERT_EQ(page->request_send(request), RET_OK);
    ASSERT_TRUE(wait([] { return com::call_count(com::call::write_file) >= 2; }));
    EXPECT_FALSE(page->send_done());
    EXPECT_EQ(page->request_send({.identifier = 2}), RET_FAIL);
    page.reset();
    EXPECT_EQ(csv(), request_line);
}

TEST_F(sending, requests_follow_each_other) {
    open();
    bytes all;
    std::string lines;
    for (uint8_t i = 1; i <= 20; ++i) {
        ASSERT_TRUE(wait_done());
        ASSERT_EQ(page->request_send({.identifier = i}), RET_OK);
        all.insert(all.end(), {0xAA, 0x05, 0x04, 0x01, 0x00, i, 0x00, 0x00, 0x00});
        ASSERT_TRUE(module_gets(all)) << "a purge would take it from a port that the module does not read";
    }
    ASSERT_TRUE(wait_done());
    EXPECT_EQ(page->counters().frames_sent, 20u);
    const std::string text = csv();
    EXPECT_EQ(std::ranges::count(text, '\n'), 20);
}

TEST_F(sending, is_refused_before_the_start_and_after_the_end) {
    EXPECT_EQ(page->request_send(request), RET_FAIL);
    open();
    close();
    EXPECT_EQ(page->request_send(request), RET_FAIL);
    EXPECT_EQ(csv(), "");
    EXPECT_TRUE(page->send_done());
}

TEST_F(sending, a_locked_file_drops_lines_and_sending_goes_on) {
    std::filesystem::create_directories(csv_file);
    open();
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(page->request_send(request), RET_OK);
        ASSERT_TRUE(wait_done());
    }
    EXPECT_EQ(page->counters().lines_dropped, 2u);
    EXPECT_EQ(page->counters().frames_sent, 2u);
    EXPECT_EQ(console->text(), csv_file + " cannot be written: lines are dropped\n");
}

// ---- failures

struct write_fault {
    const char* name;
    com::call call;
    uint32_t skip; ///< calls before it that go well
    DWORD error;
    const char* said;
};
const write_fault write_faults[] = {
    {"start", com::call::write_file, 0, 87, "Async write operation failed with error code: 87\n"},
    {"lost", com::call::write_file, 0, 21, "Async write operation failed with error code: 21\n"},
    {"event", com::call::create_event, 0, 8, "Create write event failed\n"},
};
void PrintTo(const write_fault& one, std::ostream* out) { *out << one.name; }

class sending_fails : public sending, public testing::WithParamInterface<write_fault> {};

TEST_P(sending_fails, it_is_said_and_done_and_sending_goes_on) {
    open(traffic_run::pause); // nobody else calls
    com::fault_set(GetParam().call, GetParam().skip, 1, GetParam().error);
    ASSERT_EQ(page->request_send(request), RET_OK);
    ASSERT_TRUE(wait_done());
    EXPECT_EQ(console->take(), GetParam().said);
    EXPECT_EQ(csv(), request_line) << "it was recorded before";
    EXPECT_EQ(page->size(), 1u);
    EXPECT_EQ(page->counters().frames_sent, 0u);
    EXPECT_EQ(page->counters().sends_failed, 1u);
    com::fault_clear();
    ASSERT_EQ(page->request_send(request), RET_OK);
    ASSERT_TRUE(module_gets(request_frame));
    ASSERT_TRUE(wait_done());
    EXPECT_EQ(console->text(), "");
    EXPECT_EQ(page->link(), traffic_link::open);
}

INSTANTIATE_TEST_SUITE_P(steps, sending_fails, testing::ValuesIn(write_faults),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_F(sending, a_write_whose_wait_fails_is_said) {
    open(traffic_run::pause);
    com::fault_set(com::call::write_file, 0, 1, 997);
    com::fault_set(com::call::wait_for_single_object, 0, 1, 6);
    ASSERT_EQ(page->request_send(request), RET_OK);
    ASSERT_TRUE(wait_done());
    EXPECT_EQ(console->text(), "Wait for async write operation failed\n");
}

TEST_F(sending, a_write_without_a_result_is_said) {
    open(traffic_run::pause);
    com::fault_set(com::call::get_overlapped_result, 0, 1, 87);
    ASSERT_EQ(page->request_send(request), RET_OK);
    ASSERT_TRUE(wait_done());
    EXPECT_EQ(console->text(), "Get overlapped result for async write failed\n");
}

} // namespace
