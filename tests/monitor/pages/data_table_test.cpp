// The table of records: what a row shows, holding one's data, scrolling away, copying.
#include "tests/monitor/pages/data_stage.h"

#include "monitor/pages/data_table.h"

namespace {

using testing::StartsWith;

class data_table_page : public data_stage {
  protected:
    void TearDown() override {
        user_window_size(1280, 750);
        data_stage::TearDown();
    }
    static widget* first_row() {
        table_client_fill(on_page("table_client"));
        widget* row = nullptr;
        widget_foreach(on_page("table_client"), [&row](widget* one) {
            if (row == nullptr && widget_name(one) == "data_row") row = one;
            return RET_OK;
        });
        return row;
    }
    static constexpr const char* columns[] = {"index",    "time",      "channel", "id",
                                              "can_type", "direction", "length",  "data"};
    static widget* head(const char* name) { return on_page((std::string("head_") + name).c_str()); }
    static int px(widget* w, const char* what) { return widget_get_prop_int(w, what, -1000); }
    static std::string id_of_row_0() { return widget_get_text_utf8(widget_child(first_row(), "id")); }
    /// The module sends bytes of its own.
    void say(const std::vector<uint8_t>& bytes) {
        const uint32_t before = rows();
        module->babble(bytes);
        ASSERT_TRUE(wait([before] { return rows() > before; }));
    }
    static std::string row_expect(int row, const std::string& what) {
        return tk_format("wait ~/table_client/data_row[%d]/%s\n", row, what.c_str());
    }
};

TEST_F(data_table_page, a_row_shows_its_record_newest_first) {
    open_page();
    does("pick ~/combo_box_ex_crc_mode 不带校验\n");
    // Channel 3, extended CAN FD, identifier 0x12345678, three data bytes.
    say({0xAB, 0x08, 0x03, 0x03, 0x88, 0x78, 0x56, 0x34, 0x12, 0xDE, 0xAD, 0x01});
    // Channel 9 counts as the first; standard CAN without data.
    say({0xAA, 0x05, 0x03, 0x09, 0x00, 0x05, 0x00, 0x00, 0x00});
    does(row_expect(0, "index text 1") + row_expect(0, "time text \"2025-09-29 13:05:09\"") +
         row_expect(0, "channel text uart1-can1") + row_expect(0, "id text \"0x05 \"") +
         row_expect(0, "can_type text 标准帧-can") + row_expect(0, "direction text rx") +
         row_expect(0, "length text 0") + row_expect(0, "data text \"\"") + row_expect(1, "index text 2") +
         row_expect(1, "channel text uart2-can2") + row_expect(1, "id text \"0x12345678 \"") +
         row_expect(1, "can_type text 扩展帧-canfd") + row_expect(1, "length text 3") +
         row_expect(1, "data text \"DE AD 01 \"") +
         "expect ~/table_client/data_row[0] state even\nexpect ~/table_client/data_row[1] state odd\n"
         "expect ~/table_client/data_row[0]/direction state \"\"\n");
    send();
    does(row_expect(0, "direction text tx") + row_expect(0, "direction state tx") +
         row_expect(1, "direction text rx") + row_expect(1, "direction state \"\"") +
         "expect ~/table_client/data_row[0] state \"even tx\"\nexpect ~/table_client/data_row[1] state odd\n"
         "click ~/table_client/data_row[0]/time\nwait ~/table_client/data_row[0] state \"even tx chosen\"\n");
    send();
    does("wait ~/table_client/data_row[0] state \"even tx\"\nwait ~/table_client/data_row[1] state \"odd tx "
         "chosen\"\n");
}

TEST_F(data_table_page, long_data_are_cut_and_shown_whole_when_held) {
    open_page();
    does("pick ~/combo_box_ex_crc_mode 不带校验\n");
    std::vector<uint8_t> frame = {0xAC, 0x45, 0x03, 0x05, 0x80, 0x01, 0x00, 0x00, 0x00};
    std::string all;
    for (int i = 0; i < 64; ++i) {
        frame.push_back(static_cast<uint8_t>(i));
        all += tk_format("%02X ", i);
    }
    say(frame);
    does(row_expect(0, "data text \"" + all.substr(0, 62) + "..\"") +
         "press ~/table_client/data_row[0]/data 100\n");
    settle();
    EXPECT_EQ(navigator_find("data_info"), nullptr) << "a short press opens nothing";
    std::string failed;
    user_will_do("wait data_info/edit_data text " + user_word(all) + "\nkey Enter\n", &failed);
    does("press ~/table_client/data_row[0]/data 900\n");
    EXPECT_EQ(failed, "");
    ASSERT_TRUE(wait([] { return navigator_find("data_info") == nullptr; }));
}

TEST_F(data_table_page, data_of_31_bytes_stand_in_full) {
    open_page();
    does("pick ~/combo_box_ex_crc_mode 不带校验\n");
    std::vector<uint8_t> frame = {0xAA, 0x24, 0x03, 0x01, 0x80, 0x01, 0x00, 0x00, 0x00};
    frame.insert(frame.end(), 31, 0x5A);
    say(frame);
    std::string all;
    for (int i = 0; i < 31; ++i) all += "5A ";
    does(row_expect(0, "data text \"" + all + "\""));
}

TEST_F(data_table_page, scrolled_away_it_holds_the_records_in_place) {
    open_page(frames(2000, 200)); // a purge may drop some
    ASSERT_TRUE(wait([this] { return module->traffic_sent().size() == 200 && rows() > 100; }));
    ASSERT_TRUE(quiet());
    const uint32_t before = rows();
    table_client_show_row(on_page("table_client"), 50);
    table_client_fill(on_page("table_client"));
    does("expect ~/table_client/data_row[0]/index text 51\n");
    const std::string id = id_of_row_0();
    module->set_traffic(frames(2000, 25));
    ASSERT_TRUE(wait([this] { return module->traffic_sent().size() == 225; }));
    ASSERT_TRUE(quiet());
    ASSERT_GT(rows(), before);
    does(row_expect(0, tk_format("index text %u", 51 + rows() - before)));
    EXPECT_EQ(id_of_row_0(), id);
    does("click ~/button_clear\n");
    EXPECT_EQ(table_client_first_row(on_page("table_client")), 0u);
}

TEST_F(data_table_page, chosen_rows_are_copied_as_lines) {
    open_page();
    does("pick ~/combo_box_ex_crc_mode 不带校验\n");
    say({0xAB, 0x08, 0x03, 0x03, 0x88, 0x78, 0x56, 0x34, 0x12, 0xDE, 0xAD, 0x01});
    say({0xAA, 0x05, 0x03, 0x01, 0x00, 0x05, 0x00, 0x00, 0x00});
    does(row_expect(1, "index text 2") + "click ~/table_client/data_row[0]/time\n"
                                         "wait ~/table_client/data_row[0] state \"even chosen\"\nkey Shift+Down\n"
                                         "wait ~/table_client/data_row[1] state \"odd chosen\"\nkey Ctrl+c\n");
    EXPECT_EQ(shown("label_copied"), "已复制 2 行");
    does("expect ~/label_copied state ok\n");
    EXPECT_EQ(clip_board_get_text(),
              "1\t2025-09-29 13:05:09\tuart1-can1\t0x05\t标准帧-can\trx\t0\t\n"
              "2\t2025-09-29 13:05:09\tuart2-can2\t0x12345678\t扩展帧-canfd\trx\t3\tDE AD 01\n");
}

TEST_F(data_table_page, of_too_many_rows_the_first_are_copied_and_that_is_said) {
    std::ofstream("setting.json", std::ios::binary) << R"({"fifo_size":"30000"})";
    open_page(plain());
    does("pick ~/combo_box_ex_crc_mode 不带校验\n");
    std::vector<uint8_t> chunk;
    for (int i = 0; i < 100; ++i) chunk.insert(chunk.end(), {0xAA, 0x05, 0x03, 0x01, 0x00, 0x05, 0x00, 0x00, 0x00});
    while (rows() < data_copy_max + 1) say(chunk); // a purge may drop some
    ASSERT_TRUE(quiet());
    const uint32_t all = rows();
    does("click ~/table_client/data_row[0]/time\nkey Ctrl+a\nkey Ctrl+c\n");
    EXPECT_EQ(shown("label_copied"), tk_format("只复制前 20000 行，共选 %u 行", all));
    does("expect ~/label_copied state warning\n");
    const std::string text = clip_board_get_text();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 20000);
    EXPECT_THAT(text, testing::HasSubstr("\n20000\t"));
    table_client_choose(on_page("table_client"), table_rows{1, data_copy_max});
    does("key Ctrl+c\n");
    EXPECT_EQ(shown("label_copied"), "已复制 20000 行");
    EXPECT_THAT(clip_board_get_text(), StartsWith("2\t"));
}

