#include "monitor/pages/data_counts.h"

#include "monitor/pages/data_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

struct link_row {
    traffic_link link;
    const char* text;
    const char* style;
};

TEST(data_link, every_state_has_its_words) {
    const link_row rows[] = {{traffic_link::none, "未连接", "idle"},
                             {traffic_link::waiting, "等待端口…", "busy"},
                             {traffic_link::open, "传输模式", "ok"},
                             {traffic_link::lost, "连接已断开", "failed"},
                             {traffic_link::closed, "端口已关闭", "failed"}};
    for (const link_row& row : rows) {
        EXPECT_STREQ(data_link_words(row.link, false).text, row.text);
        EXPECT_STREQ(data_link_words(row.link, false).style, row.style);
        EXPECT_STREQ(data_link_words(row.link, true).text, "正在返回配置模式…");
        EXPECT_STREQ(data_link_words(row.link, true).style, "busy");
    }
}

TEST(data_counts, frames_and_records) {
    traffic_counters counters;
    counters.frames_received = 5000000000;
    counters.frames_sent = 3;
    EXPECT_EQ(data_counts_texts(counters, 5000, 0).frames, "接收 5000000000 帧　发送 3 帧　记录 5000 条");
}

TEST(data_counts, what_is_not_lost_is_not_said) { EXPECT_EQ(data_counts_texts({}, 7, 0).lost, ""); }

TEST(data_counts, every_cause_of_a_loss_has_its_name) {
    traffic_counters counters;
    for (std::size_t i = 0; i < traffic_losses_count; ++i) counters.lost.bytes[i] = i + 1;
    EXPECT_EQ(data_counts_texts(counters, 0, 0).lost,
              "丢弃：噪声 1 字节，无起始字节 2 字节，帧不完整 3 字节，长度过小 4 字节，命令不符 5 字节，"
              "校验错误 6 字节，数据过长 7 字节，清空接收 8 字节");
    EXPECT_EQ(counters.lost[traffic_loss::purged], 8u);
}

TEST(data_counts, other_losses_stand_behind_the_bytes) {
    traffic_counters counters;
    counters.records_dropped = 1;
    counters.records_refused = 2;
    counters.sends_failed = 3;
    counters.lines_dropped = 4;
    const std::string rest = "队列已满 1 条，内存不足 2 条，发送失败 3 帧，记录文件少 4 行，周期跳过 5 次";
    EXPECT_EQ(data_counts_texts(counters, 0, 5).lost, rest);
    counters.lost[traffic_loss::noise] = 9;
    EXPECT_EQ(data_counts_texts(counters, 0, 5).lost, "丢弃：噪声 9 字节，" + rest);
}

TEST(data_copied, says_how_many_and_warns_of_those_left_out) {
    EXPECT_EQ(data_copied_words(1, 1).text, "已复制 1 行");
    EXPECT_STREQ(data_copied_words(1, 1).style, "ok");
    EXPECT_EQ(data_copied_words(data_copy_max, 20001).text, "只复制前 20000 行，共选 20001 行");
    EXPECT_STREQ(data_copied_words(data_copy_max, 20001).style, "warning");
}

} // namespace
