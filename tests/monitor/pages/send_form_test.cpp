// The send form: its settings, what it sends, and what it refuses.
#include "tests/monitor/pages/data_stage.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using strings = std::vector<std::string>;

class send_form_page : public data_stage {};

/// The file that is made when there is none.
constexpr const char* fresh_settings = R"({
    "fifo_size": "5000",
    "combo_box_ex_channel": "uart1-can1",
    "combo_box_type_1": "标准帧",
    "combo_box_type_2": "CAN",
    "combo_box_ex_data_len": "8",
    "edit_can_id": "1",
    "edit_data": "00 11 22 33 44 55 66 77",
    "check_button_read_puase": "0"
})";

std::string without_blanks(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; });
    return text;
}

TEST_F(send_form_page, a_fresh_one_shows_the_usual_settings) {
    open_page();
    EXPECT_EQ(without_blanks(settings()), without_blanks(fresh_settings));
    EXPECT_EQ(tries("expect ~/combo_box_ex_channel options uart1-can1|uart1-can2|uart2-can2|spi1-can1|spi1-can2\n"
                    "expect ~/combo_box_type_1 options 标准帧|扩展帧\nexpect ~/combo_box_type_2 options CAN|CANFD\n"
                    "expect ~/combo_box_ex_data_len options 0|1|2|3|4|5|6|7|8\n"
                    "expect ~/combo_box_ex_crc_mode options 带校验|不带校验\n"
                    "expect ~/combo_box_ex_crc_mode value 1\n"),
              "");
    EXPECT_EQ(shown("combo_box_ex_channel"), "uart1-can1");
    EXPECT_EQ(shown("combo_box_type_1"), "标准帧");
    EXPECT_EQ(shown("combo_box_type_2"), "CAN");
    EXPECT_EQ(shown("combo_box_ex_data_len"), "8");
    EXPECT_EQ(shown("combo_box_ex_crc_mode"), "带校验");
    EXPECT_EQ(shown("edit_can_id"), "1");
    EXPECT_EQ(shown("edit_data"), "00 11 22 33 44 55 66 77");
    EXPECT_EQ(shown("edit_timer"), "100");
    EXPECT_EQ(shown("edit_id_add"), "1");
    EXPECT_EQ(shown("edit_data_add"), "1");
    EXPECT_EQ(shown("edit_send_frame"), "");
    EXPECT_TRUE(data_page_traffic().check());
}

TEST_F(send_form_page, every_change_is_stored_and_found_again) {
    open_page();
    does("pick ~/combo_box_ex_channel spi1-can1\npick ~/combo_box_type_2 CANFD\npick ~/combo_box_type_1 扩展帧\n"
         "pick ~/combo_box_ex_data_len 12\npick ~/combo_box_ex_crc_mode 不带校验\n"
         "type ~/edit_can_id 1ABCDEF\nkey Tab\ntype ~/edit_data 0102\nkey Tab\ntype ~/edit_id_add 3\nkey Tab\n"
         "type ~/edit_data_add 16\nkey Tab\ntype ~/edit_timer 50\nkey Tab\n"
         "click ~/check_button_id_add\nclick ~/check_button_data_add\n");
    const std::string stored = settings();
    for (const char* line :
         {"\"combo_box_ex_channel\": \"spi1-can1\"", "\"combo_box_type_1\": \"扩展帧\"",
          "\"combo_box_type_2\": \"CANFD\"", "\"combo_box_ex_data_len\": \"12\"", "\"edit_can_id\": \"1ABCDEF\"",
          "\"edit_data\": \"0102\"", "\"combo_box_ex_crc_mode\": \"不带校验\"", "\"edit_id_add\": \"3\"",
          "\"edit_data_add\": \"16\"", "\"edit_timer\": \"50\"", "\"check_button_id_add\": \"1\"",
          "\"check_button_data_add\": \"1\""})
        EXPECT_THAT(stored, HasSubstr(line));
    EXPECT_FALSE(data_page_traffic().check());
    leave_page();
    open_page();
    EXPECT_EQ(shown("combo_box_ex_channel"), "spi1-can1");
    EXPECT_EQ(shown("combo_box_type_1"), "扩展帧");
    EXPECT_EQ(shown("combo_box_type_2"), "CANFD");
    EXPECT_EQ(shown("combo_box_ex_data_len"), "12");
    EXPECT_EQ(shown("combo_box_ex_crc_mode"), "不带校验");
    EXPECT_EQ(shown("edit_can_id"), "1ABCDEF");
    EXPECT_EQ(shown("edit_data"), "0102");
    EXPECT_EQ(shown("edit_id_add"), "3");
    EXPECT_EQ(shown("edit_data_add"), "16");
    EXPECT_EQ(shown("edit_timer"), "50");
    EXPECT_TRUE(checked("check_button_id_add"));
    EXPECT_TRUE(checked("check_button_data_add"));
    EXPECT_EQ(settings(), stored);
    does("click ~/check_button_id_add\nclick ~/check_button_data_add\n");
    EXPECT_THAT(settings(), HasSubstr("\"check_button_id_add\": \"0\""));
    EXPECT_THAT(settings(), HasSubstr("\"check_button_data_add\": \"0\""));
}

