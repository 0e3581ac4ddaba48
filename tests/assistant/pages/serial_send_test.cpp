// The dialog: its options and limits, what the send button does, what is shown of what comes in.
#include "tests/assistant/pages/assistant_stage.h"

#include "dev_b/pages/vkt610b_pages.h"
#include "toolkit/core/thread.h"
#include "toolkit/core/worker.h"

device_session& assistant_stage::data_session() { return device(vkt610b_pages).session; }

namespace {

class serial_send : public assistant_stage {};

TEST_F(serial_send, a_missing_window_is_reported) {
    EXPECT_EQ(serial_send_init(nullptr, nullptr), RET_BAD_PARAMS);
    EXPECT_THAT(said(), testing::HasSubstr("serial_send_init:"));
    EXPECT_THAT(said(), testing::HasSubstr(" condition(win != NULL) failed!\n"));
}

TEST_F(serial_send, it_opens_from_the_change_page_and_closes) {
    open();
    EXPECT_TRUE(widget_is_dialog(dialog()));
    does("click ~/button_exit\n");
    EXPECT_EQ(dialog(), nullptr);
    open();
    does("key Esc\n");
    EXPECT_EQ(dialog(), nullptr);
}

TEST_F(serial_send, the_button_of_the_home_page_opens_the_same) {
    EXPECT_FALSE(visible("button_serial_assistant"));
    widget_dispatch_simple_event(at("button_serial_assistant"), event_type::click);
    EXPECT_NE(dialog(), nullptr);
}

TEST_F(serial_send, it_shows_the_module_and_its_port) {
    open();
    EXPECT_EQ(shown("label_device"), "未连接");
    does("click ~/button_exit\n");
    open_connected();
    does("expect ~/label_device text \"VKT610B · COM7\"\nexpect ~/label_device state \"\"\n");
    module->hang_up();
    does("wait ~/label_device text \"VKT610B · COM7　串口已断开\"\nexpect ~/label_device state failed\n");
}

TEST_F(serial_send, its_options_and_what_is_chosen_at_first) {
    open();
    const auto chosen = [](const char* name) { return widget_get_value_int(in(name)); };
    EXPECT_EQ(chosen("combo_box_ex_channal"), 1);
    EXPECT_EQ(combo_box_count_options(in("combo_box_ex_channal")), 5);
    EXPECT_EQ(chosen("combo_box_ex_frame_type"), 0);
    EXPECT_EQ(combo_box_count_options(in("combo_box_ex_frame_type")), 2);
    EXPECT_EQ(chosen("combo_box_ex_can_canfd_or"), 0);
    does("pick ~/combo_box_ex_channal SPI2_TO_CANFD2\npick ~/combo_box_ex_frame_type 扩展帧\n"
         "pick ~/combo_box_ex_can_canfd_or CANFD加速\n");
    EXPECT_EQ(chosen("combo_box_ex_channal"), 5);
    EXPECT_EQ(chosen("combo_box_ex_frame_type"), 8);
    EXPECT_EQ(chosen("combo_box_ex_can_canfd_or"), 128);
    EXPECT_TRUE(checked("hex_flag"));
    EXPECT_FALSE(checked("char_flag"));
}

TEST_F(serial_send, an_extended_frame_raises_the_limit_of_the_identifier) {
    open();
    const auto typed = [](const char* text) {
        does(std::string("type ~/serial_send_id ") + text + "\nkey Tab\n");
        return shown("serial_send_id");
    };
    EXPECT_EQ(typed("4096"), "4096");
    EXPECT_EQ(shown("label_id_hex"), "= 0x1000");
    EXPECT_EQ(typed("4097"), "409") << "the last digit cannot be typed";
    does("pick ~/combo_box_ex_frame_type 扩展帧\n");
    EXPECT_EQ(typed("1073741824"), "1073741824");
    EXPECT_EQ(shown("label_id_hex"), "= 0x40000000");
    EXPECT_EQ(typed("1073741825"), "107374182");
    does("pick ~/combo_box_ex_frame_type 标准帧\n");
    EXPECT_EQ(shown("serial_send_id"), "4096") << "what stands there is brought within the limit";
}

TEST_F(serial_send, a_faster_frame_raises_the_limit_of_the_data) {
    open();
    const auto typed = [](std::size_t size) {
        does("type ~/serial_send_data " + std::string(size, 'a') + "\n");
        return shown("serial_send_data").size();
    };
    EXPECT_EQ(typed(17), 16u);
    does("pick ~/combo_box_ex_can_canfd_or CANFD加速\n");
    EXPECT_EQ(typed(129), 128u);
    EXPECT_THAT(shown("label_send_hint"), testing::HasSubstr("只取前 64 个字符"));
    does("pick ~/combo_box_ex_can_canfd_or CANFD不加速\n");
    EXPECT_EQ(shown("serial_send_data").size(), 16u);
    EXPECT_EQ(shown("label_send_hint"), "长度 16：数据 8 字节，补 8 个 00");
}

TEST_F(serial_send, characters_of_more_than_a_byte_count_once) {
    open();
    does("type ~/serial_send_data 1中中中中中中中中中中中中中中中中中\nclick ~/button_send\n"
         "wait err_display exists 1\nclick err_display/ok\n");
    EXPECT_EQ(shown("serial_send_data"), "1中中中中中中中中中中中中中中中");
    EXPECT_EQ(shown("label_send_hint"), "长度 16：数据 8 字节，补 8 个 00；非十六进制字符为 0");
    EXPECT_THAT(shown("edit_send_frame"),
                testing::StartsWith("AA 17 04 01 00 01 00 00 00 10 00 00 00 00 00 00 00 00 00"));
}

TEST_F(serial_send, the_module_receives_the_frame_that_is_shown) {
    open_connected();
    does("pick ~/combo_box_ex_channal SPI2_TO_CANFD2\npick ~/combo_box_ex_frame_type 扩展帧\n"
         "pick ~/combo_box_ex_can_canfd_or CANFD加速\ntype ~/serial_send_id 305419896\ntype ~/serial_send_data "
         "DEAD\n"
         "click ~/button_send\n");
    const std::string frame = "AC 0B 04 05 88 78 56 34 12 DE AD 00 00 25 2F";
    EXPECT_EQ(shown("edit_send_frame"), frame);
    ASSERT_TRUE(module->wait_traffic(0, 1, 10000));
    EXPECT_EQ(hex_pairs_from_bytes(module->traffic_received()[0].frame), frame);
    does("wait ~/button_send enabled 1\nwait ~/label_result text \"已发送 13:05:09.000\"\n"
         "wait ~/table_bytes/serial_send_row[0]/direction text tx\n"
         "wait ~/table_bytes/serial_send_row[0]/bytes text \"" +
         frame + "\"\nexpect ~/table_bytes/serial_send_row[0]/direction state tx\n");
}

TEST_F(serial_send, without_a_connection_the_frame_is_shown_and_not_sent) {
    open();
    answer_message();
    does("type ~/serial_send_id 291\ntype ~/serial_send_data DEAD\nclick ~/button_send\n");
    EXPECT_TRUE(wait([this] { return !message_seen.empty(); }));
    EXPECT_EQ(message_seen, "请先连接设备");
    EXPECT_EQ(shown("edit_send_frame"), "AA 0B 04 01 00 23 01 00 00 DE AD 00 00 CC 60");
    EXPECT_TRUE(wait([] { return usable("button_send"); }));
    EXPECT_FALSE(usable("combo_box_sent"));
}

TEST_F(serial_send, while_somebody_has_the_port_nothing_is_sent) {
    open_connected();
    does("click ~/button_send\nwait ~/label_result text \"已发送 13:05:09.000\"\n");
    port_lease other = data_session().take_port(1000);
    ASSERT_TRUE(other);
    answer_message();
    does("click ~/button_send\n");
    EXPECT_TRUE(wait([this] { return !message_seen.empty(); }));
    EXPECT_EQ(message_seen, "请先连接设备");
    ASSERT_TRUE(wait([] { return usable("button_send"); }));
    EXPECT_EQ(shown("label_result"), "") << "what was said of the frame before is gone";
    does("expect ~/label_result state \"\"\nexpect ~/button_send focused 1\n");
}

TEST_F(serial_send, the_frame_before_is_waited_for_over_a_closed_dialog) {
    assistant_timing_get().port_wait_ms = 60000;
    open_connected();
    port_lease other = data_session().take_port(1000);
    ASSERT_TRUE(other);
    does("click ~/button_send\nexpect ~/button_send enabled 0\nclick ~/button_exit\n");
    open();
    answer_message();
    does("click ~/button_send\n");
    EXPECT_TRUE(wait([this] { return !message_seen.empty(); }));
    EXPECT_EQ(message_seen, "上一帧还没有发送完，请稍后再试");
    other.give_back();
    ASSERT_TRUE(wait([] { return serial_send_assistant().history().size() == 1; }));
    EXPECT_EQ(shown("label_result"), "") << "this opening has sent nothing";
    does("click ~/button_send\nwait ~/label_result state ok\n");
    EXPECT_TRUE(module->wait_traffic(0, 2, 10000));
}

TEST_F(serial_send, a_thread_that_cannot_start_is_said_as_such) {
    tk_thread_refuse(1);
    EXPECT_EQ(navigator_to("serial_send"), RET_FAIL);
    EXPECT_EQ(shown("label_result"), "创建线程失败，不能接收");
    does("expect ~/label_result state failed\nclick ~/button_exit\n");
    open_connected();
    EXPECT_EQ(shown("label_result"), "");
    answer_message();
    tk_thread_refuse(1);
    does("click ~/button_send\n");
    EXPECT_TRUE(wait([this] { return !message_seen.empty(); }));
    EXPECT_EQ(message_seen, "创建线程失败，本帧未发送");
    EXPECT_TRUE(usable("button_send"));
    say({0x41});
    tk_thread_refuse(1);
    does("click ~/button_copy\n");
    EXPECT_EQ(shown("label_result"), "创建线程失败");
    does("expect ~/label_result state failed\nclick ~/button_copy\nwait ~/label_result text 已复制\n"
         "click ~/button_send\nwait ~/combo_box_sent enabled 1\n");
}

TEST_F(serial_send, what_comes_in_is_shown_in_two_forms) {
    open_connected();
    EXPECT_FALSE(usable("button_clear"));
    say({0x41, 0x7A, 0x00, 0x20, 0xFF});
    does("wait ~/table_bytes/serial_send_row[0]/bytes text \"41 7A 00 20 FF\"\n"
         "expect ~/table_bytes/serial_send_row[0]/time text 13:05:09.000\n"
         "expect ~/table_bytes/serial_send_row[0]/direction text rx\n"
         "click ~/char_flag\nwait ~/table_bytes/serial_send_row[0]/bytes text \"Az. .\"\n");
    EXPECT_FALSE(checked("hex_flag"));
    EXPECT_TRUE(checked("char_flag"));
    does("click ~/char_flag\n");
    EXPECT_TRUE(checked("char_flag")) << "one is always on";
    does("click ~/hex_flag\nwait ~/table_bytes/serial_send_row[0]/bytes text \"41 7A 00 20 FF\"\n");
    EXPECT_FALSE(checked("char_flag"));
    EXPECT_TRUE(usable("button_clear"));
}

TEST_F(serial_send, every_good_frame_is_a_line) {
    open_connected();
    say(good());
    does("wait ~/table_frames/serial_send_frame[0]/channel text UART2_TO_CANFD2\n"
         "expect ~/table_frames/serial_send_frame[0]/id text 0x12345678\n"
         "expect ~/table_frames/serial_send_frame[0]/type text \"扩展帧-canfd\"\n"
         "expect ~/table_frames/serial_send_frame[0]/bytes text \"DE AD 01\"\n"
         "wait ~/label_counts text \"收 14 字节　发 0 字节　帧 1\"\n");
    std::vector<uint8_t> bad = good();
    bad.back() ^= 1;
    bad.push_back(0x55);
    say(bad);
    does("wait ~/label_counts text \"收 29 字节　发 0 字节　帧 1　坏帧 1　帧外 1 字节\"\n");
}

TEST_F(serial_send, long_data_are_cut_and_shown_whole_when_held) {
    open_connected();
    // Channel 1, standard CAN FD, identifier 1, data 00 to 13 (hex).
    say({0xAA, 0x1B, 0x03, 0x01, 0x80, 0x01, 0x00, 0x00, 0x00, 0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06,
         0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11, 0x12, 0x13, 0x06, 0x5D});
    does("wait ~/table_frames/serial_send_frame[0]/bytes text \"00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F "
         "..\"\n"
         "press ~/table_frames/serial_send_frame[0]/bytes 100\n");
    settle();
    EXPECT_EQ(navigator_find("data_info"), nullptr) << "a short press opens nothing";
    std::string failed;
    user_will_do("wait data_info/edit_data text "
                 "\"00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13\"\nkey Enter\n",
                 &failed);
    does("press ~/table_frames/serial_send_frame[0]/bytes 900\n");
    EXPECT_EQ(failed, "");
    ASSERT_TRUE(wait([] { return navigator_find("data_info") == nullptr; }));
}

TEST_F(serial_send, the_end_stays_in_view_until_one_scrolls_away) {
    open_connected();
    const auto piece = [](uint8_t byte) { return std::vector<uint8_t>(160, byte); };
    say({0x00}); // the first row alone is the end, too
    for (uint8_t i = 1; i <= 5; ++i) say(piece(i));
    const auto end_shows = [] {
        return wait([] {
            table_client_fill(in("table_bytes"));
            const uint32_t first = table_client_first_row(in("table_bytes"));
            return first > 0 && first + 16 > rows("table_bytes");
        });
    };
    EXPECT_TRUE(end_shows());
    table_client_show_row(in("table_bytes"), 3);
    say(piece(6));
    EXPECT_EQ(table_client_first_row(in("table_bytes")), 3u);
    table_client_show_row(in("table_bytes"), rows("table_bytes") - 1);
    say(piece(7));
    EXPECT_TRUE(end_shows());
}

TEST_F(serial_send, a_session_works_while_the_dialog_is_open) {
    connect("VKT610B");
    open();
    EXPECT_EQ(widget_dispatch_simple_event(at("button_read"), event_type::click), RET_OK);
    ASSERT_TRUE(wait([] { return progress() != nullptr && text(progress(), "label3") == "读配置完成"; }));
    press_ok();
    EXPECT_NE(dialog(), nullptr);
    EXPECT_EQ(log().counts().received, 0u);
    say({0x41});
}

TEST_F(serial_send, opened_twice_it_has_one_pair_of_threads_and_loses_nothing) {
    open_connected();
    say(good());
    const uint32_t running = workers_running();
    does("click ~/button_exit\n");
    module->babble(good());
    ASSERT_TRUE(wait([] { return log().counts().received == 28; }));
    open();
    EXPECT_EQ(workers_running(), running);
    EXPECT_EQ(rows("table_bytes"), log().counts().rows);
    does("wait ~/label_counts text \"收 28 字节　发 0 字节　帧 2\"\n");
}

TEST_F(serial_send, every_header_stands_over_its_column) {
    open_connected();
    say(good());
    does("wait ~/table_frames/serial_send_frame[0]/id text 0x12345678\n");
    const auto x = [](widget* one) { return widget_get_prop_int(one, "window_x", -1); };
    const auto row_of = [](const char* name) {
        widget* row = nullptr;
        widget_foreach(dialog(), [&](widget* one) {
            if (row == nullptr && widget_name(one) == name) row = one;
            return RET_OK;
        });
        return row;
    };
    for (const char* name : {"time", "direction", "bytes"})
        EXPECT_EQ(x(in((std::string("bytes_head_") + name).c_str())),
                  x(widget_child(row_of("serial_send_row"), name)))
            << name;
    for (const char* name : {"time", "channel", "id", "type", "bytes"})
        EXPECT_EQ(x(in((std::string("frames_head_") + name).c_str())),
                  x(widget_child(row_of("serial_send_frame"), name)))
            << name;
}

} // namespace