TEST_F(data_table_page, the_word_of_a_copy_goes_again) {
    open_page(frames(1000, 3));
    ASSERT_TRUE(wait([] { return rows() > 0; }));
    EXPECT_FALSE(widget_get_visible(on_page("label_copied")));
    data_copied_ms() = 200;
    first_row();
    does("click ~/table_client/data_row[0]/time\nkey Ctrl+c\nexpect ~/label_copied visible 1\n");
    EXPECT_TRUE(wait([] { return !widget_get_visible(on_page("label_copied")); }));
    data_copied_ms() = 5000;
}

TEST_F(data_table_page, the_header_stands_over_its_columns) {
    open_page(frames(1000, 3));
    ASSERT_TRUE(wait([] { return rows() > 0; }));
    widget* row = first_row();
    ASSERT_NE(row, nullptr);
    for (const char* name : columns) EXPECT_EQ(px(head(name), "x"), px(widget_child(row, name), "x")) << name;
}

TEST_F(data_table_page, a_column_has_room_for_its_longest_text) {
    open_page(frames(1000, 3));
    ASSERT_TRUE(wait([] { return rows() > 0; }));
    widget* row = first_row();
    constexpr const char* longest[] = {
        "5000000", "2000-00-00 00:00:00", "uart2-can2", "0xffffffff ", "扩展帧-canfd", "未知", "64"};
    for (std::size_t i = 0; i < std::size(longest); ++i) {
        widget_set_text_utf8(widget_child(row, columns[i]), longest[i]);
        EXPECT_LE(px(widget_child(row, columns[i]), "text_w"), px(widget_child(row, columns[i]), "w"))
            << longest[i];
    }
    for (const char* name : columns) EXPECT_LE(px(head(name), "text_w"), px(head(name), "w")) << name;
}