TEST_F(send_form_page, what_it_shows_is_what_the_first_send_takes) {
    {
        std::ofstream file("setting.json", std::ios::binary);
        file << R"({"combo_box_ex_channel":"spi1-can1","combo_box_type_1":"扩展帧","combo_box_type_2":"CANFD",)"
                R"("combo_box_ex_data_len":"12","combo_box_ex_crc_mode":"不带校验","edit_can_id":"12345678",)"
                R"("edit_data":"000102030405060708090A0B","later":{"a":1}})";
    }
    open_page(plain());
    send();
    ASSERT_TRUE(wait_received(1));
    EXPECT_THAT(received(), ElementsAre("AC11040488"
                                        "78563412"
                                        "000102030405060708090A0B"));
    does("click ~/check_button_id_add\n");
    EXPECT_THAT(settings(), HasSubstr("\"later\"")) << "what the program does not know stays";
}

TEST_F(send_form_page, a_saved_text_that_is_no_option_gives_the_first_one) {
    {
        std::ofstream file("setting.json", std::ios::binary);
        file
            << R"({"combo_box_ex_channel":"uart9","combo_box_type_1":"","combo_box_type_2":7,)"
               R"("combo_box_ex_data_len":"12","combo_box_ex_crc_mode":[1],"edit_timer":"soon","edit_id_add":"-5"})";
    }
    open_page();
    EXPECT_EQ(shown("combo_box_ex_channel"), "uart1-can1");
    EXPECT_EQ(shown("combo_box_type_1"), "标准帧");
    EXPECT_EQ(shown("combo_box_type_2"), "CAN");
    EXPECT_EQ(shown("combo_box_ex_data_len"), "8") << "12 is none of CAN";
    EXPECT_EQ(shown("combo_box_ex_crc_mode"), "带校验");
    EXPECT_EQ(shown("edit_timer"), "soon") << "as it is stored";
}

TEST_F(send_form_page, a_settings_file_that_cannot_be_read_stops_nothing) {
    std::filesystem::create_directory("setting.json");
    open_page();
    EXPECT_EQ(shown("combo_box_ex_channel"), "uart1-can1");
    EXPECT_EQ(shown("combo_box_ex_data_len"), "8");
    EXPECT_EQ(shown("edit_data"), "00 11 22 33 44 55 66 77") << "what the layout shows";
    does("pick ~/combo_box_ex_channel spi1-can2\n");
    send();
    ASSERT_TRUE(wait_received(1));
    EXPECT_EQ(received().front().substr(0, 10), "AC0F040500");
}

struct settings_file {
    const char* label;
    std::string text;
};
void PrintTo(const settings_file& one, std::ostream* out) { *out << one.label; }

