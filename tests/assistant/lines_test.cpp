// Rows and frames as texts.
#include "assistant/lines.h"

namespace {

constexpr int64_t day_us = 24LL * 3600 * 1000000;
constexpr int64_t one_o_clock = 20000 * day_us + 3600LL * 1000000 + 2003000; // 2024-10-04 01:00:02.003

transcript_row row_with(std::initializer_list<uint8_t> bytes) {
    transcript_row row{.local_us = one_o_clock, .size = static_cast<uint8_t>(bytes.size())};
    std::copy(bytes.begin(), bytes.end(), row.room.begin());
    return row;
}

TEST(lines, a_row_in_both_forms) {
    transcript_row row = row_with({0x41, 0x7A, 0x20, 0x7E, 0x1F, 0x7F, 0x80, 0x00, 0x0A});
    EXPECT_EQ(row_line(row, byte_form::hex), "2024-10-04 01:00:02.003 rx 41 7A 20 7E 1F 7F 80 00 0A\n");
    row.sent = true;
    EXPECT_EQ(row_line(row, byte_form::chars), "2024-10-04 01:00:02.003 tx Az ~.....\n");
    EXPECT_EQ(line_time_text(row.local_us), "01:00:02.003");
}

TEST(lines, a_frame_has_the_words_of_the_form_for_its_channel_and_those_of_traffic_for_its_type) {
    transcript_frame frame{
        .local_us = one_o_clock, .identifier = 0x12345678, .channel = 3, .type = 0x88, .size = 2};
    frame.room[0] = 0xDE;
    EXPECT_EQ(frame_line(frame), "2024-10-04 01:00:02.003\tUART2_TO_CANFD2\t0x12345678\t扩展帧-canfd\t2\tDE 00\n");
    EXPECT_EQ(frame_data_text(frame, 2), "DE 00");
    EXPECT_EQ(frame_data_text(frame, 1), "DE ..");
    for (const auto& [type, text] : {std::pair<uint8_t, const char*>{0x00, "标准帧-can"},
                                     {0x08, "扩展帧-can"},
                                     {0x80, "标准帧-canfd"},
                                     {0x88, "扩展帧-canfd"}}) {
        frame.type = type;
        EXPECT_EQ(frame_type_text(frame), text);
    }
    frame.identifier = 5;
    frame.channel = 9;
    EXPECT_EQ(frame_identifier_text(frame), "0x05");
    EXPECT_STREQ(frame_channel_text(frame), "未知");
}

} // namespace