TEST_F(data_table_page, in_a_small_window_long_data_are_reached_sideways) {
    ASSERT_TRUE(user_window_size(1024, 600));
    open_page();
    does("pick ~/combo_box_ex_crc_mode 不带校验\n");
    say({0xAA, 0x0D, 0x03, 0x01, 0x00, 0x05, 0x00, 0x00, 0x00, 1, 2, 3, 4, 5, 6, 7, 8});
    widget* row = first_row();
    const int view = px(row, "w");
    EXPECT_EQ(view, px(on_page("table_header"), "w")) << "eight bytes need no more than the view";
    std::vector<uint8_t> frame = {0xAA, 0x24, 0x03, 0x01, 0x80, 0x01, 0x00, 0x00, 0x00};
    frame.insert(frame.end(), 31, 0x5A);
    say(frame);
    row = first_row();
    EXPECT_GT(px(row, "w"), view);
    EXPECT_EQ(px(widget_child(row, "data"), "text_w"), px(widget_child(row, "data"), "w")) << "nothing is cut";
    does("click ~/table_client/data_row[0]/time\nkey Right\nkey Right\n");
    EXPECT_EQ(px(row, "x"), -128);
    for (const char* name : columns)
        EXPECT_EQ(px(head(name), "window_x"), px(widget_child(row, name), "window_x")) << name;
    std::string failed;
    user_will_do("wait data_info/ok visible 1\nkey Enter\n", &failed);
    does("press ~/table_client/data_row[0]/data 900\n");
    EXPECT_EQ(failed, "");
    ASSERT_TRUE(wait([] { return navigator_find("data_info") == nullptr; }));
    does("click ~/table_client/data_row[1]/data\nwait ~/table_client/data_row[1] state \"odd chosen\"\n"
         "click ~/button_clear\n");
    say({0xAA, 0x0D, 0x03, 0x01, 0x00, 0x05, 0x00, 0x00, 0x00, 1, 2, 3, 4, 5, 6, 7, 8});
    row = first_row();
    EXPECT_EQ(px(row, "w"), view);
    EXPECT_EQ(px(row, "x"), 0);
}

} // namespace