class bad_settings : public data_stage, public testing::WithParamInterface<settings_file> {};
INSTANTIATE_TEST_SUITE_P(
    files, bad_settings,
    testing::Values(settings_file{"empty", ""}, settings_file{"no_json", "[general]\nfifo_size=7\n"},
                    settings_file{"an_array", R"(["fifo_size"])"},
                    settings_file{"cut_short", R"({"fifo_size":"50)"},
                    settings_file{"ten_megabytes", R"({"a":")" + std::string(10u << 20, 'x') + R"("})"},
                    settings_file{
                        "wrong_types",
                        R"({"fifo_size":{},"combo_box_ex_channel":[],"combo_box_type_1":null,)"
                        R"("combo_box_type_2":1.5,"combo_box_ex_data_len":true,"combo_box_ex_crc_mode":{},)"
                        R"("edit_can_id":null,"edit_data":[],"check_button_read_puase":{}})"}),
    [](const auto& one) { return one.param.label; });

// Read-only and a folder of that name: below, and tests of settings.
TEST_P(bad_settings, show_the_usual_ones_and_change_none_of_the_rest) {
    std::ofstream("setting.json", std::ios::binary) << GetParam().text;
    open_page();
    EXPECT_EQ(shown("combo_box_ex_channel"), "uart1-can1");
    EXPECT_EQ(shown("combo_box_type_1"), "标准帧");
    EXPECT_EQ(shown("combo_box_type_2"), "CAN");
    EXPECT_EQ(shown("combo_box_ex_data_len"), "8");
    EXPECT_EQ(shown("edit_can_id"), "1");
    EXPECT_EQ(shown("edit_data"), "00 11 22 33 44 55 66 77");
    EXPECT_FALSE(checked("check_button_read_puase"));
    does("pick ~/combo_box_ex_channel spi1-can2\n");
    EXPECT_THAT(settings(), HasSubstr("\"combo_box_ex_channel\": \"spi1-can2\""));
    send();
    ASSERT_TRUE(wait_received(1));
    EXPECT_EQ(received().front().substr(0, 10), "AC0F040500");
}

TEST_F(send_form_page, a_read_only_settings_file_stops_nothing) {
    std::ofstream("setting.json", std::ios::binary) << R"({"edit_can_id":"7"})";
    std::filesystem::permissions("setting.json", std::filesystem::perms::owner_read);
    open_page();
    EXPECT_EQ(shown("edit_can_id"), "7");
    does("type ~/edit_can_id 8\nkey Tab\n");
    send();
    ASSERT_TRUE(wait_received(1));
    EXPECT_EQ(received().front().substr(8, 10), "0008000000");
}

TEST_F(send_form_page, a_protocol_brings_its_lengths_and_keeps_the_chosen_one_if_it_can) {
    open_page();
    does("pick ~/combo_box_ex_data_len 5\npick ~/combo_box_type_2 CANFD\n"
         "expect ~/combo_box_ex_data_len options 0|1|2|3|4|5|6|7|8|12|16|20|24|32|48|64\n"
         "expect ~/combo_box_ex_data_len text 5\npick ~/combo_box_ex_data_len 48\n"
         "pick ~/combo_box_type_2 CAN\nexpect ~/combo_box_ex_data_len options 0|1|2|3|4|5|6|7|8\n"
         "expect ~/combo_box_ex_data_len text 8\n");
    EXPECT_THAT(settings(), HasSubstr("\"combo_box_ex_data_len\": \"8\""));
    send();
    ASSERT_TRUE(wait_received(1));
    EXPECT_EQ(received().front().substr(2, 2), "0F") << "eight bytes with a check value";
}

TEST_F(send_form_page, a_sent_frame_is_shown_recorded_and_a_row) {
    open_page();
    does("pick ~/combo_box_ex_channel uart2-can2\npick ~/combo_box_ex_data_len 2\ntype ~/edit_can_id 7ff\n");
    send();
    // CRC-16/X-25 over the eleven bytes before it.
    EXPECT_EQ(shown("edit_send_frame").substr(0, 33), "AB 09 04 03 00 FF 07 00 00 00 11 ");
    EXPECT_EQ(shown("edit_send_frame").size(), 39u);
    ASSERT_TRUE(wait_received(1));
    std::string sent = shown("edit_send_frame");
    std::erase(sent, ' ');
    EXPECT_THAT(received(), ElementsAre(sent));
    EXPECT_EQ(csv(), "2025-09-29 13:05:09,uart2-can2,0x7ff,标准帧-can,tx,2,0x00 0x11 \n");
    EXPECT_EQ(rows(), 1u);
    ASSERT_TRUE(wait([] { return shown("label_counts") == "接收 0 帧　发送 1 帧　记录 1 条"; }));
}

