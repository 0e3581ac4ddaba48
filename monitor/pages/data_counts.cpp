#include "monitor/pages/data_counts.h"

#include "toolkit/core/text.h"

#include <cinttypes>
#include <iterator>

namespace {

constexpr link_words words[] = {
    {"未连接", "idle"},       // none
    {"等待端口…", "busy"},    // waiting
    {"传输模式", "ok"},       // open
    {"连接已断开", "failed"}, // lost
    {"端口已关闭", "failed"}, // closed
};

constexpr const char* loss_names[] = {"噪声",     "无起始字节", "帧不完整", "长度过小",
                                      "命令不符", "校验错误",   "数据过长", "清空接收"};
static_assert(std::size(loss_names) == traffic_losses_count);

void add(std::string* text, const char* name, uint64_t count, const char* unit) {
    if (count == 0) return;
    if (!text->empty()) *text += "，";
    *text += tk_format("%s %" PRIu64 " %s", name, count, unit);
}

} // namespace

link_words data_link_words(traffic_link link, bool leaving) {
    if (leaving) return {"正在返回配置模式…", "busy"};
    return words[static_cast<std::size_t>(link)];
}

counts_texts data_counts_texts(const traffic_counters& counters, std::size_t kept, uint64_t skipped) {
    counts_texts out;
    out.frames = tk_format("接收 %" PRIu64 " 帧　发送 %" PRIu64 " 帧　记录 %zu 条", counters.frames_received,
                           counters.frames_sent, kept);
    for (std::size_t i = 0; i < traffic_losses_count; ++i)
        add(&out.lost, loss_names[i], counters.lost.bytes[i], "字节");
    if (!out.lost.empty()) out.lost = "丢弃：" + out.lost;
    add(&out.lost, "队列已满", counters.records_dropped, "条");
    add(&out.lost, "内存不足", counters.records_refused, "条");
    add(&out.lost, "发送失败", counters.sends_failed, "帧");
    add(&out.lost, "记录文件少", counters.lines_dropped, "行");
    add(&out.lost, "周期跳过", skipped, "次");
    return out;
}
