// What came in is cleared, copied and saved; what was sent is offered again.
#include "tests/assistant/pages/assistant_stage.h"

#include "toolkit/core/date_time.h"
#include "toolkit/core/idle.h"

#include <chrono>
#include <ctime>

namespace {

class serial_send_keep : public assistant_stage {
  protected:
    void TearDown() override {
        assistant_stage::TearDown();
        std::filesystem::remove(saved_file);
        std::filesystem::remove("serial_send.json");
    }
    static constexpr const char* saved_file = "serial_send_20250929_130509.txt";
    static constexpr const char* line = "2025-09-29 13:05:09.000 rx ";
    using clock = std::chrono::steady_clock;
    static double ms_since(clock::time_point begin) {
        return std::chrono::duration<double, std::milli>(clock::now() - begin).count();
    }
    /// The processor's time since, in milliseconds, however busy the machine is.
    static double spent_since(std::clock_t begin) {
        return 1000.0 * static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    }
    /// The best of some measurements, in milliseconds: another program may take the processor for a while. No more
    /// are made once one is good enough.
    static double best(double good_enough, const std::function<double()>& measure) {
        double least = measure();
        for (int i = 1; i < 20 && least > good_enough; ++i) least = std::min(least, measure());
        return least;
    }
    /// The longest that the window's thread was away until `done`.
    static double longest_stall(const std::function<bool()>& done) {
        double longest = 0;
        auto last = clock::now();
        const auto turn = [&] {
            longest = std::max(longest, ms_since(last));
            last = clock::now();
            return RET_REPEAT;
        };
        const uint32_t timer = timer_add(turn, 1);
        EXPECT_TRUE(wait(done));
        timer_remove(timer);
        return longest;
    }
    /// What it takes to open the dialog and show its first rows.
    static double opening() {
        const std::clock_t begin = std::clock();
        EXPECT_EQ(navigator_to("serial_send"), RET_OK);
        table_client_fill(in("table_bytes"));
        table_client_fill(in("table_frames"));
        const double took = spent_since(begin);
        does("click ~/button_exit\n");
        return took;
    }
    /// Receives bytes of which every fourth row is a frame; the last frame is waited for with 76 bytes.
    static void fill_store(std::size_t size) {
        std::vector<uint8_t> all;
        while (all.size() < size) {
            for (const uint8_t byte : good()) all.push_back(byte);
            all.resize(all.size() + 50, 0x41);
        }
        log().received(all, time_stamp_now());
        ASSERT_TRUE(wait([size] { return log().counts().frames == size / 64 - 1; }));
        settle();
    }
};

TEST_F(serial_send_keep, clear_forgets_rows_and_frames) {
    open_connected();
    say(good());
    does("wait ~/table_frames/serial_send_frame[0]/id text 0x12345678\nclick ~/button_clear\n");
    EXPECT_EQ(rows("table_bytes"), 0u);
    EXPECT_EQ(rows("table_frames"), 0u);
    EXPECT_EQ(shown("label_counts"), "收 0 字节　发 0 字节　帧 0");
    EXPECT_FALSE(usable("button_save"));
    say(good());
    does("wait ~/table_frames/serial_send_frame[0]/id text 0x12345678\n");
    EXPECT_EQ(rows("table_bytes"), 1u);
}

TEST_F(serial_send_keep, what_a_full_store_drops_is_counted_and_marked) {
    open();
    log().received(std::vector<uint8_t>(transcript_store_size, 0x41), time_stamp_now());
    does("wait ~/label_counts contains \"收 1048576 字节\"\nexpect ~/label_counts state \"\"\n");
    EXPECT_THAT(shown("label_counts"), testing::Not(testing::HasSubstr("丢弃")));
    log().received(std::vector<uint8_t>{0x41}, time_stamp_now());
    does("wait ~/label_counts contains \"已满，丢弃 1 字节\"\nexpect ~/label_counts state warning\n"
         "click ~/button_clear\nexpect ~/label_counts text \"收 0 字节　发 0 字节　帧 0\"\n"
         "expect ~/label_counts state \"\"\n");
}

TEST_F(serial_send_keep, all_or_what_is_chosen_is_copied) {
    open_connected();
    for (const uint8_t byte : {uint8_t{0x41}, uint8_t{0x42}, uint8_t{0x43}}) say({byte});
    clip_board_set_text("");
    does("click ~/button_copy\nwait ~/label_result text 已复制\n");
    EXPECT_EQ(clip_board_get_text(), tk_format("%s41\n%s42\n%s43\n", line, line, line));
    clip_board_set_text("");
    does("click ~/table_bytes/serial_send_row[1]/time\nkey Shift+Down\nkey Ctrl+c\n");
    ASSERT_TRUE(wait([] { return !clip_board_get_text().empty(); }));
    EXPECT_EQ(clip_board_get_text(), tk_format("%s42\n%s43\n", line, line));
    does("click ~/char_flag\nclick ~/table_bytes/serial_send_row[0]/time\n");
    clip_board_set_text("");
    does("click ~/button_copy\n");
    ASSERT_TRUE(wait([] { return !clip_board_get_text().empty(); }));
    EXPECT_EQ(clip_board_get_text(), tk_format("%sA\n", line));
}

TEST_F(serial_send_keep, chosen_frames_are_copied_as_lines) {
    open_connected();
    say(good());
    clip_board_set_text("");
    does("wait ~/table_frames/serial_send_frame[0]/id text 0x12345678\n"
         "click ~/table_frames/serial_send_frame[0]/time\nkey Ctrl+c\n");
    ASSERT_TRUE(wait([] { return !clip_board_get_text().empty(); }));
    EXPECT_EQ(clip_board_get_text(),
              "2025-09-29 13:05:09.000\tUART2_TO_CANFD2\t0x12345678\t扩展帧-canfd\t3\tDE AD 01\n");
}

TEST_F(serial_send_keep, the_record_is_saved_to_a_file) {
    open_connected();
    say({0x41, 0x42});
    does(std::string("click ~/button_save\nwait ~/label_result text \"已保存 ") + saved_file + "\"\n");
    EXPECT_EQ(file_text(saved_file), std::string(line) + "41 42\n");
}

TEST_F(serial_send_keep, one_text_is_made_at_a_time) {
    open();
    log().received(std::vector<uint8_t>(transcript_store_size, 0x41), time_stamp_now());
    does("wait ~/button_copy enabled 1\n");
    EXPECT_EQ(widget_dispatch_simple_event(in("button_copy"), event_type::click), RET_OK);
    widget_dispatch_simple_event(in("button_save"), event_type::click);
    EXPECT_EQ(shown("label_result"), "请稍候");
    does("expect ~/label_result state warning\nwait ~/label_result text 已复制\nexpect ~/label_result state ok\n");
    EXPECT_FALSE(std::filesystem::exists(saved_file));
}

TEST_F(serial_send_keep, a_record_that_is_cleared_meanwhile_is_not_copied) {
    open();
    log().received(std::vector<uint8_t>(transcript_store_size, 0x41), time_stamp_now());
    does("wait ~/button_copy enabled 1\n");
    clip_board_set_text("before");
    EXPECT_EQ(widget_dispatch_simple_event(in("button_copy"), event_type::click), RET_OK);
    log().clear();
    does("wait ~/label_result text 复制失败\nexpect ~/label_result state failed\n");
    EXPECT_EQ(clip_board_get_text(), "before");
}

TEST_F(serial_send_keep, a_file_that_cannot_be_written_is_reported) {
    open_connected();
    say({0x41});
    std::filesystem::create_directories(std::filesystem::path(saved_file) / "in the way");
    does("click ~/button_save\nwait ~/label_result text 保存失败\nexpect ~/label_result state failed\n");
    std::filesystem::remove_all(saved_file);
}

// What a person notices is longer than one picture of the screen.
TEST_F(serial_send_keep, a_full_store_is_shown_as_soon_as_a_small_one) {
    open();
    fill_store(0x1000);
    does("click ~/button_exit\n");
    const double small = best(0, opening);
    log().clear();
    fill_store(transcript_store_size);
    EXPECT_LE(best(small + VKT_STALL_MAX_MS, opening), small + VKT_STALL_MAX_MS);
    open();
    EXPECT_EQ(rows("table_bytes"), 0x10000u);
    EXPECT_EQ(rows("table_frames"), 0x3FFFu);
}

TEST_F(serial_send_keep, a_full_store_is_scrolled_without_a_stall) {
    open();
    fill_store(transcript_store_size);
    for (const char* table : {"table_bytes", "table_frames"}) {
        const uint32_t count = rows(table);
        for (uint32_t row = 0; row < count; row += count / 50) {
            const auto scroll = [&] {
                const std::clock_t begin = std::clock();
                table_client_show_row(in(table), row);
                table_client_fill(in(table));
                return spent_since(begin);
            };
            EXPECT_LE(best(VKT_STALL_MAX_MS, scroll), VKT_STALL_MAX_MS) << table << " " << row;
        }
    }
}

TEST_F(serial_send_keep, a_full_store_is_saved_and_copied_without_a_stall) {
    open();
    fill_store(transcript_store_size);
    // The thread that makes the text wants the processor too.
    constexpr double stall_max_ms = 4.0 * VKT_STALL_MAX_MS;
    const auto stall_of = [](const char* button, const std::string& result) {
        return [=] {
            widget_set_text_utf8(in("label_result"), "");
            EXPECT_EQ(widget_dispatch_simple_event(in(button), event_type::click), RET_OK);
            return longest_stall([&] { return shown("label_result") == result; });
        };
    };
    EXPECT_LE(best(stall_max_ms, stall_of("button_save", std::string("已保存 ") + saved_file)), stall_max_ms);
    EXPECT_EQ(std::filesystem::file_size(saved_file), 0x10000u * (27 + 47 + 1));
    EXPECT_LE(best(stall_max_ms, stall_of("button_copy", "已复制")), stall_max_ms);
    EXPECT_EQ(clip_board_get_text().size(), 0x10000u * (27 + 47 + 1));
}

TEST_F(serial_send_keep, a_history_that_cannot_be_written_keeps_no_frame_from_going_out) {
    std::filesystem::create_directories(std::filesystem::path("serial_send.json") / "in the way");
    open_connected();
    said_clear();
    does("type ~/serial_send_data AB\nclick ~/button_send\nwait ~/combo_box_sent enabled 1\n"
         "expect ~/label_result state ok\n");
    ASSERT_TRUE(module->wait_traffic(0, 1, 10000));
    EXPECT_EQ(combo_box_count_options(in("combo_box_sent")), 2) << "it is offered, and the prompt";
    EXPECT_THAT(said(), testing::HasSubstr("serial_send.json cannot be written"));
    std::filesystem::remove_all("serial_send.json");
}

TEST_F(serial_send_keep, the_last_frames_are_offered_and_fill_the_form) {
    open_connected();
    EXPECT_FALSE(usable("combo_box_sent"));
    does(
        "pick ~/combo_box_ex_channal SPI1_TO_CANFD1\npick ~/combo_box_ex_frame_type 扩展帧\n"
        "pick ~/combo_box_ex_can_canfd_or CANFD加速\ntype ~/serial_send_id 70000\n"
        "type ~/serial_send_data 00112233445566778899\nclick ~/button_send\nwait ~/combo_box_sent enabled 1\n"
        "pick ~/combo_box_ex_frame_type 标准帧\npick ~/combo_box_ex_can_canfd_or CANFD不加速\n"
        "type ~/serial_send_id 5\ntype ~/serial_send_data AB\nclick ~/button_send\nwait ~/button_send enabled 1\n");
    ASSERT_TRUE(wait([] { return combo_box_count_options(in("combo_box_sent")) == 3; }));
    const std::string old = "70000  0011223344556677…  SPI1_TO_CANFD1  扩展帧  CANFD加速";
    for (int round = 0; round < 2; ++round) {
        does("pick ~/combo_box_sent \"" + old + "\"\n");
        EXPECT_EQ(shown("serial_send_id"), "70000");
        EXPECT_EQ(shown("serial_send_data"), "00112233445566778899");
        EXPECT_EQ(shown("combo_box_ex_frame_type"), "扩展帧");
        EXPECT_EQ(shown("label_id_hex"), "= 0x11170");
        EXPECT_EQ(shown("combo_box_sent"), "选择最近发送的帧");
    }
    does("click ~/button_exit\n");
    serial_send_forget(); // as after a restart
    open();
    EXPECT_EQ(combo_box_count_options(in("combo_box_sent")), 3) << "and the prompt";
}

TEST_F(serial_send_keep, a_first_opening_shows_the_defaults_and_a_later_one_what_stood_there) {
    sent_history("./serial_send.json")
        .add({.channel = 4, .format = 8, .speed = 128, .identifier = 5, .data = "AB"});
    open();
    EXPECT_EQ(combo_box_count_options(in("combo_box_sent")), 2) << "it is only offered";
    EXPECT_EQ(shown("combo_box_ex_channal"), "UART1_TO_CANFD1");
    EXPECT_EQ(shown("combo_box_ex_frame_type"), "标准帧");
    EXPECT_EQ(shown("combo_box_ex_can_canfd_or"), "CANFD不加速");
    EXPECT_EQ(shown("serial_send_id"), "1");
    EXPECT_EQ(shown("serial_send_data"), "1122");
    does("pick ~/combo_box_ex_channal UART2_TO_CANFD2\npick ~/combo_box_ex_frame_type 扩展帧\n"
         "pick ~/combo_box_ex_can_canfd_or CANFD加速\ntype ~/serial_send_id 70001\n"
         "type ~/serial_send_data 00112233445566778899\nclick ~/char_flag\nclick ~/button_exit\n");
    open();
    EXPECT_EQ(shown("combo_box_ex_channal"), "UART2_TO_CANFD2");
    EXPECT_EQ(shown("combo_box_ex_frame_type"), "扩展帧");
    EXPECT_EQ(shown("combo_box_ex_can_canfd_or"), "CANFD加速");
    EXPECT_EQ(shown("serial_send_id"), "70001");
    EXPECT_EQ(shown("label_id_hex"), "= 0x11171");
    EXPECT_EQ(shown("serial_send_data"), "00112233445566778899");
    does("type ~/serial_send_id 1073741825\n");
    EXPECT_EQ(shown("serial_send_id"), "107374182") << "with its limits";
    does("click ~/combo_box_sent\nkey Down\nkey Enter\nwait ~/serial_send_data text AB\nclick ~/button_exit\n");
    open();
    EXPECT_EQ(shown("serial_send_data"), "AB") << "also what was taken from those sent last";
}

} // namespace