TEST_F(send_form_page, a_length_of_0_sends_no_data_whatever_is_typed) {
    open_page(plain());
    does("pick ~/combo_box_ex_crc_mode 不带校验\npick ~/combo_box_ex_data_len 0\ntype ~/edit_data rubbish\n");
    send();
    ASSERT_TRUE(wait_received(1));
    EXPECT_THAT(received(), ElementsAre("AA0504010001000000"));
    EXPECT_EQ(csv(), "2025-09-29 13:05:09,uart1-can1,0x01,标准帧-can,tx,0,\n");
}

TEST_F(send_form_page, what_cannot_be_sent_is_said_and_nothing_goes_out) {
    open_page();
    does("type ~/edit_can_id 800\n");
    EXPECT_EQ(refused(), "当前can类型为标准帧，id不能超过0x7FF");
    does("pick ~/combo_box_type_1 扩展帧\ntype ~/edit_can_id 20000000\n");
    EXPECT_EQ(refused(), "当前can类型为扩展帧，id不能超过0x1FFFFFFF");
    does("type ~/edit_can_id 1FFFFFFF\ntype ~/edit_data \"00 11 2\"\n");
    EXPECT_EQ(refused(), "数据有误，请检查数据格式和范围。支持格式：1、aabb 2、aa bb");
    EXPECT_EQ(shown("edit_send_frame"), "");
    EXPECT_EQ(rows(), 0u);
    EXPECT_EQ(csv(), "");
    EXPECT_TRUE(usable("button_write"));
    does("type ~/edit_data \"00 11 22 33 44 55 66 77\"\n");
    send();
    ASSERT_TRUE(wait_received(1));
    EXPECT_EQ(received().size(), 1u);
}

TEST_F(send_form_page, the_hint_follows_every_key) {
    open_page();
    EXPECT_EQ(shown("label_data_hint"), "共 8 字节，发送前 8 字节");
    does("pick ~/combo_box_ex_data_len 4\nexpect ~/label_data_hint text \"共 8 字节，发送前 4 字节\"\n"
         "type ~/edit_data \"01 0\"\nexpect ~/label_data_hint text \"只有 1 字节，长度为 4：格式 aabb 或 aa bb\"\n"
         "expect ~/label_data_hint state warning\nappend ~/edit_data \"2 03 04\"\n"
         "expect ~/label_data_hint text \"共 4 字节，发送前 4 字节\"\nexpect ~/label_data_hint state \"\"\n");
}

// ---- periodic sending

class periodic_page : public send_form_page {
  protected:
    static constexpr const char* own[] = {"edit_id_add", "edit_data_add", "edit_timer", "check_button_id_add",
                                          "check_button_data_add"};
    void start(const std::string& id, const std::string& data, const std::string& more = "") {
        open_page(plain());
        does("pick ~/combo_box_ex_crc_mode 不带校验\npick ~/combo_box_ex_data_len 2\ntype ~/edit_can_id " + id +
             "\ntype ~/edit_data " + data + "\ntype ~/edit_timer 5\n" + more + "click ~/check_button_send_timer\n");
    }
};

TEST_F(periodic_page, sends_the_same_frame_until_it_is_ended) {
    start("7FF", "00FF");
    for (const char* name : own) EXPECT_FALSE(usable(name)) << name;
    EXPECT_FALSE(usable("button_write"));
    ASSERT_TRUE(wait_received(5));
    EXPECT_FALSE(usable("button_write")) << "no refresh enables it";
    does("click ~/check_button_send_timer\n");
    for (const char* name : own) EXPECT_TRUE(usable(name)) << name;
    EXPECT_TRUE(usable("button_write"));
    ASSERT_TRUE(wait([] { return data_page_traffic().send_done(); }));
    settle();
    ASSERT_TRUE(wait_received(data_page_traffic().counters().frames_sent));
    const std::size_t sent = received().size();
    for (const std::string& frame : received()) EXPECT_EQ(frame, "AA07040100FF07000000FF");
    EXPECT_EQ(rows(), sent);
    send();
    ASSERT_TRUE(wait_received(sent + 1));
    EXPECT_EQ(received().size(), sent + 1) << "and no tick came after";
}

TEST_F(periodic_page, identifier_and_data_count_up) {
    start("7FF", "00FE", "type ~/edit_id_add 1\nclick ~/check_button_id_add\nclick ~/check_button_data_add\n");
    ASSERT_TRUE(wait_received(4));
    const strings frames = received();
    EXPECT_EQ(frames[0], "AA07040100FF07000000FE");
    EXPECT_EQ(frames[1], "AA070401000000000000FF");
    EXPECT_EQ(frames[2], "AA07040100010000000100");
    EXPECT_EQ(frames[3], "AA07040100020000000101");
}

TEST_F(periodic_page, only_what_is_switched_on_counts) {
    start("10", "00FF", "type ~/edit_data_add 16\nclick ~/check_button_data_add\n");
    ASSERT_TRUE(wait_received(2));
    EXPECT_EQ(received()[0], "AA070401001000000000FF");
    EXPECT_EQ(received()[1], "AA0704010010000000100F") << "what is carried is the sum less 255";
}

TEST_F(periodic_page, what_cannot_be_sent_starts_nothing) {
    open_page();
    does("type ~/edit_can_id 800\n");
    answer_message();
    does("click ~/check_button_send_timer\n");
    ASSERT_TRUE(wait([this] { return !message_seen.empty(); }));
    settle();
    EXPECT_EQ(message_seen, "当前can类型为标准帧，id不能超过0x7FF");
    EXPECT_FALSE(checked("check_button_send_timer"));
    for (const char* name : own) EXPECT_TRUE(usable(name)) << name;
    EXPECT_TRUE(usable("button_write"));
    EXPECT_EQ(rows(), 0u);
}

TEST_F(periodic_page, leaving_ends_it) {
    start("1", "0102");
    ASSERT_TRUE(wait_received(2));
    leave_page();
    const std::size_t sent = module->traffic_received().size();
    open_page();
    EXPECT_FALSE(checked("check_button_send_timer"));
    EXPECT_TRUE(usable("button_write"));
    for (const char* name : own) EXPECT_TRUE(usable(name)) << name;
    does("pick ~/combo_box_ex_crc_mode 带校验\n");
    send();
    ASSERT_TRUE(wait_received(sent + 1));
    EXPECT_EQ(module->traffic_received().size(), sent + 1);
}

class saved_period : public periodic_page, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(texts, saved_period, testing::Values("0", "-5", "soon", ""));

TEST_P(saved_period, of_none_is_the_shortest) {
    std::ofstream("setting.json", std::ios::binary) << R"({"edit_timer":")" << GetParam() << R"("})";
    open_page(plain());
    does(
        "pick ~/combo_box_ex_crc_mode 不带校验\npick ~/combo_box_ex_data_len 0\nclick ~/check_button_send_timer\n");
    ASSERT_TRUE(wait_received(10));
    does("click ~/check_button_send_timer\n"); // the window answers all the while
    EXPECT_TRUE(usable("button_write"));
}

TEST_F(periodic_page, a_saved_period_that_is_huge_sends_once_and_can_be_ended) {
    std::ofstream("setting.json", std::ios::binary) << R"({"edit_timer":"99999999999999999999"})";
    open_page(plain());
    does("pick ~/combo_box_ex_crc_mode 不带校验\nclick ~/check_button_send_timer\n");
    ASSERT_TRUE(wait_received(1));
    EXPECT_FALSE(usable("button_write"));
    does("click ~/check_button_send_timer\n");
    EXPECT_TRUE(usable("button_write"));
    send();
    ASSERT_TRUE(wait_received(2));
    EXPECT_EQ(received().size(), 2u);
}

TEST_F(periodic_page, numbers_out_of_bounds_cannot_be_typed) {
    open_page();
    does("type ~/edit_timer 0\nkey Tab\nexpect ~/edit_timer text 1\n"
         "type ~/edit_data_add 256\nexpect ~/edit_data_add text 25\n"
         "type ~/edit_id_add x7\nexpect ~/edit_id_add text 7\n");
}

} // namespace
